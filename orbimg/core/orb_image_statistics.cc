// Histogram, means and extrema.
#include <algorithm>
#include <climits>
#include <vector>

#include <orbimg/core/brightness_internal.h>
#include <orbimg/core/histogram_kernels.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/core/sum_kernels.h>

namespace {

constexpr int kCounting = 6166;
constexpr int kBrightness = -1;
constexpr int kExtremaPlanes = 3;  // minPixel and maxPixel have room for

// Twice the count that a class of a flat histogram would have. Intended: of the whole image, whatever the rectangle.
// No classes have no such count; the result is 0 then, as the conversion must not meet an infinity.
int PeakScale(int width, int height, int bins) {
  if (bins == 0) return 0;
  double const scale = static_cast<double>(width) * height / bins * 2;
  return static_cast<int>(std::clamp(scale, static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
}

orb::FloatScale FloatScaleOf(CImage const& image, int plane) {
  return orb::FloatScale{static_cast<float>(image.GetLevelMin(plane)),
                         static_cast<float>(255.0 / image.GetLevelRange(plane))};
}

// Counts a plane's raw samples, row by row.
class PlaneCounter {
 public:
  PlaneCounter(COrbImage const& counted, int countedPlane, orb::Bounds const& area, int bins, double lo, double hi)
      : image(counted), plane(countedPlane), bounds(area), histogram(bins, lo, hi) {}

  void CountRow(int y) { histogram.CountRow(image.GetImageAdr(bounds.left, y, plane, 1, nullptr), bounds.Columns()); }
  void Store(int* hist) const { histogram.Store(hist); }

 private:
  COrbImage const& image;
  int plane;
  orb::Bounds bounds;
  orb::Histogram histogram;
};

// Counts a colour image's brightness, row by row; the bounds are raw values of plane 0.
class BrightnessCounter {
 public:
  BrightnessCounter(COrbImage const& counted, orb::Bounds const& area, int bins, double lo, double hi)
      : image(counted),
        bounds(area),
        histogram(bins, counted.To256(lo, 0), counted.To256(hi, 0)),
        red(FloatScaleOf(counted, 0)),
        green(FloatScaleOf(counted, 1)),
        blue(FloatScaleOf(counted, 2)),
        brightness(static_cast<std::size_t>(area.Columns())) {}

  void CountRow(int y) {
    orb::HistogramBrightnessRow(
        image.GetImageAdr(bounds.left, y, 0, 1, nullptr), image.GetImageAdr(bounds.left, y, 1, 1, nullptr),
        image.GetImageAdr(bounds.left, y, 2, 1, nullptr), bounds.Columns(), red, green, blue, brightness.data());
    histogram.CountRow(brightness.data(), bounds.Columns());
  }
  void Store(int* hist) const { histogram.Store(hist); }

 private:
  COrbImage const& image;
  orb::Bounds bounds;
  orb::Histogram histogram;
  orb::FloatScale red;
  orb::FloatScale green;
  orb::FloatScale blue;
  std::vector<double> brightness;
};

// Counts row by row, one unit of progress each.
template <typename Counter>
void CountRows(COrbImage& image, orb::Bounds const& bounds, Counter counter, int* hist) {
  for (int y = bounds.top; y < bounds.bottom; ++y) {
    if (bounds.left < bounds.right) counter.CountRow(y);
    image.ShowProgress(1);
  }
  counter.Store(hist);
}

}  // namespace

int COrbImage::GetHistGram(int* const hist, int bins, double lo, double hi, int plane, CRect* rect, int progress,
                           int msgId) {
  orb::Bounds bounds = orb::ClampRectWeakly(rect, width, height);
  // Rows are the units, also where planes are joined.
  ShowProgressInit(progress, msgId == 0 ? kCounting : msgId, bounds.Rows());
  bool const brightness = plane == kBrightness && orb::HasBrightness(*this);
  int const counted = plane == kBrightness ? 0 : plane;
  // Without classes, or without the plane, every row is empty.
  bool const countable = bins > 0 && counted >= 0 && counted < planes;
  if (!countable || bounds.left > bounds.right) bounds.right = bounds.left;
  int const classes = std::max(bins, 0);
  if (brightness) {
    CountRows(*this, bounds, BrightnessCounter(*this, bounds, classes, lo, hi), hist);
  } else {
    CountRows(*this, bounds, PlaneCounter(*this, counted, bounds, classes, lo, hi), hist);
  }
  ShowProgressEnd(static_cast<char const*>(nullptr));
  return PeakScale(width, height, bins);
}

float COrbImage::GetAvrGrayRaw(int plane) {
  orb::LaneSum sum;
  for (int y = 0; y < height; ++y) sum.AddRow(GetImageAdr(0, y, plane, 1, nullptr), width);
  return static_cast<float>(sum.Total() / (width - 1) / (height - 1));
}

float COrbImage::GetAvrGray(int plane) { return static_cast<float>(GetAvrGrayRaw(plane) - levelMin[plane]); }

float COrbImage::GetAvrGray256f(int plane) { return To256(GetAvrGrayRaw(plane), plane); }

void COrbImage::CalcMinMax() {
  if (width < 1 || height < 1) return;
  for (int p = 0; p < std::min(planes, kExtremaPlanes); ++p) GetMinMax(p, &minPixel[p], &maxPixel[p]);
}
