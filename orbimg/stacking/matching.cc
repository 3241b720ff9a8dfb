#include <orbimg/stacking/matching.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <orbimg/core/truncate.h>
#include <orbimg/stacking/matching_metric_internal.h>

namespace {

using orb::MatchingMetric;
using orb::Shift;

constexpr int kMessage = 6152;
// All the shifts of a range of 32 and a little more: each pass reads both images once.
constexpr std::size_t kShiftsTogether = 306;
constexpr int kUnitNeighbours = 9;  // the winner counts among them, but is not tried again
constexpr int kFineUnits = 6;       // a fractional position counts as much as six whole ones
constexpr int kFinePositions = 48;

constexpr double kFirstHalfWidth = 0.6;
constexpr double kFirstStep = 0.3;
constexpr double kSecondHalfWidth = 0.19999999999999998;
constexpr double kSecondStep = 0.1;

struct Best {
  double value = orb::kOutOfRange;
  double x = 0.0;
  double y = 0.0;
  bool found = false;

  // The first of equal values stays.
  void Offer(double newValue, double newX, double newY) {
    if (!(newValue < value)) return;
    *this = Best{newValue, newX, newY, true};
  }
};

int ProgressTotal(int range, int fine) {
  std::int64_t const positions = static_cast<std::int64_t>(range) * range / 4;
  std::int64_t const total = positions + kUnitNeighbours + (fine != 0 ? kFineUnits * kFinePositions : 0);
  return static_cast<int>(std::min<std::int64_t>(total, std::numeric_limits<int>::max()));
}

std::vector<double> BrightnessRatios(COrbImage& reference, COrbImage& source) {
  int const planes = std::max(1, std::min(reference.GetPlanes(), source.GetPlanes()));
  std::vector<double> ratio;
  for (int p = 0; p < planes; ++p) {
    ratio.push_back(static_cast<double>(reference.GetAvrGrayRaw(p)) / source.GetAvrGrayRaw(p));
  }
  return ratio;
}

// One call of Do.
class Search {
 public:
  Search(CImgMatching& referenceImage, COrbImage& source)
      : reference(referenceImage),
        ratio(BrightnessRatios(referenceImage, source)),
        metric(referenceImage, source, ratio.data()) {}

  Best const& Found() const { return best; }

  void Coarse(double x0, double y0, int h) {
    std::int64_t const top = orb::TruncateToInt(y0 - h);
    std::int64_t const bottom = orb::TruncateToInt(y0 + h);
    std::int64_t const left = orb::TruncateToInt(x0 - h);
    std::int64_t const right = orb::TruncateToInt(x0 + h);
    std::size_t const columns = left <= right ? static_cast<std::size_t>((right - left) / 2 + 1) : 0;
    std::vector<Shift> shifts;
    for (std::int64_t y = top; y <= bottom; y += 2) {
      // Few shifts of a row go together with those of the next row, many are cut into parts: neighbours either way.
      if (shifts.size() + columns > kShiftsTogether) TryWhole(shifts);
      for (std::int64_t x = left; x <= right; x += 2) {
        shifts.push_back(Shift{x, y});
        if (shifts.size() == kShiftsTogether) TryWhole(shifts);
      }
    }
    TryWhole(shifts);
  }

  // Intended: all eight neighbours of the coarse winner, even after one of them has taken the lead.
  void Unit() {
    std::int64_t const bx = orb::TruncateToInt(best.x);
    std::int64_t const by = orb::TruncateToInt(best.y);
    std::vector<Shift> shifts;
    for (std::int64_t y = by - 1; y <= by + 1; ++y) {
      for (std::int64_t x = bx - 1; x <= bx + 1; ++x) {
        if (x != bx || y != by) shifts.push_back(Shift{x, y});
      }
    }
    TryWhole(shifts);
  }

  // Intended: positions by repeated addition, so that rounding decides whether the last one is reached.
  void Fine(double halfWidth, double step) {
    double const cx = best.x;
    double const cy = best.y;
    for (double y = cy - halfWidth; y <= cy + halfWidth; y += step) {
      for (double x = cx - halfWidth; x <= cx + halfWidth; x += step) {
        if (x == cx && y == cy) continue;
        best.Offer(metric.AtFractionalShift(x, y), x, y);
        reference.ShowProgress(kFineUnits);
      }
    }
  }

 private:
  // Empties the list.
  void TryWhole(std::vector<Shift>& shifts) {
    std::vector<Shift> const contenders = FindContenders(shifts);
    std::vector<double> values(contenders.size());
    metric.AtWholeShifts(contenders, values);
    for (std::size_t i = 0; i < contenders.size(); ++i) {
      best.Offer(values[i], static_cast<double>(contenders[i].dx), static_cast<double>(contenders[i].dy));
    }
    for (std::size_t i = 0; i < shifts.size(); ++i) reference.ShowProgress(1);
    shifts.clear();
  }

  // The shifts that can win, in their order. What is left out is above the best so far, or above another shift of the
  // list, so that no value of it is needed.
  std::vector<Shift> FindContenders(std::vector<Shift> const& shifts) {
    if (shifts.size() < 2) return shifts;
    std::vector<orb::ValueRange> ranges(shifts.size());
    metric.BoundAtWholeShifts(shifts, ranges);
    double limit = best.value;
    for (orb::ValueRange const& range : ranges) limit = std::min(limit, range.highest);
    std::vector<Shift> contenders;
    for (std::size_t i = 0; i < shifts.size(); ++i) {
      if (ranges[i].lowest <= limit) contenders.push_back(shifts[i]);
    }
    return contenders;
  }

  CImgMatching& reference;
  std::vector<double> ratio;
  MatchingMetric metric;
  Best best;
};

}  // namespace

int CImgMatching::Do(COrbImage* source, double* x, double* y, int range, int fine, int progress) {
  ShowProgressInit(progress, kMessage, ProgressTotal(range, fine));
  Search search(*this, *source);
  search.Coarse(*x, *y, range / 2);
  if (search.Found().found) {
    search.Unit();
    if (fine != 0) {
      search.Fine(kFirstHalfWidth, kFirstStep);
      search.Fine(kSecondHalfWidth, kSecondStep);
    }
  }
  ShowProgressEnd(static_cast<char const*>(nullptr));
  if (!search.Found().found) return 0;
  *x = search.Found().x;
  *y = search.Found().y;
  return 1;
}

double CImgMatching::CalcValue(COrbImage* source, int dx, int dy, double* const ratio) {
  Shift const shift{dx, dy};
  double value = 0.0;
  MatchingMetric(*this, *source, ratio).AtWholeShifts({&shift, 1}, {&value, 1});
  return value;
}

double CImgMatching::CalcValue(COrbImage* source, double dx, double dy, double* const ratio) {
  return MatchingMetric(*this, *source, ratio).AtFractionalShift(dx, dy);
}
