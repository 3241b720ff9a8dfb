#include <orbimg/tone/color_balance.h>

#include <orbimg/core/operator_run.h>

namespace {

constexpr int kMessage = 6118;
constexpr int kColours = 3;

// v = (s - min) / range * 255.0
// d = range * (v + offset) * (1 / 255) + min
ORB_ROW_KERNEL void OffsetRow(float const* src, float* dst, std::ptrdiff_t count, orb::Level level, double offset) {
  orb::EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      dst[x] = static_cast<float>(level.ToRaw(level.To256(src[x]) + offset));
    }
  });
}

}  // namespace

void CImgColorBalance::Do(double red, double green, double blue, COrbImage* source, CRect* rect, int progress) {
  double const offsets[kColours] = {red, green, blue};
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  run.EachRow(*source, [&](orb::RowSpan const& row) {
    double const offset = row.plane < kColours ? offsets[row.plane] : 0.0;
    // Intended: the destination's levels of plane 0 on both sides, so that offsets of all colours are of one size.
    OffsetRow(row.src, row.dst, row.count, orb::LevelOf(*this, 0), offset);
  });
  run.End();
}
