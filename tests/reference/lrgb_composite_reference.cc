#include <tests/reference/lrgb_composite_reference.h>

#include <cmath>

#include <tests/reference/color_reference.h>
#include <tests/reference/pixels_reference.h>
#include <tests/reference/sampler_reference.h>

namespace orb::test::reference {

namespace {

Place PlaceOf(Alignment const& alignment, double scale) {
  double const radians = alignment.angle * 0.017453292519943295;
  return Place{alignment.dx, alignment.dy, std::sin(radians), std::cos(radians), scale};
}

double Clipped(double v) {
  if (v <= 0) return 0;
  if (v >= 5000.0) return 5000.0;
  return v;
}

Color LabOf(Sampled const& s) {
  return RgbToLab(Clipped(s.value[0]) * 0.00392156862745098, Clipped(s.value[1]) * 0.00392156862745098,
                  Clipped(s.value[2]) * 0.00392156862745098);
}

void Write(COrbImage& dst, int x, int y, Color const& color) {
  double const c[3] = {color.r, color.g, color.b};
  for (int p = 0; p < 3; ++p) {
    double const raw = c[p] * 255.0 * dst.GetLevelRange(p) * 0.00392156862745098 + dst.GetLevelMin(p);
    dst.SetPixelGrayRaw(x, y, static_cast<float>(raw), p);
  }
}

void TakeLevels(COrbImage& dst, COrbImage& luminance) {
  for (int p = 0; p < 3; ++p) dst.SetLevel(p, luminance.GetLevelMin(0), luminance.GetLevelMax(0));
}

template <typename Pixel>
void EachPixel(COrbImage& dst, CRect* rect, Pixel pixel) {
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) pixel(x, y);
  }
}

}  // namespace

void LrgbComposite(COrbImage& dst, COrbImage& luminance, Alignment const& placeL, COrbImage& colour,
                   Alignment const& placeC, CRect* rect, int average) {
  TakeLevels(dst, luminance);
  EachPixel(dst, rect, [&](int x, int y) {
    Sampled const first = PixelRgb256f(luminance, x, y, PlaceOf(placeL, 1.0), 0.0);
    Sampled const second = PixelRgb256f(colour, x, y, PlaceOf(placeC, placeC.scale), 0.0);
    if (average != 0) {
      for (int p = 0; p < 3; ++p) {
        double const v =
            (first.value[p] + second.value[p]) * 0.5 * dst.GetLevelRange(p) * 0.00392156862745098 + dst.GetLevelMin(p);
        dst.SetPixelGrayRaw(x, y, static_cast<float>(v), p);
      }
      return;
    }
    Color const lum = LabOf(first);
    Color const chroma = LabOf(second);
    Write(dst, x, y, LabToRgb(lum.l, chroma.a, chroma.bb));
  });
}

void LabComposite(COrbImage& dst, COrbImage& lPlane, Alignment const& placeL, COrbImage& abPlane,
                  Alignment const& placeC, CRect* rect) {
  TakeLevels(dst, lPlane);
  EachPixel(dst, rect, [&](int x, int y) {
    Place const l = PlaceOf(placeL, 1.0);
    Place const c = PlaceOf(placeC, placeC.scale);
    float const lightness = static_cast<float>(PixelGrayRaw(lPlane, x, y, l, 0, 0.0, false).value[0]);
    double const a = PixelGrayRaw(abPlane, x, y, c, 0, 0.0, false).value[0];
    double const b = PixelGrayRaw(abPlane, x, y, c, 1, 0.0, false).value[0];
    Write(dst, x, y, LabToRgb(lightness, a, b));
  });
}

}  // namespace orb::test::reference
