#include <tests/reference/moved_samples_reference.h>

#include <cmath>

#include <tests/reference/sampler_reference.h>

namespace orb::test::reference {

namespace {

// Every sample of `dst` becomes that of `src` where find(x, y) says.
template <typename Find>
void MoveSamples(COrbImage& dst, COrbImage& src, Find find) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = 0; y < dst.GetHeight(); ++y) {
      for (int x = 0; x < dst.GetWidth(); ++x) {
        CPoint const from = find(x, y);
        dst.SetPixelGrayRaw(x, y, src.GetPixelGrayRaw(from.x, from.y, p), p);
      }
    }
  }
}

void GrowTurned(int& width, int& height, double s, double c) {
  int const x0 = -(width / 2);
  int const x1 = width - width / 2 - 1;
  int const y0 = height / 2;
  int const y1 = height / 2 - height + 1;
  int const corners[4][2] = {{x0, y0}, {x1, y0}, {x0, y1}, {x1, y1}};
  int lowestX = 0;
  int highestX = 0;
  int lowestY = 0;
  int highestY = 0;
  for (auto const& corner : corners) {
    int const x = static_cast<int>(std::ceil(corner[0] * c - corner[1] * s));
    int const y = static_cast<int>(std::ceil(corner[1] * c + corner[0] * s));
    if (x < lowestX) lowestX = x;
    if (x > highestX) highestX = x;
    if (y < lowestY) lowestY = y;
    if (y > highestY) highestY = y;
  }
  width = highestX - lowestX + 1;
  height = highestY - lowestY + 1;
}

}  // namespace

void Flip(COrbImage& dst, int mode, COrbImage& src) {
  int const w = dst.GetWidth();
  int const h = dst.GetHeight();
  if (mode == 0) MoveSamples(dst, src, [&](int x, int y) { return CPoint(x, h - 1 - y); });
  if (mode == 1) MoveSamples(dst, src, [&](int x, int y) { return CPoint(w - 1 - x, y); });
}

int Rotate(COrbImage& dst, double angle, double const* fill, COrbImage& src, int resize) {
  if (angle == 0.0) return 1;
  dst.InitStdPt();
  dst.SetStdCtr(dst.GetWidth() / 2, dst.GetHeight() / 2);
  double const s = std::sin(angle * 0.017453292519943295);
  double const c = std::cos(angle * 0.017453292519943295);
  if (resize != 0) {
    int width = dst.GetWidth();
    int height = dst.GetHeight();
    GrowTurned(width, height, s, c);
    if (dst.ChangeSize(width, height, nullptr, nullptr) == 0) return 0;
  }
  double const dx = (dst.GetWidth() - src.GetWidth()) * 0.5;
  double const dy = (dst.GetHeight() - src.GetHeight()) * 0.5;
  CfPoint const before = src.GetStdCtr();
  src.SetStdCtr(src.GetWidth() / 2, src.GetHeight() / 2);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = 0; y < dst.GetHeight(); ++y) {
      for (int x = 0; x < dst.GetWidth(); ++x) {
        double const v = PixelGrayRaw(src, x, y, Place{dx, dy, s, c, 1.0}, p, fill[p], false).value[0];
        dst.SetPixelGrayRaw(x, y, static_cast<float>(v), p);
      }
    }
  }
  src.SetStdCtr(before);
  return 1;
}

int Rotate90(COrbImage& dst, int direction, COrbImage& src) {
  dst.InitStdPt();
  if (dst.ChangeSize(dst.GetHeight(), dst.GetWidth(), nullptr, nullptr) == 0) return 0;
  for (int p = 0; p < dst.GetPlanes(); ++p) dst.CImage::SetLevel(p, src.GetLevelMin(p), src.GetLevelMax(p));
  int const w = src.GetWidth();
  int const h = src.GetHeight();
  if (direction == 0) MoveSamples(dst, src, [&](int x, int y) { return CPoint(w - 1 - y, x); });
  if (direction != 0) MoveSamples(dst, src, [&](int x, int y) { return CPoint(y, h - 1 - x); });
  return 1;
}

void Rotate180(COrbImage& dst, COrbImage& src) {
  dst.InitStdPt();
  int const w = dst.GetWidth();
  int const h = dst.GetHeight();
  MoveSamples(dst, src, [&](int x, int y) { return CPoint(w - 1 - x, h - 1 - y); });
}

void Scroll(COrbImage& dst, int amount, int axis, COrbImage& src) {
  dst.InitStdPt();
  int const w = dst.GetWidth();
  int const h = dst.GetHeight();
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        if (axis == 0) {
          int const a = amount % h;
          dst.SetPixelGrayRaw(x, (h - a + y) % h, src.GetPixelGrayRaw(x, y, p), p);
        } else {
          int const a = amount % w;
          dst.SetPixelGrayRaw(x, y, src.GetPixelGrayRaw((w - a + x) % w, y, p), p);
        }
      }
    }
  }
}

int Crop(COrbImage& dst, CRect rect, COrbImage& src) {
  dst.InitStdPt();
  if (dst.ChangeSize(rect.right - rect.left, rect.bottom - rect.top, nullptr, nullptr) == 0) return 0;
  MoveSamples(dst, src, [&](int x, int y) { return CPoint(rect.left + x, rect.top + y); });
  return 1;
}

int SoftBinning(COrbImage& dst, int binX, int binY, int keepPartial, int scaleLevels, COrbImage& src) {
  dst.InitStdPt();
  double const across = static_cast<double>(dst.GetWidth()) / binX;
  double const down = static_cast<double>(dst.GetHeight()) / binY;
  int const width = static_cast<int>(keepPartial != 0 ? std::ceil(across) : std::floor(across));
  int const height = static_cast<int>(keepPartial != 0 ? std::ceil(down) : std::floor(down));
  if (dst.ChangeSize(width, height, nullptr, nullptr) == 0) return 0;
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        float sum = 0.0f;
        for (int v = y * binY; v < (y + 1) * binY && v < src.GetHeight(); ++v) {
          for (int u = x * binX; u < (x + 1) * binX && u < src.GetWidth(); ++u) {
            sum = static_cast<float>(static_cast<double>(sum) + src.GetPixelGrayRaw(u, v, p));
          }
        }
        dst.SetPixelGrayRaw(x, y, sum, p);
      }
    }
  }
  for (int p = 0; scaleLevels != 0 && p < dst.GetPlanes(); ++p) {
    dst.CImage::SetLevel(p, dst.GetLevelMin(p) * binX * binY, dst.GetLevelMax(p) * binX * binY);
  }
  return 1;
}

}  // namespace orb::test::reference
