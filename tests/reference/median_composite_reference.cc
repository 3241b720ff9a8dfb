#include <tests/reference/median_composite_reference.h>

#include <cmath>
#include <cstdlib>

namespace orb::test::reference {

namespace {

int CompareNeverEqual(void const* a, void const* b) {
  return *static_cast<double const*>(a) >= *static_cast<double const*>(b) ? 1 : -1;
}

}  // namespace

void MedianLine(COrbImage& destination, std::vector<RegisteredFrame> const& frames, int y) {
  for (int p = 0; p < destination.GetPlanes(); ++p) {
    for (int x = 0; x < destination.GetWidth(); ++x) {
      std::vector<double> values;
      for (RegisteredFrame const& frame : frames) {
        double const sine = std::sin(frame.angle * 0.017453292519943295);
        double const cosine = std::cos(frame.angle * 0.017453292519943295);
        int outside = 0;
        double const value = frame.image->GetPixelGrayRaw(x, y, frame.dx, frame.dy, sine, cosine, 1.0, p, 0.0, 0,
                                                          &outside, nullptr, nullptr);
        if (!outside) values.push_back(value);
      }
      double result = 0.0;
      if (values.size() == 1) {
        result = values[0];
      } else if (values.size() > 1) {
        std::qsort(values.data(), values.size(), sizeof(double), CompareNeverEqual);
        result = values[values.size() / 2];
      }
      destination.SetPixelGrayRaw(x, y, static_cast<float>(result), p);
    }
  }
}

}  // namespace orb::test::reference
