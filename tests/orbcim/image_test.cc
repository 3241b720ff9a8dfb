// The storage library's image: making, copying, levels, records, extrema, reshaping.
#include <climits>
#include <cmath>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

COrbImage Numbered(int width, int height, int planes) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  std::vector<float> samples(static_cast<std::size_t>(image.GetPixelCount()));
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i + 1);
  SetSamples(image, samples);
  return image;
}

TEST(StoredImage, StartsEmpty) {
  CImage const image;
  EXPECT_EQ(0, image.GetWidth());
  EXPECT_EQ(0, image.GetHeight());
  EXPECT_EQ(0, image.GetPlanes());
  EXPECT_EQ(0u, image.GetImageSize());
}

TEST(StoredImage, NewSamplesAreZeroAndLevelsUsable) {
  for (int bits : {-64, -32, 8, 16, 32}) {
    CImage const image(bits, 7, 3, 2, 1.0, 0.0, 1, nullptr, nullptr);
    for (int p = 0; p < 2; ++p) {
      for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 7; ++x) EXPECT_EQ(0.0, image.GetPixel(x, y, p));
      }
      EXPECT_EQ(0.0, image.GetLevelMin(p));
      EXPECT_EQ(255.0, image.GetLevelMax(p));
      EXPECT_EQ(255.0, image.GetLevelRange(p));
    }
  }
}

TEST(StoredImage, ShapesBeyondMemoryAreLackOfMemory) {
  EXPECT_THROW(CImage(-32, INT_MAX, INT_MAX, 3, 1.0, 0.0, 1, nullptr, nullptr), std::bad_alloc);
  EXPECT_THROW(CImage(-64, INT_MAX, INT_MAX, INT_MAX, 1.0, 0.0, 1, nullptr, nullptr), std::bad_alloc);
}

