#include <tests/reference/small_filter_reference.h>

#include <cmath>
#include <functional>

#include <tests/reference/filter_reference.h>
#include <tests/reference/sample_order_reference.h>

namespace orb::test::reference {

namespace {

int ShapeRadius(int shape) {
  if (shape == 0 || shape == 1) return 1;
  if (shape == 2) return 2;
  return 0;
}

bool IsCell(int shape, int dx, int dy) {
  if (shape == 0) return dx == 0 || dy == 0;
  if (shape == 2) return std::abs(dx) + std::abs(dy) != 4;
  return true;
}

// The column that stands for x + dx.
int SideColumn(int x, int dx, int width) {
  int side = dx;
  if (dx == -1 && x < 1) side = 1;
  if (dx == 1 && x >= width - 1) side = -1;
  if (dx == -2 && x < 2) side = 2;
  if (dx == 2 && x >= width - 2) side = -2;
  // A narrower image than that needs: the nearest column.
  return ClampedColumn(x + side, width);
}

float SampleAround(COrbImage& src, int x, int y, int dx, int dy, int plane) {
  return src.GetPixelGrayRaw(SideColumn(x, dx, src.GetWidth()), MirroredRow(y + dy, src.GetHeight()), plane);
}

std::vector<float> Gathered(COrbImage& src, int x, int y, int shape, int plane) {
  std::vector<float> samples;
  int const r = ShapeRadius(shape);
  for (int dy = -r; dy <= r; ++dy) {
    for (int dx = -r; dx <= r; ++dx) {
      if (IsCell(shape, dx, dy)) samples.push_back(SampleAround(src, x, y, dx, dy, plane));
    }
  }
  return samples;
}

void EachSample(COrbImage& dst, CRect* rect, std::function<float(int, int)> const& formula, int plane) {
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) dst.SetPixelGrayRaw(x, y, formula(x, y), plane);
  }
}

}  // namespace

SmallMean MeanAround(COrbImage& src, int x, int y, int shape, double weight, int plane) {
  double const c = src.GetPixelGrayRaw(x, y, plane);
  std::vector<float> const samples = Gathered(src, x, y, shape, plane);
  if (samples.size() == 1) return SmallMean{static_cast<float>(c), c};
  double sum = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (i != samples.size() / 2) sum += samples[i];
  }
  double const n = static_cast<double>(samples.size()) - 1;
  double k = 0.2;
  if (n == 8) k = 0.1111111111111111;
  if (n == 20) k = 0.047619047619047616;
  return SmallMean{static_cast<float>((sum * weight + c) / (weight * n + 1)), (sum + c) * k};
}

float RankAround(COrbImage& src, int x, int y, int shape, int index, int plane) {
  std::vector<float> samples = Gathered(src, x, y, shape, plane);
  SortAscending(samples);
  return samples[static_cast<std::size_t>(index)];
}

double SecondDifference(COrbImage& src, int x, int y, int shape, int plane) {
  auto const at = [&](int dx, int dy) -> double { return SampleAround(src, x, y, dx, dy, plane); };
  double const c = at(0, 0);
  double const direct = at(-1, 0) + at(1, 0) + at(0, -1) + at(0, 1);
  if (shape == 0) return 4 * c - direct;
  if (shape == 1) return 8 * c - (direct + at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1));
  if (shape == 2) return 4 * c - 2 * direct + (at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1));
  return at(0, -1);
}

float HighPass(COrbImage& src, int x, int y, int plane) {
  auto const at = [&](int column, int row) -> double {
    return src.GetPixelGrayRaw(ClampedColumn(column, src.GetWidth()), ClampedColumn(row, src.GetHeight()), plane);
  };
  double sum = 0;
  int count = 0;
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (dx == 0 && dy == 0) continue;
      sum += at(x + dx, y + dy);
      count++;
    }
  }
  return static_cast<float>(std::abs(at(x, y) * count - sum));
}

void SmallUnSharpMask(COrbImage& dst, COrbImage& src, double strength, int shape, double weight, double threshold,
                      int plane, CRect* rect) {
  EachSample(
      dst, rect,
      [&](int x, int y) {
        double const c = src.GetPixelGrayRaw(x, y, plane);
        SmallMean const mean = MeanAround(src, x, y, shape, weight, plane);
        double const b = mean.weighted;
        if (std::abs(mean.plain / c - 1.0) >= threshold) return static_cast<float>((c - b) * strength + c);
        return static_cast<float>(c);
      },
      plane);
}

void SmallMedian(COrbImage& dst, COrbImage& src, int shape, CRect* rect) {
  int const middle = shape == 0 ? 2 : shape == 1 ? 4 : shape == 2 ? 10 : 0;
  SmallMinMax(dst, src, shape, middle, rect);
}

void SmallMinMax(COrbImage& dst, COrbImage& src, int shape, int index, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    EachSample(
        dst, rect, [&](int x, int y) { return RankAround(src, x, y, shape, index, p); }, p);
  }
}

void SmallLaplacian(COrbImage& dst, COrbImage& src, int shape, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    EachSample(
        dst, rect,
        [&](int x, int y) {
          return static_cast<float>(std::abs(SecondDifference(src, x, y, shape, p)) + src.GetLevelMin(0));
        },
        p);
  }
}

}  // namespace orb::test::reference
