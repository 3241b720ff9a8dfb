// Joins the lines of many frames into one: their weighted mean, with or without what lies too far off.
//
//   average      sum of w v / sum of w over the frames that cover a pixel
//   sigma        the same over the values that are left when, again and again, those outside
//                mean - low * s .. mean + high * s are taken out, until none is; s is their standard deviation (the sum
//                of squares over their number). Among n values none is further off than (n - 1)/sqrt(n) deviations, so
//                3 needs more than 10 frames.
//   winsorised   the same once, about the median, with a deviation that outliers do not stretch: values beyond 1.5 s
//   are
//                brought to that bound, and s becomes 1.134 times the root mean square of what is left, until it
//                settles (P. J. Huber, Robust Statistics, 1981). It holds from three frames on.
//
// v are samples as they come out of each frame, in double; mean and median start from all that are finite. Weights
// count in the last mean only. The result is rounded once; it is 0 where no frame covers.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orb::host {

// What a frame shows on a line of the result: values in columns begin .. end - 1, nothing elsewhere.
struct FrameLineView {
  float const* values;  // of the whole line
  int begin;
  int end;
  double weight;
};

struct JoinRule {
  enum class Rejection { kNone, kSigma, kWinsorised };
  Rejection rejection = Rejection::kNone;
  double low = 3.0;  // deviations below, above
  double high = 3.0;
};

// Values that were taken out.
struct JoinCount {
  std::int64_t values = 0;
  std::int64_t low = 0;
  std::int64_t high = 0;
};

// Joins lines; keeps its scratch, 8 bytes a frame for 64 columns.
class LineJoiner {
 public:
  explicit LineJoiner(JoinRule const& initRule) : rule(initRule) {}

  // `medians` is read where the rule is winsorised: the median of the frames at each column.
  void Join(std::span<FrameLineView const> lines, float const* medians, int width, float* out);
  JoinCount const& Count() const { return count; }

 private:
  struct Block;
  void JoinBlock(Block const& block, float* out);
  void KeepWhatCovers(Block const& block);
  void RejectBySigma(Block const& block);
  void RejectWinsorised(Block const& block);
  // Takes out what lies outside centre - low s .. centre + high s. True if anything was.
  bool Reject(Block const& block, double const* centre, double const* deviation);
  void WriteMean(Block const& block, float* out) const;

  JoinRule rule;
  JoinCount count;
  std::vector<double> kept;  // for each frame and column of the block 1 or 0
};

}  // namespace orb::host
