// How frames are joined into one.
#pragma once

#include <span>
#include <string>

namespace orb::host {

enum class ExposureRule { kMean, kSum, kReference };

struct StackMode {
  char const* name;
  int compositeMode;  // of CImgComposit; -1: the median of all frames
  bool orderMatters;  // files stay in the order in which they were given
  ExposureRule exposure;
  char const* help;
};

std::span<StackMode const> StackModes();
StackMode const& FindStackMode(std::string const& name);  // the name is one of the table's

struct StackParameters {
  StackMode const* mode = nullptr;
  double ratio = 1.0;
  bool clamp = false;
  double threshold = 0.95;
  int radius = 0;
  bool on256 = false;     // on the 256-scale of each frame's levels
  bool equalSky = false;  // a constant brings the median of each frame to that of the first

  bool IsMedian() const;
  bool IsAverage() const;
  bool IsRejection() const;
  // The operator and its parameters, for a HISTORY card.
  std::string Text() const;
};

}  // namespace orb::host