TEST(StoredImage, SetLevelKeepsTheDifference) {
  CImage image(-32, 2, 2, 3, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_EQ(1, image.SetLevel(1, 100.5, 300.25));
  EXPECT_EQ(100.5, image.GetLevelMin(1));
  EXPECT_EQ(300.25, image.GetLevelMax(1));
  EXPECT_EQ(199.75, image.GetLevelRange(1));
  EXPECT_EQ(255.0, image.GetLevelMax(0));
  EXPECT_EQ(255.0, image.GetLevelMax(2));
  EXPECT_EQ(1, image.SetLevel(0, 9.0, 4.0));
  EXPECT_EQ(-5.0, image.GetLevelRange(0));
}

TEST(StoredImage, SetLevelRefusesPlanesThatAreNot) {
  CImage image(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_EQ(0, image.SetLevel(1, 0.0, 1.0));
  EXPECT_EQ(0, image.SetLevel(-1, 0.0, 1.0));
  EXPECT_EQ(0, CImage().SetLevel(0, 0.0, 1.0));
}

TEST(StoredImage, CopiesAreComplete) {
  COrbImage src = Numbered(5, 4, 3);
  src.CImage::SetLevel(2, 3.0, 8.0);
  src.SetBscale(2.0);
  src.SetOrgFileName("name");
  CImage const copy(src, nullptr, nullptr);
  EXPECT_EQ(5, copy.GetWidth());
  EXPECT_EQ(3, copy.GetPlanes());
  EXPECT_EQ(2 * 60.0, copy.GetPixel(4, 3, 2));
  EXPECT_EQ(3.0, copy.GetLevelMin(2));
  EXPECT_EQ(5.0, copy.GetLevelRange(2));
  EXPECT_STREQ("name", copy.GetOrgFileName());
  CImage assigned(8, 1, 1, 1, 1.0, 0.0, 0, nullptr, nullptr);
  EXPECT_EQ(&assigned, &assigned.CopyImage(src, nullptr, nullptr));
  EXPECT_EQ(-32, assigned.GetBitsPixel());
  EXPECT_EQ(1, assigned.IsSigned());
  EXPECT_EQ(2 * 60.0, assigned.GetPixel(4, 3, 2));
}

TEST(StoredImage, CopyOfItselfKeepsTheSamples) {
  COrbImage image = Numbered(5, 4, 3);
  image.CImage::CopyImage(image, nullptr, nullptr);
  EXPECT_EQ(60.0f, image.GetPixelGrayRaw(4, 3, 2));
}

TEST(StoredImage, CreateTakesTheShape) {
  COrbImage src = Numbered(5, 4, 3);
  CImage made(8, 1, 1, 1, 1.0, 0.0, 0, nullptr, nullptr);
  EXPECT_NE(0, made.Create(src, nullptr, nullptr));
  EXPECT_EQ(-32, made.GetBitsPixel());
  EXPECT_EQ(5, made.GetWidth());
  EXPECT_EQ(4, made.GetHeight());
  EXPECT_EQ(3, made.GetPlanes());
  EXPECT_EQ(3, made.GetDimension());
  EXPECT_EQ(0.0, made.GetPixel(4, 3, 2));
  EXPECT_EQ(255.0, made.GetLevelRange(2));
}

TEST(StoredImage, SwapExchangesEverything) {
  COrbImage a = Numbered(5, 4, 3);
  CImage b(8, 2, 3, 1, 7.0, 9.0, 0, nullptr, nullptr);
  b.SetCameraModel("model");
  b.SetLevel(0, 1.0, 2.0);
  *b.GetImageAdr(1, 2, 0, 0, nullptr) = 200;
  static_cast<CImage&>(a).Swap(&b);
  EXPECT_EQ(8, a.GetBitsPixel());
  EXPECT_EQ(2, a.GetWidth());
  EXPECT_EQ(2, a.GetDimension());
  EXPECT_EQ(0, a.IsSigned());
  EXPECT_EQ(7.0 * 200 + 9.0, a.CImage::GetPixel(1, 2, 0));
  EXPECT_STREQ("model", a.GetCameraModel());
  EXPECT_EQ(1.0, a.GetLevelRange(0));
  EXPECT_EQ(60.0, b.GetPixel(4, 3, 2));
  EXPECT_STREQ("", b.GetCameraModel());
}

TEST(StoredImage, ExtremaOfOnePlane) {
  COrbImage image = Numbered(5, 4, 3);
  double min = 0.0;
  double max = 0.0;
  image.GetMinMax(1, &min, &max);
  EXPECT_EQ(21.0, min);
  EXPECT_EQ(40.0, max);
  image.SetPixelGrayRaw(2, 2, -INFINITY, 1);
  image.SetPixelGrayRaw(3, 2, INFINITY, 1);
  image.GetMinMax(1, &min, &max);
  EXPECT_EQ(-INFINITY, min);
  EXPECT_EQ(INFINITY, max);
}

TEST(StoredImage, ExtremaPassOverNumbersThatAreNone) {
  for (int width : {1, 2, 7, 16, 33, 100}) {
    COrbImage image = Numbered(width, 3, 1);
    double const count = 3.0 * width;
    for (int x = 1; x < width; x += 2) image.SetPixelGrayRaw(x, 1, NAN, 0);
    double min = 0.0;
    double max = 0.0;
    image.GetMinMax(0, &min, &max);
    EXPECT_EQ(1.0, min);
    EXPECT_EQ(count, max);
  }
}

TEST(StoredImage, ExtremaOfNothingAreZero) {
  COrbImage const image = Numbered(5, 4, 1);
  CImage const empty(-32, 0, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (auto const& [which, plane] : {std::pair<CImage const*, int>{&image, 1}, {&image, -1}, {&empty, 0}}) {
    double min = 9.0;
    double max = 9.0;
    which->GetMinMax(plane, &min, &max);
    EXPECT_EQ(0.0, min);
    EXPECT_EQ(0.0, max);
  }
}

TEST(StoredImage, ExtremaOfEveryFormat) {
  for (int bits : {-64, -32, 8, 16, 32}) {
    for (int isSigned : {0, 1}) {
      CImage image(-64, 3, 1, 1, 2.0, 50.0, isSigned, nullptr, nullptr);
      double const samples[3] = {17.0, 5.0, 120.0};
      for (int x = 0; x < 3; ++x) *reinterpret_cast<double*>(image.GetImageAdr(x, 0, 0, 0, nullptr)) = samples[x];
      ASSERT_NE(0, image.ChangeBits(bits, 1, 1, nullptr, nullptr));
      double min = 0.0;
      double max = 0.0;
      image.GetMinMax(0, &min, &max);
      EXPECT_EQ(5.0, min) << bits;
      EXPECT_EQ(120.0, max) << bits;
    }
  }
}

TEST(ChangePlanes, KeepsWhatStaysAndFillsFromPlaneZero) {
  COrbImage image = Numbered(4, 3, 2);
  image.CImage::SetLevel(0, 1.0, 11.0);
  image.CImage::SetLevel(1, 2.0, 22.0);
  ASSERT_NE(0, image.ChangePlanes(3, nullptr, nullptr));
  EXPECT_EQ(3, image.GetPlanes());
  EXPECT_EQ(3, image.GetDimension());
  EXPECT_EQ(1.0f, image.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(24.0f, image.GetPixelGrayRaw(3, 2, 1));
  EXPECT_EQ(1.0f, image.GetPixelGrayRaw(0, 0, 2));
  EXPECT_EQ(12.0f, image.GetPixelGrayRaw(3, 2, 2));
  EXPECT_EQ(2.0, image.GetLevelMin(1));
  EXPECT_EQ(1.0, image.GetLevelMin(2));
  EXPECT_EQ(10.0, image.GetLevelRange(2));
  ASSERT_NE(0, image.ChangePlanes(1, nullptr, nullptr));
  EXPECT_EQ(1, image.GetPlanes());
  EXPECT_EQ(2, image.GetDimension());
  EXPECT_EQ(12.0f, image.GetPixelGrayRaw(3, 2, 0));
  EXPECT_EQ(10.0, image.GetLevelRange(0));
}

TEST(ChangePlanes, RefusesCountsThatAreNone) {
  COrbImage image = Numbered(4, 3, 1);
  COrbImage const before(image);
  EXPECT_EQ(0, image.ChangePlanes(0, nullptr, nullptr));
  EXPECT_EQ(0, image.ChangePlanes(-2, nullptr, nullptr));
  EXPECT_TRUE(SameBits(before, image));
}

TEST(ChangeSize, ReallocatesEveryPlane) {
  COrbImage image = Numbered(4, 3, 3);
  image.CImage::SetLevel(2, 1.0, 11.0);
  ASSERT_NE(0, image.ChangeSize(9, 8, nullptr, nullptr));
  EXPECT_EQ(9, image.GetWidth());
  EXPECT_EQ(8, image.GetHeight());
  EXPECT_EQ(3, image.GetPlanes());
  EXPECT_EQ(10.0, image.GetLevelRange(2));
  image.SetPixelGrayRaw(8, 7, 5.0f, 2);
  EXPECT_EQ(5.0f, *(image.GetImageAdr(0, 0, 0, 1, nullptr) + 9 * 8 * 3 - 1));
}

TEST(ChangeSize, KeepsMemoryOfItsOwnOfThatManyBytes) {
  COrbImage image = Numbered(4, 3, 3);
  float const* const memory = image.GetImageAdr(0, 0, 0, 1, nullptr);
  ASSERT_NE(0, image.ChangeSize(3, 4, nullptr, nullptr));
  EXPECT_EQ(memory, image.GetImageAdr(0, 0, 0, 1, nullptr));
  EXPECT_EQ(memory + 3 * 4 * 3 - 1, image.GetImageAdr(2, 3, 2, 1, nullptr));
  std::vector<float> samples(12, 7.0f);
  COrbImage wrapped;
  WrapSamples(wrapped, samples.data(), 4, 3, 1);
  ASSERT_NE(0, wrapped.ChangeSize(3, 4, nullptr, nullptr));
  EXPECT_NE(samples.data(), wrapped.GetImageAdr(0, 0, 0, 1, nullptr));
}

TEST(ChangeSize, FailureLeavesTheImage) {
  COrbImage image = Numbered(4, 3, 3);
  COrbImage const before(image);
  for (auto [width, height] : {std::pair{-1, 5}, {5, -1}, {INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}}) {
    EXPECT_EQ(0, image.ChangeSize(width, height, nullptr, nullptr)) << width << 'x' << height;
    EXPECT_TRUE(SameBits(before, image));
  }
}

}  // namespace
}  // namespace orb::test
