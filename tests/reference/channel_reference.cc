#include <tests/reference/channel_reference.h>

#include <cmath>

#include <tests/reference/sampler_reference.h>

namespace orb::test::reference {

namespace {

int PlaneOf(Exposure const& exposure, int plane) { return exposure.image->IsColor() ? plane : 0; }

float SampleOf(Exposure const& exposure, int x, int y, int plane, int outside) {
  double const radians = exposure.angle * 0.017453292519943295;
  Place const place{exposure.dx, exposure.dy, std::sin(radians), std::cos(radians), 1.0};
  Sampled const sampled = PixelGrayRaw(*exposure.image, x, y, place, PlaneOf(exposure, plane), outside, false);
  return static_cast<float>(sampled.value[0]);
}

void TakeLevel(COrbImage& dst, int plane, Exposure const& exposure) {
  int const p = PlaneOf(exposure, plane);
  dst.CImage::SetLevel(plane, exposure.image->GetLevelMin(p), exposure.image->GetLevelMax(p));
}

void TakeMeanLevel(COrbImage& dst, int plane, Exposure const& a, int planeA, Exposure const& b, int planeB) {
  int const pa = PlaneOf(a, planeA);
  int const pb = PlaneOf(b, planeB);
  dst.CImage::SetLevel(plane, (a.image->GetLevelMin(pa) + b.image->GetLevelMin(pb)) / 2,
                       (a.image->GetLevelMax(pa) + b.image->GetLevelMax(pb)) / 2);
}

}  // namespace

void RgbComposite(COrbImage& dst, Exposure const& red, Exposure const& green, Exposure const& blue, CRect* rect,
                  int outside, int const* planes) {
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  TakeLevel(dst, 0, red);
  TakeLevel(dst, 1, green);
  TakeLevel(dst, 2, blue);
  bool const isPartial = planes != nullptr && planes[0] == 0;
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      if (!isPartial) dst.SetPixelGrayRaw(x, y, SampleOf(red, x, y, 0, outside), 0);
      if (!isPartial || planes[1] != 0) dst.SetPixelGrayRaw(x, y, SampleOf(green, x, y, 1, outside), 1);
      if (!isPartial || planes[2] != 0) dst.SetPixelGrayRaw(x, y, SampleOf(blue, x, y, 2, outside), 2);
    }
  }
}

void CmyComposite(COrbImage& dst, Exposure const& cyan, Exposure const& magenta, Exposure const& yellow, CRect* rect,
                  int outside) {
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  TakeMeanLevel(dst, 0, yellow, 1, magenta, 0);
  TakeMeanLevel(dst, 1, cyan, 2, yellow, 1);
  TakeMeanLevel(dst, 2, cyan, 2, magenta, 0);
  for (int row = top; row < bottom; ++row) {
    for (int x = left; x < right; ++x) {
      double const c = SampleOf(cyan, x, row, 2, outside);
      double const m = SampleOf(magenta, x, row, 0, outside);
      double const y = SampleOf(yellow, x, row, 1, outside);
      dst.SetPixelGrayRaw(x, row, static_cast<float>(m + y - c), 0);
      dst.SetPixelGrayRaw(x, row, static_cast<float>(c + y - m), 1);
      dst.SetPixelGrayRaw(x, row, static_cast<float>(c + m - y), 2);
    }
  }
}

void Separation(COrbImage& dst, COrbImage& source, int channel, bool isSum) {
  if (channel < 0 || channel > 5) return;
  // cyan, magenta, yellow
  int const samplePlanes[3][2] = {{2, 1}, {2, 0}, {1, 0}};
  int const levelPlanes[3][2] = {{2, 1}, {2, 0}, {2, 0}};
  double const divisor = isSum ? 1.0 : 2.0;
  if (channel < 3) {
    dst.CImage::SetLevel(0, source.GetLevelMin(channel), source.GetLevelMax(channel));
  } else {
    int const* const p = levelPlanes[channel - 3];
    dst.CImage::SetLevel(0, (source.GetLevelMin(p[0]) + source.GetLevelMin(p[1])) / divisor,
                         (source.GetLevelMax(p[0]) + source.GetLevelMax(p[1])) / divisor);
  }
  for (int y = 0; y < dst.GetHeight(); ++y) {
    for (int x = 0; x < dst.GetWidth(); ++x) {
      if (channel < 3) {
        dst.SetPixelGrayRaw(x, y, source.GetPixelGrayRaw(x, y, channel), 0);
        continue;
      }
      double const p = source.GetPixelGrayRaw(x, y, samplePlanes[channel - 3][0]);
      double const q = source.GetPixelGrayRaw(x, y, samplePlanes[channel - 3][1]);
      dst.SetPixelGrayRaw(x, y, static_cast<float>((p + q) / divisor), 0);
    }
  }
}

}  // namespace orb::test::reference
