// Between mono and colour, the row shift, another size.
#include <cstdint>
#include <cstring>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/resources/message_table.h>
#include <platform/assert.h>

namespace {

constexpr int kChangingPlanes = 6170;
constexpr int kChangingSize = 6111;
constexpr int kToGray = 6129;
constexpr int kToColor = 6130;

// v = (G - min1) / range1 * 255 * 0.587 + (B ...) * 0.114 + (R ...) * 0.299, then back by the destination's plane 0.
ORB_ROW_KERNEL void GrayRow(float const* red, float const* green, float const* blue, float* dst, std::ptrdiff_t count,
                            orb::Level r, orb::Level g, orb::Level b, orb::Level to) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const v =
        g.To256(green[x]) * orb::kGreenWeight + b.To256(blue[x]) * orb::kBlueWeight + r.To256(red[x]) * orb::kRedWeight;
    dst[x] = static_cast<float>(to.ToRaw(v));
  }
}

}  // namespace

int COrbImage::ToColor() {
  if (dimension > 2) return 1;
  double const min = levelMin[0];
  double const max = levelMax[0];
  if (ChangePlanes(3, progressWnd, LoadString(kChangingPlanes)) == 0) return 0;
  for (int p = 0; p < 3; ++p) SetLevel(p, min, max);
  return 1;
}

int COrbImage::Resize(int newWidth, int newHeight, int progress) {
  if (progress == 0) return ChangeSize(newWidth, newHeight, nullptr, nullptr);
  return ChangeSize(newWidth, newHeight, progressWnd, LoadString(kChangingSize));
}

int COrbImage::ToColor(COrbImage* src, int progress) {
  if (dimension > 2) return 1;
  if (ToColor() == 0) return 0;
  orb::Run run(*this, nullptr);
  run.Start(progress, kToColor, height);
  std::size_t const bytes = static_cast<std::size_t>(width) * sizeof(float);
  for (int y = 0; y < height; ++y) {
    for (int p = 0; p < 3; ++p) {
      // Raw copy: no level conversion.
      float const* from = src->GetImageAdr(0, y, src->IsColor() ? p : 0, 1, nullptr);
      float* to = GetImageAdr(0, y, p, 0, nullptr);
      if (bytes > 0) std::memmove(to, from, bytes);
    }
    run.Tick();
  }
  run.End();
  return 1;
}

int COrbImage::ToGray() {
  if (dimension < 3) return 1;
  double const min = levelMin[0];
  double const max = levelMax[0];
  if (ChangePlanes(1, progressWnd, LoadString(kChangingPlanes)) == 0) return 0;
  SetLevel(0, min, max);
  return 1;
}

int COrbImage::ToGray(COrbImage* src, int progress) {
  if (dimension < 3) return 1;
  ORB_ASSERT(src != this && src->planes >= 3);
  if (ToGray() == 0) return 0;
  orb::Run run(*this, nullptr);
  run.Start(progress, kToGray, height);
  for (int y = 0; y < height; ++y) {
    GrayRow(src->GetImageAdr(0, y, 0, 1, nullptr), src->GetImageAdr(0, y, 1, 1, nullptr),
            src->GetImageAdr(0, y, 2, 1, nullptr), GetImageAdr(0, y, 0, 0, nullptr), width, orb::LevelOf(*src, 0),
            orb::LevelOf(*src, 1), orb::LevelOf(*src, 2), orb::LevelOf(*this, 0));
    run.Tick();
  }
  run.End();
  return 1;
}

void COrbImage::LiftUp(int rows) {
  if (rows == 0) return;
  std::size_t const bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(GetBytesPixel());
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      std::int64_t const to = static_cast<std::int64_t>(y) - rows;
      // A negative number of rows would push rows out at the bottom; they are dropped.
      if (to < 0 || to >= height || bytes == 0) continue;
      std::memcpy(GetImageAdr(0, static_cast<int>(to), p, 0, nullptr), GetImageAdr(0, y, p, 1, nullptr), bytes);
    }
  }
}
