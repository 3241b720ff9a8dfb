#include <tests/reference/draw_line_reference.h>

#include <algorithm>
#include <cstdlib>

namespace orb::test::reference {

namespace {

struct Pen {
  COrbImage& dst;
  unsigned long colour;

  void Draw(long x, long y) const {
    if (x < 0 || y < 0 || x >= dst.GetWidth() || y >= dst.GetHeight()) return;
    int const r = static_cast<int>(colour & 0xff);
    int const g = static_cast<int>((colour >> 8) & 0xff);
    int const b = static_cast<int>((colour >> 16) & 0xff);
    if (dst.GetDimension() < 3) {
      double const gray = (std::max(r, std::max(g, b)) + std::min(r, std::min(g, b))) * 0.5;
      Store(x, y, 0, gray);
    } else {
      Store(x, y, 0, r);
      Store(x, y, 1, g);
      if (dst.GetPlanes() > 2) Store(x, y, 2, b);
    }
  }

  void Store(long x, long y, int p, double byte) const {
    double const raw = (dst.GetLevelMax(p) - dst.GetLevelMin(p)) * byte * 0.00392156862745098 + dst.GetLevelMin(p);
    dst.SetPixelGrayRaw(static_cast<int>(x), static_cast<int>(y), static_cast<float>(raw), p);
  }
};

bool ContinueLoop(long value, long end, long step) { return step < 0 ? value >= end : value <= end; }

}  // namespace

void DrawLine(COrbImage& dst, CPoint from, CPoint to, unsigned long colour) {
  Pen const pen{dst, colour};
  long const x1 = from.x;
  long const y1 = from.y;
  long const x2 = to.x;
  long const y2 = to.y;
  if (x1 == x2) {
    for (long y = std::min(y1, y2); y <= std::max(y1, y2); ++y) pen.Draw(x1, y);
    return;
  }
  if (y1 == y2) {
    for (long x = std::min(x1, x2); x <= std::max(x1, x2); ++x) pen.Draw(x, y1);
    return;
  }
  long const dx = std::abs(x2 - x1);
  long const dy = std::abs(y2 - y1);
  long const sx = x2 > x1 ? 1 : -1;
  long const sy = y2 > y1 ? 1 : -1;
  long x = x1;
  long y = y1;
  if (dx < dy) {
    long e = 2 * dx - dy;
    while (ContinueLoop(y, y2, sy)) {
      pen.Draw(x, y);
      if (e < 0) {
        e += 2 * dx;
      } else {
        e += 2 * (dx - dy);
        x += sx;
      }
      y += sy;
    }
  } else {
    long e = 2 * dy - dx;
    while (ContinueLoop(x, x2, sx)) {
      pen.Draw(x, y);
      if (e < 0) {
        e += 2 * dy;
      } else {
        e += 2 * (dy - dx);
        y += sy;
      }
      x += sx;
    }
  }
}

}  // namespace orb::test::reference
