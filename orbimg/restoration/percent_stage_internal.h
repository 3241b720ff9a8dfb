// PercentReport: the percentages of a long computation, each sent once. PercentStage: those of one of its stages.
#pragma once

#include <cstdint>

#include <orbimg/core/orb_image.h>

namespace orb {

// a * b / c for numbers that are not negative, rounded to the nearest.
inline int MultiplyDivide(int a, int b, int c) {
  return static_cast<int>((static_cast<std::int64_t>(a) * b + c / 2) / c);
}

class PercentReport {
 public:
  // Without an image nothing is reported, and nothing cancels.
  explicit PercentReport(COrbImage* progress) : image(progress) {}

  // False: cancelled. A percentage that was the last one to be sent is not sent again.
  bool Reach(int percent) {
    if (image == nullptr || percent == last) return true;
    last = percent;
    return image->ShowProgress(percent) != 0;
  }

 private:
  COrbImage* image;
  int last = -1;
};

// `steps` steps that take `span` percent from `from` on: step y, counted from 1, reaches span * y / steps.
class PercentStage {
 public:
  PercentStage(PercentReport& to, int begin, int percents, int count)
      : report(to), from(begin), span(percents), steps(count) {}

  // Reports the steps up to the share done/of. False: cancelled.
  bool Advance(std::int64_t done, std::int64_t of) {
    std::int64_t const end = done * steps / of;
    while (step < end) {
      ++step;
      if (!report.Reach(MultiplyDivide(span, step, steps) + from)) return false;
    }
    return true;
  }

 private:
  PercentReport& report;
  int const from;
  int const span;
  int const steps;
  int step = 0;
};

}  // namespace orb
