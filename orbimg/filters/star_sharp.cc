// CImgFilterSpecial::StarSharpFilter: an order statistic under a disk, at a real place between two ranks.
#include <cmath>
#include <limits>
#include <memory>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/filters/disk_rank_internal.h>
#include <orbimg/filters/edge_rules_internal.h>
#include <orbimg/filters/filter_special.h>
#include <orbimg/filters/star_sharp_kernels.h>

namespace {

constexpr int kMessage = 6165;

// The rows of a plane at the ranks that the rule needs; the others are null.
class RankRows {
 public:
  RankRows(COrbImage const& source, int plane, orb::Disk const& disk, int index, orb::StarSharpRule const& rule,
           orb::Bounds const& area) {
    auto const rank = [&](int wanted) {
      auto const rowOf = [&source, plane](int y) -> float const* {
        return source.GetImageAdr(0, orb::MirrorRow(y, source.GetHeight()), plane, 1, nullptr);
      };
      return orb::RankUnderDisk(disk, wanted, rowOf, source.GetWidth(), area);
    };
    constexpr int kMost = std::numeric_limits<int>::max();
    low = rank(index);
    if (!rule.isLast) high = rank(index == kMost ? kMost : index + 1);
    if (rule.NeedsTop()) top = rank(disk.Count() - 1);
  }

  float const* Low(int y) { return low->Row(y); }
  float const* High(int y) { return high ? high->Row(y) : nullptr; }
  float const* Top(int y) { return top ? top->Row(y) : nullptr; }

 private:
  std::unique_ptr<orb::SelectedRows> low, high, top;
};

}  // namespace

int CImgFilterSpecial::GetStarSharpFilterNum(double radius) { return orb::DiskOfRadius(radius).Count(); }

void CImgFilterSpecial::StarSharpFilter(double radius, double position, double threshold, int keepPeak, COrbImage* src,
                                        CRect* rect, int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows() * planes);
  orb::Disk const disk = orb::DiskOfRadius(radius);
  int const index = orb::TruncateToInt(std::floor(position));
  orb::StarSharpRule const rule{position - index, index == disk.Count() - 1, keepPeak != 0, threshold};
  for (int p = 0; p < planes; ++p) {
    RankRows ranks(*src, p, disk, index, rule, area);
    for (int y = area.top; y < area.bottom; ++y) {
      float const* const low = ranks.Low(y);
      float const* const high = ranks.High(y);
      float const* const top = ranks.Top(y);
      orb::SharpenStarsRow(src->GetImageAdr(area.left, y, p, 1, nullptr), low, high, top, area.Columns(), rule,
                           GetImageAdr(area.left, y, p, 0, nullptr));
      run.Tick();
    }
  }
  run.End();
}
