// Fft2Forward, Fft2Inverse and CopyFloats.
#include <algorithm>
#include <cmath>
#include <complex>
#include <numeric>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/fourier_reference.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::ComplexLine;

std::vector<float> RandomFloats(Random& random, int count) {
  std::uniform_real_distribution<float> any(-100.0f, 700.0f);
  std::vector<float> values(static_cast<std::size_t>(count));
  for (float& v : values) v = any(random);
  return values;
}

int LargestFactor(int n) {
  int largest = 1;
  for (int p = 2; p <= n; ++p) {
    while (n % p == 0) {
      largest = p;
      n /= p;
    }
  }
  return largest;
}

// The float noise of a transform, as stated.
double Noise(int nx, int ny) {
  auto const ofFactor = [](int n) {
    int const p = LargestFactor(n);
    return p > 5 ? p / 100.0 : 0.0;
  };
  return 8e-7 * std::sqrt(1.0 + std::log2(static_cast<double>(nx) * ny)) * (1.0 + ofFactor(nx) + ofFactor(ny));
}

template <typename Values>
double Rms(Values const& values) {
  double sum = 0.0;
  for (auto v : values) sum += std::norm(v);
  return std::sqrt(sum / static_cast<double>(values.size()));
}

// The largest error, as a fraction of the value and of the root mean square of all together.
template <typename Expected, typename Actual>
double WorstError(Expected const& expected, Actual const& actual) {
  double const rms = Rms(expected);
  double worst = 0.0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    worst = std::max<double>(worst, std::abs(actual[i] - expected[i]) / (std::abs(expected[i]) + rms));
  }
  return worst;
}

ComplexLine ComplexOf(std::vector<float> const& pairs) {
  ComplexLine values;
  for (std::size_t i = 0; i < pairs.size(); i += 2) values.emplace_back(pairs[i], pairs[i + 1]);
  return values;
}

void ExpectForward(Random& random, int nx, int ny) {
  std::vector<float> const image = RandomFloats(random, nx * ny);
  std::vector<float> spectrum(2 * image.size(), -7e30f);
  FftTables tables(nx, ny);
  ASSERT_EQ(1, Fft2Forward(&tables, image.data(), spectrum.data(), nx, ny, nullptr, 0, 100));
  ComplexLine expected = reference::DefinedTransform2(ComplexLine(image.begin(), image.end()), nx, ny, -1);
  for (auto& v : expected) v /= static_cast<double>(nx) * ny;
  EXPECT_LE(WorstError(expected, ComplexOf(spectrum)), Noise(nx, ny)) << nx << 'x' << ny;
}

// Any spectrum, not only that of a real image.
void ExpectInverse(Random& random, int nx, int ny) {
  std::vector<float> spectrum = RandomFloats(random, 2 * nx * ny);
  ComplexLine const whole = reference::DefinedTransform2(ComplexOf(spectrum), nx, ny, 1);
  std::vector<double> expected;
  for (auto v : whole) expected.push_back(v.real());
  std::vector<float> image(expected.size(), -7e30f);
  FftTables tables(nx, ny);
  ASSERT_EQ(1, Fft2Inverse(&tables, spectrum.data(), image.data(), nx, ny, nullptr, 0, 100));
  EXPECT_LE(WorstError(expected, image), Noise(nx, ny)) << nx << 'x' << ny;
}

TEST(Fft2, AgreesWithTheDefinitionForEveryLength) {
  Random random(1);
  for (int n = 1; n <= 70; ++n) {
    for (int other : {1, 2, 5}) {
      ExpectForward(random, n, other);
      ExpectForward(random, other, n);
      ExpectInverse(random, n, other);
      ExpectInverse(random, other, n);
    }
  }
}

TEST(Fft2, AgreesWithTheDefinitionForLargePrimes) {
  Random random(2);
  for (int n : {127, 509, 1009, 2003}) {
    ExpectForward(random, n, 2);
    ExpectForward(random, 3, n);
    ExpectInverse(random, n, 3);
    ExpectInverse(random, 2, n);
  }
}

TEST(Fft2, AgreesWithTheDefinitionForImages) {
  Random random(3);
  for (auto [nx, ny] : {std::pair(64, 64), std::pair(30, 77), std::pair(100, 36), std::pair(67, 41)}) {
    ExpectForward(random, nx, ny);
    ExpectInverse(random, nx, ny);
  }
}

