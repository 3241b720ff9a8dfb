// CFourierPlane: its sizes, its table, its transform against the plain passes and against the definition.
#include <climits>
#include <cmath>
#include <complex>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/fourier_reference.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::ComplexLine;

void FillPairs(std::vector<float>& data, Random& random) {
  std::uniform_real_distribution<float> any(-300.0f, 500.0f);
  for (float& v : data) v = any(random);
}

ComplexLine ComplexOf(std::vector<float> const& pairs) {
  ComplexLine line;
  for (std::size_t i = 0; i < pairs.size(); i += 2) line.emplace_back(pairs[i], pairs[i + 1]);
  return line;
}

double Rms(ComplexLine const& values) {
  double sum = 0.0;
  for (std::complex<double> v : values) sum += std::norm(v);
  return std::sqrt(sum / static_cast<double>(values.size()));
}

TEST(FourierPlane, SidesAreTheNextPowersOfTwo) {
  CFourierPlane plane;
  ASSERT_EQ(1, plane.Create(300, 200));
  EXPECT_EQ(512, plane.width);
  EXPECT_EQ(9, plane.log2Width);
  EXPECT_EQ(256, plane.height);
  EXPECT_EQ(8, plane.log2Height);
  EXPECT_EQ(std::vector<float>(2u * 512 * 256, 0.0f), plane.data);
  for (int log2 = 0; log2 < 12; ++log2) {
    ASSERT_EQ(1, plane.Create(1 << log2, (1 << log2) + 1));
    EXPECT_EQ(1 << log2, plane.width);
    EXPECT_EQ(log2, plane.log2Width);
    EXPECT_EQ(2 << log2, plane.height);
    EXPECT_EQ(log2 + 1, plane.log2Height);
  }
}

TEST(FourierPlane, CreateFailsForNoSizeAndForLackOfMemory) {
  CFourierPlane plane;
  for (auto [w, h] : {std::pair(0, 5), std::pair(5, -1), std::pair(INT_MAX, 2), std::pair(1 << 30, 1 << 30)}) {
    EXPECT_EQ(0, plane.Create(w, h)) << w << ' ' << h;
    EXPECT_TRUE(plane.data.empty());
    plane.Transform(0);  // nothing to do, and nothing done
  }
}

// Intended: the table's rule at a line of two points.
TEST(FourierPlane, TwiddlesOfTwoPoints) {
  CFourierPlane plane;
  plane.MakeTwiddles(2);
  EXPECT_EQ((std::vector<float>{1.0f, -1.0f, -1.0f, 1.0f}), plane.twiddles);
}

TEST(FourierPlane, TwiddlesAreRightFromFourPointsUp) {
  for (int n = 4; n <= 4096; n *= 2) {
    CFourierPlane plane;
    plane.MakeTwiddles(n);
    auto const expected = reference::Twiddles(n);
    for (int k = 0; k < n; ++k) {
      CFourierPlane::Complex const w = plane.GetTwiddle(n, k, n);
      EXPECT_EQ(expected[static_cast<std::size_t>(k)].re, w.re);
      EXPECT_EQ(expected[static_cast<std::size_t>(k)].im, w.im);
      EXPECT_NEAR(std::cos(2.0 * M_PI * k / n), w.re, 1e-7);
      EXPECT_NEAR(-std::sin(2.0 * M_PI * k / n), w.im, 1e-7);
    }
    EXPECT_EQ(plane.GetTwiddle(n, n / 2, n).re, plane.GetTwiddle(2, 1, n).re);
  }
}

TEST(FourierPlane, TransformOfBlocksHasTheBitsOfThePlainPasses) {
  Random random(1);
  for (auto [w, h] : {std::pair(1, 1), std::pair(2, 1), std::pair(1, 2), std::pair(2, 2), std::pair(4, 8),
                      std::pair(8, 64), std::pair(16, 1), std::pair(16, 2), std::pair(16, 16), std::pair(32, 4),
                      std::pair(64, 32), std::pair(128, 64), std::pair(32, 256), std::pair(512, 16)}) {
    for (int inverse : {0, 1}) {
      CFourierPlane plane;
      ASSERT_EQ(1, plane.Create(w, h));
      FillPairs(plane.data, random);
      auto const expected = reference::RadixTwoPlane(plane.data, w, h, inverse == 1);
      plane.Transform(inverse);
      EXPECT_TRUE(SameBits(expected, plane.data)) << w << 'x' << h << ' ' << inverse;
      EXPECT_TRUE(plane.lineA.empty() && plane.lineB.empty() && plane.twiddles.empty());
    }
  }
}

