#include <orbimg/filters/convolve_plane_internal.h>

#include <vector>

#include <orbimg/filters/window_rows_internal.h>

namespace orb {

void ConvolvePlane(Run& run, COrbImage& image, COrbImage& source, int plane, int radius, RowConvolution& convolution) {
  Bounds const& area = run.Area();
  std::vector<float*> rows(2 * static_cast<std::size_t>(radius) + kRowsAtOnce);
  int y = area.top;
  while (y < area.bottom) {
    bool const isFour = convolution.TakesFourRows() && area.bottom - y >= kRowsAtOnce;
    int const count = isFour ? kRowsAtOnce : 1;
    float* out[kRowsAtOnce];
    for (int j = 0; j < count; ++j) out[j] = image.GetImageAdr(area.left, y + j, plane, kLockRow, nullptr);
    SetMirroredRows(source, 0, std::int64_t{y} - radius, 2 * radius + count, plane, kLockRow, rows.data());
    if (isFour) {
      convolution.ComputeFour(rows.data(), area.left, area.right, out);
    } else {
      convolution.Compute(rows.data(), area.left, area.right, out[0]);
    }
    image.UnlockAll();
    source.UnlockAll();
    for (int j = 0; j < count; ++j) run.Tick();
    y += count;
  }
}

}  // namespace orb
