// Lab planes, the LRGB composite and the colour enhancement against scikit-image's conversions, 2048 x 2048 x 3.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <memory>
#include <string>

#include <bench/bench_images.h>

namespace {

using orb::bench::Python;
using orb::bench::SkyImage;

constexpr int kSide = 2048;

// The warnings are of colours beyond those that RGB holds, which the peer cuts.
constexpr char kPeer[] =
    "import warnings; warnings.simplefilter('ignore')\n"
    "from skimage.color import rgb2lab, lab2rgb";

// The peer's view of an image: pixel after pixel, in double, 0 to 1 by the levels, which is what its conversions take.
void GiveColours(Python& python, std::string const& name, COrbImage const& image) {
  python.SetFloats("samples", image.GetImageAdr(0, 0, 0, 0, nullptr), {3, kSide, kSide});
  python.Run(name + " = numpy.ascontiguousarray(((samples.astype(float) - 900) / 600).clip(0, 1).transpose(1, 2, 0))");
}

ORB_COMPARISONS(lab_planes) {
  COrbImage image = SkyImage(kSide, kSide, 3, 1);
  Python python(kPeer);
  GiveColours(python, "rgb", image);
  runner.Compare(
      "MakeLabPlane", 0.35, "scikit-image rgb2lab", [&] { std::unique_ptr<COrbImage>(image.MakeLabPlane()); },
      [&] { python.Run("lab = rgb2lab(rgb)"); }, 3);
}

ORB_COMPARISONS(lab_lrgb) {
  COrbImage luminance = SkyImage(kSide, kSide, 3, 1);
  COrbImage colour = SkyImage(kSide, kSide, 3, 2);
  CImgLrgbCmpst dst;
  dst.CopyImage(colour, nullptr, nullptr);
  Python python(kPeer);
  GiveColours(python, "first", luminance);
  GiveColours(python, "second", colour);
  runner.Compare(
      "CImgLrgbCmpst::DoLrgb", 0.5, "scikit-image rgb2lab twice, lab2rgb",
      [&] { dst.DoLrgb(&luminance, 0, 0, 0, &colour, 0, 0, 0, 1.0, nullptr, 0, 0); },
      [&] { python.Run("lab = rgb2lab(second); lab[..., 0] = rgb2lab(first)[..., 0]; joined = lab2rgb(lab)"); }, 3);
}

ORB_COMPARISONS(lab_enhance) {
  COrbImage image = SkyImage(kSide, kSide, 3, 1);
  std::unique_ptr<COrbImage> const lab(image.MakeLabPlane());
  CImgLabColorEnhance dst;
  dst.CopyImage(image, nullptr, nullptr);
  Python python(kPeer);
  GiveColours(python, "rgb", image);
  python.Run("lab = rgb2lab(rgb)");
  runner.Compare(
      "CImgLabColorEnhance, gains 1.5", 0.5, "scikit-image lab2rgb of gained planes",
      [&] { dst.Do(lab.get(), 1.5, 1.5, nullptr, 0); },
      [&] { python.Run("gained = lab * [1, 1.5, 1.5]; rgb = lab2rgb(gained)"); }, 3);
}

}  // namespace
