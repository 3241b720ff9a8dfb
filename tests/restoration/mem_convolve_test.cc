// The convolution operator: against the definition, its modes and states, progress, and two runs at once.
#include <cmath>
#include <thread>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/real_transform_reference.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

std::vector<float> RandomFloats(Random& random, std::size_t count) {
  std::uniform_real_distribution<float> value(-1.0f, 2.0f);
  std::vector<float> floats(count);
  for (float& v : floats) v = value(random);
  return floats;
}

// An operator with its store.
class Convolution {
 public:
  Convolution(int width, int height, int kernelHalfX, int kernelHalfY)
      : nx(width), ny(height), halfX(kernelHalfX), halfY(kernelHalfY), store(2 * Count(), 555.0f) {}

  std::size_t Count() const { return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny); }

  int Apply(int mode, std::vector<float> const& in, std::vector<float> const& kernel, std::vector<float>& out,
            COrbImage* progress = nullptr, int from = 0, int to = 0) {
    out.assign(Count(), 777.0f);
    convolve(out.data(), in.data(), kernel.data(), store.data(), nx, ny, halfX, halfY, &mode, progress, from, to);
    return mode;
  }
  int Reset() {
    int mode = -1;
    convolve(nullptr, nullptr, nullptr, nullptr, 0, 0, 0, 0, &mode, nullptr, 0, 0);
    return mode;
  }

  int const nx;
  int const ny;
  int const halfX;
  int const halfY;

 private:
  std::vector<float> store;
  MemConvolve convolve;
};

testing::AssertionResult IsNear(std::vector<double> const& expected, std::vector<float> const& actual) {
  double sum = 0.0;
  for (double v : expected) sum += v * v;
  double const most = 5e-6 * std::sqrt(sum / static_cast<double>(expected.size()));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (std::fabs(expected[i] - actual[i]) <= most) continue;
    return testing::AssertionFailure() << i << ": expected " << expected[i] << ", found " << actual[i];
  }
  return testing::AssertionSuccess();
}

TEST(MemConvolve, WrapsAKernelAroundTheOrigin) {
  std::vector<float> const kernel = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};  // 5 x 3
  std::vector<float> target(8 * 4, 99.0f);
  KernelWrap(kernel.data(), target.data(), 2, 1, 8, 4);
  EXPECT_EQ((std::vector<float>{8,  9,  10, 0, 0, 0, 6,  7,   //
                                13, 14, 15, 0, 0, 0, 11, 12,  //
                                0,  0,  0,  0, 0, 0, 0,  0,   //
                                3,  4,  5,  0, 0, 0, 1,  2}),
            target);
}

TEST(MemConvolve, KernelLargerThanTheTargetStaysInside) {
  Random random(1);
  for (int nx : {1, 2, 4, 8}) {
    for (int ny : {1, 2, 8}) {
      std::vector<float> const kernel = RandomFloats(random, 13 * 19);
      std::vector<float> target(static_cast<std::size_t>(nx * ny) + 1, 99.0f);
      KernelWrap(kernel.data(), target.data(), 6, 9, nx, ny);
      EXPECT_EQ(99.0f, target.back());
      target.pop_back();
      EXPECT_TRUE(SameBits(reference::WrapKernel(kernel, 6, 9, nx, ny), target)) << nx << ' ' << ny;
    }
  }
}

TEST(MemConvolve, KernelOfOneGivesTheInputBackAgainAndAgain) {
  Random random(2);
  for (int nx : {1, 2, 4, 16, 64}) {
    for (int ny : {1, 2, 8, 32}) {
      Convolution c(nx, ny, 1, 1);
      std::vector<float> const kernel = {0, 0, 0, 0, 1, 0, 0, 0, 0};
      if (nx < 4 || ny < 2) continue;  // the kernel's zeros would fall on its one
      std::vector<float> const in = RandomFloats(random, c.Count());
      std::vector<float> out;
      for (int mode : {1, 1, 2}) {
        ASSERT_EQ(0, c.Apply(mode, in, kernel, out));
        EXPECT_TRUE(IsNear({in.begin(), in.end()}, out)) << nx << 'x' << ny;
      }
    }
  }
}

TEST(MemConvolve, ConvolvesAndCorrelates) {
  Random random(3);
  for (int nx : {1, 2, 8, 16, 64}) {
    for (int ny : {1, 2, 8, 32, 64}) {
      int const halfX = std::min(2, (nx - 1) / 2);
      int const halfY = std::min(3, (ny - 1) / 2);
      Convolution c(nx, ny, halfX, halfY);
      std::vector<float> const kernel =
          RandomFloats(random, static_cast<std::size_t>((2 * halfX + 1) * (2 * halfY + 1)));
      std::vector<float> const in = RandomFloats(random, c.Count());
      std::vector<float> out;
      ASSERT_EQ(0, c.Apply(1, in, kernel, out));
      EXPECT_TRUE(IsNear(reference::ConvolveByDefinition(in, kernel, halfX, halfY, nx, ny, 1), out)) << nx << 'x' << ny;
      ASSERT_EQ(0, c.Apply(2, in, kernel, out));
      EXPECT_TRUE(IsNear(reference::ConvolveByDefinition(in, kernel, halfX, halfY, nx, ny, -1), out))
          << nx << 'x' << ny;
    }
  }
}

