#include <orbimg/geometry/resolution.h>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/geometry/cubic_grid_internal.h>
#include <orbimg/geometry/resolution_kernels.h>

namespace {

constexpr int kMessage = 6110;

// Where the columns or rows of the new size lie in the old one.
std::vector<double> LinearPositions(int oldSize, int newSize) {
  std::vector<double> positions;
  positions.reserve(static_cast<std::size_t>(newSize));
  for (int i = 0; i < newSize; ++i) positions.push_back(static_cast<double>(i) * oldSize / newSize);
  return positions;
}

// Walks the rows of every plane: makeRows(plane) gives what samples them, sample(rows, y, out) samples one. A source
// that has no samples leaves the image its zeros.
template <typename MakeRows, typename Sample>
void EachGridRow(COrbImage& image, COrbImage const& src, int progress, MakeRows makeRows, Sample sample) {
  orb::Run run(image, nullptr);
  int const height = image.GetHeight();
  bool const hasSamples = src.GetWidth() > 0 && src.GetHeight() > 0;
  run.Start(progress, kMessage, orb::TruncateToInt(static_cast<double>(image.GetPlanes()) * height));
  for (int p = 0; p < image.GetPlanes(); ++p) {
    auto rows = makeRows(p);
    for (int y = 0; y < height; ++y) {
      if (hasSamples) {
        orb::LockedRow const row(image, 0, y, p, false);
        sample(rows, y, row.Address());
      }
      run.Tick();
    }
  }
  run.End();
}

}  // namespace

int CImgResolution::ByLinear(COrbImage* src, int newWidth, int newHeight, int progress) {
  int const oldWidth = width;
  int const oldHeight = height;
  InitStdPt();
  if (Resize(newWidth, newHeight, progress) == 0) return 0;
  orb::GridColumns const columns(LinearPositions(oldWidth, newWidth), src->GetWidth());
  std::vector<double> const positions = LinearPositions(oldHeight, newHeight);
  EachGridRow(
      *this, *src, progress, [&](int plane) { return orb::GridRows(*src, columns, plane); },
      [&](orb::GridRows& rows, int y, float* out) {
        rows.Sample(orb::FindCell(positions[static_cast<std::size_t>(y)], src->GetHeight()), out);
      });
  return 1;
}

int CImgResolution::ByCubic(COrbImage* src, int newWidth, int newHeight, int progress) {
  int const oldWidth = width;
  int const oldHeight = height;
  InitStdPt();
  if (Resize(newWidth, newHeight, progress) == 0) return 0;
  std::vector<orb::CubicTaps> const across = orb::MakeCubicTaps(oldWidth, newWidth, src->GetWidth());
  std::vector<orb::CubicTaps> const down = orb::MakeCubicTaps(oldHeight, newHeight, src->GetHeight());
  orb::GridColumns const columns = orb::MainColumns(across, src->GetWidth());
  EachGridRow(
      *this, *src, progress, [&](int plane) { return orb::CubicRows(*src, across, columns, plane); },
      [&](orb::CubicRows& rows, int y, float* out) { rows.Sample(down[static_cast<std::size_t>(y)], out); });
  return 1;
}

int CImgResolution::Do(COrbImage* src, int newWidth, int newHeight, int progress) {
  return ByLinear(src, newWidth, newHeight, progress);
}
