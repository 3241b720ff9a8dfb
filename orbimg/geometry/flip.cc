#include <orbimg/geometry/flip.h>

#include <algorithm>

#include <orbimg/geometry/move_kernels.h>
#include <orbimg/geometry/moved_rows_internal.h>

namespace {

constexpr int kUpsideDownMessage = 6127;
constexpr int kLeftToRightMessage = 6128;
constexpr int kUpsideDown = 0;
constexpr int kLeftToRight = 1;

}  // namespace

void CImgFlip::Do(int mode, COrbImage* src, int progress) {
  orb::Run run(*this, nullptr);
  run.Start(progress, mode == kUpsideDown ? kUpsideDownMessage : kLeftToRightMessage, height * planes);
  if (mode == kUpsideDown) {
    orb::EachMovedRow(*this, run, [&](float* row, int y, int p) {
      float const* const from = src->GetImageAdr(0, height - 1 - y, p, 1, nullptr);
      std::copy(from, from + width, row);
    });
  } else if (mode == kLeftToRight) {
    orb::EachMovedRow(*this, run, [&](float* row, int y, int p) {
      orb::ReverseRow(src->GetImageAdr(0, y, p, 1, nullptr), row, width);
    });
  }
  run.End();
}
