#include <hosts/orbimg/aperture_measurement.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace orb::host {
namespace {

constexpr double kNoHole = -1.0;
constexpr int kSampleBits = 30;  // of the largest sample, so that sums stay whole numbers that a double can hold

double ScaleFor(COrbImage const& image) {
  double largest = 0.0;
  for (int y = 0; y < image.GetHeight(); ++y) {
    float const* const row = image.GetImageAdr(0, y, 0, 1, nullptr);
    for (int x = 0; x < image.GetWidth(); ++x) {
      double const v = std::abs(static_cast<double>(row[x]));
      if (std::isfinite(v)) largest = std::max(largest, v);
    }
  }
  return largest > 0.0 ? std::ldexp(1.0, kSampleBits - std::ilogb(largest)) : 1.0;
}

}  // namespace

CPoint PixelOf(Position const& at) {
  return CPoint(TruncateToInt(std::floor(at.x + 0.5)), TruncateToInt(std::floor(at.y + 0.5)));
}

ApertureCounter::ApertureCounter(COrbImage const& frame) : scale(ScaleFor(frame)) {
  WrapSamples(view, frame.GetImageAdr(0, 0, 0, 1, nullptr), frame.GetWidth(), frame.GetHeight(), frame.GetPlanes());
  view.SetBscale(scale);
}

SampleStatistics ApertureCounter::ClipRing(CImgApertureMark& ring, CPoint centre, double outer) {
  int const reach = static_cast<int>(outer) + 1;
  std::vector<float> samples;
  for (int y = std::max(centre.y - reach, 0); y <= std::min(centre.y + reach, view.GetHeight() - 1); ++y) {
    for (int x = std::max(centre.x - reach, 0); x <= std::min(centre.x + reach, view.GetWidth() - 1); ++x) {
      if (ring.PtInRgn(x, y) != 0) samples.push_back(view.GetPixelGrayRaw(x, y, 0));
    }
  }
  return ClipSamples(samples);
}

ApertureCount ApertureCounter::Count(Position const& at, ApertureRadii const& radii, RingSky ringSky) {
  CPoint const centre = PixelOf(at);
  CImgApertureMark disk;
  disk.Set(&view, centre.x, centre.y, radii.disk, radii.disk, kNoHole, kNoHole);
  CImgApertureMark ring;
  ring.Set(&view, centre.x, centre.y, radii.outer, radii.outer, radii.inner, radii.inner);
  ApertureCount found;
  found.pixels = disk.GetNum();
  found.sum = disk.GetSum() / scale;
  found.skyPixels = ring.GetNum();
  found.sky = ring.GetSum() / scale / ring.GetNum();
  found.skyNoise = ring.GetStd() / scale;
  if (ringSky == RingSky::kClipped) {
    SampleStatistics const clipped = ClipRing(ring, centre, radii.outer);
    found.skyPixels = static_cast<int>(clipped.samples);
    found.sky = clipped.level;
    found.skyNoise = clipped.noise;
  }
  found.net = found.sum - found.sky * found.pixels;
  double const n = found.pixels;
  found.error = found.skyNoise * std::sqrt(n + n * n / found.skyPixels);
  return found;
}

}  // namespace orb::host
