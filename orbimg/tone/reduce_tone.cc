#include <orbimg/tone/reduce_tone.h>

#include <algorithm>

#include <orbimg/core/operator_run.h>
#include <orbimg/tone/reduce_tone_kernels.h>

namespace {

constexpr int kMessage = 6144;

}  // namespace

void CImgReduceTone::Do(int levels, COrbImage* source, CRect* rect, int progress) {
  int const n = levels < 2 ? 1 : std::min(levels, orb::kMostTones);
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  run.EachRow(*source, [&](orb::RowSpan const& row) {
    orb::ReduceToneRow(row.src, row.dst, row.count, orb::LevelOf(*this, row.plane), n);
  });
  run.End();
}
