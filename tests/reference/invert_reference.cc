#include <tests/reference/invert_reference.h>

namespace orb::test::reference {

void Invert(COrbImage& dst, COrbImage& src, CRect* rect) {
  int left = 0;
  int top = 0;
  int right = dst.GetWidth();
  int bottom = dst.GetHeight();
  if (rect != nullptr) {
    left = rect->left < 0 ? 0 : rect->left > right ? right : rect->left;
    top = rect->top < 0 ? 0 : rect->top > bottom ? bottom : rect->top;
    right = rect->right < 0 ? 0 : rect->right > right ? right : rect->right;
    bottom = rect->bottom < 0 ? 0 : rect->bottom > bottom ? bottom : rect->bottom;
  }
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        double const t = (src.GetPixelGrayRaw(x, y, p) - src.GetLevelMin(p)) / src.GetLevelRange(p);
        double const u = (255.0 - t * 255.0) * dst.GetLevelRange(p);
        dst.SetPixelGrayRaw(x, y, static_cast<float>(u * 0.00392156862745098 + dst.GetLevelMin(p)), p);
      }
    }
  }
}

}  // namespace orb::test::reference
