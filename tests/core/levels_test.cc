// Setting and enforcing the level pairs.
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/levels_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

COrbImage ColorWithLevels() {
  COrbImage image(-32, 2, 2, 3, 1.0, 0.0, 1, nullptr, nullptr);
  image.CImage::SetLevel(0, 100.0, 300.0);
  image.CImage::SetLevel(1, 0.0, 50.0);
  image.CImage::SetLevel(2, -20.0, 80.0);
  return image;
}

void ExpectLevels(COrbImage const& image, int plane, double min, double max) {
  EXPECT_EQ(min, image.GetLevelMin(plane));
  EXPECT_EQ(max, image.GetLevelMax(plane));
  EXPECT_EQ(max - min, image.GetLevelRange(plane));
}

TEST(SetLevel, OnePlaneAlone) {
  COrbImage image = ColorWithLevels();
  image.SetLevel(1, 5.0, 6.5);
  ExpectLevels(image, 0, 100.0, 300.0);
  ExpectLevels(image, 1, 5.0, 6.5);
  ExpectLevels(image, 2, -20.0, 80.0);
}

TEST(SetLevel, AllPlanesMoveByTheFractionsOfPlaneZero) {
  COrbImage image = ColorWithLevels();
  // The minimum moves up by 0.5 of the old range, the maximum down by 0.25 of it.
  image.SetLevel(-1, 200.0, 250.0);
  ExpectLevels(image, 0, 200.0, 250.0);
  ExpectLevels(image, 1, 25.0, 37.5);
  ExpectLevels(image, 2, 30.0, 55.0);
}

TEST(SetLevel, AllPlanesStayWithThePresentPairOfPlaneZero) {
  COrbImage image = ColorWithLevels();
  COrbImage before(image);
  image.SetLevel(-1, 100.0, 300.0);
  EXPECT_TRUE(SameLevels(before, image));
}

TEST(SetLevel, AllPlanesOfAMonoImageArePlaneZero) {
  COrbImage image(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetLevel(-1, 7.0, 9.0);
  ExpectLevels(image, 0, 7.0, 9.0);
}

TEST(SetLevel, AllPlanesOfTwo) {
  COrbImage image(-32, 2, 2, 2, 1.0, 0.0, 1, nullptr, nullptr);
  image.CImage::SetLevel(0, 100.0, 300.0);
  image.CImage::SetLevel(1, 0.0, 50.0);
  image.SetLevel(-1, 200.0, 250.0);
  ExpectLevels(image, 0, 200.0, 250.0);
  ExpectLevels(image, 1, 25.0, 37.5);
}

TEST(SetLevel, EqualsThePlainFormula) {
  Random random(1);
  std::uniform_real_distribution<double> value(-300.0, 900.0);
  for (int round = 0; round < 200; ++round) {
    COrbImage image = RandomImage(random, 1, 1, 3);
    COrbImage expected(image);
    double const min = value(random);
    double const max = value(random);
    int const plane = round % 4 - 1;
    reference::SetLevel(expected, plane, min, max);
    image.SetLevel(plane, min, max);
    EXPECT_TRUE(SameLevels(expected, image));
  }
}

TEST(CutOutOfLevel, BoundsTheSamplesAndKeepsTheBytes) {
  Random random(2);
  COrbImage image = RandomImage(random, 33, 9, 3);
  for (int p = 0; p < 3; ++p) image.SetLevel(p, 10.0 * p, 200.0 + p);
  COrbImage before(image);
  image.CutOutOfLevel();
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 33; ++x) {
        EXPECT_EQ(before.GetPixelGray256(x, y, p), image.GetPixelGray256(x, y, p));
        EXPECT_LE(10.0 * p, image.GetPixelGrayRaw(x, y, p));
        EXPECT_GE(200.0 + p, image.GetPixelGrayRaw(x, y, p));
      }
    }
  }
}

TEST(CutOutOfLevel, EqualsThePlainFormula) {
  Random random(3);
  float const infinity = std::numeric_limits<float>::infinity();
  for (int width : {1, 2, 7, 16, 33}) {
    COrbImage image = RandomImage(random, width, 5, 3);
    image.SetPixelGrayRaw(0, 0, std::numeric_limits<float>::quiet_NaN(), 0);
    image.SetPixelGrayRaw(0, 1, infinity, 1);
    image.SetPixelGrayRaw(0, 2, -infinity, 2);
    image.SetPixelGrayRaw(0, 3, -0.0f, 0);
    image.CImage::SetLevel(0, 0.0, 100.1);
    image.CImage::SetLevel(2, 80.3, 20.7);  // inverted: the lower bound is tested first
    COrbImage expected(image);
    reference::CutOutOfLevel(expected);
    image.CutOutOfLevel();
    EXPECT_TRUE(SameBits(expected, image)) << width;
  }
}

TEST(CutOutOfLevel, SamplesEqualToABoundStay) {
  COrbImage image(-32, 3, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetLevel(0, -0.0, 5.0);
  SetSamples(image, {0.0f, 5.0f, -0.0f});
  image.CutOutOfLevel();
  EXPECT_TRUE(SameBits(std::vector<float>{0.0f, 5.0f, -0.0f}, SamplesOf(image)));
}

TEST(CutOutOfLevel, WorksOnAHostileStore) {
  Random random(4);
  COrbImage image = RandomImage(random, 12, 7, 3);
  COrbImage expected(image);
  expected.CutOutOfLevel();
  MakeHostile(image);
  image.CutOutOfLevel();
  EXPECT_TRUE(SameBits(expected, image));
  EXPECT_EQ(0, LocksLeft(image));
}

}  // namespace
}  // namespace orb::test
