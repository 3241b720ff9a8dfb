// The inner steps of the Lucy-Richardson restoration, each by itself.
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <orbimg/restoration/lucy_iteration_internal.h>
#include <orbimg/restoration/plane_arithmetic_internal.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

TEST(LucySteps, StepLimit) {
  float const estimate[4] = {2.0f, 3.0f, 4.0f, 5.0f};
  float const up[4] = {1.0f, 0.0f, 2.0f, 3.0f};
  float const mixed[4] = {1.0f, -6.0f, -2.0f, 0.0f};
  EXPECT_EQ(100.0, LucyStepLimit(estimate, up, 4));
  EXPECT_EQ(0.5, LucyStepLimit(estimate, mixed, 4));
  EXPECT_EQ(-5.0 / 3.0, LucyLowerLimit(estimate, up, 4));
  EXPECT_EQ(-100.0, LucyLowerLimit(estimate, mixed + 1, 3));
}

LucyState SmallState(int width, int height) {
  LucyState s;
  s.nx = s.dataWidth = width;
  s.ny = s.dataHeight = height;
  std::size_t const n = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  s.weight.assign(n, 1.0f);
  s.model.assign(n, 10.0f);
  s.estimate.assign(n, 10.0f);
  s.background.assign(1, 0.0f);
  return s;
}

TEST(LucySteps, ChiSquareDividesByOneLessThanItsPixels) {
  LucyState s = SmallState(2, 2);
  s.weight[3] = 0.0f;
  float const data[4] = {12.0f, 10.0f, 7.0f, 1e9f};
  // adu 2, noise 3: r = (10 - 12) 2, v = 2 * 10 + 9.
  EXPECT_DOUBLE_EQ((16.0 / 29.0 + 36.0 / 29.0) / 2.0, LucyChiSquare(s, data, {2.0, 3.0}, 1, nullptr, 0, 100, nullptr));
}

// A pixel without variance counts, though it adds nothing.
TEST(LucySteps, ChiSquareCountsPixelsWithoutVariance) {
  LucyState s = SmallState(3, 1);
  s.model[2] = 0.0f;
  float const data[3] = {12.0f, 12.0f, 5.0f};
  EXPECT_DOUBLE_EQ((4.0 / 10.0 + 4.0 / 10.0) / 2.0, LucyChiSquare(s, data, {1.0, 0.0}, 1, nullptr, 0, 100, nullptr));
}

TEST(LucySteps, ChiSquareTakesABackgroundForEveryPixel) {
  LucyState s = SmallState(2, 1);
  s.background = {5.0f, 15.0f};
  float const data[2] = {12.0f, 6.0f};
  EXPECT_DOUBLE_EQ(4.0 / 15.0 + 16.0 / 25.0, LucyChiSquare(s, data, {1.0, 0.0}, 2, nullptr, 0, 100, nullptr));
  EXPECT_DOUBLE_EQ(4.0 / 15.0 + 16.0 / 15.0, LucyChiSquare(s, data, {1.0, 0.0}, 1, nullptr, 0, 100, nullptr));
}

TEST(LucySteps, ChiSquareIsZeroWhenCancelled) {
  LucyState s = SmallState(4, 30);
  std::vector<float> const data(120, 1.0f);
  COrbImage progress;
  RecordingWindow window;
  window.escapeAtPoll = 3;
  progress.SetProgressHandle(&window);
  progress.ShowProgressInit("run");
  bool isCancelled = false;
  EXPECT_EQ(0.0, LucyChiSquare(s, data.data(), {1.0, 1.0}, 1, &progress, 90, 100, &isCancelled));
  EXPECT_TRUE(isCancelled);
  EXPECT_EQ((std::vector<int>{90, 91, 92}), window.positions);
}

// The maximum of the likelihood along a step: data = model + 0.5 g has it at 0.5.
TEST(LucySteps, LineSearchFindsTheMostLikelyFactor) {
  LucyState s = SmallState(2, 1);
  float const g[2] = {4.0f, -2.0f};
  float const data[2] = {12.0f, 9.0f};
  EXPECT_NEAR(0.5, LucyLineSearch(s, g, data, {1.0, 1.0}, 1, {-10.0, 10.0}), 1e-3);
}

