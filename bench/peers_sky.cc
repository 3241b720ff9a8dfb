// Flat fields, masks and the sky model against peers, one 4096 x 4096 plane. Groups are named sky_*.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <string>
#include <vector>

#include <bench/bench_images.h>

namespace {

using orb::bench::Python;
using orb::bench::SkyImage;

constexpr int kSide = 4096;

ORB_COMPARISONS(sky_model) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  CImgSkyFlat dst;
  dst.CopyImage(src, nullptr, nullptr);
  Python python("import sep");
  python.SetFloats("plane", src.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  runner.Compare(
      "CImgSkyFlat, tiles of 64", 1.0, "SEP Background and back()", [&] { dst.Do(64, &src, 0); },
      [&] { python.Run("model = sep.Background(plane, bw=64, bh=64).back()"); }, 5);
}

ORB_COMPARISONS(sky_photutils) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  CImgSkyFlat dst;
  dst.CopyImage(src, nullptr, nullptr);
  Python python("from photutils.background import Background2D, MedianBackground");
  python.SetFloats("plane", src.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  runner.Compare(
      "CImgSkyFlat, tiles of 64", 0.2, "photutils Background2D", [&] { dst.Do(64, &src, 0); },
      [&] { python.Run("model = Background2D(plane, (64, 64), bkg_estimator=MedianBackground()).background"); }, 3);
}

ORB_COMPARISONS(sky_radial) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  CImgFlat dst;
  dst.CopyImage(src, nullptr, nullptr);
  CPoint const center(2047, 2047);
  double const falloff = -0.3 / (2048.0 * 2048.0 * 2.0);
  Python python("import numpy as np");
  python.SetFloats("plane", src.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  python.Run(
      "d2 = (np.arange(4096.0) - 2047.0) ** 2\n"
      "field = (d2[None, :] + d2[:, None]) * (-0.3 / (2048.0 * 2048.0 * 2.0)) + 1.0\n");
  auto const ours = [&] { dst.Do(&src, center, falloff, 1.0, nullptr, 0); };
  runner.Compare("CImgFlat, radial", 0.5, "numpy, one pass: a division by a ready flat field", ours,
                 [&] { python.Run("flat = plane / field"); });
  runner.Compare(
      "CImgFlat, radial", 0.5, "numpy, field and division", ours,
      [&] { python.Run("flat = plane / ((d2[None, :] + d2[:, None]) * (-0.3 / (2048.0 * 2048.0 * 2.0)) + 1.0)"); }, 3);
}

ORB_COMPARISONS(sky_mask) {
  COrbImage const src = SkyImage(kSide, kSide, 1);
  CImgMaskPattern mask;
  mask.CopyImage(src, nullptr, nullptr);
  mask.Make(1100.0, 0);
  CImgMaskPattern dst;
  dst.CopyImage(src, nullptr, nullptr);
  Python python("import numpy as np");
  python.SetFloats("mask", mask.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  python.SetFloats("plane", src.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  runner.Compare(
      "CImgMaskPattern::Do, in register", 0.5, "numpy, two passes: compare, where",
      [&] { dst.Do(&mask, 0.0, 0.0, 0.0, 0); },
      [&] { python.Run("kept = np.where(mask != 0, plane, np.float32(0))"); });
  COrbImage copy(src);
  python.SetFloats("copy", copy.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  runner.Compare(
      "CImgMaskPattern::Do, in register", 0.5, "numpy, two passes in place: compare, putmask",
      [&] { dst.Do(&mask, 0.0, 0.0, 0.0, 0); }, [&] { python.Run("np.putmask(copy, mask == 0, 0)"); });
  CImgMaskPattern made;
  made.CopyImage(src, nullptr, nullptr);
  runner.Compare(
      "CImgMaskPattern::Make", 0.5, "numpy, two passes: compare, convert", [&] { made.Make(1100.0, 0); },
      [&] { python.Run("made = (plane <= 1100.0).astype(np.float32)"); });
}

}  // namespace
