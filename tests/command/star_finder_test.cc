// Finding stars: positions, fluxes, and what is not a star.
#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>
#include <hosts/orbimg/simulation.h>
#include <hosts/orbimg/star_finder.h>
#include <orbimg/orbimg.h>
#include <tests/command/synthetic_stars.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::FindStars;
using host::Position;
using host::SimulatedStar;
using host::Simulation;
using host::SimulationSettings;
using host::SquaredDistance;
using host::Star;
using host::StarFinderSettings;

float& SampleAt(COrbImage& image, int x, int y) { return *image.GetImageAdr(x, y, 0, 0, nullptr); }

// The found star nearest to a position, or null if none lies within `limit` pixels.
Star const* NearestTo(std::vector<Star> const& stars, Position const& place, double limit) {
  Star const* nearest = nullptr;
  double least = limit * limit;
  for (Star const& star : stars) {
    double const squared = SquaredDistance({star.x, star.y}, place);
    if (squared > least) continue;
    least = squared;
    nearest = &star;
  }
  return nearest;
}

TEST(StarFinder, FindsPositionPeakAndFlux) {
  COrbImage image = SkyImage(200, 150, 1000.0, 5.0, 1);
  AddGaussian(image, 60.3, 40.8, 2000.0, 3.0);
  AddGaussian(image, 140.0, 100.5, 500.0, 3.0);
  std::vector<Star> const stars = FindStars(image, StarFinderSettings{});
  ASSERT_EQ(2u, stars.size());
  EXPECT_NEAR(60.3, stars[0].x, 0.05);
  EXPECT_NEAR(40.8, stars[0].y, 0.05);
  EXPECT_NEAR(140.0, stars[1].x, 0.1);
  EXPECT_NEAR(100.5, stars[1].y, 0.1);
  // 2 pi sigma^2 times the peak, sigma being 3 / 2.3548.
  double const whole = 2.0 * 3.14159265 * (3.0 / 2.3548) * (3.0 / 2.3548);
  EXPECT_NEAR(2000.0 * whole, stars[0].flux, 0.02 * 2000.0 * whole);
  EXPECT_NEAR(500.0 * whole, stars[1].flux, 0.04 * 500.0 * whole);
  EXPECT_GT(stars[0].peak, 1700.0);
  EXPECT_LT(stars[0].peak, 2030.0);
}

TEST(StarFinder, TheImageStaysAsItWas) {
  COrbImage image = SkyImage(100, 90, 1000.0, 5.0, 2);
  AddGaussian(image, 50.0, 40.0, 900.0, 3.0);
  image.SetLevel(0, 17.0, 500.0);
  COrbImage const before(image);
  FindStars(image, StarFinderSettings{});
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
}

TEST(StarFinder, NoiseAloneHoldsNoStars) {
  int found = 0;
  for (unsigned seed = 0; seed < 4; ++seed) {
    found += static_cast<int>(FindStars(SkyImage(512, 512, 500.0, 30.0, seed), StarFinderSettings{}).size());
  }
  EXPECT_LE(found, 2);
}

TEST(StarFinder, HotPixelsPairsAndColumnsAreNotStars) {
  COrbImage image = SkyImage(200, 200, 1000.0, 5.0, 3);
  SampleAt(image, 50, 60) = 30000.0f;
  SampleAt(image, 120, 80) = 9000.0f;
  SampleAt(image, 121, 80) = 8000.0f;
  SampleAt(image, 150, 30) = 9000.0f;
  SampleAt(image, 150, 31) = 8000.0f;
  for (int y = 90; y < 200; ++y) SampleAt(image, 20, y) += 400.0f;
  EXPECT_EQ(0u, FindStars(image, StarFinderSettings{}).size());
}

TEST(StarFinder, AStarBesideAHotPixelKeepsItsPlace) {
  COrbImage image = SkyImage(120, 120, 1000.0, 5.0, 4);
  AddGaussian(image, 60.2, 59.7, 3000.0, 3.5);
  SampleAt(image, 64, 62) += 40000.0f;
  std::vector<Star> const stars = FindStars(image, StarFinderSettings{});
  ASSERT_EQ(1u, stars.size());
  EXPECT_NEAR(60.2, stars[0].x, 0.1);
  EXPECT_NEAR(59.7, stars[0].y, 0.1);
}

TEST(StarFinder, ATrailIsNotARowOfStars) {
  COrbImage image = SkyImage(300, 300, 1000.0, 10.0, 5);
  for (int i = 0; i < 300; ++i) {
    for (int j = -6; j <= 6; ++j) {
      int const y = i / 2 + 60 + j;
      SampleAt(image, i, y) += static_cast<float>(300.0 * std::exp(-j * j / 3.0));
    }
  }
  AddGaussian(image, 220.0, 40.0, 1000.0, 3.0);
  std::vector<Star> const stars = FindStars(image, StarFinderSettings{});
  ASSERT_FALSE(stars.empty());
  EXPECT_NEAR(220.0, stars[0].x, 0.1);
  EXPECT_LE(stars.size(), 4u);
}

