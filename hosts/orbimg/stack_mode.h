// How frames are joined into one.
#pragma once

#include <span>
#include <string>

#include <hosts/orbimg/frame_scaling.h>
#include <hosts/orbimg/line_join.h>

namespace orb::host {

enum class ExposureRule { kMean, kSum, kReference };

struct StackMode {
  char const* name;
  int compositeMode;  // of CImgComposit; -1: the median of all frames; -2: their mean
  bool orderMatters;  // files stay in the order in which they were given
  ExposureRule exposure;
  char const* help;
  JoinRule::Rejection rejection = JoinRule::Rejection::kNone;  // of a mean
};

std::span<StackMode const> StackModes();
StackMode const& FindStackMode(std::string const& name);  // the name is one of the table's

struct StackParameters {
  StackMode const* mode = nullptr;
  double ratio = 1.0;
  bool clamp = false;
  double threshold = 0.95;
  int radius = 0;
  bool on256 = false;  // on the 256-scale of each frame's levels
  double low = 3.0;    // deviations that a mean with rejection allows
  double high = 3.0;
  Normalise normalise = Normalise::kNone;
  Weighting weighting = Weighting::kEqual;

  bool IsMedian() const;
  bool IsMean() const;
  bool TakesOut() const { return mode->rejection != JoinRule::Rejection::kNone; }  // of a mean
  bool IsRejection() const;
  // The operator and its parameters, for a HISTORY card.
  std::string Text() const;

 private:
  std::string OperatorText() const;
  std::string NormaliseText() const;
};

}  // namespace orb::host
