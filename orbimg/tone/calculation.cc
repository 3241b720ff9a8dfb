#include <orbimg/tone/calculation.h>

#include <orbimg/core/operator_run.h>

namespace {

constexpr int kMessage = 6109;

enum Operation { kAdd = 0, kSubtract = 1, kMultiply = 2, kDivide = 3 };

template <typename Formula>
[[gnu::always_inline]] inline void EachColumn(float const* src, float* dst, std::ptrdiff_t count, Formula formula) {
  orb::EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) dst[x] = static_cast<float>(formula(static_cast<double>(src[x])));
  });
}

ORB_ROW_KERNEL void CalculateRow(float const* src, float* dst, std::ptrdiff_t count, double value, int operation,
                                 bool clamp) {
  switch (operation) {
    case kAdd:
      return EachColumn(src, dst, count, [value](double s) { return s + value; });
    case kSubtract:
      if (!clamp) return EachColumn(src, dst, count, [value](double s) { return s - value; });
      return EachColumn(src, dst, count, [value](double s) { return s - value < 0.0 ? 0.0 : s - value; });
    case kMultiply:
      return EachColumn(src, dst, count, [value](double s) { return s * value; });
    case kDivide:
      if (value != 0.0) return EachColumn(src, dst, count, [value](double s) { return s / value; });
      [[fallthrough]];
    default:
      return EachColumn(src, dst, count, [](double s) { return s; });
  }
}

}  // namespace

void CImgCalculation::Do(double value, int operation, int clamp, COrbImage* source, CRect* rect, int progress) {
  COrbImage const& from = source != nullptr ? *source : *this;
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  run.EachRow(
      from, [&](orb::RowSpan const& row) { CalculateRow(row.src, row.dst, row.count, value, operation, clamp != 0); });
  if (progress != 0) run.End();
}
