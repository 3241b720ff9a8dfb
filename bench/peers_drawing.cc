// Lines and text. No other library draws them into planar floats through levels: a line stands beside the plain loop
// over its samples, a text beside one composite of the whole image, of which it is two.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <cstdlib>
#include <string>

#include <bench/bench_images.h>

namespace {

using orb::bench::SkyImage;

constexpr int kSide = 4096;
constexpr unsigned long kColor = RGB(255, 220, 120);

// The line's samples one after the other, nothing checked. A level line is a loop of its own, as anyone would write it.
void PlainLine(float* samples, CPoint from, CPoint to, float value) {
  int const dx = std::abs(to.x - from.x);
  int const dy = std::abs(to.y - from.y);
  int const sx = to.x < from.x ? -1 : 1;
  std::ptrdiff_t const sy = to.y < from.y ? -kSide : kSide;
  float* p = samples + static_cast<std::ptrdiff_t>(from.y) * kSide + from.x;
  if (dy == 0) {
    for (int i = 0; i <= dx; ++i) p[i * sx] = value;
    return;
  }
  bool const isSteep = dx < dy;
  int const length = isSteep ? dy : dx;
  int const rise = isSteep ? dx : dy;
  std::ptrdiff_t const along = isSteep ? sy : sx;
  std::ptrdiff_t const across = isSteep ? sx : sy;
  int e = 2 * rise - length;
  for (int i = 0; i <= length; ++i) {
    *p = value;
    p += along;
    if (e < 0) {
      e += 2 * rise;
    } else {
      e += 2 * (rise - length);
      p += across;
    }
  }
}

// Many lines a run: one alone is over in microseconds.
void CompareLines(orb::bench::Runner& runner, std::string const& work, CPoint from, CPoint to, CPoint step) {
  constexpr int kLines = 200;
  CImgDrawLine image;
  image.CopyImage(SkyImage(kSide, kSide, 1), nullptr, nullptr);
  float* const samples = image.GetImageAdr(0, 0, 0, 0, nullptr);
  auto const each = [=](auto draw) {
    for (int i = 0; i < kLines; ++i) draw(CPoint(from.x + i * step.x, from.y + i * step.y), CPoint(to.x, to.y));
  };
  runner.Compare(
      work, 2.0, "plain loop over the samples", [&] { each([&](CPoint a, CPoint b) { image.Do(a, b, kColor); }); },
      [&] { each([&](CPoint a, CPoint b) { PlainLine(samples, a, b, 1200.0f); }); });
}

ORB_COMPARISONS(drawing_line) {
  CompareLines(runner, "200 lines of 4096, flat", {0, 0}, {kSide - 1, kSide / 5}, {0, 1});
  CompareLines(runner, "200 lines of 4096, steep", {0, 0}, {kSide / 5, kSide - 1}, {1, 0});
  CompareLines(runner, "200 lines of 4096, near 45 degrees", {0, 0}, {kSide - 1, kSide - 1}, {0, 1});
  CompareLines(runner, "4096, level", {0, 77}, {kSide - 1, 77}, {0, 0});
  CompareLines(runner, "4096, upright", {77, 0}, {77, kSide - 1}, {0, 0});
}

ORB_COMPARISONS(drawing_text) {
  std::string const caption = "M 31, 12 x 60 s, stacked by their median";
  CImgDrawText image;
  image.CopyImage(SkyImage(kSide, kSide, 3), nullptr, nullptr);
  CImgComposit composite;
  composite.CopyImage(image, nullptr, nullptr);
  COrbImage second(-32, 800, 60, 3, 1.0, 0.0, 1, nullptr, nullptr);
  LOGFONT font;
  font.lfHeight = -40;
  runner.Compare(
      "a caption of 40 letters, colour", 3.0, "one composite of the whole image",
      [&] { image.Do(&image, CPoint(100, 3900), caption, &font, kColor, 1); },
      [&] { composite.Do(&composite, &second, 100.0, 3900.0, 0.0, 1, 1); });
}

}  // namespace
