// CImgMatching: the metric, the order of its sum, and the search.
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <orbimg/stacking/matching_metric_internal.h>
#include <tests/reference/matching_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr double kNone = 3.402823466e+38;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::unique_ptr<CImgMatching> MatchingOf(COrbImage const& image) {
  auto matching = std::make_unique<CImgMatching>();
  matching->CopyImage(image, nullptr, nullptr);
  return matching;
}

COrbImage Plane(int width, int height, std::vector<float> const& samples) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

COrbImage Constant(int width, int height, int planes, float value) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), value));
  return image;
}

// Round blobs over a sky of 100, so that the metric falls smoothly towards the true shift.
COrbImage Blobs(int width, int height, double shiftX, double shiftY) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  double const centers[3][2] = {{0.3, 0.35}, {0.62, 0.5}, {0.45, 0.7}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double v = 100.0;
      for (auto const& c : centers) {
        double const u = x - c[0] * width - shiftX;
        double const w = y - c[1] * height - shiftY;
        v += 500.0 * std::exp(-(u * u + w * w) / 18.0);
      }
      image.SetPixelGrayRaw(x, y, static_cast<float>(v), 0);
    }
  }
  return image;
}

// Whole numbers, so that every order of the sum is exact.
void FillWhole(COrbImage& image, Random& random) {
  std::uniform_int_distribution<int> value(0, 1000);
  std::vector<float> samples(static_cast<std::size_t>(image.GetPixelCount()));
  for (float& v : samples) v = static_cast<float>(value(random));
  SetSamples(image, samples);
}

reference::MatchingMetrics PlainMetrics(COrbImage& reference, COrbImage& source) {
  return {
      [&](int dx, int dy, double* ratio) { return reference::MatchingValue(reference, source, dx, dy, ratio); },
      [&](double dx, double dy, double* ratio) { return reference::MatchingValue(reference, source, dx, dy, ratio); }};
}

reference::MatchingMetrics OwnMetrics(CImgMatching& reference, COrbImage& source) {
  return {[&](int dx, int dy, double* ratio) { return reference.CalcValue(&source, dx, dy, ratio); },
          [&](double dx, double dy, double* ratio) { return reference.CalcValue(&source, dx, dy, ratio); }};
}

// Do against the plain search over given metrics: result, shift, and the progress run.
void ExpectSearch(CImgMatching& matching, COrbImage& source, double x0, double y0, int range, int fine,
                  reference::MatchingMetrics const& metrics) {
  RecordingWindow window;
  matching.SetProgressHandle(&window);
  double x = x0;
  double y = y0;
  double expectedX = x0;
  double expectedY = y0;
  reference::MatchingTicks ticks;
  int const expected = reference::Match(matching, source, &expectedX, &expectedY, range, fine, metrics, &ticks);
  EXPECT_EQ(expected, matching.Do(&source, &x, &y, range, fine, 1));
  EXPECT_EQ(expectedX, x) << range << ' ' << fine;
  EXPECT_EQ(expectedY, y) << range << ' ' << fine;
  EXPECT_EQ(ticks.total, OrbTestAccess::ProgressOf(matching).total);
  EXPECT_EQ(ticks.single + 6 * ticks.sixfold, OrbTestAccess::ProgressOf(matching).count);
  EXPECT_EQ(ticks.single + ticks.sixfold, window.polls);
  matching.SetProgressHandle(nullptr);
}

// ---- The metric

TEST(Matching, ValueOfAWorkedExample) {
  auto const matching = MatchingOf(Plane(3, 1, {10.0f, 20.0f, 40.0f}));
  COrbImage source = Plane(2, 1, {4.0f, 8.0f});
  double ratio[1] = {2.0};
  EXPECT_EQ(((10.0 - 8.0) * (10.0 - 8.0) + (20.0 - 16.0) * (20.0 - 16.0)) / 2,
            matching->CalcValue(&source, 0, 0, ratio));
  EXPECT_EQ(((20.0 - 8.0) * (20.0 - 8.0) + (40.0 - 16.0) * (40.0 - 16.0)) / 2,
            matching->CalcValue(&source, 1, 0, ratio));
  EXPECT_EQ((40.0 - 8.0) * (40.0 - 8.0), matching->CalcValue(&source, 2, 0, ratio));  // one common column
  EXPECT_EQ((10.0 - 16.0) * (10.0 - 16.0), matching->CalcValue(&source, -1, 0, ratio));
  // At 0.5 the source shows 6 at column 1, the only one between two of its samples.
  EXPECT_EQ((20.0 - 12.0) * (20.0 - 12.0), matching->CalcValue(&source, 0.5, 0.0, ratio));
}