TEST(Fft2, InverseUndoesForward) {
  Random random(4);
  for (auto [nx, ny] : {std::pair(1, 1), std::pair(64, 64), std::pair(100, 80), std::pair(37, 211)}) {
    std::vector<float> const image = RandomFloats(random, nx * ny);
    std::vector<float> spectrum(2 * image.size());
    std::vector<float> back(image.size());
    FftTables tables(nx, ny);
    Fft2Forward(&tables, image.data(), spectrum.data(), nx, ny, nullptr, 0, 50);
    Fft2Inverse(&tables, spectrum.data(), back.data(), nx, ny, nullptr, 50, 100);
    EXPECT_LE(WorstError(image, back), 2.0 * Noise(nx, ny)) << nx << 'x' << ny;
  }
}

TEST(Fft2, ConstantImageStandsAtTheZeroFrequency) {
  std::vector<float> const image(48 * 40, 321.5f);
  std::vector<float> spectrum(2 * image.size());
  FftTables tables(48, 40);
  Fft2Forward(&tables, image.data(), spectrum.data(), 48, 40, nullptr, 0, 100);
  EXPECT_FLOAT_EQ(321.5f, spectrum[0]);
  for (std::size_t i = 1; i < spectrum.size(); ++i) ASSERT_NEAR(0.0, spectrum[i], 2e-5) << i;
}

TEST(Fft2, SpectrumOfAnImageMirrorsItself) {
  Random random(5);
  for (auto [nx, ny] : {std::pair(33, 20), std::pair(40, 21)}) {
    std::vector<float> const image = RandomFloats(random, nx * ny);
    std::vector<float> spectrum(2 * image.size());
    FftTables tables(nx, ny);
    Fft2Forward(&tables, image.data(), spectrum.data(), nx, ny, nullptr, 0, 100);
    for (int v = 0; v < ny; ++v) {
      for (int u = 0; u < nx; ++u) {
        float const* const a = &spectrum[2 * static_cast<std::size_t>(v * nx + u)];
        float const* const b = &spectrum[2 * static_cast<std::size_t>((ny - v) % ny * nx + (nx - u) % nx)];
        ASSERT_NEAR(a[0], b[0], 1e-4) << u << ',' << v;
        ASSERT_NEAR(a[1], -b[1], 1e-4) << u << ',' << v;
      }
    }
  }
}

TEST(Fft2, ImageMayLieInsideItsSpectrum) {
  Random random(6);
  for (auto [nx, ny] : {std::pair(8, 6), std::pair(9, 7), std::pair(5, 1), std::pair(1, 5)}) {
    std::vector<float> const image = RandomFloats(random, nx * ny);
    std::vector<float> expected(2 * image.size());
    FftTables tables(nx, ny);
    Fft2Forward(&tables, image.data(), expected.data(), nx, ny, nullptr, 0, 100);
    for (std::size_t offset : {std::size_t{0}, image.size() / 2, image.size()}) {
      std::vector<float> spectrum(2 * image.size());
      std::copy(image.begin(), image.end(), spectrum.begin() + static_cast<std::ptrdiff_t>(offset));
      Fft2Forward(&tables, spectrum.data() + offset, spectrum.data(), nx, ny, nullptr, 0, 100);
      EXPECT_TRUE(SameBits(expected, spectrum)) << nx << 'x' << ny << " at " << offset;
    }
  }
}

// The percentages of `steps` steps of each of two stages, a repeated one sent once.
std::vector<int> ExpectedPercents(int from, int to, int nx, int ny) {
  std::vector<int> percents;
  int const half = (to - from) / 2;
  auto const add = [&](int percent) {
    if (percents.empty() || percents.back() != percent) percents.push_back(percent);
  };
  for (int y = 1; y <= ny; ++y) add(static_cast<int>(std::floor(half * y / static_cast<double>(ny) + 0.5)) + from);
  for (int x = 1; x <= nx; ++x) {
    add(static_cast<int>(std::floor(half * x / static_cast<double>(nx) + 0.5)) + half + from);
  }
  return percents;
}

