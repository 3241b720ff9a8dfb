// The stacks of means against plain ones, pixel by pixel, and what is done to frames before.
#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/covered_columns.h>
#include <hosts/orbimg/line_join.h>
#include <hosts/orbimg/output_check.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Exit;
using host::FrameTransform;
using host::JoinRule;

struct Sample {
  double value;
  double weight;
};

double MeanOf(std::vector<Sample> const& samples) {
  double sum = 0.0;
  double weights = 0.0;
  for (Sample const& s : samples) sum += s.weight * s.value, weights += s.weight;
  return weights > 0.0 ? sum / weights : 0.0;
}

double PlainMean(std::vector<Sample> samples) {
  for (Sample& s : samples) s.weight = 1.0;
  return MeanOf(samples);
}

// Root mean square of what each becomes of its distance to `centre`.
template <typename Hold>
double Spread(std::vector<Sample> const& samples, double centre, Hold hold) {
  double sum = 0.0;
  for (Sample const& s : samples) sum += hold(s.value - centre) * hold(s.value - centre);
  return std::sqrt(sum / static_cast<double>(samples.size()));
}

std::vector<Sample> Within(std::vector<Sample> const& samples, double least, double most) {
  std::vector<Sample> kept;
  for (Sample const& s : samples) {
    if (least <= s.value && s.value <= most) kept.push_back(s);
  }
  return kept;
}

double ExpectedSigma(std::vector<Sample> samples, JoinRule const& rule) {
  for (std::size_t before = 0; before != samples.size();) {
    before = samples.size();
    double const mean = PlainMean(samples);
    double const s = Spread(samples, mean, [](double v) { return v; });
    samples = Within(samples, mean - rule.low * s, mean + rule.high * s);
  }
  return MeanOf(samples);
}

double ExpectedWinsorised(std::vector<Sample> const& samples, double median, JoinRule const& rule) {
  double s = Spread(samples, median, [](double v) { return v; });
  for (int pass = 0; pass < 100; ++pass) {
    double const before = s;
    s = 1.134 * Spread(samples, median, [s](double v) { return std::clamp(v, -1.5 * s, 1.5 * s); });
    if (std::abs(s - before) <= 0.0001 * before) break;
  }
  return MeanOf(Within(samples, median - rule.low * s, median + rule.high * s));
}

class LineJoinTest : public testing::Test {
 protected:
  static constexpr int kWidth = 150;  // three blocks, one of them short

  // Noise about 100, every tenth value far off; frames begin and end inside the line, and some samples are no numbers.
  void Make(int frames) {
    std::normal_distribution<float> noise(100.0f, 4.0f);
    std::uniform_int_distribution<int> margin(0, 20);
    for (int i = 0; i < frames; ++i) {
      std::vector<float> line(kWidth);
      for (float& v : line) v = noise(random) + (random() % 10 == 0 ? 90.0f : 0.0f);
      line[random() % kWidth] = NAN;
      samples.push_back(line);
      ranges.push_back({margin(random), kWidth - margin(random)});
      weights.push_back(0.5 + static_cast<double>(i % 3));
    }
  }

  std::vector<Sample> At(int x) const {
    std::vector<Sample> there;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      float const v = samples[i][static_cast<std::size_t>(x)];
      if (ranges[i].begin <= x && x < ranges[i].end && std::isfinite(v)) there.push_back({v, weights[i]});
    }
    return there;
  }

  static double MedianOf(std::vector<Sample> there) {
    if (there.empty()) return 0.0;
    std::sort(there.begin(), there.end(), [](Sample const& a, Sample const& b) { return a.value < b.value; });
    return there[there.size() / 2].value;
  }

  std::vector<float> Join(JoinRule const& rule) {
    std::vector<host::FrameLineView> views;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      views.push_back({samples[i].data(), ranges[i].begin, ranges[i].end, weights[i]});
    }
    std::vector<float> medians;
    for (int x = 0; x < kWidth; ++x) medians.push_back(static_cast<float>(MedianOf(At(x))));
    host::LineJoiner joiner(rule);
    std::vector<float> out(kWidth, -7.0f);
    joiner.Join(views, medians.data(), kWidth, out.data());
    count = joiner.Count();
    return out;
  }

  Random random{5};
  std::vector<std::vector<float>> samples;
  std::vector<host::ColumnRange> ranges;
  std::vector<double> weights;
  host::JoinCount count;
};

