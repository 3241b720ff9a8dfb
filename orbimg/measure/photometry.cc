#include <orbimg/measure/photometry.h>

#include <orbimg/core/truncate.h>
#include <orbimg/measure/aperture_mark.h>
#include <orbimg/measure/star_profile.h>

namespace {

constexpr double kNoHole = -1.0;

}  // namespace

double CImgPhotometry::GetFWHM(int x, int y) {
  PSF profile(this);
  double fwhm = 0.0;
  if (profile.Add(CPoint(x, y)) == 0) return 0.0;
  return profile.GetMeanFWHM(&fwhm) == 0 ? 0.0 : fwhm;
}

int CImgPhotometry::MeasureCount(int x, int y) {
  double const f = GetFWHM(x, y);
  if (f <= 0.0) return 0;
  double const disk = 2.0 * f + 0.5;
  double const hole = 3.5 * f - 0.5;
  double const ring = hole + 2.0;
  CImgApertureMark star;
  star.Set(this, x, y, disk, disk, kNoHole, kNoHole);
  CImgApertureMark sky;
  sky.Set(this, x, y, ring, ring, hole, hole);
  return orb::TruncateToInt(star.GetSum() - sky.GetSum() / sky.GetNum() * star.GetNum());
}

double CImgPhotometry::MeasureExtent(int x, int y, double sky) {
  if (x < 1 || y < 1 || x >= width - 1 || y >= height - 1) return 0.0;
  double sum = 0.0;
  for (int row = y - 1; row <= y + 1; ++row) {
    float const* const samples = GetImageAdr(x - 1, row, 0, 1, nullptr);
    for (int i = 0; i < 3; ++i) sum += samples[i] - sky;
  }
  return sum / (GetPixelGrayRaw(x, y, 0) - sky);
}

int CImgPhotometry::MeasureCondensation(int, int, int) { return 9; }
