#include <orbimg/core/invert.h>

#include <orbimg/core/operator_run.h>

namespace {

constexpr int kMessage = 6124;

// t = (s - src.min) / src.range
// d = (255.0 - t * 255.0) * dst.range * (1 / 255) + dst.min
ORB_ROW_KERNEL void InvertRow(float const* src, float* dst, std::ptrdiff_t count, orb::Level from, orb::Level to) {
  orb::EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      double const t = (src[x] - from.min) / from.range;
      double const u = (255.0 - t * 255.0) * to.range;
      dst[x] = static_cast<float>(u * orb::kInverse255 + to.min);
    }
  });
}

}  // namespace

void CImgInvert::Do(COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  run.EachRow(*src, [&](orb::RowSpan const& row) {
    InvertRow(row.src, row.dst, row.count, orb::LevelOf(*src, row.plane), orb::LevelOf(*this, row.plane));
  });
  run.End();
}