TEST_F(LineJoinTest, IsThePlainFormulaForEveryRule) {
  for (int frames : {1, 2, 3, 7, 20}) {
    samples.clear(), ranges.clear(), weights.clear();
    Make(frames);
    for (JoinRule const& rule : {JoinRule{JoinRule::Rejection::kNone}, JoinRule{JoinRule::Rejection::kSigma, 2.0, 1.8},
                                 JoinRule{JoinRule::Rejection::kWinsorised, 3.0, 4.0}}) {
      std::vector<float> const joined = Join(rule);
      for (int x = 0; x < kWidth; ++x) {
        std::vector<Sample> const there = At(x);
        double expected = MeanOf(there);
        if (rule.rejection == JoinRule::Rejection::kSigma && !there.empty()) expected = ExpectedSigma(there, rule);
        if (rule.rejection == JoinRule::Rejection::kWinsorised && !there.empty()) {
          expected = ExpectedWinsorised(there, MedianOf(there), rule);
        }
        ASSERT_FLOAT_EQ(static_cast<float>(expected), joined[static_cast<std::size_t>(x)])
            << frames << " frames, rule " << static_cast<int>(rule.rejection) << ", column " << x;
      }
    }
  }
}

TEST_F(LineJoinTest, CountsWhatIsThereAndWhatIsTakenOut) {
  for (int i = 0; i < 20; ++i) {
    samples.push_back(std::vector<float>(kWidth, 100.0f + static_cast<float>(i % 2)));
    ranges.push_back({0, 100});
    weights.push_back(1.0);
  }
  samples[3][7] = 500.0f;
  samples[4][8] = -500.0f;
  samples[5][120] = 500.0f;  // where the frame does not reach
  for (auto rejection : {JoinRule::Rejection::kSigma, JoinRule::Rejection::kWinsorised}) {
    Join(JoinRule{rejection, 3.0, 3.0});
    EXPECT_EQ(2000, count.values);
    EXPECT_EQ(1, count.low);
    EXPECT_EQ(1, count.high);
  }
}

// One of eight frames is off by hundreds of deviations: sigma cannot see it at 3, as none of 8 can be further off than
// 2.47; winsorised does.
TEST_F(LineJoinTest, WinsorisedHoldsWithFewFrames) {
  Make(7);
  for (auto& range : ranges) range = {0, kWidth};
  for (auto& line : samples) {
    for (float& v : line) v = 100.0f + static_cast<float>(random() % 8);
  }
  samples.push_back(std::vector<float>(kWidth, 5000.0f));
  ranges.push_back({0, kWidth});
  weights.push_back(1.0);
  for (float v : Join(JoinRule{JoinRule::Rejection::kSigma, 3.0, 3.0})) EXPECT_GT(v, 400.0f);
  for (float v : Join(JoinRule{JoinRule::Rejection::kWinsorised, 4.0, 4.0})) EXPECT_LT(v, 108.0f);
}

TEST(CoveredColumns, AreThoseThatTheSamplerReads) {
  Random random(6);
  std::uniform_real_distribution<double> shift(-30.0, 30.0);
  COrbImage frame(-32, 37, 23, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int trial = 0; trial < 60; ++trial) {
    FrameTransform const t{trial % 5 == 0 ? std::floor(shift(random)) : shift(random), shift(random),
                           trial % 3 == 0 ? 0.0 : 6.0 * shift(random), 18.0, 11.5};
    frame.SetStdCtr(t.cx, t.cy);
    double const a = t.angle * 0.017453292519943295;
    host::RigidMap const map(t);
    for (int y = -3; y < 40; ++y) {
      host::ColumnRange const range = host::FindCoveredColumns(map, host::Shape{37, 23, 1}, y, 45);
      for (int x = 0; x < 45; ++x) {
        int isOutside = 0;
        frame.GetPixelGrayRaw(x, y, t.dx, t.dy, std::sin(a), std::cos(a), 1.0, 0, 0.0, 0, &isOutside, nullptr, nullptr);
        ASSERT_EQ(isOutside == 0, range.begin <= x && x < range.end) << trial << " at " << x << ", " << y;
      }
    }
  }
}

// Ten views of one sky: noise of their own, a sky and a gain of their own, a satellite in one.
class MeanStackTest : public testing::Test {
 protected:
  void SetUp() override {
    for (int i = 0; i < kFrames; ++i) {
      std::normal_distribution<float> noise(0.0f, NoiseOf(i));
      COrbImage image(-32, kSide, kSide, 1, 1.0, 0.0, 1, nullptr, nullptr);
      for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
          image.SetPixelGrayRaw(x, y, 1000.0f + 50.0f * static_cast<float>(i) + noise(random), 0);
        }
      }
      if (i == 4) {
        for (int x = 0; x < kSide; ++x) image.SetPixelGrayRaw(x, 50, 9000.0f, 0);
      }
      WriteFrame(folder / ("f" + std::to_string(i) + ".fits"), image);
    }
  }

  static float NoiseOf(int i) { return i % 2 == 0 ? 10.0f : 30.0f; }

  COrbImage Stack(std::vector<std::string> const& more) {
    std::vector<std::string> arguments{"stack", folder / "f*.fits", "-f", "-o", folder / "s.fits"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    result = RunQuietly(arguments);
    EXPECT_TRUE(Succeeds(result));
    return ReadFrame(folder / "s.fits").image;
  }

  // Mean and deviation of the rows that the satellite does not cross.
  static std::pair<double, double> Measure(COrbImage const& image) {
    double sum = 0.0;
    double squares = 0.0;
    int n = 0;
    for (int y = 0; y < 40; ++y) {
      for (int x = 0; x < kSide; ++x, ++n) {
        double const v = *image.GetImageAdr(x, y, 0, 1, nullptr);
        sum += v;
        squares += v * v;
      }
    }
    return {sum / n, std::sqrt(squares / n - sum / n * sum / n)};
  }

  static constexpr int kFrames = 12;
  static constexpr int kSide = 96;
  Random random{7};
  ScratchFolder folder;
  CommandResult result;
};