TEST(Matching, IntendedRatioIsRoundedToFloat) {
  auto const matching = MatchingOf(Plane(2, 2, {1.0f, 1.0f, 1.0f, 1.0f}));
  COrbImage source = Plane(2, 2, {3.0f, 3.0f, 3.0f, 3.0f});
  double ratio[1] = {0.1};
  double const d = 1.0 - 3.0 * static_cast<double>(0.1f);
  ASSERT_NE(d * d, (1.0 - 3.0 * 0.1) * (1.0 - 3.0 * 0.1));
  EXPECT_EQ(d * d, matching->CalcValue(&source, 0, 0, ratio));
  EXPECT_EQ(d * d, matching->CalcValue(&source, 0.0, 0.0, ratio));
}

TEST(Matching, ValueEqualsTheStatedOrderOfTheSum) {
  Random random(11);
  std::uniform_real_distribution<double> fraction(-1.0, 1.0);
  struct Size {
    int width, height, sourceWidth, sourceHeight;
  };
  Size const sizes[] = {{1, 1, 1, 1},       {2, 3, 5, 1},       {7, 5, 1, 9},       {40, 12, 33, 12}, {16, 17, 17, 16},
                        {130, 35, 129, 40}, {259, 18, 300, 20}, {128, 16, 128, 16}, {33, 33, 300, 2}};
  for (Size const& s : sizes) {
    for (int planes : {1, 3}) {
      COrbImage reference = RandomImage(random, s.width, s.height, planes);
      COrbImage source = RandomImage(random, s.sourceWidth, s.sourceHeight, planes);
      auto const matching = MatchingOf(reference);
      double ratio[3] = {1.1, 0.7, 1.3};
      for (int dx :
           {-s.sourceWidth - 1, -s.sourceWidth, 1 - s.sourceWidth, -9, -1, 0, 1, 3, 128, s.width - 1, s.width}) {
        for (int dy : {-s.sourceHeight, 1 - s.sourceHeight, -2, 0, 1, 5, 17, s.height - 1, s.height}) {
          EXPECT_EQ(reference::MatchingValueInStrips(reference, source, dx, dy, ratio),
                    matching->CalcValue(&source, dx, dy, ratio))
              << dx << ' ' << dy;
          double const plain = reference::MatchingValue(reference, source, dx, dy, ratio);
          EXPECT_NEAR(plain, matching->CalcValue(&source, dx, dy, ratio), plain * 1e-13);
          double const fx = dx + fraction(random);
          double const fy = dy + fraction(random);
          EXPECT_EQ(reference::MatchingValueInStrips(reference, source, fx, fy, ratio),
                    matching->CalcValue(&source, fx, fy, ratio))
              << fx << ' ' << fy;
        }
      }
    }
  }
}

