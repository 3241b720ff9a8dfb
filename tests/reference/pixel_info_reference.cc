#include <tests/reference/pixel_info_reference.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace orb::test::reference {

void CalcPixelInfo(COrbImage& image, CRect rect, double* maximum, double* minimum, double* mean, double* deviation,
                   double* median) {
  for (int p = 0; p < 3; ++p) {
    maximum[p] = minimum[p] = mean[p] = deviation[p] = 0.0;
    if (median != nullptr) median[p] = 0.0;
  }
  int const n = (rect.right - rect.left) * (rect.bottom - rect.top);
  for (int p = 0; p < image.GetPlanes(); ++p) {
    double const corner = image.GetPixelGrayRaw(rect.left, rect.top, p);
    if (n == 1) {
      maximum[p] = minimum[p] = mean[p] = corner;
      if (median != nullptr) median[p] = corner;
      continue;
    }
    double sum = 0.0;
    maximum[p] = minimum[p] = corner;
    std::vector<double> sorted;
    for (int y = rect.top; y < rect.bottom; ++y) {
      for (int x = rect.left; x < rect.right; ++x) {
        double const v = image.GetPixelGrayRaw(x, y, p);
        if (v > maximum[p]) maximum[p] = v;
        if (v < minimum[p]) minimum[p] = v;
        sum += v;
        sorted.push_back(v);
      }
    }
    mean[p] = sum / n;
    double squares = 0.0;
    for (double const v : sorted) squares += (v - mean[p]) * (v - mean[p]);
    deviation[p] = std::sqrt(squares / n);
    if (median == nullptr) continue;
    std::sort(sorted.begin(), sorted.end());
    median[p] = sorted[static_cast<std::size_t>(n / 2)];
  }
}

}  // namespace orb::test::reference
