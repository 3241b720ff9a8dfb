// The numbers of the composite's modes, and what both kinds of composite share.
#pragma once

#include <orbimg/core/constants.h>
#include <orbimg/core/orb_image.h>

namespace orb {

enum CompositeMode {
  kAverage = 0,
  kAdd = 1,
  kWeighted = 2,
  kSubtract = 3,
  kMultiply = 4,
  kDivide = 5,
  kDifference = 6,
  kMaximum = 7,
  kMinimum = 8,
  kRejection = 9,
};

inline constexpr int kCompositeMessage = 6107;

inline int CompositeMessage(int messageId) { return messageId == -1 ? kCompositeMessage : messageId; }

}  // namespace orb