TEST(Fft2, ReportsEachPercentageOnceRowsThenColumns) {
  for (auto [nx, ny] : {std::pair(1, 1), std::pair(7, 300), std::pair(250, 9), std::pair(64, 64), std::pair(3, 2)}) {
    for (auto [from, to] : {std::pair(0, 20), std::pair(10, 25), std::pair(40, 65), std::pair(0, 100)}) {
      COrbImage progress;
      RecordingWindow window;
      progress.SetProgressHandle(&window);
      progress.ShowProgressInit("run");
      std::vector<float> image(static_cast<std::size_t>(nx * ny), 1.0f);
      std::vector<float> spectrum(2 * image.size());
      FftTables tables(nx, ny);
      EXPECT_EQ(1, Fft2Forward(&tables, image.data(), spectrum.data(), nx, ny, &progress, from, to));
      EXPECT_EQ(ExpectedPercents(from, to, nx, ny), window.positions) << nx << 'x' << ny;
      window.positions.clear();
      EXPECT_EQ(1, Fft2Inverse(&tables, spectrum.data(), image.data(), nx, ny, &progress, from, to));
      EXPECT_EQ(ExpectedPercents(from, to, nx, ny), window.positions) << nx << 'x' << ny;
    }
  }
}

TEST(Fft2, EveryPollMayCancel) {
  std::vector<float> image(20 * 30, 1.0f);
  std::vector<float> spectrum(2 * image.size());
  FftTables tables(20, 30);
  int const polls = static_cast<int>(ExpectedPercents(0, 20, 20, 30).size());
  for (int poll = 1; poll <= polls + 1; ++poll) {
    for (bool isForward : {true, false}) {
      COrbImage progress;
      RecordingWindow window;
      window.escapeAtPoll = poll;
      progress.SetProgressHandle(&window);
      progress.ShowProgressInit("run");
      int const done = isForward ? Fft2Forward(&tables, image.data(), spectrum.data(), 20, 30, &progress, 0, 20)
                                 : Fft2Inverse(&tables, spectrum.data(), image.data(), 20, 30, &progress, 0, 20);
      EXPECT_EQ(poll > polls ? 1 : 0, done);
      EXPECT_EQ(std::min(poll, polls), window.polls);
    }
  }
}

TEST(FftpackLine, OnePointIsLeftAsItIs) {
  orb::FftpackLine line(1);
  float value[2] = {3.0f, -4.0f};
  line.Forward(value);
  line.Backward(value);
  EXPECT_EQ(3.0f, value[0]);
  EXPECT_EQ(-4.0f, value[1]);
}

TEST(FftpackLine, KernelsHaveTheirSigns) {
  orb::FftpackLine line(3);
  float forward[6] = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f};
  float backward[6] = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f};
  line.Forward(forward);
  line.Backward(backward);
  EXPECT_NEAR(-std::sqrt(0.75), forward[3], 1e-6);
  EXPECT_NEAR(std::sqrt(0.75), backward[3], 1e-6);
}

// Lengths with every radix that has code of its own, and with one that has not.
TEST(FftpackLine, ThreadsDoNotMeet) {
  constexpr int kRounds = 4000;
  auto const work = [](int n) {
    orb::FftpackLine line(n);
    std::vector<float> values(2 * static_cast<std::size_t>(n));
    std::iota(values.begin(), values.end(), 1.0f);
    line.Forward(values.data());
    line.Backward(values.data());
    return values;
  };
  std::vector<float> const expected[2] = {work(120), work(77)};
  auto const countWrong = [&](int which, int n) {
    int wrong = 0;
    for (int i = 0; i < kRounds; ++i) wrong += work(n) == expected[which] ? 0 : 1;
    return wrong;
  };
  int wrong = 0;
  std::thread other([&] { wrong = countWrong(0, 120); });
  EXPECT_EQ(0, countWrong(1, 77));
  other.join();
  EXPECT_EQ(0, wrong);
}

TEST(CopyFloats, ToleratesOverlapBothWays) {
  std::vector<float> const source = {0, 1, 2, 3, 4, 5, 6, 7};
  std::vector<float> up(source);
  CopyFloats(up.data(), up.data() + 2, 5);
  EXPECT_EQ((std::vector<float>{0, 1, 0, 1, 2, 3, 4, 7}), up);
  std::vector<float> down(source);
  CopyFloats(down.data() + 2, down.data(), 5);
  EXPECT_EQ((std::vector<float>{2, 3, 4, 5, 6, 5, 6, 7}), down);
  CopyFloats(down.data(), down.data(), 8);
  CopyFloats(down.data(), nullptr, 0);
  CopyFloats(down.data(), nullptr, -3);
  EXPECT_EQ((std::vector<float>{2, 3, 4, 5, 6, 5, 6, 7}), down);
}

}  // namespace
}  // namespace orb::test
