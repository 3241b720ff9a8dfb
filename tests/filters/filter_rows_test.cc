// CFilterRows, and the row convolution that must equal it.
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>
#include <orbimg/filters/edge_rules_internal.h>
#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/orbimg.h>
#include <tests/reference/filter_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();

reference::Kernel RandomKernel(Random& random, int radius) {
  reference::Kernel kernel;
  kernel.radius = radius;
  std::uniform_real_distribution<float> weight(-2.0f, 2.0f);
  std::uniform_int_distribution<int> die(0, 3);
  for (int i = 0; i < (2 * radius + 1) * (2 * radius + 1); ++i) {
    kernel.weights.push_back(die(random) == 0 ? 0.0f : weight(random));
  }
  return kernel;
}

COrbImage Ramp(int width, int height) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) image.SetPixelGrayRaw(x, y, static_cast<float>(100 * y + x), 0);
  }
  return image;
}

TEST(EdgeRules, RowsMirrorDifferentlyAtTheTwoEnds) {
  std::vector<int> top;
  std::vector<int> bottom;
  for (int k = -2; k <= 2; ++k) {
    top.push_back(MirrorRow(k, 10));
    bottom.push_back(MirrorRow(9 + k, 10));
  }
  EXPECT_EQ((std::vector<int>{2, 1, 0, 1, 2}), top);
  EXPECT_EQ((std::vector<int>{7, 8, 9, 9, 8}), bottom);
}

TEST(EdgeRules, HoldWhatIsLeftOutside) {
  EXPECT_EQ(1, MirrorRow(-5, 2));  // no second reflection
  EXPECT_EQ(0, MirrorRow(9, 2));
  EXPECT_EQ(0, MirrorRow(-1, 1));
  EXPECT_EQ(0, MirrorBorder(-5, 3));  // 5, and back to 0
  EXPECT_EQ(2, MirrorRow(-5, 3));
  EXPECT_EQ(0, ClampIndex(-7, 3));
  EXPECT_EQ(2, ClampIndex(7, 3));
}

TEST(EdgeRules, OffsetsTurnToTheOtherSide) {
  EXPECT_EQ(1, TurnedOffset(-1, 0, 9));
  EXPECT_EQ(-1, TurnedOffset(-1, 1, 9));
  EXPECT_EQ(2, TurnedOffset(-2, 1, 9));  // column 3, not column 1
  EXPECT_EQ(2, TurnedOffset(-2, 0, 9));
  EXPECT_EQ(-1, TurnedOffset(1, 8, 9));
  EXPECT_EQ(-2, TurnedOffset(2, 7, 9));
  EXPECT_EQ(0, TurnedOffset(-1, 0, 1));
  EXPECT_EQ(1, TurnedOffset(-2, 1, 3));  // column 3 does not exist
}

TEST(FilterRows, KnowsItsRows) {
  COrbImage image = Ramp(4, 6);
  CFilterRows window(&image, 2, 0, 0, 0, 2);
  EXPECT_EQ(5, LocksLeft(image));
  EXPECT_EQ(200.0f, window.rows[0][0]);
  EXPECT_EQ(100.0f, window.rows[1][0]);
  EXPECT_EQ(3.0f, window.rows[2][3]);
  image.UnlockAll();
  EXPECT_EQ(1, window.Set(&image, 2, 0, 5, 0, 2));
  EXPECT_EQ(500.0f, window.rows[3][0]);
  EXPECT_EQ(400.0f, window.rows[4][0]);
}

TEST(FilterRows, ReleasesItsLocksAtTheEnd) {
  COrbImage image = Ramp(4, 6);
  {
    CFilterRows window(&image, 1, 0, 3, 0, 2);
    EXPECT_EQ(3, LocksLeft(image));
  }
  EXPECT_EQ(0, LocksLeft(image));
  CFilterRows unlocked(&image, 1, 0, 3, 0, 0);
  EXPECT_EQ(0, LocksLeft(image));
}

TEST(FilterRows, RefusesAPlaneBeyondTheImage) {
  COrbImage image = Ramp(4, 6);
  CFilterRows window(&image, 1, 0, 3, 0, 2);
  float* const row = window.rows[0];
  EXPECT_EQ(0, window.Set(&image, 2, 0, 1, 1, 2));
  EXPECT_EQ(1, window.radius);
  EXPECT_EQ(row, window.rows[0]);
  EXPECT_EQ(0, window.Set(&image, -1, 0, 1, 0, 2));
}

TEST(FilterRows, AnEmptyWindowGivesZeros) {
  CFilterRows window;
  CFilterKernel kernel;
  kernel.MakeMean(1, 1.0, 1.0);
  EXPECT_EQ(0.0, window.Convolve(kernel, 0));
  EXPECT_EQ(0.0f, window.ConvolveClip(kernel, 0, 0.0f, 1.0f));
  EXPECT_EQ(0.0f, window.Pixel(0, 0));
  EXPECT_EQ(0.0f, window.Rank(kernel, 0, 0));
}