TEST(MemConvolve, CorrelationIsTheTransposeOfConvolution) {
  Random random(4);
  Convolution c(64, 32, 3, 2);
  std::vector<float> const kernel = RandomFloats(random, 7 * 5);
  std::vector<float> const x = RandomFloats(random, c.Count());
  std::vector<float> const y = RandomFloats(random, c.Count());
  std::vector<float> Hx;
  std::vector<float> Hty;
  ASSERT_EQ(0, c.Apply(1, x, kernel, Hx));
  ASSERT_EQ(0, c.Apply(2, y, kernel, Hty));
  double yHx = 0.0;
  double xHty = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    yHx += static_cast<double>(y[i]) * Hx[i];
    xHty += static_cast<double>(x[i]) * Hty[i];
  }
  EXPECT_NEAR(yHx, xHty, 1e-5 * std::fabs(yHx));
}

TEST(MemConvolve, OneOffKernelFirstThenTheMainOneThenNoOther) {
  Random random(5);
  Convolution c(16, 8, 1, 1);
  std::vector<float> const oneOff = RandomFloats(random, 9);
  std::vector<float> const main = RandomFloats(random, 9);
  std::vector<float> const other = RandomFloats(random, 9);
  std::vector<float> const in = RandomFloats(random, c.Count());
  std::vector<float> out;
  ASSERT_EQ(0, c.Apply(3, in, oneOff, out));
  EXPECT_TRUE(IsNear(reference::ConvolveByDefinition(in, oneOff, 1, 1, 16, 8, 1), out));
  ASSERT_EQ(0, c.Apply(1, in, main, out));
  EXPECT_TRUE(IsNear(reference::ConvolveByDefinition(in, main, 1, 1, 16, 8, 1), out));
  for (int mode : {1, 3}) {
    ASSERT_EQ(0, c.Apply(mode, in, other, out));
    EXPECT_TRUE(IsNear(reference::ConvolveByDefinition(in, main, 1, 1, 16, 8, 1), out)) << mode;
  }
  EXPECT_EQ(0, c.Reset());
  ASSERT_EQ(0, c.Apply(2, in, other, out));
  EXPECT_TRUE(IsNear(reference::ConvolveByDefinition(in, other, 1, 1, 16, 8, -1), out));
}

TEST(MemConvolve, RefusesOtherModesAndOtherSizes) {
  std::vector<float> const kernel(9, 1.0f);
  for (int mode : {0, 4, 100}) {
    Convolution c(16, 8, 1, 1);
    std::vector<float> const in(c.Count());
    std::vector<float> out;
    EXPECT_EQ(1, c.Apply(mode, in, kernel, out)) << mode;
    EXPECT_EQ(std::vector<float>(c.Count(), 777.0f), out);
  }
  for (auto const& [nx, ny] : {std::pair{100, 64}, {64, 100}, {3, 4}}) {
    Convolution c(nx, ny, 1, 1);
    std::vector<float> const in(c.Count());
    std::vector<float> out;
    EXPECT_EQ(1, c.Apply(1, in, kernel, out));
    EXPECT_EQ(std::vector<float>(c.Count(), 777.0f), out);
  }
}

TEST(MemConvolve, SixPositionsInSteps) {
  RecordingWindow window;
  COrbImage image;
  image.SetProgressHandle(&window);
  image.ShowProgressInit("text");
  Convolution c(16, 8, 1, 1);
  std::vector<float> out;
  ASSERT_EQ(0, c.Apply(1, std::vector<float>(c.Count()), std::vector<float>(9), out, &image, 15, 35));
  EXPECT_EQ((std::vector<int>{18, 21, 24, 27, 30, 33}), window.positions);
}

TEST(MemConvolve, EscapeAtAnyPositionIsStatusEight) {
  for (int poll = 1; poll <= 6; ++poll) {
    RecordingWindow window;
    window.escapeAtPoll = poll;
    COrbImage image;
    image.SetProgressHandle(&window);
    image.ShowProgressInit("text");
    Convolution c(16, 8, 1, 1);
    std::vector<float> out;
    EXPECT_EQ(8, c.Apply(1, std::vector<float>(c.Count()), std::vector<float>(9), out, &image, 0, 60));
    EXPECT_EQ(static_cast<std::size_t>(poll), window.positions.size());
  }
}

TEST(MemConvolve, TwoAtOnceGiveTheBitsOfOneAfterTheOther) {
  Random random(6);
  auto const work = [](std::vector<float> const& in, std::vector<float> const& kernel, int log2) {
    Convolution c(1 << log2, 64, 3, 3);
    std::vector<float> out = in;
    for (int i = 0; i < 10; ++i) {
      std::vector<float> const from = out;
      EXPECT_EQ(0, c.Apply(1, from, kernel, out));
    }
    return out;
  };
  std::vector<float> kernel = RandomFloats(random, 49);
  for (float& v : kernel) v /= 25.0f;
  std::vector<float> const wide = RandomFloats(random, 256 * 64);
  std::vector<float> const narrow = RandomFloats(random, 128 * 64);
  std::vector<float> const expectedWide = work(wide, kernel, 8);
  std::vector<float> const expectedNarrow = work(narrow, kernel, 7);
  std::vector<float> atOnce;
  std::thread other([&] { atOnce = work(wide, kernel, 8); });
  EXPECT_TRUE(SameBits(expectedNarrow, work(narrow, kernel, 7)));
  other.join();
  EXPECT_TRUE(SameBits(expectedWide, atOnce));
}

}  // namespace
}  // namespace orb::test
