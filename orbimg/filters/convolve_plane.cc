#include <orbimg/filters/convolve_plane_internal.h>

#include <algorithm>
#include <vector>

#include <orbimg/filters/window_rows_internal.h>

namespace orb {

namespace {

constexpr int kBandRows = 128;

// The rows first .. first + count - 1 of a plane.
class BandWalk {
 public:
  BandWalk(Run& initRun, COrbImage& initImage, COrbImage& initSource, int initPlane, int initRadius,
           RowConvolution& initConvolution)
      : run(initRun),
        image(initImage),
        source(initSource),
        plane(initPlane),
        radius(initRadius),
        convolution(initConvolution),
        rows(2 * static_cast<std::size_t>(radius) + kBandRows) {}

  void WalkBand(int first, int count) {
    if (convolution.TakesBands()) {
      SetRows(first, count);
      convolution.StartBand(rows.data(), count, run.Area().left, run.Area().right);
      source.UnlockAll();
    }
    for (int row = 0; row < count;) {
      bool const isFour = convolution.TakesFourRows() && count - row >= kRowsAtOnce;
      int const together = isFour ? kRowsAtOnce : 1;
      WalkRows(first + row, row, together);
      row += together;
    }
  }

 private:
  void SetRows(int y, int count) {
    SetMirroredRows(source, 0, std::int64_t{y} - radius, 2 * radius + count, plane, kLockRow, rows.data());
  }

  void WalkRows(int y, int row, int count) {
    auto const [left, top, right, bottom] = run.Area();
    float* out[kRowsAtOnce];
    for (int j = 0; j < count; ++j) out[j] = image.GetImageAdr(left, y + j, plane, kLockRow, nullptr);
    SetRows(y, count);
    if (count == kRowsAtOnce) {
      convolution.ComputeFourInBand(rows.data(), row, left, right, out);
    } else if (convolution.TakesBands()) {
      convolution.ComputeInBand(rows.data(), row, left, right, out[0]);
    } else {
      convolution.Compute(rows.data(), left, right, out[0]);
    }
    image.UnlockAll();
    source.UnlockAll();
    for (int j = 0; j < count; ++j) run.Tick();
  }

  Run& run;
  COrbImage& image;
  COrbImage& source;
  int plane;
  int radius;
  RowConvolution& convolution;
  std::vector<float*> rows;
};

}  // namespace

void ConvolvePlane(Run& run, COrbImage& image, COrbImage& source, int plane, int radius, RowConvolution& convolution) {
  Bounds const& area = run.Area();
  BandWalk walk(run, image, source, plane, radius, convolution);
  for (int y = area.top; y < area.bottom; y += kBandRows) walk.WalkBand(y, std::min(kBandRows, area.bottom - y));
}

}  // namespace orb
