// CImgFilterBlur::MedianFilter: the order statistic of a disk that has no samples below its centre row.
#include <vector>

#include <orbimg/filters/edge_rules_internal.h>
#include <orbimg/filters/filter_blur.h>
#include <orbimg/filters/filter_radius_internal.h>
#include <orbimg/filters/sample_order_internal.h>
#include <orbimg/filters/window_run_internal.h>

namespace {

constexpr int kMessage = 6120;

struct Offset {
  int dx;
  int dy;
};

std::vector<Offset> DiskOffsets(int radius, double range) {
  CFilterKernel disk;
  disk.MakeDisk(radius, range);
  std::vector<Offset> offsets;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      if (disk.Value(dx, dy) == 1.0f) offsets.push_back({dx, dy});
    }
  }
  return offsets;
}

// 0.0 where no offset lies inside the image, which takes a range that is not a number.
float MedianAt(CFilterRows const& window, std::vector<Offset> const& offsets, int x, int y, std::vector<float>& found) {
  found.clear();
  for (Offset const& offset : offsets) {
    int const xx = x + offset.dx;
    int const yy = y + offset.dy;
    if (!orb::IsInside(xx, window.image->GetWidth()) || !orb::IsInside(yy, window.image->GetHeight())) continue;
    // Intended: Pixel gives 0.0 below the centre row.
    found.push_back(window.Pixel(xx, yy));
  }
  orb::SortSamples(found.data(), found.size());
  return found.empty() ? 0.0f : found[found.size() / 2];
}

}  // namespace

void CImgFilterBlur::MedianFilter(double range, COrbImage* src, CRect* rect, int progress) {
  MedianFilter(orb::ForPlanes(*this, range).data(), src, rect, progress);
}

void CImgFilterBlur::MedianFilter(double* const range, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) {
    int const r = orb::RadiusOfRange(range[p]);
    std::vector<Offset> const offsets = DiskOffsets(r, range[p]);
    std::vector<float> found;
    found.reserve(offsets.size());
    orb::EachWindowRow(run, *this, *src, p, r, [&](orb::WindowRow const& row) {
      for (int x = row.left; x < row.right; ++x) {
        row.dst[x - row.left] = MedianAt(row.window, offsets, x, row.y, found);
      }
    });
  }
  run.End();
}
