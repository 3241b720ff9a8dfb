#include <orbimg/measure/star_profile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>
#include <numeric>

namespace {

// Their product is 1 to six digits only.
constexpr double kPsfOfRoot = 0.4246609;
constexpr double kRootOfPsf = 2.354820045829508;

constexpr double kWidest = 20.0;  // pixels
constexpr double kLowestMean = 1e-06;
constexpr double kHighestMean = 20.0;

constexpr int kArms = 4;
constexpr int kSamplesOfArm = 12;
constexpr int kGap = 2;  // pixels between slope and samples, which keep the halo's edge out

// Samples of the sky around a star.
class BaseSamples {
 public:
  void Add(double v) { samples[count++] = v; }

  bool IsEmpty() const { return count == 0; }

  // The upper of two middle ones; what is not a number ranks last.
  double TakeMedian() {
    auto const begin = samples.begin();
    auto const end = begin + static_cast<std::ptrdiff_t>(count);
    std::sort(begin, std::partition(begin, end, [](double v) { return v == v; }));
    return samples[count / 2];
  }

 private:
  std::array<double, static_cast<std::size_t>(kArms* kSamplesOfArm)> samples;
  std::size_t count = 0;
};

// One row or column through a peak, walked away from it by steps of 1 or -1.
template <typename Value>
class Arm {
 public:
  Arm(Value valueAt, int peakAt, int pixels, int towards) : value(valueAt), peak(peakAt), size(pixels), step(towards) {}

  void SampleSky(BaseSamples& sky) const {
    int i = FindRise() + kGap * step;
    for (int n = 0; n < kSamplesOfArm && IsInside(i); ++n, i += step) sky.Add(value(i));
  }

  // Where the slope comes down to `half`, in pixels.
  bool FindHalf(double half, double* found) const {
    for (int i = peak + step; IsInside(i); i += step) {
      double const w = value(i);
      if (!(w <= half)) continue;
      *found = i - step * ((half - w) / (value(i - step) - w));
      return true;
    }
    return false;
  }

 private:
  bool IsInside(int i) const { return i >= 0 && i < size; }

  // The first pixel above the one before it, or where the walk ends. Intended: a plateau is no rise. Intended: towards
  // 0 the walk ends at 0 itself, the other way beyond the last pixel.
  int FindRise() const {
    double last = value(peak);
    int i = peak + step;
    while (step < 0 ? i > 0 : i < size) {
      double const w = value(i);
      if (w > last) break;
      last = w;
      i += step;
    }
    return i;
  }

  Value value;
  int peak;
  int size;
  int step;
};

bool IsMean(double v) { return !(v <= kLowestMean || v >= kHighestMean); }

}  // namespace

double PSF::GetPixelValue(CPoint point) {
  double sum = 0.0;
  int count = 0;
  for (int p = 0; p < image->GetPlanes(); ++p) {
    float const* const sample = image->GetImageAdr(point.x, point.y, p, 1, nullptr);
    if (sample == nullptr) continue;
    sum += *sample;
    ++count;
  }
  return count == 0 ? 0.0 : sum / count;
}

CPoint PSF::ClimbToPeak(CPoint point) {
  CRect const frame(0, 0, image->GetWidth(), image->GetHeight());
  for (;;) {
    CPoint best = point;
    double highest = GetPixelValue(point);
    // The first of equal neighbours wins: columns outside, rows inside.
    for (int dx = -1; dx <= 1; ++dx) {
      for (int dy = -1; dy <= 1; ++dy) {
        CPoint const neighbour(point.x + dx, point.y + dy);
        if (!frame.PtInRect(neighbour)) continue;
        double const v = GetPixelValue(neighbour);
        if (!(v > highest)) continue;
        highest = v;
        best = neighbour;
      }
    }
    if (best.x == point.x && best.y == point.y) return point;
    point = best;
  }
}

int PSF::GetBase(CPoint peak, double* base) {
  auto const inRow = [&](int x) { return GetPixelValue(CPoint(x, peak.y)); };
  auto const inColumn = [&](int y) { return GetPixelValue(CPoint(peak.x, y)); };
  BaseSamples sky;
  for (int step : {-1, 1}) {
    Arm(inRow, peak.x, image->GetWidth(), step).SampleSky(sky);
    Arm(inColumn, peak.y, image->GetHeight(), step).SampleSky(sky);
  }
  if (sky.IsEmpty()) return 0;
  *base = sky.TakeMedian();
  return 1;
}

int PSF::GetFWHM(CPoint peak, double base, double* fwhm) {
  auto const inRow = [&](int x) { return GetPixelValue(CPoint(x, peak.y)); };
  auto const inColumn = [&](int y) { return GetPixelValue(CPoint(peak.x, y)); };
  double const half = (GetPixelValue(peak) + base) * 0.5;
  int const width = image->GetWidth();
  int const height = image->GetHeight();
  double left = 0.0;
  double right = 0.0;
  double top = 0.0;
  double bottom = 0.0;
  if (!Arm(inRow, peak.x, width, -1).FindHalf(half, &left)) return 0;
  if (!Arm(inRow, peak.x, width, 1).FindHalf(half, &right)) return 0;
  if (!Arm(inColumn, peak.y, height, -1).FindHalf(half, &top)) return 0;
  if (!Arm(inColumn, peak.y, height, 1).FindHalf(half, &bottom)) return 0;
  *fwhm = ((bottom - top) + (right - left)) * 0.5;
  return 1;
}

double PSF::FwhmToPsf(double fwhm) const { return std::sqrt(fwhm) * kPsfOfRoot; }

double PSF::PsfToFwhm(double psf) const {
  double const root = psf * kRootOfPsf;
  return root * root;
}

int PSF::Add(CPoint point) {
  if (!CRect(0, 0, image->GetWidth(), image->GetHeight()).PtInRect(point)) return 0;
  CPoint const peak = ClimbToPeak(point);
  double base = 0.0;
  if (GetBase(peak, &base) == 0) return 0;
  if (GetPixelValue(peak) <= base) return 0;
  double width = 0.0;
  if (GetFWHM(peak, base, &width) == 0) return 0;
  if (!(width >= 0.0 && width < kWidest)) return 0;
  try {
    widths.push_back(FwhmToPsf(width));
  } catch (std::bad_alloc const&) {
    return 0;
  }
  return 1;
}

int PSF::GetMeanPSF(double* result) {
  if (widths.empty()) return 0;
  double const mean = std::accumulate(widths.begin(), widths.end(), 0.0) / static_cast<double>(widths.size());
  if (!IsMean(mean)) return 0;
  *result = mean;
  return 1;
}

int PSF::GetMedianPSF(double* result) {
  if (widths.empty()) return 0;
  std::sort(widths.begin(), widths.end());
  double const median = widths[widths.size() / 2];
  if (!IsMean(median)) return 0;
  *result = median;
  return 1;
}

int PSF::GetMeanFWHM(double* result) {
  double psf = 0.0;
  int const found = GetMeanPSF(&psf);
  *result = PsfToFwhm(psf);
  return found;
}

int PSF::GetMedianFWHM(double* result) {
  double psf = 0.0;
  int const found = GetMedianPSF(&psf);
  *result = PsfToFwhm(psf);
  return found;
}
