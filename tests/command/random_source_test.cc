// Random numbers that every machine agrees on.
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/random_source.h>

namespace orb::test {
namespace {

using host::PortableLog;
using host::RandomSource;

struct Moments {
  double mean;
  double deviation;
  double kurtosis;
};

template <typename Draw>
Moments MomentsOf(Draw const& draw, int count) {
  std::vector<double> values(count);
  double sum = 0.0;
  for (double& value : values) sum += value = draw();
  double const mean = sum / count;
  double second = 0.0;
  double fourth = 0.0;
  for (double value : values) {
    double const square = (value - mean) * (value - mean);
    second += square;
    fourth += square * square;
  }
  return Moments{mean, std::sqrt(second / count), fourth * count / (second * second)};
}

TEST(PortableLog, IsTheLogarithm) {
  for (double x = 1e-300; x < 1e300; x *= 1.37) {
    EXPECT_NEAR(std::log(x), PortableLog(x), 4e-16 * (1.0 + std::abs(std::log(x)))) << x;
  }
  EXPECT_EQ(0.0, PortableLog(1.0));
}

TEST(RandomSource, TheBitsNeverChange) {
  RandomSource random(1, 2);
  std::array<std::uint64_t, 3> const expected = {13782664598465056799u, 11049924693891846907u, 15153185287229151088u};
  for (std::uint64_t bits : expected) EXPECT_EQ(bits, random.Next());
  RandomSource again(1, 2);
  EXPECT_EQ(0x1.7948e6c90e31ap+0, again.Normal());
}

TEST(RandomSource, SeedsAndStreamsDiffer) {
  EXPECT_NE(RandomSource(1, 2).Next(), RandomSource(2, 1).Next());
  EXPECT_NE(RandomSource(1, 2).Next(), RandomSource(1, 3).Next());
  EXPECT_NE(RandomSource(1, 2).Next(), RandomSource(3, 2).Next());
}

TEST(RandomSource, UniformIsEven) {
  RandomSource random(5, 0);
  std::array<int, 10> counts{};
  for (int i = 0; i < 100000; ++i) {
    double const value = random.Uniform();
    ASSERT_GT(value, 0.0);
    ASSERT_LT(value, 1.0);
    ++counts[static_cast<int>(value * 10.0)];
  }
  for (int count : counts) EXPECT_NEAR(10000, count, 400);
}

TEST(RandomSource, NormalHasItsMoments) {
  RandomSource random(6, 0);
  Moments const found = MomentsOf([&] { return random.Normal(); }, 200000);
  EXPECT_NEAR(0.0, found.mean, 0.01);
  EXPECT_NEAR(1.0, found.deviation, 0.01);
  EXPECT_NEAR(3.0, found.kurtosis, 0.06);
}

TEST(RandomSource, CountsHaveTheVarianceOfTheirMean) {
  for (double mean : {0.1, 3.0, 19.0, 25.0, 4000.0}) {
    RandomSource random(7, 0);
    Moments const found = MomentsOf([&] { return random.Count(mean); }, 100000);
    EXPECT_NEAR(mean, found.mean, 5.0 * std::sqrt(mean / 100000.0));
    EXPECT_NEAR(std::sqrt(mean), found.deviation, 0.015 * std::sqrt(mean) + 0.002);
  }
  EXPECT_EQ(0.0, RandomSource(1, 1).Count(0.0));
}

}  // namespace
}  // namespace orb::test