TEST(StarFinder, ASlopingSkyDoesNotMatter) {
  COrbImage image = SkyImage(256, 256, 1000.0, 5.0, 6);
  AddGaussian(image, 100.4, 200.6, 400.0, 3.0);
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) SampleAt(image, x, y) += 3.0f * x + 0.01f * y * y;
  }
  std::vector<Star> const stars = FindStars(image, StarFinderSettings{});
  ASSERT_EQ(1u, stars.size());
  EXPECT_NEAR(100.4, stars[0].x, 0.2);
  EXPECT_NEAR(200.6, stars[0].y, 0.2);
}

TEST(StarFinder, SaturatedStarsGoOnRequest) {
  COrbImage image = SkyImage(200, 100, 1000.0, 5.0, 7);
  AddGaussian(image, 50.0, 50.0, 80000.0, 4.0);
  AddGaussian(image, 150.0, 50.0, 2000.0, 4.0);
  for (int y = 0; y < 100; ++y) {
    for (int x = 0; x < 200; ++x) SampleAt(image, x, y) = std::min(SampleAt(image, x, y), 65535.0f);
  }
  StarFinderSettings settings;
  EXPECT_EQ(2u, FindStars(image, settings).size());
  settings.saturation = 65535.0;
  std::vector<Star> const stars = FindStars(image, settings);
  ASSERT_EQ(1u, stars.size());
  EXPECT_NEAR(150.0, stars[0].x, 0.1);
}

TEST(StarFinder, SamplesThatAreNotNumbersCountAsSky) {
  COrbImage image = SkyImage(150, 150, 1000.0, 5.0, 8);
  AddGaussian(image, 100.0, 100.0, 2000.0, 3.0);
  float const inf = std::numeric_limits<float>::infinity();
  for (int i = 0; i < 150; i += 7) {
    SampleAt(image, i, 20) = std::nanf("");
    SampleAt(image, i, 40) = inf;
    SampleAt(image, 30, i) = -inf;
  }
  std::vector<Star> const stars = FindStars(image, StarFinderSettings{});
  ASSERT_EQ(1u, stars.size());
  EXPECT_NEAR(100.0, stars[0].x, 0.05);
}

TEST(StarFinder, AnyFrameIsSafe) {
  Random random(9);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 5, 13, 14, 15, 40}) {
      for (int height : {1, 3, 14, 31}) {
        COrbImage image = RandomImage(random, width, height, planes);
        FindStars(image, StarFinderSettings{});
        float* const first = image.GetImageAdr(0, 0, 0, 0, nullptr);
        std::fill(first, first + image.GetPixelCount(), std::nanf(""));
        EXPECT_TRUE(FindStars(image, StarFinderSettings{}).empty());
      }
    }
  }
}

TEST(StarFinder, AColourFrameCountsWithAllItsPlanes) {
  COrbImage image(-32, 100, 80, 3, 1.0, 0.0, 1, nullptr, nullptr);
  for (int plane = 0; plane < 3; ++plane) {
    COrbImage one = SkyImage(100, 80, 500.0 * plane, 5.0, 10 + plane);
    AddGaussian(one, 30.0 + 20.0 * plane, 40.0, 900.0, 3.0);
    for (int y = 0; y < 80; ++y) {
      std::copy_n(one.GetImageAdr(0, y, 0, 1, nullptr), 100, image.GetImageAdr(0, y, plane, 0, nullptr));
    }
  }
  EXPECT_EQ(3u, FindStars(image, StarFinderSettings{}).size());
}

TEST(StarFinder, KeepsTheBrightestOnRequest) {
  COrbImage image = SkyImage(300, 60, 100.0, 2.0, 11);
  for (int i = 1; i <= 5; ++i) AddGaussian(image, 50.0 * i, 30.0, 200.0 * i, 3.0);
  StarFinderSettings settings;
  settings.maxStars = 2;
  std::vector<Star> const stars = FindStars(image, settings);
  ASSERT_EQ(2u, stars.size());
  EXPECT_NEAR(250.0, stars[0].x, 0.1);
  EXPECT_NEAR(200.0, stars[1].x, 0.1);
}

// A raw frame with everything that disturbs: most stars that stand out are found, little else is.
TEST(StarFinder, FindsTheStarsOfASimulatedNight) {
  Simulation const night(SimulationSettings{});
  std::vector<Star> const stars = FindStars(night.Light(0), StarFinderSettings{});
  int bright = 0;
  int found = 0;
  for (SimulatedStar const& star : night.Truth().stars) {
    bool const inside = star.x > 12 && star.x < 1011 && star.y > 12 && star.y < 755;
    if (!inside || star.flux < 3000.0) continue;
    ++bright;
    if (NearestTo(stars, {star.x, star.y}, 1.0) != nullptr) ++found;
  }
  EXPECT_GT(bright, 20);
  EXPECT_GE(found, bright * 9 / 10);
  int real = 0;
  for (Star const& star : stars) {
    for (SimulatedStar const& truth : night.Truth().stars) {
      if (SquaredDistance({star.x, star.y}, {truth.x, truth.y}) > 4.0) continue;
      ++real;
      break;
    }
  }
  EXPECT_GE(real, static_cast<int>(stars.size()) * 8 / 10) << stars.size();
}

}  // namespace
}  // namespace orb::test
