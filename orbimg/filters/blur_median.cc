// CImgFilterBlur::MedianFilter: the order statistic of a disk that has no samples below its centre row.
#include <algorithm>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/disk_rank_internal.h>
#include <orbimg/filters/filter_blur.h>
#include <orbimg/filters/filter_radius_internal.h>

namespace {

constexpr int kMessage = 6120;

}  // namespace

void CImgFilterBlur::MedianFilter(double range, COrbImage* src, CRect* rect, int progress) {
  MedianFilter(orb::ForPlanes(*this, range).data(), src, rect, progress);
}

// Intended: cells below the centre row count as 0.0, those outside the image not at all.
void CImgFilterBlur::MedianFilter(double* const range, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) {
    orb::Disk const disk(orb::RadiusOfRange(range[p]), range[p]);
    auto const rowOf = [src, p](int y) -> float const* { return src->GetImageAdr(0, y, p, 1, nullptr); };
    auto const medians = orb::MedianUnderUpperHalf(disk, rowOf, src->GetWidth(), src->GetHeight(), area);
    for (int y = area.top; y < area.bottom; ++y) {
      float const* const row = medians->Row(y);
      std::copy(row, row + std::max(area.Columns(), 0), GetImageAdr(area.left, y, p, 0, nullptr));
      run.Tick();
    }
  }
  run.End();
}
