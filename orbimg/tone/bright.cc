#include <orbimg/tone/bright.h>

#include <orbimg/core/operator_run.h>

namespace {

constexpr int kMessage = 6115;

// v = (s - min) / range * 255.0
// w = v + (v - pivot) * contrast * (1 / 256) + brightness
// d = range * w * (1 / 255) + min
ORB_ROW_KERNEL void BrightRow(float const* src, float* dst, std::ptrdiff_t count, orb::Level level, double brightness,
                              double contrast, double pivot) {
  orb::EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      double const v = level.To256(src[x]);
      double const w = v + (v - pivot) * contrast * orb::kInverse256 + brightness;
      dst[x] = static_cast<float>(level.ToRaw(w));
    }
  });
}

}  // namespace

void CImgBright::Do(double brightness, double contrast, double pivot, COrbImage* source, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  run.EachRow(*source, [&](orb::RowSpan const& row) {
    // Intended: the destination's levels of plane 0 on both sides, so that all colours move alike.
    BrightRow(row.src, row.dst, row.count, orb::LevelOf(*this, 0), brightness, contrast, pivot);
  });
  run.End();
}