TEST_F(MeanStackTest, RejectionTakesTheSatelliteOutAndSaysHowMuch) {
  for (char const* mode : {"sigma", "winsorised"}) {
    COrbImage stack = Stack({"--mode", mode, "--normalise", "sky"});
    for (int x = 0; x < kSide; ++x) EXPECT_NEAR(1000.0, stack.GetPixelGrayRaw(x, 50, 0), 40.0) << mode;
    EXPECT_TRUE(result.out.starts_with("Taken out: ")) << result.out;
  }
  COrbImage average = Stack({"--mode", "average", "--normalise", "sky"});
  EXPECT_GT(average.GetPixelGrayRaw(40, 50, 0), 1500.0f);
}

TEST_F(MeanStackTest, WeightsByNoiseLowerTheNoise) {
  auto const [level, plain] = Measure(Stack({"--mode", "average", "--normalise", "sky"}));
  auto const [same, weighted] = Measure(Stack({"--mode", "average", "--normalise", "sky", "--weights", "noise"}));
  EXPECT_NEAR(1000.0, level, 2.0);
  EXPECT_NEAR(1000.0, same, 2.0);
  EXPECT_NEAR(std::sqrt(6 * 100.0 + 6 * 900.0) / 12.0, plain, 0.2);
  EXPECT_NEAR(1.0 / std::sqrt(6 / 100.0 + 6 / 900.0), weighted, 0.2);
}

TEST_F(MeanStackTest, NoiseIsMadeThatOfTheFirst) {
  auto const [level, noise] = Measure(Stack({"--mode", "average", "--normalise", "noise"}));
  EXPECT_NEAR(1000.0, level, 2.0);
  EXPECT_NEAR(10.0 / std::sqrt(12.0), noise, 0.15);
}

TEST_F(MeanStackTest, SigmaSaysWhenItCannotTakeAnythingOut) {
  CommandResult const few = RunQuietly({"stack", folder / "f0.fits", folder / "f1.fits", folder / "f2.fits", "--mode",
                                        "sigma", "-o", folder / "few.fits"});
  EXPECT_EQ(Exit::kDone, few.status);
  EXPECT_NE(std::string::npos, few.err.find("of 3 frames none lies further off than 1.15")) << few.err;
}

TEST_F(MeanStackTest, BandsAndThreadsDoNotChangeABit) {
  for (char const* mode : {"average", "sigma", "winsorised"}) {
    COrbImage const whole = Stack({"--mode", mode, "--threads", "1"});
    EXPECT_TRUE(SameBits(whole, Stack({"--mode", mode, "--threads", "3", "--memory", "900K"}))) << mode;
  }
}

TEST_F(MeanStackTest, WhatDoesNotGoTogetherIsRefused) {
  std::vector<std::string> const start{"stack", folder / "f*.fits", "-o", folder / "s.fits"};
  auto const run = [&](std::vector<std::string> const& more) {
    std::vector<std::string> arguments(start);
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunQuietly(arguments);
  };
  EXPECT_TRUE(FailsInOneLine(run({"--weights", "noise"}), Exit::kUsage, {"--weights", "median"}));
  EXPECT_TRUE(FailsInOneLine(run({"--mode", "sigma", "--weights", "noise", "--normalise", "noise"}), Exit::kUsage,
                             {"--weights", "all the same"}));
  EXPECT_TRUE(FailsInOneLine(run({"--mode", "maximum", "--normalise", "noise", "--scale", "256"}), Exit::kUsage,
                             {"--normalise", "--scale 256"}));
  EXPECT_TRUE(FailsInOneLine(run({"--mode", "sigma", "--low", "0"}), Exit::kUsage, {"--low"}));
  WriteConstant(folder / "f99.fits", kSide, kSide, 5.0f);
  EXPECT_TRUE(FailsInOneLine(run({"--normalise", "noise"}), Exit::kInput, {"f99.fits", "no noise"}));
}

}  // namespace
}  // namespace orb::test