TEST(FilterRows, PixelReadsZeroBelowTheCentreRow) {
  COrbImage image = Ramp(5, 9);
  CFilterRows window(&image, 2, 0, 4, 0, 2);
  EXPECT_EQ(301.0f, window.Pixel(1, 3));
  EXPECT_EQ(204.0f, window.Pixel(4, 2));
  EXPECT_EQ(400.0f, window.Pixel(0, 4));
  EXPECT_EQ(0.0f, window.Pixel(1, 5));
  EXPECT_EQ(0.0f, window.Pixel(1, 6));
  EXPECT_EQ(0.0f, window.Pixel(-1, 4));
  EXPECT_EQ(0.0f, window.Pixel(5, 4));
  EXPECT_EQ(0.0f, window.Pixel(1, 1));  // above the window there is no row to read
  EXPECT_EQ(0.0f, window.Pixel(1, std::numeric_limits<int>::min()));
}

TEST(FilterRows, RadiusZeroConvolvesOnlyWithItsLike) {
  COrbImage image = Ramp(5, 5);
  float const weight = 3.0f;
  CFilterKernel point(0, &weight, 1);
  CFilterKernel mean;
  mean.MakeMean(1, 2.0, 1.0);
  CFilterRows window(&image, 0, 0, 2, 0, 2);
  EXPECT_EQ(603.0, window.Convolve(point, 1));
  EXPECT_EQ(0.0, window.Convolve(point, -1));
  EXPECT_EQ(0.0, window.Convolve(mean, 2));
  CFilterRows wide(&image, 1, 0, 2, 0, 2);
  EXPECT_EQ(0.0, wide.Convolve(point, 2));
}

TEST(FilterRows, ANarrowWindowTakesTheCentreOfAKernel) {
  COrbImage image = Ramp(9, 9);
  CFilterKernel kernel;
  kernel.MakeMean(3, 18.0, 1.0);  // 49 cells
  CFilterRows window(&image, 1, 0, 4, 0, 2);
  EXPECT_NEAR(404.0 * 9 / 49, window.Convolve(kernel, 4), 1e-3);
}

