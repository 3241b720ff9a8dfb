#include <orbimg/display/draw_text.h>

#include <algorithm>
#include <cstdint>
#include <new>

#include <orbimg/core/operator_run.h>
#include <orbimg/display/draw_text_kernels.h>
#include <orbimg/display/drawing_color_internal.h>
#include <orbimg/stacking/composite.h>
#include <orbimg/stacking/composite_modes_internal.h>
#include <platform/text_rasterizer.h>

namespace {

constexpr double kInverse510 = 0.00196078431372549;  // of twice a byte, to 0 to 1

void SetUnitLevels(COrbImage& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) image.CImage::SetLevel(p, 0.0, 1.0);
}

// The part of each pixel that is no letter, of a box whose letters are `scale` times as large. What is left over at the
// right and at the bottom is dropped.
void FillBackground(COrbImage& mask, orb::TextBox const& box, int scale) {
  double const share = 1.0 / (scale * scale);
  for (int y = 0; y < mask.GetHeight(); ++y) {
    float* const row = mask.GetImageAdr(0, y, 0, 0, nullptr);
    for (int x = 0; x < mask.GetWidth(); ++x) {
      int black = 0;
      for (int j = 0; j < scale; ++j) {
        for (int i = 0; i < scale; ++i) black += box.IsLetter(scale * x + i, scale * y + j) ? 0 : 1;
      }
      row[x] = static_cast<float>(black * share);
    }
  }
}

// The letters in their colour, over black. Intended: the factor of a colour image's plane is rounded to float before it
// is applied, the gray one is not.
double OverlayFactor(unsigned long colour, int plane, bool isColor) {
  if (!isColor) return orb::TwiceGrayByte(colour) * kInverse510;
  return static_cast<float>(orb::ColorByte(colour, plane) * orb::kInverse255);
}

void FillOverlay(COrbImage& overlay, COrbImage const& background, unsigned long colour) {
  for (int p = 0; p < overlay.GetPlanes(); ++p) {
    double const factor = OverlayFactor(colour, p, overlay.IsColor() != 0);
    for (int y = 0; y < overlay.GetHeight(); ++y) {
      float const* const from = background.GetImageAdr(0, y, 0, 1, nullptr);
      float* const to = overlay.GetImageAdr(0, y, p, 0, nullptr);
      // Quarters are exact in floats, so the coverage needs no rounding of its own.
      for (int x = 0; x < overlay.GetWidth(); ++x) to[x] = static_cast<float>((1.0 - from[x]) * factor);
    }
  }
}

// The part of the image under a box of that size with its corner at `pt`; empty where there is none.
CRect BoxOn(COrbImage const& image, CPoint pt, COrbImage const& box) {
  auto const hold = [](std::int64_t v, int size) { return static_cast<int>(std::clamp<std::int64_t>(v, 0, size)); };
  return CRect(hold(pt.x, image.GetWidth()), hold(pt.y, image.GetHeight()),
               hold(std::int64_t{pt.x} + box.GetWidth(), image.GetWidth()),
               hold(std::int64_t{pt.y} + box.GetHeight(), image.GetHeight()));
}

// Everything but the rectangle, through both composites.
void PassTwiceAround(COrbImage& image, COrbImage const& src, CRect const& rect) {
  bool const isColor = image.IsColor() != 0;
  int const planes = std::min(image.GetPlanes(), isColor ? orb::kColorPlanes : 1);
  int const width = image.GetWidth();
  for (int p = 0; p < planes; ++p) {
    orb::Level const from = orb::LevelOf(src, p);
    orb::Level const to = orb::LevelOf(image, p);
    for (int y = 0; y < image.GetHeight(); ++y) {
      float const* const in = src.GetImageAdr(0, y, p, 1, nullptr);
      float* const out = image.GetImageAdr(0, y, p, 0, nullptr);
      bool const isBeside = rect.top <= y && y < rect.bottom && rect.left < rect.right;
      int const left = isBeside ? rect.left : width;
      orb::PassTwiceRow(in, from, left, to, out);
      if (isBeside) orb::PassTwiceRow(in + rect.right, from, width - rect.right, to, out + rect.right);
    }
  }
}

// This image as a composite while this lives.
class AsComposite {
 public:
  explicit AsComposite(COrbImage& initImage) : image(initImage) { composite.Swap(&image); }
  AsComposite(AsComposite const&) = delete;
  AsComposite& operator=(AsComposite const&) = delete;
  ~AsComposite() { composite.Swap(&image); }

  void Join(COrbImage* first, COrbImage* second, CPoint pt, orb::CompositeMode mode, CRect rect) {
    composite.Do(first, second, pt.x, pt.y, 0.0, mode, 0.5, 1, 0, 0.95, 0, &rect, 0, -1);
  }

  COrbImage* Image() { return &composite; }

 private:
  COrbImage& image;
  CImgComposit composite;
};

}  // namespace

int CImgDrawText::Do(COrbImage* src, CPoint pt, CString const& text, LOGFONT* font, unsigned long colour,
                     int antialias) {
  int const scale = antialias != 0 ? 2 : 1;
  try {
    orb::TextBox box;
    if (!orb::RasterizeText(*font, scale, text, box)) return 0;
    COrbImage background(-32, box.width / scale, box.height / scale, 1, 1.0, 0.0, 1, nullptr, nullptr);
    FillBackground(background, box, scale);
    SetUnitLevels(background);
    COrbImage overlay(-32, background.GetWidth(), background.GetHeight(), IsColor() != 0 ? orb::kColorPlanes : 1, 1.0,
                      0.0, 1, nullptr, nullptr);
    FillOverlay(overlay, background, colour);
    SetUnitLevels(overlay);
    Compose(src, &background, &overlay, pt);
  } catch (std::bad_alloc const&) {
    return 0;
  }
  return 1;
}

// first = src * background, this = first + overlay, on the 256-scale. The composite reads its first image at the pixel
// that it writes, so the second one needs no copy of the first; and off the box neither needs more than its own sample.
void CImgDrawText::Compose(COrbImage* src, COrbImage* background, COrbImage* overlay, CPoint pt) {
  CRect const rect = BoxOn(*this, pt, *background);
  PassTwiceAround(*this, *src, rect);
  AsComposite image(*this);
  image.Join(src == this ? image.Image() : src, background, pt, orb::kMultiply, rect);
  image.Join(image.Image(), overlay, pt, orb::kAdd, rect);
}
