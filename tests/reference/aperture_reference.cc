#include <tests/reference/aperture_reference.h>

#include <cmath>
#include <cstdlib>

namespace orb::test::reference {

Aperture::Aperture(COrbImage& image, double x, double y, double oX, double oY, double iX, double iY)
    : cx(x), cy(y), outerX(oX), outerY(oY), innerX(iX), innerY(iY) {
  if (innerX >= 0.0) {
    if (outerX > 302.0) {
      innerX = 302.0 - (outerX - innerX);
      outerX = 302.0;
    }
  } else if (outerX > 302.0) {
    outerX = 302.0;
  }
  if (innerX >= 0.0) {
    if (outerY > 302.0) {
      innerY = 302.0 - (outerY - innerY);
      outerY = 302.0;
    }
  } else if (outerY > 302.0) {
    outerY = 302.0;
  }
  int const a = static_cast<int>(outerX);
  int const b = static_cast<int>(outerY);
  int const c = static_cast<int>(innerX);
  int const d = static_cast<int>(innerY);
  outerRow.assign(static_cast<std::size_t>(b + 1), -1);
  innerRow = outerRow;
  outerColumn.assign(static_cast<std::size_t>(a + 1), -1);
  innerColumn = outerColumn;
  Draw(a, b, outerRow, outerColumn);
  if (c >= 0) Draw(c, d, innerRow, innerColumn);
  Measure(image);
}

void Aperture::Draw(int p, int q, std::vector<int>& row, std::vector<int>& column) const {
  auto const enter = [&](int x, int y) {
    // An inner ellipse may be larger than the lists, which have the outer one's size, or have one negative radius.
    if (x < 0 || y < 0) return;
    if (y < static_cast<int>(row.size()) && row[static_cast<std::size_t>(y)] < x) row[static_cast<std::size_t>(y)] = x;
    if (x < static_cast<int>(column.size()) && column[static_cast<std::size_t>(x)] < y) {
      column[static_cast<std::size_t>(x)] = y;
    }
  };
  int i = 0;
  int j = p > q ? p : q;
  int e = j;
  if (j == 0) {
    enter(0, 0);
    return;
  }
  while (j >= i) {
    if (p == q) {
      enter(j, i);
      enter(i, j);
    }
    if (p < q) {
      enter(j * p / q, i);
      enter(i * p / q, j);
    }
    if (p > q) {
      enter(j, i * q / p);
      enter(i, j * q / p);
    }
    e = e - (2 * i + 1);
    if (e < 0) {
      e = e + 2 * j - 2;
      j = j - 1;
    }
    i = i + 1;
  }
}

bool Aperture::HasPixel(int x, int y) const {
  int const px = static_cast<int>(cx);
  int const py = static_cast<int>(cy);
  int const a = static_cast<int>(outerX);
  int const b = static_cast<int>(outerY);
  if (!CRect(px - a, py - b, px + a + 1, py + b + 1).PtInRect(CPoint(x, y))) return false;
  auto const dy = static_cast<std::size_t>(std::abs(y - py));
  int const dx = std::abs(x - px);
  if (dx > outerRow[dy]) return false;
  return dx > innerRow[dy];
}

void Aperture::Measure(COrbImage& image) {
  int const px = static_cast<int>(cx + 0.5);
  int const py = static_cast<int>(cy + 0.5);
  int const rx = static_cast<int>(outerX + 0.5);
  int const ry = static_cast<int>(outerY + 0.5);
  std::vector<double> counts;
  for (int y = py - ry; y < py + ry + 1; ++y) {
    for (int x = px - rx; x < px + rx + 1; ++x) {
      if (x < 0 || y < 0 || x >= image.GetWidth() || y >= image.GetHeight()) continue;
      if (!HasPixel(x, y)) continue;
      counts.push_back(std::trunc(image.GetPixel(x, y, 0)));
    }
  }
  num = static_cast<int>(counts.size());
  for (double const v : counts) sum += v;
  for (double const v : counts) variance += (v - sum / num) * (v - sum / num);
  variance /= num;
  deviation = std::sqrt(variance);
}

int MeasureCount(COrbImage& image, int x, int y, double f) {
  if (f <= 0.0) return 0;
  Aperture const star(image, x, y, 2 * f + 0.5, 2 * f + 0.5, -1.0, -1.0);
  double const inner = 3.5 * f - 0.5;
  Aperture const ring(image, x, y, inner + 2.0, inner + 2.0, inner, inner);
  double const net = star.sum - (ring.sum / ring.num) * star.num;
  return std::isnan(net) ? 0 : static_cast<int>(net);
}

double MeasureExtent(COrbImage& image, int x, int y, double sky) {
  double sum = 0.0;
  int inside = 0;
  for (int v = y - 1; v <= y + 1; ++v) {
    for (int u = x - 1; u <= x + 1; ++u) {
      if (u < 0 || v < 0 || u >= image.GetWidth() || v >= image.GetHeight()) continue;
      sum += image.GetPixelGrayRaw(u, v, 0) - sky;
      ++inside;
    }
  }
  if (inside < 9) return 0.0;
  return sum / (image.GetPixelGrayRaw(x, y, 0) - sky);
}

}  // namespace orb::test::reference
