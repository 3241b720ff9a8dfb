#include <orbimg/geometry/scroll.h>

#include <algorithm>
#include <cstdint>

#include <orbimg/geometry/moved_rows_internal.h>

namespace {

constexpr int kMessage = 6146;
constexpr int kVertical = 0;

// The remainder that is not negative; 0 on a side that has no pixels.
int WrapRound(std::int64_t amount, int size) { return size < 1 ? 0 : static_cast<int>((amount % size + size) % size); }

}  // namespace

void CImgScroll::Do(int amount, int axis, COrbImage* src, int progress) {
  InitStdPt();
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, height * planes);
  if (axis == kVertical) {
    int const first = WrapRound(amount, height);  // comes to the top
    orb::EachMovedRow(*this, run, [&](float* row, int y, int p) {
      float const* const from = src->GetImageAdr(0, WrapRound(std::int64_t{first} + y, height), p, 1, nullptr);
      std::copy(from, from + width, row);
    });
  } else {
    int const first = WrapRound(-std::int64_t{amount}, width);  // comes to the left
    orb::EachMovedRow(*this, run, [&](float* row, int y, int p) {
      float const* const from = src->GetImageAdr(0, y, p, 1, nullptr);
      std::copy(from, from + first, std::copy(from + first, from + width, row));
    });
  }
  run.End();
}
