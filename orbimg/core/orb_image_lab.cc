// Lightness and colour of an image as planes of their own, and reading such planes through a transform.
#include <algorithm>
#include <memory>
#include <new>

#include <orbimg/core/bilinear_internal.h>
#include <orbimg/core/color.h>
#include <orbimg/core/lab_kernels.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/transform_internal.h>

namespace {

constexpr int kMakingL = 6101;
constexpr int kMakingAb = 6102;
constexpr int kMakingLab = 6133;

constexpr double kWhite256 = 255.0;

ORB_ROW_KERNEL void EncodeMonoRow(float const* src, std::ptrdiff_t count, orb::Level from, double most,
                                  double* encoded) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) encoded[i] = orb::Encode256(from.To256(src[i]), most);
}

// Intended: on a colour image the level and the factor are rounded to float before they are used; a mono image keeps to
// the exact form.
ORB_ROW_KERNEL void EncodeColorRow(float const* src, std::ptrdiff_t count, orb::Level from, double most,
                                   double* encoded) {
  double const min = static_cast<float>(from.min);
  double const factor = static_cast<float>(255.0 / from.range);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) encoded[i] = orb::Encode256((src[i] - min) * factor, most);
}

ORB_ROW_KERNEL void RoundRow(double const* values, std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) out[i] = static_cast<float>(values[i]);
}

// The encoded channels of columns x .. x + count - 1 of row y; a mono image gives its plane three times. Channels above
// `most` on the 256-scale are cut.
void ReadColors(COrbImage const& image, int x, int y, std::ptrdiff_t count, double most, orb::ColorBlock& rgb) {
  double* const channels[] = {rgb.first, rgb.second, rgb.third};
  for (int p = 0; p < (image.IsColor() != 0 ? 3 : 1); ++p) {
    float const* const src = image.GetImageAdr(x, y, p, 1, nullptr);
    if (image.IsColor() != 0) {
      EncodeColorRow(src, count, orb::LevelOf(image, p), most, channels[p]);
    } else {
      EncodeMonoRow(src, count, orb::LevelOf(image, p), most, channels[p]);
    }
  }
  if (image.IsColor() != 0) return;
  std::copy(rgb.first, rgb.first + count, rgb.second);
  std::copy(rgb.first, rgb.first + count, rgb.third);
}

// Which of L, a, b go into which plane.
struct Planes {
  int message;
  int count;
  int firstView;  // 0: from L on, 1: from a on
};

// The views that `wanted` asks for of one block.
void ConvertBlock(Planes const& wanted, orb::ColorBlock const& rgb, std::ptrdiff_t count, orb::ColorBlock& lab) {
  if (wanted.firstView == 0 && wanted.count == 1) {
    orb::RgbToLightness(rgb, count, lab.first);
  } else {
    orb::RgbToLab(rgb, count, lab);
  }
}

void FillRow(COrbImage const& image, Planes const& wanted, double most, int y, COrbImage& planes) {
  orb::ColorBlock rgb;
  orb::ColorBlock lab;
  double const* const views[] = {lab.first, lab.second, lab.third};
  for (int x = 0; x < image.GetWidth(); x += static_cast<int>(orb::kLabBlock)) {
    std::ptrdiff_t const count = std::min<std::ptrdiff_t>(orb::kLabBlock, image.GetWidth() - x);
    ReadColors(image, x, y, count, most, rgb);
    ConvertBlock(wanted, rgb, count, lab);
    for (int p = 0; p < wanted.count; ++p) {
      RoundRow(views[wanted.firstView + p], count, planes.GetImageAdr(x, y, p, 0, nullptr));
    }
  }
}

// Null if there is no memory, and for an image of two planes, which has no third channel to read.
std::unique_ptr<COrbImage> MakePlanes(COrbImage& image, Planes const& wanted, double most) {
  if (image.GetPlanes() == 2) return nullptr;
  std::unique_ptr<COrbImage> planes;
  try {
    planes = std::make_unique<COrbImage>(-32, image.GetWidth(), image.GetHeight(), wanted.count, 1.0, 0.0, 1, nullptr,
                                         nullptr);
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
  orb::Run run(image, nullptr);
  run.Start(1, wanted.message, image.GetHeight());
  planes->SetStdCtr(image.GetStdCtr());
  for (int y = 0; y < image.GetHeight(); ++y) {
    FillRow(image, wanted, most, y, *planes);
    run.Tick();
  }
  run.End();
  return planes;
}

bool IsInside(COrbImage const& image, double sx, double sy) {
  return 0 <= sx && sx < image.GetWidth() && 0 <= sy && sy < image.GetHeight();
}

}  // namespace

double COrbImage::CalcBrightL(double r, double g, double b) {
  auto const toUnit = [](double v) {
    return std::clamp(v, -orb::kMostEncoded256, orb::kMostEncoded256) * orb::kInverse255;
  };
  CColor color;
  color.RgbToLab(toUnit(r), toUnit(g), toUnit(b));
  CColor gray;
  gray.LabToRgb(color.GetL(), 0.0, 0.0);
  return gray.GetR() * 255.0;
}

COrbImage* COrbImage::MakeLPlane() {
  std::unique_ptr<COrbImage> plane = MakePlanes(*this, Planes{kMakingL, 1, 0}, orb::kMostEncoded256);
  // Intended: the levels of plane 0, although L runs from 0 to 100.
  if (plane) plane->SetLevel(0, levelMin[0], levelMax[0]);
  return plane.release();
}

COrbImage* COrbImage::MakeAbPlane(int clip) {
  double const most = IsColor() && clip != 0 ? kWhite256 : orb::kMostEncoded256;
  return MakePlanes(*this, Planes{kMakingAb, 2, 1}, most).release();
}

COrbImage* COrbImage::MakeLabPlane() {
  return MakePlanes(*this, Planes{kMakingLab, 3, 0}, orb::kMostEncoded256).release();
}

float COrbImage::GetPixelL(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double outside) {
  double sx = 0.0;
  double sy = 0.0;
  orb::Transform{dx, dy, sinA, cosA, scale, stdCtr.fx, stdCtr.fy}.Apply(x, y, sx, sy);
  return static_cast<float>(IsInside(*this, sx, sy) ? orb::Bilinear(*this, sx, sy, 0) : outside);
}

void COrbImage::GetPixelAb(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* a,
                           double* b, double outside) {
  double sx = 0.0;
  double sy = 0.0;
  orb::Transform{dx, dy, sinA, cosA, scale, stdCtr.fx, stdCtr.fy}.Apply(x, y, sx, sy);
  bool const isInside = IsInside(*this, sx, sy);
  *a = isInside ? orb::Bilinear(*this, sx, sy, 0) : outside;
  *b = isInside ? orb::Bilinear(*this, sx, sy, IsColor() ? 1 : 0) : outside;
}
