#include <orbimg/tone/reduce_tone.h>

#include <algorithm>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/tone/reduce_tone_kernels.h>

namespace {

constexpr int kMessage = 6144;

}  // namespace

void CImgReduceTone::Do(int levels, COrbImage* source, CRect* rect, int progress) {
  int const n = levels < 2 ? 1 : std::min(levels, orb::kMostTones);
  std::vector<orb::ToneScale> scales;
  for (int p = 0; p < planes; ++p) scales.emplace_back(orb::LevelOf(*this, p), n);
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  run.EachRow(*source, [&](orb::RowSpan const& row) {
    scales[static_cast<std::size_t>(row.plane)].ReduceRow(row.src, row.dst, row.count);
  });
  run.End();
}
