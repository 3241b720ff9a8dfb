#include <hosts/orbimg/stack_mode.h>

#include <algorithm>

#include <fmt/format.h>

namespace orb::host {
namespace {

constexpr int kMedian = -1;
constexpr int kMean = -2;
constexpr int kWeighted = 2;
constexpr int kSubtract = 3;
constexpr int kRejection = 9;

constexpr StackMode kModes[] = {
    {"median", kMedian, false, ExposureRule::kMean, "median of the frames that cover a pixel"},
    {"average", kMean, false, ExposureRule::kMean,
     "mean of the frames that cover a pixel: sum of weight x sample over sum of weights"},
    {"sigma", kMean, false, ExposureRule::kMean,
     "that mean, once all is out that lies beyond --low or --high standard deviations from the plain mean, "
     "found anew until nothing is; 3 deviations take more than 10 frames to show",
     JoinRule::Rejection::kSigma},
    {"winsorised", kMean, false, ExposureRule::kMean,
     "the same about the median, the deviation being 1.134 times that of the samples held within 1.5 of it, "
     "until it settles; holds with 4 frames",
     JoinRule::Rejection::kWinsorised},
    {"add", 1, false, ExposureRule::kSum, "sum; a frame counts as 0 where it does not reach"},
    {"weighted", kWeighted, true, ExposureRule::kMean, "(1 - ratio) a + ratio b, frame after frame"},
    {"subtract", kSubtract, true, ExposureRule::kReference, "the first less all others; --clamp holds it at 0"},
    {"multiply", 4, false, ExposureRule::kReference, "product; 0 where a frame does not reach"},
    {"divide", 5, true, ExposureRule::kReference, "the first divided by all others; division by 0 is left out"},
    {"difference", 6, true, ExposureRule::kReference, "absolute difference, frame after frame"},
    {"maximum", 7, false, ExposureRule::kMean, "the highest"},
    {"minimum", 8, false, ExposureRule::kMean, "the lowest; a frame counts as 0 where it does not reach"},
    {"rejection", kRejection, true, ExposureRule::kMean,
     "what is bright in one frame only stays out; ratio, threshold, radius"},
};

}  // namespace

std::span<StackMode const> StackModes() { return kModes; }

StackMode const& FindStackMode(std::string const& name) {
  return *std::find_if(std::begin(kModes), std::end(kModes), [&](StackMode const& mode) { return name == mode.name; });
}

bool StackParameters::IsMedian() const { return mode->compositeMode == kMedian; }
bool StackParameters::IsMean() const { return mode->compositeMode == kMean; }
bool StackParameters::IsRejection() const { return mode->compositeMode == kRejection; }

std::string StackParameters::Text() const {
  return OperatorText() + NormaliseText() + (weighting == Weighting::kNoise ? ", weights by noise" : "");
}

std::string StackParameters::OperatorText() const {
  if (IsMedian()) return "CImgMedianComposit";
  if (IsMean()) {
    std::string const limits = TakesOut() ? fmt::format(", low {}, high {}", low, high) : "";
    return fmt::format("mean, {}{}", mode->name, limits);
  }
  std::string text =
      fmt::format("CImgComposit, mode {} ({}), {}", mode->compositeMode, mode->name, on256 ? "256-scale" : "raw");
  if (mode->compositeMode == kWeighted) text += fmt::format(", ratio {}", ratio);
  if (mode->compositeMode == kSubtract) text += fmt::format(", clamp {}", clamp ? 1 : 0);
  if (IsRejection()) text += fmt::format(", ratio {}, threshold {}, radius {}", ratio, threshold, radius);
  return text;
}

std::string StackParameters::NormaliseText() const {
  if (normalise == Normalise::kSky) return ", skies made equal";
  return normalise == Normalise::kNoise ? ", sky and noise made equal" : "";
}

}  // namespace orb::host