TEST(Matching, WholeNumbersGiveThePlainSumExactly) {
  Random random(12);
  COrbImage reference(-32, 150, 40, 3, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage source(-32, 140, 45, 3, 1.0, 0.0, 1, nullptr, nullptr);
  FillWhole(reference, random);
  FillWhole(source, random);
  auto const matching = MatchingOf(reference);
  double ratio[3] = {0.5, 2.0, 1.0};
  for (int dx = -20; dx <= 20; dx += 5) {
    for (int dy = -6; dy <= 6; dy += 3) {
      EXPECT_EQ(reference::MatchingValue(reference, source, dx, dy, ratio),
                matching->CalcValue(&source, dx, dy, ratio));
      EXPECT_EQ(reference::MatchingValue(reference, source, dx + 0.25, dy - 0.5, ratio),
                matching->CalcValue(&source, dx + 0.25, dy - 0.5, ratio));
    }
  }
}

// x - dx rounds: a hair beside a whole shift, columns are whole from some column on, or skip a cell.
TEST(Matching, ShiftsAHairBesideWholeOnes) {
  Random random(13);
  COrbImage reference = RandomImage(random, 140, 20, 1);
  COrbImage source = RandomImage(random, 150, 25, 1);
  source.SetPixelGrayRaw(9, 9, std::numeric_limits<float>::infinity(), 0);
  auto const matching = MatchingOf(reference);
  double ratio[1] = {1.25};
  double const hairs[] = {0.0, 1e-17, -1e-17, 5.5e-17, -5.5e-17, 1e-15, -1e-15, 1e-14, -1e-14, 2.7755575615628914e-17};
  for (double base : {-3.0, 0.0, 2.0}) {
    for (double hair : hairs) {
      for (double dy : {0.0, -1e-15, 1e-17, 0.5}) {
        double const expected = reference::MatchingValueInStrips(reference, source, base + hair, dy, ratio);
        double const found = matching->CalcValue(&source, base + hair, dy, ratio);
        EXPECT_TRUE(expected == found || (std::isnan(expected) && std::isnan(found)))
            << base << ' ' << hair << ' ' << dy << ": " << expected << ' ' << found;
      }
    }
  }
}

// At whole coordinates the sample itself is taken, so that a neighbour of 0 weight cannot spoil it.
TEST(Matching, WholeCoordinatesLeaveInfiniteNeighboursAlone) {
  float const inf = std::numeric_limits<float>::infinity();
  auto const matching = MatchingOf(Plane(1, 1, {5.0f}));
  COrbImage source = Plane(3, 3, {4.0f, inf, 0.0f, inf, inf, 0.0f, 0.0f, 0.0f, 0.0f});
  double ratio[1] = {1.0};
  EXPECT_EQ(1.0, matching->CalcValue(&source, 0.0, 0.0, ratio));
  EXPECT_TRUE(std::isnan(matching->CalcValue(&source, -0.25, 0.0, ratio)) ||
              std::isinf(matching->CalcValue(&source, -0.25, 0.0, ratio)));
}

TEST(Matching, NoCommonColumnOrRowIsOutOfRange) {
  auto const matching = MatchingOf(Constant(8, 6, 1, 1.0f));
  COrbImage source = Constant(5, 4, 1, 2.0f);
  double ratio[1] = {1.0};
  int const intMin = std::numeric_limits<int>::min();
  int const intMax = std::numeric_limits<int>::max();
  for (int dx : {8, 9, 1000, intMax, -5, -6, -1000, intMin})
    EXPECT_EQ(kNone, matching->CalcValue(&source, dx, 0, ratio));
  for (int dy : {6, 7, 1000, intMax, -4, -5, -1000, intMin})
    EXPECT_EQ(kNone, matching->CalcValue(&source, 0, dy, ratio));
  EXPECT_EQ(1.0, matching->CalcValue(&source, 7, 5, ratio));
  EXPECT_EQ(1.0, matching->CalcValue(&source, -4, -3, ratio));
  for (double d : {7.5, 8.0, -5.0, -4.5, 1e9, -1e9, 1e300, -1e300, kInfinity, -kInfinity, kNan}) {
    EXPECT_EQ(kNone, matching->CalcValue(&source, d, 0.0, ratio)) << d;
  }
  for (double d : {5.5, 6.0, -4.0, -3.5, 1e9, -1e9, 1e300, -1e300, kInfinity, -kInfinity, kNan}) {
    EXPECT_EQ(kNone, matching->CalcValue(&source, 0.0, d, ratio)) << d;
  }
}

TEST(Matching, ASourceOfOneColumnOrRowStandsForItsOwnNeighbour) {
  auto const matching = MatchingOf(Constant(4, 4, 1, 7.0f));
  double ratio[1] = {1.0};
  COrbImage column = Constant(1, 4, 1, 5.0f);
  EXPECT_EQ(4.0, matching->CalcValue(&column, 2.0, 0.5, ratio));
  COrbImage row = Constant(4, 1, 1, 5.0f);
  EXPECT_EQ(4.0, matching->CalcValue(&row, 0.5, 3.0, ratio));
  COrbImage pixel = Constant(1, 1, 1, 5.0f);
  EXPECT_EQ(4.0, matching->CalcValue(&pixel, 3.0, 0.0, ratio));
}

TEST(Matching, AColourReferenceWithAMonoSourceUsesOnePlaneAndItsRatio) {
  Random random(14);
  COrbImage color = RandomImage(random, 20, 18, 3);
  COrbImage mono = RandomImage(random, 20, 18, 1);
  COrbImage firstPlane(-32, 20, 18, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::vector<float> samples = SamplesOf(color);
  samples.resize(20 * 18);
  SetSamples(firstPlane, samples);
  double ratio[3] = {0.9, kNan, kNan};
  EXPECT_EQ(MatchingOf(firstPlane)->CalcValue(&mono, 1, 2, ratio), MatchingOf(color)->CalcValue(&mono, 1, 2, ratio));
  EXPECT_EQ(MatchingOf(firstPlane)->CalcValue(&mono, 0.3, 2.1, ratio),
            MatchingOf(color)->CalcValue(&mono, 0.3, 2.1, ratio));
  EXPECT_EQ(MatchingOf(mono)->CalcValue(&firstPlane, -1, 0, ratio), MatchingOf(mono)->CalcValue(&color, -1, 0, ratio));
}

// ---- The bounds that spare most of the search

std::vector<Shift> ShiftsAround(int reach) {
  std::vector<Shift> shifts;
  for (int y = -reach; y <= reach; ++y) {
    for (int x = -reach; x <= reach; ++x) shifts.push_back(Shift{x, y});
  }
  return shifts;
}

// The widest range, as a part of the metric.
double ExpectBoundsHold(COrbImage const& reference, COrbImage const& source, std::vector<double> const& ratio) {
  MatchingMetric metric(reference, source, ratio.data());
  std::vector<Shift> const shifts = ShiftsAround(4);
  std::vector<double> values(shifts.size());
  std::vector<ValueRange> ranges(shifts.size());
  metric.AtWholeShifts(shifts, values);
  metric.BoundAtWholeShifts(shifts, ranges);
  double widest = 0.0;
  for (std::size_t i = 0; i < shifts.size(); ++i) {
    bool const isOpen = ranges[i].lowest == -kInfinity && ranges[i].highest == kInfinity;
    bool const isInside = ranges[i].lowest <= values[i] && values[i] <= ranges[i].highest;
    EXPECT_TRUE(isOpen || isInside) << ranges[i].lowest << ' ' << values[i] << ' ' << ranges[i].highest;
    widest = std::max(widest, (ranges[i].highest - ranges[i].lowest) / values[i]);
  }
  return widest;
}

COrbImage Scattered(Random& random, int width, int height, int planes, double middle, double spread) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(image, random, middle - spread, middle + spread);
  return image;
}

TEST(Matching, BoundsHoldTheMetric) {
  Random random(71);
  for (int const width : {1, 5, 40, 129, 400}) {
    for (int const planes : {1, 3}) {
      for (double const middle : {0.0, 1000.0, 1e6, -3e4, 1e17, 1e-21}) {
        for (double const part : {1e-9, 1e-6, 1e-2, 3.0}) {
          double const spread = middle == 0.0 ? part : std::abs(middle) * part;
          COrbImage const reference = Scattered(random, width, 19, planes, middle, spread);
          COrbImage const source = Scattered(random, width + 3, 17, planes, middle, spread);
          ExpectBoundsHold(reference, source, {1.0, 1.0, 1.0});
          ExpectBoundsHold(reference, source, {0.999, 1.7, -0.1});
          ExpectBoundsHold(reference, reference, {1.0, 1.0, 1.0});
        }
      }
    }
  }
}

TEST(Matching, BoundsAreNarrowForOrdinaryFrames) {
  Random random(72);
  COrbImage const reference = Scattered(random, 400, 40, 1, 1000.0, 50.0);
  COrbImage const source = Scattered(random, 400, 40, 1, 1100.0, 50.0);
  EXPECT_LT(ExpectBoundsHold(reference, source, {0.91}), 4e-5);
}

TEST(Matching, BoundsAreOpenWhereFloatsFail) {
  float const most = std::numeric_limits<float>::max();
  for (double const ratio : {1.0, 0.0, 1e39, -kInfinity, kInfinity, kNan}) {
    for (float const v : {most, -most, 1e30f, 1e20f, std::numeric_limits<float>::infinity(),
                          std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::denorm_min(), 0.0f}) {
      COrbImage reference = Constant(9, 9, 1, 1.0f);
      COrbImage source = Constant(9, 9, 1, 1.0f);
      source.SetPixelGrayRaw(4, 5, v, 0);
      ExpectBoundsHold(reference, source, {ratio});
      ExpectBoundsHold(source, reference, {ratio});
    }
  }
}

// Equal and nearly equal values: what is left out never hides the winner, nor the first of several.
TEST(Matching, SearchFindsTheSameAsWithEveryMetricTaken) {
  Random random(73);
  for (int const period : {1, 2, 3, 4, 6, 8}) {
    for (double const noise : {0.0, 1e-3, 1.0}) {
      COrbImage reference = Constant(90, 70, 1, 1e6f);
      COrbImage source = Constant(90, 70, 1, 1e6f);
      std::uniform_real_distribution<double> any(-noise, noise);
      for (int y = 0; y < 70; ++y) {
        for (int x = 0; x < 90; ++x) {
          double const pattern = (x % period) * 5.0 + (y % period) * 3.0;
          reference.SetPixelGrayRaw(x, y, static_cast<float>(1e6 + pattern + any(random)), 0);
          source.SetPixelGrayRaw(x, y, static_cast<float>(1e6 + pattern + any(random)), 0);
        }
      }
      auto const matching = MatchingOf(reference);
      for (int const range : {0, 1, 2, 12, 45, 80}) {
        ExpectSearch(*matching, source, 1.0, -2.0, range, 0, OwnMetrics(*matching, source));
      }
      ExpectSearch(*matching, source, 0.0, 0.0, 6, 1, OwnMetrics(*matching, source));
    }
  }
}

// ---- The search

TEST(Matching, SearchEqualsThePlainSearch) {
  Random random(15);
  for (int planes : {1, 3}) {
    for (int range : {0, 1, 4, 7}) {
      for (int fine : {0, 1}) {
        COrbImage source = RandomImage(random, 21, 9, planes);
        auto const matching = MatchingOf(RandomImage(random, 18, 11, planes));
        ExpectSearch(*matching, source, 0.0, 0.0, range, fine, PlainMetrics(*matching, source));
        ExpectSearch(*matching, source, -2.75, 1.5, range, fine, PlainMetrics(*matching, source));
        ExpectSearch(*matching, source, 2.75, -1.5, range, fine, OwnMetrics(*matching, source));
      }
    }
  }
}

// Constant images: all shifts would be equal but for the rounding of their sums, so that only the same bits in Do and
// in CalcValue choose the same one. More shifts than are computed together, in one row and in many.
TEST(Matching, SearchAndSingleValuesAgreeToTheLastBit) {
  for (int range : {6, 40}) {
    COrbImage source = Constant(150, 19, 1, 0.3f);
    auto const matching = MatchingOf(Constant(140, 20, 1, 0.1f));
    ExpectSearch(*matching, source, 1.0, 1.0, range, 1, OwnMetrics(*matching, source));
  }
  Random random(16);
  COrbImage source(-32, 30, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(source, random);
  auto const matching = MatchingOf(RandomImage(random, 25, 4, 1));
  ExpectSearch(*matching, source, 0.0, 0.0, 700, 0, OwnMetrics(*matching, source));
}

TEST(Matching, FindsAFractionalShift) {
  COrbImage source = Blobs(60, 50, 0.0, 0.0);
  auto const matching = MatchingOf(Blobs(60, 50, 3.4, -2.2));
  double x = 1.0;
  double y = 0.0;
  EXPECT_EQ(1, matching->Do(&source, &x, &y, 12, 0, 0));
  EXPECT_EQ(3.0, x);
  EXPECT_EQ(-2.0, y);
  EXPECT_EQ(1, matching->Do(&source, &x, &y, 12, 1, 0));
  EXPECT_NEAR(3.4, x, 0.1001);
  EXPECT_NEAR(-2.2, y, 0.1001);
}

TEST(Matching, IdenticalImagesStayExactlyInPlace) {
  Random random(17);
  COrbImage image = RandomImage(random, 40, 30, 3);
  auto const matching = MatchingOf(image);
  for (int fine : {0, 1}) {
    double x = 0.0;
    double y = 0.0;
    EXPECT_EQ(1, matching->Do(&image, &x, &y, 8, fine, 0));
    EXPECT_EQ(0.0, x);
    EXPECT_EQ(0.0, y);
  }
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(1, matching->Do(matching.get(), &x, &y, 4, 1, 0));  // with itself
  EXPECT_EQ(0.0, x);
  EXPECT_EQ(0.0, y);
}

TEST(Matching, RangesOfNoneAndOneTryOnePositionAndItsNeighbours) {
  COrbImage source = Constant(20, 20, 1, 3.0f);
  auto const matching = MatchingOf(Constant(20, 20, 1, 3.0f));
  for (int range : {0, 1, -1}) {
    RecordingWindow window;
    matching->SetProgressHandle(&window);
    double x = 2.9;
    double y = -1.9;
    EXPECT_EQ(1, matching->Do(&source, &x, &y, range, 0, 1));
    EXPECT_EQ(2.0, x);  // the first of equal positions, truncated
    EXPECT_EQ(-1.0, y);
    EXPECT_EQ(9, window.polls);
  }
}

TEST(Matching, AnOddRangeIsRoundedDown) {
  COrbImage source = Constant(20, 20, 1, 3.0f);
  auto const matching = MatchingOf(Constant(20, 20, 1, 3.0f));
  for (int range : {4, 5}) {
    RecordingWindow window;
    matching->SetProgressHandle(&window);
    double x = 0.0;
    double y = 0.0;
    EXPECT_EQ(1, matching->Do(&source, &x, &y, range, 0, 1));
    EXPECT_EQ(-2.0, x);
    EXPECT_EQ(-2.0, y);
    EXPECT_EQ(3 * 3 + 8, window.polls);
    EXPECT_EQ(range * range / 4 + 9, OrbTestAccess::ProgressOf(*matching).total);
  }
}

// A neighbour takes the lead, and the neighbours of that one are still not looked at.
TEST(Matching, IntendedNeighboursAreThoseOfTheCoarseWinner) {
  COrbImage source = Blobs(60, 50, 0.0, 0.0);
  auto const matching = MatchingOf(Blobs(60, 50, 3.0, 0.0));
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(1, matching->Do(&source, &x, &y, 0, 0, 0));
  EXPECT_EQ(1.0, x);
  EXPECT_EQ(0.0, y);
}

TEST(Matching, NothingFoundLeavesTheEstimateAlone) {
  COrbImage source = Constant(10, 10, 1, 1.0f);
  auto const matching = MatchingOf(Constant(10, 10, 1, 1.0f));
  double const estimates[][2] = {{500.0, 0.25}, {0.25, -500.0}, {1e300, 0.0}, {0.0, -kInfinity}};
  for (auto const& e : estimates) {
    RecordingWindow window;
    matching->SetProgressHandle(&window);
    double x = e[0];
    double y = e[1];
    EXPECT_EQ(0, matching->Do(&source, &x, &y, 4, 1, 1));
    EXPECT_EQ(e[0], x);
    EXPECT_EQ(e[1], y);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  }
  for (int range : {-2, -3, -32, -2000000000, std::numeric_limits<int>::min()}) {
    double x = 0.0;
    double y = 0.0;
    EXPECT_EQ(0, matching->Do(&source, &x, &y, range, 0, 0)) << range;
  }
}

TEST(Matching, NotANumberIsNeverTheBest) {
  COrbImage source = Constant(10, 10, 1, 1.0f);
  source.SetPixelGrayRaw(5, 5, std::numeric_limits<float>::quiet_NaN(), 0);
  auto const matching = MatchingOf(Constant(10, 10, 1, 1.0f));
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(0, matching->Do(&source, &x, &y, 4, 1, 0));
  double notANumber = kNan;
  COrbImage clean = Constant(10, 10, 1, 1.0f);
  EXPECT_EQ(1, matching->Do(&clean, &notANumber, &y, 0, 0, 0));  // taken as 0
}

// Steps by repeated addition: around 0 the second stage reaches 4 positions, none of them exactly 0, and the first
// one 5.
TEST(Matching, IntendedFineStepsAddUpAndTickSixUnits) {
  COrbImage image = Constant(20, 20, 1, 3.0f);
  auto const matching = MatchingOf(image);
  RecordingWindow window;
  matching->SetProgressHandle(&window);
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(1, matching->Do(&image, &x, &y, 0, 1, 1));
  EXPECT_EQ(1 + 8 + 24 + 16, window.polls);
  EXPECT_EQ(9 + 6 * (24 + 16), OrbTestAccess::ProgressOf(*matching).count);
  EXPECT_EQ(297, OrbTestAccess::ProgressOf(*matching).total);
}

TEST(Matching, ProgressRun) {
  COrbImage image = Constant(12, 12, 1, 3.0f);
  auto const matching = MatchingOf(image);
  RecordingWindow window;
  window.escapeAtPoll = 3;  // changes nothing
  matching->SetProgressHandle(&window);
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(1, matching->Do(&image, &x, &y, 6, 0, 1));
  EXPECT_EQ(std::vector<std::string>{"画像マッチング処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(4 * 4 + 8, window.polls);
  EXPECT_EQ(6 * 6 / 4 + 9, OrbTestAccess::ProgressOf(*matching).total);
}

TEST(Matching, ATotalBeyondIntegersIsHeld) {
  COrbImage image = Constant(4, 4, 1, 3.0f);
  auto const matching = MatchingOf(image);
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(0, matching->Do(&image, &x, &y, -2000000000, 1, 1));
  EXPECT_EQ(std::numeric_limits<int>::max(), OrbTestAccess::ProgressOf(*matching).total);
}

TEST(Matching, SilentWithoutProgress) {
  COrbImage image = Constant(12, 12, 1, 3.0f);
  auto const matching = MatchingOf(image);
  RecordingWindow window;
  matching->SetProgressHandle(&window);
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(1, matching->Do(&image, &x, &y, 2, 1, 0));
  EXPECT_TRUE(window.IsSilent());
}

TEST(Matching, WorksOnAHostileStoreAndOnlyReads) {
  Random random(18);
  COrbImage source = RandomImage(random, 35, 20, 3);
  COrbImage const image = RandomImage(random, 33, 21, 3);
  auto const matching = MatchingOf(image);
  double expectedX = 0.0;
  double expectedY = 0.0;
  EXPECT_EQ(1, matching->Do(&source, &expectedX, &expectedY, 4, 1, 0));
  COrbImage const before(source);
  MakeHostile(*matching);
  MakeHostile(source);
  double x = 0.0;
  double y = 0.0;
  EXPECT_EQ(1, matching->Do(&source, &x, &y, 4, 1, 0));
  EXPECT_EQ(expectedX, x);
  EXPECT_EQ(expectedY, y);
  EXPECT_TRUE(SameBits(before, source));
  EXPECT_TRUE(SameBits(image, *matching));
  EXPECT_TRUE(SameLevels(image, *matching));
  EXPECT_EQ(0, LocksLeft(source));
  EXPECT_EQ(0, LocksLeft(*matching));
}

}  // namespace
}  // namespace orb::test