// Bounds are approached by halving, and never reached.
TEST(LucySteps, LineSearchHalvesTheWayToABound) {
  LucyState s = SmallState(2, 1);
  float const g[2] = {1.0f, 1.0f};
  float const bright[2] = {1000.0f, 1000.0f};
  double const high = LucyLineSearch(s, g, bright, {1.0, 1.0}, 1, {1.0, 3.0});
  EXPECT_EQ(3.0 - 2.0 / 256.0, high);  // until a change is at most 0.01
  float const dark[2] = {-5.0f, -5.0f};
  double const low = LucyLineSearch(s, g, dark, {1.0, 1.0}, 1, {-1.0, 300.0});
  EXPECT_GT(low, -1.0);
}

TEST(LucySteps, PixelsFarBelowZeroAreRejected) {
  LucyState s = SmallState(2, 2);
  s.nx = 4;
  s.ny = 2;
  s.estimate = {-99.0f, -6.0f, -4.9f, -99.0f, -99.0f, 3.0f, -5.1f, -99.0f};
  std::vector<std::int16_t> mask(8, 1);
  LucyRejectPixels(s, mask.data(), {2.0, 2.0}, 1, 5.0, 0);  // T = 5 * 2/2
  EXPECT_EQ((std::vector<std::int16_t>{1, 0, 1, 1, 1, 1, 0, 1}), mask);
  mask.assign(8, 1);
  LucyRejectPixels(s, mask.data(), {2.0, 2.0}, 1, 0.0, 0);  // T = c0 = 2
  EXPECT_EQ((std::vector<std::int16_t>{1, 0, 0, 1, 1, 1, 0, 1}), mask);
}

TEST(LucySteps, ReportsOfTheIteration) {
  LucyState s = SmallState(2, 1);
  s.norm = {1.0f, 0.0f};
  float const data[2] = {12.0f, 9.0f};
  double chiSq = 0.0;
  testing::internal::CaptureStdout();
  EXPECT_EQ(kLucyDone, LucyIterate(&s, 1.0, 0.1, 2, -1.0, data, 1, 3, &chiSq, 1, kLucyTurbo, 1, nullptr, 0));
  std::string const text = testing::internal::GetCapturedStdout();
  EXPECT_EQ(0u, text.find("Initial chi-sq = "));
  EXPECT_NE(std::string::npos, text.find("Accelerated iteration  CMIN = 1, CMAX = "));
  EXPECT_NE(std::string::npos, text.find("Total Iterations 4  Iteration 1 : chi-sq = "));
  EXPECT_EQ(std::string::npos, text.find("converged"));
}

TEST(PlaneArithmetic, TenPixelsStandAtOffset27) {
  EXPECT_EQ(28, CentredPosition(64, 10));
  std::vector<float> const from(100, 7.0f);
  std::vector<float> pad(64 * 64, 9.0f);
  PlaceInPad(from.data(), pad.data(), 64, 64, 10, 10, 28, 28);
  EXPECT_EQ(7.0f, pad[27 * 64 + 27]);
  EXPECT_EQ(0.0f, pad[27 * 64 + 26]);
  EXPECT_EQ(7.0f, pad[36 * 64 + 36]);
  EXPECT_EQ(0.0f, pad[37 * 64 + 36]);
  std::vector<float> back(100, 0.0f);
  TakeFromPad(pad.data(), back.data(), 64, 64, 10, 10);
  EXPECT_EQ(from, back);
}

TEST(PlaneArithmetic, PeakIsTheFirstOfTheLargest) {
  float const plane[6] = {1.0f, 5.0f, 2.0f, 5.0f, 0.0f, 5.0f};
  Peak const peak = FindPeak(plane, 3, 2);
  EXPECT_EQ(5.0f, peak.value);
  EXPECT_EQ(1, peak.x);
  EXPECT_EQ(0, peak.y);
  float shifted[6];
  ShiftToOrigin(plane, shifted, 3, 2, 2, 1);
  EXPECT_EQ((std::vector<float>{5, 5, 0, 2, 1, 5}), std::vector<float>(shifted, shifted + 6));
}

TEST(PlaneArithmetic, ComplexProducts) {
  float const a[2] = {2.0f, 3.0f};
  float const b[2] = {5.0f, -7.0f};
  float out[2];
  ComplexMultiply(a, b, out, 1);
  EXPECT_EQ(31.0f, out[0]);
  EXPECT_EQ(1.0f, out[1]);
  ComplexConjMultiply(a, b, out, 1);
  EXPECT_EQ(-11.0f, out[0]);
  EXPECT_EQ(-29.0f, out[1]);
}

}  // namespace
}  // namespace orb::test
