// The real transform and its packed spectra: against the definition, against the plain algorithm, and there and back.
#include <algorithm>
#include <bit>
#include <cmath>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/real_transform_reference.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

std::vector<float> RandomFloats(Random& random, std::size_t count, float low = -3.0f, float high = 5.0f) {
  std::uniform_real_distribution<float> value(low, high);
  std::vector<float> floats(count);
  for (float& v : floats) v = value(random);
  return floats;
}

std::vector<float> TransformLine(std::vector<float> const& line, int direction) {
  RealFft fft;
  fft.RealFftSetup(std::bit_width(line.size()) - 1);
  fft.LoadLine(line.data(), 1);
  direction > 0 ? fft.RealFftForward() : fft.RealFftInverse();
  std::vector<float> result(line.size());
  fft.StoreLine(result.data(), 1);
  return result;
}

std::vector<float> Transform2(std::vector<float> from, int log2x, int log2y, int direction) {
  std::vector<float> to(from.size(), 12345.0f);
  RealFft fft;
  if (direction > 0) {
    fft.RealFft2(from.data(), to.data(), log2x, log2y, direction);
  } else {
    fft.RealFft2(to.data(), from.data(), log2x, log2y, direction);
  }
  return to;
}

double RootMeanSquare(std::vector<double> const& values) {
  double sum = 0.0;
  for (double v : values) sum += v * v;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

// Largest difference by the root mean square of what is expected.
double RelativeError(std::vector<double> const& expected, std::vector<float> const& actual) {
  double largest = 0.0;
  for (std::size_t i = 0; i < expected.size(); ++i) largest = std::max(largest, std::fabs(expected[i] - actual[i]));
  return largest / RootMeanSquare(expected);
}

std::vector<double> AsDoubles(std::vector<float> const& floats) { return {floats.begin(), floats.end()}; }

// What the header promises, for `axes` logarithms in all.
double Noise(int axes) { return 6e-7 * std::max(axes, 1); }

TEST(RealTransform, PowersOfTwo) {
  EXPECT_EQ(1, IntPow2(0));
  EXPECT_EQ(2, IntPow2(1));
  EXPECT_EQ(1 << 30, IntPow2(30));
}

TEST(RealTransform, LineIsThePackedSpectrumOfItsDefinition) {
  Random random(1);
  for (int m = 0; m <= 13; ++m) {
    std::vector<float> const line = RandomFloats(random, static_cast<std::size_t>(1) << m);
    std::vector<double> const expected = reference::LineSpectrum(AsDoubles(line));
    EXPECT_LT(RelativeError(expected, TransformLine(line, 1)), Noise(m)) << m;
  }
}

TEST(RealTransform, LineEqualsThePlainAlgorithmBitForBit) {
  Random random(2);
  for (int m = 0; m <= 12; ++m) {
    std::vector<float> const line = RandomFloats(random, static_cast<std::size_t>(1) << m);
    for (int direction : {1, -1}) {
      std::vector<float> const actual = TransformLine(line, direction);
      EXPECT_TRUE(SameBits(reference::TransformLine<float>(line, direction), actual)) << m << ' ' << direction;
      std::vector<float> const inDouble = reference::TransformLine<double>(line, direction);
      EXPECT_LT(RelativeError(AsDoubles(inDouble), actual), Noise(m)) << m << ' ' << direction;
    }
  }
}

TEST(RealTransform, EightSamplesGiveFiveCosineAndThreeSineTerms) {
  std::vector<float> wave(8);
  double const pi = std::acos(-1.0);
  for (int k : {0, 1, 2, 3, 4}) {
    for (std::size_t t = 0; t < 8; ++t)
      wave[t] = static_cast<float>(std::cos(2.0 * pi * k * static_cast<double>(t) / 8.0));
    std::vector<float> const y = TransformLine(wave, 1);
    double const height = k == 0 || k == 4 ? std::sqrt(8.0) : std::sqrt(8.0) / 2.0;
    for (int i = 0; i < 8; ++i)
      EXPECT_NEAR(i == k ? height : 0.0, y[static_cast<std::size_t>(i)], 1e-6) << k << ' ' << i;
  }
  for (int k : {1, 2, 3}) {
    for (std::size_t t = 0; t < 8; ++t)
      wave[t] = static_cast<float>(std::sin(2.0 * pi * k * static_cast<double>(t) / 8.0));
    std::vector<float> const y = TransformLine(wave, 1);
    for (int i = 0; i < 8; ++i) {
      EXPECT_NEAR(i == 4 + k ? std::sqrt(8.0) / 2.0 : 0.0, y[static_cast<std::size_t>(i)], 1e-6) << k << ' ' << i;
    }
  }
}

TEST(RealTransform, ConstantLineHasOneTerm) {
  for (int m = 0; m <= 11; ++m) {
    std::vector<float> const y = TransformLine(std::vector<float>(static_cast<std::size_t>(1) << m, 3.0f), 1);
    EXPECT_NEAR(3.0 * std::sqrt(std::ldexp(1.0, m)), y[0], 1e-5 * y[0]);
    for (std::size_t k = 1; k < y.size(); ++k) EXPECT_EQ(0.0f, y[k]) << m << ' ' << k;
  }
}

TEST(RealTransform, InverseOfForwardGivesTheLineBack) {
  Random random(3);
  for (int m = 0; m <= 13; ++m) {
    std::vector<float> const line = RandomFloats(random, static_cast<std::size_t>(1) << m);
    EXPECT_LT(RelativeError(AsDoubles(line), TransformLine(TransformLine(line, 1), -1)), Noise(2 * m)) << m;
  }
}

TEST(RealTransform, SetupOfMinusOneDoesNothing) {
  RealFft fft;
  fft.RealFftSetup(2);
  fft.RealFftSetup(-1);
  std::vector<float> line = {1.0f, 2.0f, 3.0f, 4.0f};
  fft.LoadLine(line.data(), 1);
  fft.RealFftForward();
  fft.StoreLine(line.data(), 1);
  EXPECT_EQ((std::vector<float>{5.0f, -1.0f, -1.0f, -1.0f}), line);
}

TEST(RealTransform, ImageEqualsItsLinesBitForBit) {
  Random random(4);
  for (int log2x = 0; log2x <= 8; ++log2x) {
    for (int log2y = 0; log2y <= 8; ++log2y) {
      std::vector<float> const image = RandomFloats(random, static_cast<std::size_t>(1) << (log2x + log2y));
      for (int direction : {1, -1, 5, -5}) {
        EXPECT_TRUE(SameBits(reference::Transform2<float>(image, log2x, log2y, direction),
                             Transform2(image, log2x, log2y, direction)))
            << log2x << ' ' << log2y << ' ' << direction;
      }
    }
  }
}

TEST(RealTransform, LongLinesOfImagesEqualThePlainOnes) {
  Random random(5);
  for (int const longer : {11, 13}) {
    for (bool const isWide : {false, true}) {
      int const log2x = isWide ? longer : 4;
      int const log2y = isWide ? 4 : longer;
      std::vector<float> const image = RandomFloats(random, static_cast<std::size_t>(1) << (log2x + log2y));
      std::vector<float> const spectrum = Transform2(image, log2x, log2y, 1);
      EXPECT_TRUE(SameBits(reference::Transform2<float>(image, log2x, log2y, 1), spectrum));
      EXPECT_LT(RelativeError(AsDoubles(reference::Transform2<double>(image, log2x, log2y, 1)), spectrum),
                Noise(log2x + log2y));
      EXPECT_LT(RelativeError(AsDoubles(image), Transform2(spectrum, log2x, log2y, -1)), Noise(2 * (log2x + log2y)));
    }
  }
}

TEST(RealTransform, SourceAndTargetMayBeOneArray) {
  Random random(6);
  for (int const log2 : {3, 6}) {
    std::vector<float> const image = RandomFloats(random, static_cast<std::size_t>(1) << (2 * log2));
    for (int direction : {1, -1}) {
      std::vector<float> one = image;
      RealFft fft;
      fft.RealFft2(one.data(), one.data(), log2, log2, direction);
      EXPECT_TRUE(SameBits(Transform2(image, log2, log2, direction), one));
    }
  }
}

TEST(RealTransform, NegativeLogarithmsReturnAtOnce) {
  RealFft fft;
  fft.RealFft2(nullptr, nullptr, -1, 3, 1);
  fft.RealFft2(nullptr, nullptr, 3, -1, -1);
}

TEST(RealTransform, ForwardOnlyReadsTheImage) {
  Random random(7);
  std::vector<float> image = RandomFloats(random, 64 * 32);
  std::vector<float> const before = image;
  std::vector<float> spectrum(image.size());
  RealFft fft;
  fft.RealFft2(image.data(), spectrum.data(), 6, 5, 1);
  EXPECT_TRUE(SameBits(before, image));
  std::vector<float> const form = spectrum;
  fft.RealFft2(image.data(), spectrum.data(), 6, 5, -1);
  EXPECT_TRUE(SameBits(form, spectrum));
}

// The packed spectrum holds the transform with kernel exp(+2 pi i (c x/nx + r y/ny)) / sqrt(nx ny).
TEST(PackedSpectrum, HoldsEveryFrequencyWhereItShould) {
  constexpr int kLog2x = 4;
  constexpr int kLog2y = 3;
  constexpr int nx = 1 << kLog2x;
  constexpr int ny = 1 << kLog2y;
  Random random(8);
  std::vector<float> const image = RandomFloats(random, nx * ny);
  std::vector<float> s = Transform2(image, kLog2x, kLog2y, 1);
  ASSERT_EQ(0, SpectrumPack(s.data(), kLog2x, kLog2y, 1));
  double const pi = std::acos(-1.0);
  auto const expect = [&](int c, int r, int reX, int reY, int imX, int imY) {
    double re = 0.0;
    double im = 0.0;
    for (int y = 0; y < ny; ++y) {
      for (int x = 0; x < nx; ++x) {
        double const angle = 2.0 * pi * (static_cast<double>(c * x) / nx + static_cast<double>(r * y) / ny);
        re += image[static_cast<std::size_t>(y * nx + x)] * std::cos(angle);
        im += image[static_cast<std::size_t>(y * nx + x)] * std::sin(angle);
      }
    }
    double const norm = std::sqrt(static_cast<double>(nx * ny));
    EXPECT_NEAR(re / norm, s[static_cast<std::size_t>(reY * nx + reX)], 2e-5) << c << ' ' << r;
    if (imX < 0) return;
    EXPECT_NEAR(im / norm, s[static_cast<std::size_t>(imY * nx + imX)], 2e-5) << c << ' ' << r;
  };
  int const h = nx / 2;
  int const H = ny / 2;
  for (int r : {0, H}) {
    for (int c : {0, h}) expect(c, r, c, r, -1, -1);
    for (int c = 1; c < h; ++c) expect(c, r, c, r, h + c, r);
  }
  for (int r = 1; r < H; ++r) {
    for (int c : {0, h}) expect(c, r, c, r, c, H + r);
    for (int c = 1; c < h; ++c) {
      expect(c, r, c, r, h + c, r);
      expect(c, -r, c, ny - r, h + c, ny - r);
    }
  }
}

TEST(PackedSpectrum, PackingAndProductEqualThePlainFormulas) {
  Random random(9);
  for (int log2x = 0; log2x <= 6; ++log2x) {
    for (int log2y = 0; log2y <= 6; ++log2y) {
      std::size_t const count = static_cast<std::size_t>(1) << (log2x + log2y);
      std::vector<float> const a = RandomFloats(random, count);
      std::vector<float> const b = RandomFloats(random, count);
      for (int direction : {1, 0, -1}) {
        std::vector<float> packed = a;
        EXPECT_EQ(0, SpectrumPack(packed.data(), log2x, log2y, direction));
        EXPECT_TRUE(SameBits(reference::PackSpectrum(a, log2x, log2y, direction), packed)) << log2x << ' ' << log2y;
        std::vector<float> out(count, 777.0f);
        SpectrumMultiply(out.data(), a.data(), b.data(), log2x, log2y, direction);
        EXPECT_TRUE(SameBits(reference::MultiplySpectra(a, b, log2x, log2y, direction), out)) << log2x << ' ' << log2y;
        std::vector<float> inPlace = a;
        SpectrumMultiply(inPlace.data(), inPlace.data(), b.data(), log2x, log2y, direction);
        EXPECT_TRUE(SameBits(out, inPlace)) << log2x << ' ' << log2y;
      }
    }
  }
}

TEST(PackedSpectrum, BackwardUndoesForward) {
  Random random(10);
  std::vector<float> const form = RandomFloats(random, 64 * 64);
  std::vector<float> s = form;
  SpectrumPack(s.data(), 6, 6, 1);
  SpectrumPack(s.data(), 6, 6, -1);
  EXPECT_LT(RelativeError(AsDoubles(form), s), 1e-6);
}

TEST(PackedSpectrum, CornersMultiplyAsRealsInBothDirections) {
  std::vector<float> const a(16, 2.0f);
  std::vector<float> const b(16, -3.0f);
  for (int direction : {1, -1}) {
    std::vector<float> out(16);
    SpectrumMultiply(out.data(), a.data(), b.data(), 2, 2, direction);
    for (std::size_t corner : {0u, 2u, 8u, 10u}) EXPECT_EQ(-6.0f, out[corner]) << direction;
    EXPECT_EQ(direction > 0 ? 0.0f : -12.0f, out[1]);
  }
}

}  // namespace
}  // namespace orb::test