// Intended: the sum at the sides is a float after each term.
TEST(FilterRows, SumsAtTheSidesAreNarrow) {
  COrbImage image(-32, 5, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int i = 0; i < 15; ++i) image.SetPixelGrayRaw(i % 5, i / 5, i == 0 ? 16777216.0f : 1.0f, 0);
  float const ones[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
  CFilterKernel kernel(1, ones, 9);
  CFilterRows window(&image, 1, 0, 1, 0, 2);
  EXPECT_EQ(16777224.0, window.Convolve(kernel, 1));
  // Column 0 stands for column -1 too: two large samples, and the ones get lost.
  EXPECT_EQ(33554432.0, window.Convolve(kernel, 0));
}

TEST(FilterRows, ClipsBeforeItSums) {
  COrbImage image = Ramp(5, 5);
  float const ones[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
  CFilterKernel kernel(1, ones, 9);
  CFilterRows window(&image, 1, 0, 2, 0, 2);
  EXPECT_EQ(150.0f * 3 + 201 + 202 + 203 + 250.0f * 3, window.ConvolveClip(kernel, 2, 150.0f, 250.0f));
}

TEST(FilterRows, CollectsAscending) {
  COrbImage image = Ramp(5, 5);
  CFilterKernel disk;
  disk.MakeDisk(1, 1.0);
  *disk.Address(1, 0) = 0.5f;  // no cell of the mask
  CFilterRows window(&image, 1, 0, 2, 0, 2);
  float* const samples = window.Collect(disk, 0);
  EXPECT_EQ(4, window.sortedCount);
  EXPECT_EQ((std::vector<float>{100, 200, 200, 300}), std::vector<float>(samples, samples + 4));
  EXPECT_EQ(300.0f, window.Rank(disk, 0, 3));
  EXPECT_EQ(0.0f, window.Rank(disk, 0, 4));
  EXPECT_EQ(0.0f, window.Rank(disk, 0, -1));
  CFilterKernel point;
  point.MakeDisk(0, 0.0);
  window.Collect(point, 2);
  EXPECT_EQ(4, window.sortedCount);  // as it was
}

TEST(FilterRows, EqualsThePlainFormulaOnEveryWindow) {
  Random random(11);
  for (int width : {1, 2, 3, 5, 12}) {
    for (int height : {1, 2, 3, 7}) {
      COrbImage image = RandomImage(random, width, height, 1);
      StrewSpecialSamples(image, random, 40);
      for (int radius : {0, 1, 2, 4}) {
        for (int kernelRadius : {0, 1, 2, 3}) {
          reference::Kernel const plain = RandomKernel(random, kernelRadius);
          CFilterKernel const kernel(kernelRadius, plain.weights.data(), 0);
          for (int y = 0; y < height; ++y) {
            CFilterRows window(&image, radius, 0, y, 0, 2);
            std::vector<double> expected;
            std::vector<double> actual;
            for (int x = 0; x < width; ++x) {
              expected.push_back(reference::Convolve(image, 0, radius, x, y, plain));
              expected.push_back(reference::ConvolveClip(image, 0, radius, x, y, plain, -20.0f, 200.0f));
              actual.push_back(window.Convolve(kernel, x));
              actual.push_back(window.ConvolveClip(kernel, x, -20.0f, 200.0f));
            }
            ASSERT_EQ(0, std::memcmp(CanonicalNans(expected).data(), CanonicalNans(actual).data(),
                                     expected.size() * sizeof(double)))
                << width << 'x' << height << ' ' << radius << ' ' << kernelRadius << ' ' << y;
          }
        }
      }
    }
  }
}

// What one row of the convolution is, column by column of a window.
struct Row {
  std::vector<double> wide;
  std::vector<float> narrow;
  std::vector<float> clipped;

  friend bool operator==(Row const& a, Row const& b) {
    auto const same = [](auto const& p, auto const& q) {
      auto const x = CanonicalNans(p);
      auto const y = CanonicalNans(q);
      return x.size() == y.size() && (x.empty() || std::memcmp(x.data(), y.data(), x.size() * sizeof(x[0])) == 0);
    };
    return same(a.wide, b.wide) && same(a.narrow, b.narrow) && same(a.clipped, b.clipped);
  }
};

TEST(RowConvolution, EqualsTheWindowBitForBit) {
  Random random(12);
  for (int width : {1, 2, 3, 7, 31, 32, 33, 70, 200}) {
    COrbImage image = RandomImage(random, width, 5, 1);
    for (int round = 0; round < 2; ++round) {
      if (round == 1) StrewSpecialSamples(image, random, 30);
      for (int radius : {0, 1, 2, 3, 5}) {
        for (int kernelRadius : {0, 1, 2, 3, 5}) {
          reference::Kernel plain = RandomKernel(random, kernelRadius);
          if (kernelRadius == 5) {  // mostly zeros
            for (std::size_t i = 0; i < plain.weights.size(); ++i) plain.weights[i] *= i % 5 == 0 ? 1.0f : 0.0f;
          }
          CFilterKernel const kernel(kernelRadius, plain.weights.data(), 0);
          RowConvolution convolution(kernel, radius, width);
          CFilterRows const window(&image, radius, 0, 2, 0, 2);
          for (int begin : {0, 1, width / 2}) {
            for (int end : {begin, width - 1, width}) {
              auto const count = static_cast<std::size_t>(std::max(end - begin, 0));
              Row expected{std::vector<double>(count), std::vector<float>(count), std::vector<float>(count)};
              Row actual = expected;
              for (std::size_t i = 0; i < count; ++i) {
                int const x = begin + static_cast<int>(i);
                expected.wide[i] = window.Convolve(kernel, x);
                expected.narrow[i] = static_cast<float>(expected.wide[i]);
                expected.clipped[i] = window.ConvolveClip(kernel, x, -20.0f, 200.0f);
              }
              convolution.Compute(window.rows.get(), begin, end, actual.wide.data());
              convolution.Compute(window.rows.get(), begin, end, actual.narrow.data());
              convolution.ComputeClipped(window.rows.get(), begin, end, -20.0f, 200.0f, actual.clipped.data());
              ASSERT_TRUE(expected == actual)
                  << width << ' ' << radius << ' ' << kernelRadius << ' ' << begin << ' ' << end << ' ' << round;
            }
          }
        }
      }
    }
  }
}

// Infinities under weights of 0 are not a number, also where zeros are left out otherwise.
TEST(RowConvolution, ZeroWeightsMeetInfiniteSamples) {
  COrbImage image(-32, 40, 5, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetPixelGrayRaw(20, 0, kInf, 0);
  CFilterKernel mean;
  mean.MakeMean(2, 1.0, 1.0);
  RowConvolution convolution(mean, 2, 40);
  CFilterRows const window(&image, 2, 0, 2, 0, 2);
  std::vector<float> out(40);
  convolution.Compute(window.rows.get(), 0, 40, out.data());
  EXPECT_TRUE(std::isnan(out[18]));
  EXPECT_TRUE(std::isnan(out[22]));
  EXPECT_EQ(0.0f, out[17]);
}

}  // namespace
}  // namespace orb::test
