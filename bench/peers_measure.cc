// Statistics of a plane against numpy; counts and widths of a thousand stars against photutils and SEP.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <cmath>
#include <vector>

#include <bench/bench_images.h>

namespace {

using orb::bench::Python;
using orb::bench::SkyImage;

constexpr int kSide = 2048;
constexpr int kRow = 32;  // stars in a row, and rows of stars
constexpr int kStars = 1000;
constexpr int kStep = kSide / kRow;  // pixels from star to star

struct Place {
  int x;
  int y;
};

Place PlaceOf(int star) { return Place{kStep / 2 + star % kRow * kStep, kStep / 2 + star / kRow * kStep}; }

// Stars of 3 pixels full width on the noise of a sky around 1000.
CImgPhotometry StarImage() {
  CImgPhotometry image;
  image.CopyImage(SkyImage(kSide, kSide, 1), nullptr, nullptr);
  constexpr double kVariance = 3.0 * 3.0 / 8.0 / 0.6931471805599453;
  for (int n = 0; n < kStars; ++n) {
    Place const at = PlaceOf(n);
    // Free of the sky's own points of light.
    for (int y = at.y - 30; y <= at.y + 30; ++y) {
      for (int x = at.x - 30; x <= at.x + 30; ++x) {
        double const square = (x - at.x) * (x - at.x) + (y - at.y) * (y - at.y);
        double const sky = std::fmod(static_cast<double>(image.GetPixelGrayRaw(x, y, 0)), 25.0) + 1000.0;
        image.SetPixelGrayRaw(x, y, static_cast<float>(sky + 5000.0 * std::exp(-square / 2.0 / kVariance)), 0);
      }
    }
  }
  return image;
}

void SetPlaces(Python& python) {
  python.Run("xy = numpy.array([(32.0 + n % 32 * 64, 32.0 + n // 32 * 64) for n in range(1000)])");
}

ORB_COMPARISONS(measure_region) {
  CImgPixelInfo image;
  image.CopyImage(SkyImage(4096, 4096, 1), nullptr, nullptr);
  double maximum[3];
  double minimum[3];
  double mean[3];
  double deviation[3];
  double median[3];
  Python python("import numpy");
  python.SetFloats("plane", image.GetImageAdr(0, 0, 0, 0, nullptr), {4096, 4096});
  runner.Compare(
      "CImgPixelInfo::Calc with median, whole plane", 0.3, "numpy min, max, mean, std and median",
      [&] { image.Calc(CRect(0, 0, 4096, 4096), maximum, minimum, mean, deviation, median); },
      [&] { python.Run("r = (plane.min(), plane.max(), plane.mean(), plane.std(), numpy.median(plane))"); }, 5);
}

// The radii of both peers are those that MeasureCount takes for a width of 3 pixels; it measures each star's width
// besides.
ORB_COMPARISONS(measure_count) {
  CImgPhotometry image = StarImage();
  std::vector<int> counts(kStars);
  auto const count = [&] {
    for (int n = 0; n < kStars; ++n) {
      counts[static_cast<std::size_t>(n)] = image.MeasureCount(PlaceOf(n).x, PlaceOf(n).y);
    }
  };
  Python python("import numpy, sep; from photutils.aperture import *");
  python.SetFloats("plane", image.GetImageAdr(0, 0, 0, 0, nullptr), {kSide, kSide});
  SetPlaces(python);
  runner.Compare("CImgPhotometry::MeasureCount, 1000 stars", 0.15, "photutils aperture photometry with annuli", count,
                 [&] {
                   python.Run(
                       "disk = CircularAperture(xy, 6.5); ring = CircularAnnulus(xy, 10.0, 12.0)\n"
                       "sky = ApertureStats(plane, ring, sum_method='center').mean\n"
                       "net = aperture_photometry(plane, disk, method='center')['aperture_sum'] - sky * disk.area");
                 });
  runner.Compare("CImgPhotometry::MeasureCount, 1000 stars", 1.0, "SEP sum_circle with its ring", count,
                 [&] { python.Run("net = sep.sum_circle(plane, xy[:, 0], xy[:, 1], 6.5, bkgann=(10.0, 12.0))"); });
}

// photutils measures a width of sources that were segmented before; the segments are made outside the measurement.
ORB_COMPARISONS(measure_width) {
  CImgPhotometry image = StarImage();
  Python python("import numpy; from photutils.segmentation import SourceCatalog, SegmentationImage");
  python.SetFloats("plane", image.GetImageAdr(0, 0, 0, 0, nullptr), {kSide, kSide});
  SetPlaces(python);
  python.Run(
      "labels = numpy.zeros(plane.shape, dtype=int)\n"
      "y, x = numpy.mgrid[-6:7, -6:7]\n"
      "for n, (cx, cy) in enumerate(xy.astype(int)):\n"
      "    labels[cy + y, cx + x] = numpy.where(x * x + y * y <= 42, n + 1, 0)\n"
      "segments = SegmentationImage(labels)\n"
      "net = plane - numpy.median(plane)\n");
  double mean = 0.0;
  runner.Compare(
      "PSF, 1000 stars", 0.02, "photutils SourceCatalog.fwhm",
      [&] {
        PSF profile(&image);
        for (int n = 0; n < kStars; ++n) profile.Add(CPoint(PlaceOf(n).x, PlaceOf(n).y));
        profile.GetMeanFWHM(&mean);
      },
      [&] { python.Run("widths = SourceCatalog(net, segments).fwhm"); }, 3);
}

}  // namespace
