#include <tests/reference/draw_text_reference.h>

#include <algorithm>

#include <tests/reference/composite_reference.h>

namespace orb::test::reference {

namespace {

COrbImage BlackPartOf(TextBox const& box, int f) {
  COrbImage mask(-32, box.width / f, box.height / f, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int y = 0; y < mask.GetHeight(); ++y) {
    for (int x = 0; x < mask.GetWidth(); ++x) {
      double v = 0.0;
      if (f == 1) {
        v = box.IsLetter(x, y) ? 0.0 : 1.0;
      } else {
        int black = 0;
        if (!box.IsLetter(2 * x, 2 * y)) ++black;
        if (!box.IsLetter(2 * x + 1, 2 * y)) ++black;
        if (!box.IsLetter(2 * x, 2 * y + 1)) ++black;
        if (!box.IsLetter(2 * x + 1, 2 * y + 1)) ++black;
        v = black * 0.25;
      }
      mask.SetPixelGrayRaw(x, y, static_cast<float>(v), 0);
    }
  }
  mask.CImage::SetLevel(0, 0.0, 1.0);
  return mask;
}

void Join(COrbImage& dst, COrbImage& first, COrbImage& second, CPoint pt, int mode) {
  CompositeArguments arguments;
  arguments.dx = pt.x;
  arguments.dy = pt.y;
  arguments.mode = mode;
  arguments.to256 = 1;
  Composite(dst, first, second, arguments, nullptr);
}

}  // namespace

int DrawText(COrbImage& dst, COrbImage& src, CPoint pt, std::string const& text, LOGFONT const& font,
             unsigned long colour, int antialias) {
  int const f = antialias != 0 ? 2 : 1;
  TextBox box;
  if (!RasterizeText(font, f, text, box)) return 0;
  COrbImage mask = BlackPartOf(box, f);
  Join(dst, src, mask, pt, 4);
  for (int y = 0; y < mask.GetHeight(); ++y) {
    for (int x = 0; x < mask.GetWidth(); ++x) {
      mask.SetPixelGrayRaw(x, y, static_cast<float>(1.0 - mask.GetPixelGrayRaw(x, y, 0)), 0);
    }
  }
  int const bytes[3] = {static_cast<int>(colour & 0xff), static_cast<int>((colour >> 8) & 0xff),
                        static_cast<int>((colour >> 16) & 0xff)};
  if (dst.GetDimension() > 2) {
    COrbImage overlay(-32, mask.GetWidth(), mask.GetHeight(), 3, 1.0, 0.0, 1, nullptr, nullptr);
    for (int p = 0; p < 3; ++p) {
      float const k = static_cast<float>(bytes[p] * 0.00392156862745098);
      for (int y = 0; y < mask.GetHeight(); ++y) {
        for (int x = 0; x < mask.GetWidth(); ++x) {
          overlay.SetPixelGrayRaw(x, y, k * mask.GetPixelGrayRaw(x, y, 0), p);
        }
      }
      overlay.CImage::SetLevel(p, 0.0, 1.0);
    }
    COrbImage copy(dst, nullptr, nullptr);
    Join(dst, copy, overlay, pt, 1);
  } else {
    int const sum = *std::max_element(bytes, bytes + 3) + *std::min_element(bytes, bytes + 3);
    double const v = sum * 0.00196078431372549;
    for (int y = 0; y < mask.GetHeight(); ++y) {
      for (int x = 0; x < mask.GetWidth(); ++x) {
        mask.SetPixelGrayRaw(x, y, static_cast<float>(mask.GetPixelGrayRaw(x, y, 0) * v), 0);
      }
    }
    COrbImage copy(dst, nullptr, nullptr);
    Join(dst, copy, mask, pt, 1);
  }
  return 1;
}

}  // namespace orb::test::reference
