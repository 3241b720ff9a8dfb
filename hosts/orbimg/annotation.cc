#include <hosts/orbimg/annotation.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <new>

#include <fmt/format.h>
#include <hosts/io/host_error.h>

namespace orb::host {
namespace {

// Of the strokes around a star, in heights of its label: where they begin, and how long they are.
constexpr double kStrokeBegin = 0.35;
constexpr double kStrokeLength = 0.35;
constexpr int kLeastStroke = 4;      // pixels
constexpr double kFarthest = 1.0e9;  // pixels: beyond it nothing can be on an image

// What a text takes of an image.
struct TextExtent {
  int width;
  int height;
  int missing;
};

// Smooth letters are drawn twice as large first, which may round their widths otherwise.
TextExtent Measure(std::string const& text, TextStyle const& style) {
  int const scale = style.isSmooth ? 2 : 1;
  TextBox box;
  if (!RasterizeText(style.font, scale, text, box)) {
    throw HostError(Exit::kFailed,
                    fmt::format("text \"{}\": is too large to be drawn; make it smaller by --size", text));
  }
  return TextExtent{box.width / scale, box.height / scale, box.missing};
}

CRect Overlap(COrbImage const& image, CPoint pt, TextExtent const& extent) {
  auto const hold = [](std::int64_t v, int size) { return static_cast<int>(std::clamp<std::int64_t>(v, 0, size)); };
  return CRect(hold(pt.x, image.GetWidth()), hold(pt.y, image.GetHeight()),
               hold(std::int64_t{pt.x} + extent.width, image.GetWidth()),
               hold(std::int64_t{pt.y} + extent.height, image.GetHeight()));
}

// A part of the image, with its levels.
void CopyPart(COrbImage& image, CRect const& part, COrbImage& to) {
  to.Create(COrbImage(-32, part.Width(), part.Height(), image.GetPlanes(), 1.0, 0.0, 1, nullptr, nullptr), nullptr,
            nullptr);
  for (int p = 0; p < image.GetPlanes(); ++p) to.CImage::SetLevel(p, image.GetLevelMin(p), image.GetLevelMax(p));
  to.PixelBlt(0, 0, part.Width(), part.Height(), &image, part.left, part.top, 0);
}

bool IsOn(COrbImage const& image, CPoint p) {
  return 0 <= p.x && p.x < image.GetWidth() && 0 <= p.y && p.y < image.GetHeight();
}

// Whether a sample is another one than before is no answer: the colour may be the one that was there.
bool MayMeet(COrbImage const& image, CPoint a, CPoint b) {
  return std::max(a.x, b.x) >= 0 && std::min(a.x, b.x) < image.GetWidth() && std::max(a.y, b.y) >= 0 &&
         std::min(a.y, b.y) < image.GetHeight();
}

int Rounded(double v) { return static_cast<int>(std::floor(v + 0.5)); }

int LabelHeight(TextStyle const& style) {
  return style.font.lfHeight != 0 ? std::abs(style.font.lfHeight) : kDefaultLetterHeight;
}

}  // namespace

COLORREF ParseColor(std::string const& option, std::string const& text) {
  std::string const digits = text.starts_with('#') ? text.substr(1) : text;
  std::uint32_t number = 0;
  char const* const end = digits.data() + digits.size();
  auto const [rest, error] = std::from_chars(digits.data(), end, number, 16);
  if (digits.size() != 6 || error != std::errc() || rest != end) {
    throw HostError(
        Exit::kUsage,
        fmt::format("{}: {} is no colour; write red, green and blue as #RRGGBB, for example #ffd070", option, text));
  }
  return RGB(static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
             static_cast<std::uint8_t>(number));
}

void RequireFont(LOGFONT const& font) {
  if (FindFontFamily("").empty()) {
    throw HostError(Exit::kFailed,
                    "no text can be drawn: no font is installed, or orbimg was built without FreeType and Fontconfig; "
                    "install a font, for example fonts-dejavu-core");
  }
  if (!FindFontFamily(font.lfFaceName).empty()) return;
  throw HostError(Exit::kUsage,
                  fmt::format("--font: no font of the name {} is installed; give one that fc-list : family shows, "
                              "sans-serif, serif or monospace",
                              font.lfFaceName));
}

Drawn AnnotateLine(COrbImage& image, CPoint from, CPoint to, COLORREF color) {
  CImgDrawLine line;
  line.Swap(&image);
  line.Do(from, to, color);
  line.Swap(&image);
  return Drawn{MayMeet(image, from, to), 0};
}

// Drawn on a copy of what lies under its box: the operator takes a whole image through the levels, and back to other
// last bits.
Drawn AnnotateText(COrbImage& image, CPoint pt, std::string const& text, TextStyle const& style) {
  TextExtent const extent = Measure(text, style);
  CRect const part = Overlap(image, pt, extent);
  if (part.IsRectEmpty()) return Drawn{false, extent.missing};
  CImgDrawText under;
  CopyPart(image, part, under);
  LOGFONT font = style.font;
  if (under.Do(&under, CPoint(pt.x - part.left, pt.y - part.top), text, &font, style.color, style.isSmooth ? 1 : 0) ==
      0) {
    throw std::bad_alloc();
  }
  image.PixelBlt(part.left, part.top, part.Width(), part.Height(), &under, 0, 0, 0);
  return Drawn{true, extent.missing};
}

Drawn AnnotateStar(COrbImage& image, Position const& star, std::string const& label, TextStyle const& style) {
  if (!(std::abs(star.x) < kFarthest && std::abs(star.y) < kFarthest)) return Drawn{};
  CPoint const middle(Rounded(star.x), Rounded(star.y));
  if (!IsOn(image, middle)) return Drawn{};
  int const begin = std::max(kLeastStroke, Rounded(kStrokeBegin * LabelHeight(style)));
  int const end = begin + std::max(kLeastStroke, Rounded(kStrokeLength * LabelHeight(style)));
  for (int const side : {-1, 1}) {
    AnnotateLine(image, CPoint(middle.x + side * begin, middle.y), CPoint(middle.x + side * end, middle.y),
                 style.color);
    AnnotateLine(image, CPoint(middle.x, middle.y + side * begin), CPoint(middle.x, middle.y + side * end),
                 style.color);
  }
  if (label.empty()) return Drawn{true, 0};
  TextExtent const extent = Measure(label, style);
  int const gap = begin / 2;
  bool const fits = middle.x + end + gap + extent.width <= image.GetWidth();
  int const left = fits ? middle.x + end + gap : middle.x - end - gap - extent.width;
  return AnnotateText(image, CPoint(left, middle.y - extent.height / 2), label, style);
}

}  // namespace orb::host