// Blocks multiply by the reciprocal of sqrt(n) where single lines divide.
TEST(FourierPlane, ValuesOfEverySizeHaveTheBitsOfThePlainPasses) {
  Random random(5);
  for (float scale : {1e-44f, 3e-43f, 1e-41f, 1e-38f, 1e-30f, 1e30f}) {
    for (auto [w, h] : {std::pair(32, 32), std::pair(64, 128), std::pair(512, 32)}) {
      CFourierPlane plane;
      ASSERT_EQ(1, plane.Create(w, h));
      FillPairs(plane.data, random);
      for (float& v : plane.data) v *= scale;
      auto const expected = reference::RadixTwoPlane(plane.data, w, h, false);
      plane.Transform(0);
      EXPECT_TRUE(SameBits(expected, plane.data)) << w << 'x' << h << ' ' << scale;
    }
  }
}

TEST(FourierPlane, RowsOfZerosHaveTheBitsOfThePlainPasses) {
  for (int inverse : {0, 1}) {
    for (float other : {0.0f, -0.0f, 3.0f}) {
      CFourierPlane plane;
      plane.Create(32, 64);
      plane.data[2 * 32 * 20 + 7] = other;
      auto const expected = reference::RadixTwoPlane(plane.data, 32, 64, inverse == 1);
      plane.Transform(inverse);
      EXPECT_TRUE(SameBits(expected, plane.data)) << inverse << ' ' << other;
    }
  }
}

TEST(FourierPlane, LineReturnsTheBufferThatHoldsTheResult) {
  Random random(2);
  for (int log2n = 0; log2n <= 9; ++log2n) {
    int const n = 1 << log2n;
    CFourierPlane plane;
    plane.lineA.resize(2 * static_cast<std::size_t>(n));
    plane.lineB.resize(plane.lineA.size());
    FillPairs(plane.lineA, random);
    auto const expected = reference::RadixTwoPlane(plane.lineA, n, 1, false);
    plane.MakeTwiddles(n);
    float const* const result = plane.TransformLine(n, log2n, 0);
    EXPECT_TRUE(result == plane.lineA.data() || result == plane.lineB.data());
    EXPECT_TRUE(SameBits(expected, std::vector<float>(result, result + 2 * n))) << n;
  }
}

// The error of each value, as a fraction of the value and of the root mean square of all together, is at most 3e-8
// times 1 + log2 of the number of values.
TEST(FourierPlane, AgreesWithTheDefinition) {
  Random random(3);
  for (auto [w, h] : {std::pair(4, 4), std::pair(16, 64), std::pair(256, 4), std::pair(1, 512), std::pair(64, 64)}) {
    for (int inverse : {0, 1}) {
      CFourierPlane plane;
      plane.Create(w, h);
      FillPairs(plane.data, random);
      double const scale = 1.0 / std::sqrt(static_cast<double>(w) * h);
      ComplexLine expected = reference::DefinedTransform2(ComplexOf(plane.data), w, h, inverse == 1 ? 1 : -1);
      for (auto& v : expected) v *= scale;
      plane.Transform(inverse);
      ComplexLine const actual = ComplexOf(plane.data);
      double const noise = 6e-8 * (1.0 + std::log2(static_cast<double>(w) * h));
      double const rms = Rms(expected);
      for (std::size_t i = 0; i < actual.size(); ++i) {
        ASSERT_LE(std::abs(actual[i] - expected[i]) / (std::abs(expected[i]) + rms), noise)
            << w << 'x' << h << " at " << i;
      }
    }
  }
}

TEST(FourierPlane, InverseUndoesForward) {
  Random random(4);
  CFourierPlane plane;
  plane.Create(300, 200);
  FillPairs(plane.data, random);
  std::vector<float> const before(plane.data);
  plane.Transform(0);
  plane.Transform(1);
  for (std::size_t i = 0; i < before.size(); ++i) ASSERT_NEAR(before[i], plane.data[i], 2e-3) << i;
}

// Intended: with the table of two points, a pair of columns is not the transform of its definition.
TEST(FourierPlane, TwoColumnsShowTheTableOfTwoPoints) {
  CFourierPlane plane;
  plane.Create(2, 1);
  plane.data = {3.0f, 0.0f, 5.0f, 0.0f};
  plane.Transform(0);
  double const root = static_cast<float>(std::sqrt(2.0));
  auto const over = [root](double v) { return static_cast<float>(v / root); };
  EXPECT_EQ((std::vector<float>{over(8.0), over(-5.0), over(-2.0), over(5.0)}), plane.data);
}

}  // namespace
}  // namespace orb::test
