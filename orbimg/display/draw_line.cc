#include <orbimg/display/draw_line.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <orbimg/display/drawing_color_internal.h>

namespace {

// One coordinate of the line, and the image's size along it. 64 bits: the ends may be any two numbers.
struct Side {
  std::int64_t from;
  std::int64_t to;
  std::int64_t size;

  std::int64_t Length() const { return to < from ? from - to : to - from; }
  std::int64_t Direction() const { return to < from ? -1 : 1; }
  bool Holds(std::int64_t position) const { return 0 <= position && position < size; }

  // The steps from the start on that lie on the image; first > last if none does.
  std::int64_t FirstStep() const { return std::max<std::int64_t>(0, to < from ? from - (size - 1) : -from); }
  std::int64_t LastStep() const { return std::min(Length(), to < from ? from : size - 1 - from); }
};

// The line's state before its step k: e = 2 * rise * (k + 1) - length - 2 * length * (steps across so far), which is
// not negative where the next step goes across too.
struct Bresenham {
  std::int64_t length;
  std::int64_t rise;
  std::int64_t error;
  std::int64_t across;

  // Goes to a step at once: rise * k / length, rounded half up, steps have gone across.
  Bresenham(std::int64_t initLength, std::int64_t initRise, std::int64_t step) : length(initLength), rise(initRise) {
    auto const way = static_cast<std::uint64_t>(rise) * static_cast<std::uint64_t>(step);  // below 2^64
    auto const rest = static_cast<std::int64_t>(way % static_cast<std::uint64_t>(length));
    bool const isUp = 2 * rest >= length;
    across = static_cast<std::int64_t>(way / static_cast<std::uint64_t>(length)) + (isUp ? 1 : 0);
    error = 2 * (isUp ? rest - length : rest) + 2 * rise - length;
  }

  void Advance() {
    bool const isAcross = error >= 0;
    error += 2 * (isAcross ? rise - length : rise);
    across += isAcross ? 1 : 0;
  }
};

// Calls draw(position along, position across) for each pixel on the image, along the longer side, which is not a point.
template <typename Draw>
void EachPixel(Side const& along, Side const& across, Draw draw) {
  std::int64_t const last = along.LastStep();
  std::int64_t step = along.FirstStep();
  if (step > last) return;
  for (Bresenham line(along.Length(), across.Length(), step); step <= last; ++step, line.Advance()) {
    std::int64_t const position = across.from + across.Direction() * line.across;
    if (across.Holds(position)) draw(along.from + along.Direction() * step, position);
  }
}

void FillPart(float* row, Side const& x, float value) {
  std::int64_t const begin = std::max<std::int64_t>(std::min(x.from, x.to), 0);
  std::int64_t const end = std::min(std::max(x.from, x.to) + 1, x.size);
  if (begin < end) std::fill(row + begin, row + end, value);
}

// `samples`: the plane's first. A level line is filled, which is the same and faster; it includes the single pixel.
void DrawInto(float* samples, Side const& x, Side const& y, float value) {
  std::ptrdiff_t const width = x.size;
  if (y.from == y.to) {
    if (y.Holds(y.from)) FillPart(samples + y.from * width, x, value);
  } else if (x.Length() < y.Length()) {
    EachPixel(y, x, [=](std::int64_t row, std::int64_t column) { samples[row * width + column] = value; });
  } else {
    EachPixel(x, y, [=](std::int64_t column, std::int64_t row) { samples[row * width + column] = value; });
  }
}

}  // namespace

void CImgDrawLine::Do(CPoint from, CPoint to, unsigned long colour) {
  if (dimension < 3) {
    DoMono(from, to, colour);
  } else {
    DoColor(from, to, colour);
  }
}

void CImgDrawLine::DoMono(CPoint from, CPoint to, unsigned long colour) {
  if (planes > 0) DrawPlane(0, from, to, orb::TwiceGrayByte(colour) * 0.5);
}

void CImgDrawLine::DoColor(CPoint from, CPoint to, unsigned long colour) {
  for (int p = 0; p < std::min(planes, orb::kColorPlanes); ++p) DrawPlane(p, from, to, orb::ColorByte(colour, p));
}

// No lock is released while the line is drawn, so one address serves the plane.
void CImgDrawLine::DrawPlane(int plane, CPoint from, CPoint to, double byte) {
  double const raw = (levelMax[static_cast<std::size_t>(plane)] - levelMin[static_cast<std::size_t>(plane)]) * byte *
                         orb::kInverse255 +
                     levelMin[static_cast<std::size_t>(plane)];
  DrawInto(GetImageAdr(0, 0, plane, 0, nullptr), Side{from.x, to.x, width}, Side{from.y, to.y, height},
           static_cast<float>(raw));
}
