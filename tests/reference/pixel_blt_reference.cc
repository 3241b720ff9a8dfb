#include <tests/reference/pixel_blt_reference.h>

#include <tests/reference/pixels_reference.h>

namespace orb::test::reference {

namespace {

int Limit(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

}  // namespace

void PixelBlt(COrbImage& dst, int dstX, int dstY, int width, int height, COrbImage& src, int srcX, int srcY,
              bool convert) {
  if (src.GetPlanes() != dst.GetPlanes()) return;
  dstX = Limit(dstX, 0, dst.GetWidth());
  dstY = Limit(dstY, 0, dst.GetHeight());
  srcX = Limit(srcX, 0, src.GetWidth());
  srcY = Limit(srcY, 0, src.GetHeight());
  if (width < 0) width = 0;
  if (width > dst.GetWidth() - dstX) width = dst.GetWidth() - dstX;
  if (width > src.GetWidth() - srcX) width = src.GetWidth() - srcX;
  if (height < 0) height = 0;
  if (height > dst.GetHeight() - dstY) height = dst.GetHeight() - dstY;
  if (height > src.GetHeight() - srcY) height = src.GetHeight() - srcY;
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double v = Sample(src, srcX + x, srcY + y, p);
        if (convert) v = ToRaw(dst, To256(src, v, p), p);
        dst.SetPixelGrayRaw(dstX + x, dstY + y, static_cast<float>(v), p);
      }
    }
  }
}

}  // namespace orb::test::reference
