#include <orbimg/geometry/crop.h>

#include <algorithm>
#include <cstdint>

#include <orbimg/core/truncate.h>
#include <orbimg/geometry/moved_rows_internal.h>

namespace {

constexpr int kMessage = 6172;

// From one side to the other, held at the range of int: what does not fit has no memory either.
int Span(int from, int to) { return orb::TruncateToInt(static_cast<double>(to) - from); }

// Row y of the source from `left` on, where it has one.
void CopyRow(COrbImage const& src, std::int64_t left, std::int64_t y, int plane, float* dst, std::int64_t count) {
  std::int64_t begin = std::clamp<std::int64_t>(-left, 0, count);
  std::int64_t end = std::clamp<std::int64_t>(src.GetWidth() - left, begin, count);
  if (y < 0 || y >= src.GetHeight()) begin = end = 0;
  std::fill(dst, dst + begin, 0.0f);
  std::fill(dst + end, dst + count, 0.0f);
  if (begin == end) return;
  float const* const from = src.GetImageAdr(static_cast<int>(left + begin), static_cast<int>(y), plane, 1, nullptr);
  std::copy(from, from + (end - begin), dst + begin);
}

}  // namespace

int CImgCrop::Do(CRect rect, COrbImage* src, int progress) {
  InitStdPt();
  if (Resize(Span(rect.left, rect.right), Span(rect.top, rect.bottom), progress) == 0) return 0;
  // Intended: the rows of the new image and those of the rectangle are both counted, and are the same.
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, orb::TruncateToInt(2.0 * height * planes));
  orb::EachMovedRow(*this, run, [&](float* row, int y, int p) {
    CopyRow(*src, rect.left, static_cast<std::int64_t>(rect.top) + y, p, row, width);
  });
  run.End();
  return 1;
}
