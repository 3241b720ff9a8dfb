// The filters of CImgFilterMisc that take a rank under a disk.
#include <algorithm>
#include <cmath>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/filters/disk_rank_internal.h>
#include <orbimg/filters/edge_rules_internal.h>
#include <orbimg/filters/filter_misc.h>
#include <orbimg/filters/noise_cut_kernels.h>

namespace {

constexpr int kNoiseCutMessage = 6164;
constexpr int kMinMaxMessage = 6153;

orb::Disk DiskOf(double radius) { return orb::Disk(std::max(1, orb::TruncateToInt(std::ceil(radius))), radius); }

// Calls formula(RowSpan, values of that rank) for each row of each plane, and ticks after each.
template <typename Formula>
void EachRankedRow(orb::Run& run, COrbImage& image, COrbImage& source, orb::Disk const& disk, int index,
                   Formula formula) {
  orb::Bounds const& area = run.Area();
  for (int p = 0; p < image.GetPlanes(); ++p) {
    auto const rowOf = [&source, p](int y) -> float const* {
      return source.GetImageAdr(0, orb::MirrorRow(y, source.GetHeight()), p, 1, nullptr);
    };
    auto const ranked = orb::RankUnderDisk(disk, index, rowOf, source.GetWidth(), area);
    for (int y = area.top; y < area.bottom; ++y) {
      float const* const values = ranked->Row(y);
      formula(orb::RowSpan{source.GetImageAdr(area.left, y, p, 1, nullptr),
                           image.GetImageAdr(area.left, y, p, 0, nullptr), area.Columns(), y, p},
              values);
      run.Tick();
    }
  }
}

}  // namespace

void CImgFilterMisc::NoiseCut(double radius, int cutCool, double coolThreshold, int cutHot, double hotThreshold,
                              COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kNoiseCutMessage, run.Rows() * planes);
  orb::NoiseLimits const limits{cutCool != 0, coolThreshold, cutHot != 0, hotThreshold};
  orb::Disk const disk = DiskOf(radius);
  EachRankedRow(run, *this, *src, disk, disk.Count() / 2, [&](orb::RowSpan const& row, float const* medians) {
    orb::CutNoiseRow(row.src, medians, row.count, limits, row.dst);
  });
  run.End();
}

int CImgFilterMisc::GetMinMaxFilterNmax(double radius) { return DiskOf(radius).Count(); }

void CImgFilterMisc::MinMaxFilter(double radius, int index, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMinMaxMessage, run.Rows() * planes);
  EachRankedRow(run, *this, *src, DiskOf(radius), index, [](orb::RowSpan const& row, float const* values) {
    if (row.count > 0) std::copy_n(values, row.count, row.dst);
  });
  run.End();
}
