#include <tests/reference/resize_reference.h>

#include <algorithm>

namespace orb::test::reference {

void Resize(COrbImage& canvas, int anchor, float const* fill, COrbImage& src) {
  if (anchor < 0 || anchor > 8) anchor = 0;
  int const column = anchor % 3;
  int const row = anchor / 3;
  int const width = canvas.GetWidth();
  int const height = canvas.GetHeight();

  int dx = 0;
  if (column == 1) dx = (width - src.GetWidth()) / 2;
  if (column == 2) dx = width - src.GetWidth();
  int const dstX = dx < 0 ? 0 : dx;
  int const srcX = dx < 0 ? -dx : 0;
  int dy = 0;
  if (row == 1) dy = (height - src.GetHeight()) / 2;
  if (row == 2) dy = height - src.GetHeight();
  int const dstY = dy < 0 ? 0 : dy;
  int const srcY = dy < 0 ? -dy : 0;
  int const endX = std::min(width, src.GetWidth() - srcX + dstX);
  int const endY = std::min(height, src.GetHeight() - srcY + dstY);

  for (int p = 0; p < canvas.GetPlanes(); ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double const raw = fill[p] * canvas.GetLevelRange(0) * 0.00392156862745098 + canvas.GetLevelMin(0);
        canvas.SetPixelGrayRaw(x, y, static_cast<float>(raw), p);
      }
    }
    for (int y = dstY; y < endY; ++y) {
      for (int x = dstX; x < endX; ++x) {
        canvas.SetPixelGrayRaw(x, y, src.GetPixelGrayRaw(x - dstX + srcX, y - dstY + srcY, p), p);
      }
    }
  }
}

}  // namespace orb::test::reference
