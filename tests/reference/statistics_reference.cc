#include <tests/reference/statistics_reference.h>

namespace orb::test::reference {

int GetHistGram(COrbImage& image, int* hist, int bins, double lo, double hi, int plane, CRect* rect) {
  int left = 0;
  int top = 0;
  int right = image.GetWidth();
  int bottom = image.GetHeight();
  if (rect != nullptr) {
    left = rect->left < 0 ? 0 : rect->left;
    top = rect->top < 0 ? 0 : rect->top;
    right = rect->right > right ? right : rect->right;
    bottom = rect->bottom > bottom ? bottom : rect->bottom;
  }
  if (image.GetDimension() < 3 && plane == -1) plane = 0;
  for (int i = 0; i < bins; ++i) hist[i] = 0;
  if (plane == -1) {
    lo = (lo - image.GetLevelMin(0)) / image.GetLevelRange(0) * 255.0;
    hi = (hi - image.GetLevelMin(0)) / image.GetLevelRange(0) * 255.0;
  }
  float min[3] = {};
  float s[3] = {};
  for (int p = 0; p < image.GetPlanes() && p < 3; ++p) {
    min[p] = static_cast<float>(image.GetLevelMin(p));
    s[p] = static_cast<float>(255.0 / image.GetLevelRange(p));
  }
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      double v = 0.0;
      if (plane == -1) {
        double const r = image.GetPixelGrayRaw(x, y, 0);
        double const g = image.GetPixelGrayRaw(x, y, 1);
        double const b = image.GetPixelGrayRaw(x, y, 2);
        v = 0.587 * (g - min[1]) * s[1] + 0.114 * (b - min[2]) * s[2] + 0.299 * (r - min[0]) * s[0];
      } else {
        v = image.GetPixelGrayRaw(x, y, plane);
      }
      if (!(lo <= v && v <= hi)) continue;
      double const position = (v - lo) / (hi - lo) * bins;
      int i = 0;
      if (position >= bins) {
        i = bins - 1;
      } else if (position > 0.0) {
        i = static_cast<int>(position);
        if (i > bins - 1) i = bins - 1;
      }
      ++hist[i];
    }
  }
  return static_cast<int>(static_cast<double>(image.GetWidth()) * image.GetHeight() / bins * 2);
}

float GetAvrGrayRaw(COrbImage& image, int plane) {
  double sum = 0.0;
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) sum += image.GetPixelGrayRaw(x, y, plane);
  }
  return static_cast<float>(sum / (image.GetWidth() - 1) / (image.GetHeight() - 1));
}

void FindMinMax(COrbImage& image, int plane, double& min, double& max) {
  min = image.GetPixelGrayRaw(0, 0, plane);
  max = image.GetPixelGrayRaw(0, 0, plane);
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      double const v = image.GetPixelGrayRaw(x, y, plane);
      if (v < min) min = v;
      if (v > max) max = v;
    }
  }
}

}  // namespace orb::test::reference
