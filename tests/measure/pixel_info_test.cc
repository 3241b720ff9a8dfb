// CImgPixelInfo: statistics of rectangles and squares.
#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/core/rank_selection_internal.h>
#include <orbimg/orbimg.h>
#include <tests/reference/pixel_info_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kJunk = -7.5e6;

using Three = std::array<double, 3>;
constexpr Three kZeros{};

struct Info {
  Three maximum{kJunk, kJunk, kJunk};
  Three minimum{kJunk, kJunk, kJunk};
  Three mean{kJunk, kJunk, kJunk};
  Three deviation{kJunk, kJunk, kJunk};
  Three median{kJunk, kJunk, kJunk};
};

CImgPixelInfo InfoImage(COrbImage const& image) {
  CImgPixelInfo made;
  made.CopyImage(image, nullptr, nullptr);
  return made;
}

CImgPixelInfo MonoOf(int width, int height, std::vector<float> const& samples) {
  CImgPixelInfo image = InfoImage(COrbImage(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr));
  SetSamples(image, samples);
  return image;
}

Info Calc(CImgPixelInfo& image, CRect rect) {
  Info i;
  image.Calc(rect, i.maximum.data(), i.minimum.data(), i.mean.data(), i.deviation.data(), i.median.data());
  return i;
}

Info Calc(CImgPixelInfo& image, CPoint centre, int size) {
  Info i;
  image.Calc(centre, size, i.maximum.data(), i.minimum.data(), i.mean.data(), i.deviation.data(), i.median.data());
  return i;
}

Info CalcReference(COrbImage& image, CRect rect) {
  Info i;
  reference::CalcPixelInfo(image, rect, i.maximum.data(), i.minimum.data(), i.mean.data(), i.deviation.data(),
                           i.median.data());
  return i;
}

bool SameNumber(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// Sums may differ in their last bits from a running one; values reach to 1000.
bool CloseNumber(double a, double b) { return SameNumber(a, b) || std::abs(a - b) <= 1e-10; }

void ExpectSame(Info const& expected, Info const& found) {
  for (std::size_t p = 0; p < 3; ++p) {
    EXPECT_TRUE(SameNumber(expected.maximum[p], found.maximum[p])) << expected.maximum[p] << ' ' << found.maximum[p];
    EXPECT_TRUE(SameNumber(expected.minimum[p], found.minimum[p])) << expected.minimum[p] << ' ' << found.minimum[p];
    EXPECT_TRUE(SameNumber(expected.median[p], found.median[p])) << expected.median[p] << ' ' << found.median[p];
    EXPECT_TRUE(CloseNumber(expected.mean[p], found.mean[p])) << expected.mean[p] << ' ' << found.mean[p];
    EXPECT_TRUE(CloseNumber(expected.deviation[p], found.deviation[p]))
        << expected.deviation[p] << ' ' << found.deviation[p];
  }
}

void ExpectZeros(Info const& found) {
  for (Three const& each : {found.maximum, found.minimum, found.mean, found.deviation, found.median}) {
    EXPECT_EQ(kZeros, each);
  }
}

TEST(PixelInfo, WorkedExample) {
  // Mean 5, squared deviations 9 1 1 1 0 0 4 16 over 8, so that the deviation divides by n; sorted 2 4 4 4 5 5 7 9.
  CImgPixelInfo image = MonoOf(4, 2, {9, 4, 4, 5, 2, 5, 7, 4});
  Info const found = Calc(image, CRect(0, 0, 4, 2));
  EXPECT_EQ((Three{9, 0, 0}), found.maximum);
  EXPECT_EQ((Three{2, 0, 0}), found.minimum);
  EXPECT_EQ((Three{5, 0, 0}), found.mean);
  EXPECT_EQ((Three{2, 0, 0}), found.deviation);
  EXPECT_EQ((Three{5, 0, 0}), found.median);  // the upper of 4 and 5
}

TEST(PixelInfo, ValuesAreRawWhateverTheLevels) {
  CImgPixelInfo image = MonoOf(2, 1, {-3, 11});
  image.SetLevel(0, 1000.0, 2000.0);
  Info const found = Calc(image, CRect(0, 0, 2, 1));
  EXPECT_EQ(11.0, found.maximum[0]);
  EXPECT_EQ(-3.0, found.minimum[0]);
  EXPECT_EQ(4.0, found.mean[0]);
  EXPECT_EQ(7.0, found.deviation[0]);
  EXPECT_EQ(11.0, found.median[0]);
}

TEST(PixelInfo, HalfTheSizeIsRoundedDown) {
  std::vector<float> samples(49);
  for (std::size_t i = 0; i < 49; ++i) samples[i] = static_cast<float>(i);
  CImgPixelInfo image = MonoOf(7, 7, samples);
  for (int size : {-1, 0, 1}) {
    Info const found = Calc(image, CPoint(3, 2), size);
    EXPECT_EQ(17.0, found.minimum[0]) << size;
    EXPECT_EQ(17.0, found.maximum[0]) << size;
  }
  for (int size : {2, 3}) {
    Info const found = Calc(image, CPoint(3, 2), size);
    EXPECT_EQ(9.0, found.minimum[0]) << size;
    EXPECT_EQ(25.0, found.maximum[0]) << size;
    EXPECT_EQ(17.0, found.median[0]) << size;
  }
  for (int size : {4, 5}) {
    Info const found = Calc(image, CPoint(3, 2), size);
    EXPECT_EQ(1.0, found.minimum[0]) << size;
    EXPECT_EQ(33.0, found.maximum[0]) << size;
  }
}

TEST(PixelInfo, ANullMedianSkipsIt) {
  Random random(1);
  CImgPixelInfo image = InfoImage(RandomImage(random, 20, 10, 3));
  CRect const rect(2, 3, 17, 9);
  Info const with = Calc(image, rect);
  Info i;
  image.Calc(rect, i.maximum.data(), i.minimum.data(), i.mean.data(), i.deviation.data(), nullptr);
  EXPECT_EQ(with.maximum, i.maximum);
  EXPECT_EQ(with.minimum, i.minimum);
  EXPECT_EQ(with.mean, i.mean);
  EXPECT_EQ(with.deviation, i.deviation);
  EXPECT_EQ((Three{kJunk, kJunk, kJunk}), i.median);
}

TEST(PixelInfo, EqualsThePlainFormulaEverywhere) {
  Random random(2);
  for (int planes : {1, 2, 3}) {
    for (int width : {1, 2, 7, 16, 17, 40, 130}) {
      for (int height : {1, 2, 12}) {
        CImgPixelInfo image = InfoImage(RandomImage(random, width, height, planes));
        for (int trial = 0; trial < 6; ++trial) {
          int const left = static_cast<int>(random() % static_cast<unsigned>(width));
          int const top = static_cast<int>(random() % static_cast<unsigned>(height));
          int const right = left + 1 + static_cast<int>(random() % static_cast<unsigned>(width - left));
          int const bottom = top + 1 + static_cast<int>(random() % static_cast<unsigned>(height - top));
          CRect const rect = trial == 0 ? CRect(0, 0, width, height) : CRect(left, top, right, bottom);
          SCOPED_TRACE(testing::Message() << width << 'x' << height << 'x' << planes << ' ' << rect.left << ' '
                                          << rect.top << ' ' << rect.right << ' ' << rect.bottom);
          ExpectSame(CalcReference(image, rect), Calc(image, rect));
        }
      }
    }
  }
}

TEST(PixelInfo, SquaresEqualRectangles) {
  Random random(3);
  CImgPixelInfo image = InfoImage(RandomImage(random, 19, 15, 3));
  for (int size = 0; size < 12; ++size) {
    int const h = size / 2;
    Info const square = Calc(image, CPoint(9, 7), size);
    Info const rect = Calc(image, CRect(9 - h, 7 - h, 9 + h + 1, 7 + h + 1));
    EXPECT_EQ(rect.mean, square.mean) << size;
    EXPECT_EQ(rect.median, square.median) << size;
  }
}

TEST(PixelInfo, LargeRectanglesGiveTheMedianOfTheFullSort) {
  Random random(4);
  for (int planes : {1, 3}) {
    CImgPixelInfo image = InfoImage(RandomImage(random, 500, 300, planes));
    for (CRect const rect : {CRect(0, 0, 500, 300), CRect(3, 1, 499, 299)}) {
      Info const expected = CalcReference(image, rect);
      Info const found = Calc(image, rect);
      EXPECT_EQ(expected.median, found.median);
      EXPECT_EQ(expected.maximum, found.maximum);
      EXPECT_EQ(expected.minimum, found.minimum);
      for (std::size_t p = 0; p < 3; ++p) {
        EXPECT_NEAR(expected.mean[p], found.mean[p], 1e-9);
        EXPECT_NEAR(expected.deviation[p], found.deviation[p], 1e-9);
      }
    }
  }
}

TEST(PixelInfo, SamplesThatMisleadChangeNoMedian) {
  // From a few thousand samples on some are looked at first; here these lie below or above all others, or far out on
  // both sides.
  for (int const side : {40, 46, 64, 130, 362, 364}) {
    auto const n = static_cast<std::size_t>(side * side);
    std::vector<bool> isSeen(n);
    SamplePositions positions(side * side);
    for (std::int64_t i = 0; i < RankSampling::Of(side * side).sample; ++i) {
      isSeen[static_cast<std::size_t>(positions.Next())] = true;
    }
    for (int const kind : {0, 1, 2, 3}) {
      std::vector<float> samples(n);
      for (std::size_t i = 0; i < n; ++i) {
        float const seen = kind == 0 ? -1.0f : kind == 1 ? 1e9f : i % 2 == 0 ? -1e9f : 1e9f;
        samples[i] = isSeen[i] && kind < 3 ? seen : static_cast<float>(i * 7919 % n);
      }
      CImgPixelInfo image = MonoOf(side, side, samples);
      std::sort(samples.begin(), samples.end());
      EXPECT_EQ(samples[n / 2], Calc(image, CRect(0, 0, side, side)).median[0]) << side << ' ' << kind;
    }
  }
}

TEST(PixelInfo, OnePixelIsItselfWhateverItIs) {
  for (float const v : {5.5f, -0.0f, kInfinity, -kInfinity, kNan}) {
    CImgPixelInfo image = MonoOf(3, 1, {1.0f, v, 2.0f});
    Info const found = Calc(image, CRect(1, 0, 2, 1));
    EXPECT_TRUE(SameNumber(v, found.maximum[0]));
    EXPECT_TRUE(SameNumber(v, found.minimum[0]));
    EXPECT_TRUE(SameNumber(v, found.mean[0]));
    EXPECT_TRUE(SameNumber(v, found.median[0]));
    EXPECT_EQ(0.0, found.deviation[0]);
  }
}

TEST(PixelInfo, NotANumberRanksLastAndIsNoExtreme) {
  CImgPixelInfo image = MonoOf(5, 1, {3, kNan, 1, kNan, 2});
  Info const found = Calc(image, CRect(0, 0, 5, 1));
  EXPECT_EQ(3.0, found.maximum[0]);
  EXPECT_EQ(1.0, found.minimum[0]);
  EXPECT_EQ(3.0, found.median[0]);
  EXPECT_TRUE(std::isnan(found.mean[0]));
  EXPECT_TRUE(std::isnan(found.deviation[0]));
  Info const inCorner = Calc(image, CRect(1, 0, 5, 1));
  EXPECT_TRUE(std::isnan(inCorner.maximum[0]));
  EXPECT_TRUE(std::isnan(inCorner.minimum[0]));
}

TEST(PixelInfo, TakesEverySample) {
  Random random(5);
  for (int trial = 0; trial < 60; ++trial) {
    int const width = 1 + static_cast<int>(random() % 40);
    int const height = 1 + static_cast<int>(random() % 12);
    COrbImage odd = RandomImage(random, width, height, 1 + static_cast<int>(random() % 3));
    StrewSpecialSamples(odd, random);
    CImgPixelInfo image = InfoImage(odd);
    Info const expected = CalcReference(image, CRect(0, 0, width, height));
    Info const found = Calc(image, CRect(0, 0, width, height));
    for (std::size_t p = 0; p < 3; ++p) {
      EXPECT_TRUE(SameNumber(expected.maximum[p], found.maximum[p]));
      EXPECT_TRUE(SameNumber(expected.minimum[p], found.minimum[p]));
      EXPECT_EQ(std::isfinite(expected.mean[p]), std::isfinite(found.mean[p]));
    }
  }
}

TEST(PixelInfo, WithoutPixelsAllIsZero) {
  Random random(6);
  CImgPixelInfo image = InfoImage(RandomImage(random, 9, 7, 3));
  for (CRect const rect : {CRect(4, 4, 4, 6), CRect(5, 5, 4, 4), CRect(9, 0, 12, 7), CRect(-4, -4, 0, 0),
                           CRect(INT_MAX, INT_MAX, INT_MIN, INT_MIN)}) {
    ExpectZeros(Calc(image, rect));
  }
  ExpectZeros(Calc(image, CPoint(INT_MIN, INT_MIN), 5));
  ExpectZeros(Calc(image, CPoint(INT_MAX, INT_MAX), 5));
  ExpectZeros(Calc(image, CPoint(4, 4), -40));
  CImgPixelInfo empty;
  ExpectZeros(Calc(empty, CRect(0, 0, 1, 1)));
}

TEST(PixelInfo, WhatReachesBeyondTheImageDoesNotCount) {
  Random random(7);
  CImgPixelInfo image = InfoImage(RandomImage(random, 9, 7, 3));
  ExpectSame(CalcReference(image, CRect(6, 4, 9, 7)), Calc(image, CRect(6, 4, 20, INT_MAX)));
  ExpectSame(CalcReference(image, CRect(0, 0, 2, 3)), Calc(image, CRect(INT_MIN, -3, 2, 3)));
  ExpectSame(CalcReference(image, CRect(0, 0, 9, 7)), Calc(image, CPoint(4, 3), INT_MAX));
}

TEST(PixelInfo, MeasuresThreePlanesAndNoMore) {
  Random random(8);
  CImgPixelInfo image = InfoImage(RandomImage(random, 6, 5, 4));
  CImgPixelInfo three = InfoImage(image);
  ASSERT_EQ(1, three.ChangePlanes(3, nullptr, nullptr));
  ExpectSame(Calc(three, CRect(0, 0, 6, 5)), Calc(image, CRect(0, 0, 6, 5)));
}

TEST(PixelInfo, OfAnyImage) {
  Random random(9);
  COrbImage const image = RandomImage(random, 8, 8, 3);
  CImgPixelInfo own = InfoImage(image);
  Info i;
  CalcPixelInfo(image, CRect(1, 2, 7, 6), i.maximum.data(), i.minimum.data(), i.mean.data(), i.deviation.data(),
                i.median.data());
  ExpectSame(Calc(own, CRect(1, 2, 7, 6)), i);
}

TEST(PixelInfo, ChangesNothingAndIsSilent) {
  Random random(10);
  COrbImage const before = RandomImage(random, 11, 5, 3);
  CImgPixelInfo image = InfoImage(before);
  RecordingWindow window;
  image.SetProgressHandle(&window);
  Calc(image, CRect(1, 1, 9, 4));
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
  EXPECT_TRUE(window.IsSilent());
}

TEST(PixelInfo, WorksOnAHostileStore) {
  Random random(11);
  CImgPixelInfo image = InfoImage(RandomImage(random, 12, 7, 3));
  Info const expected = CalcReference(image, CRect(2, 1, 11, 6));
  MakeHostile(image);
  ExpectSame(expected, Calc(image, CRect(2, 1, 11, 6)));
  EXPECT_EQ(0, LocksLeft(image));
}

TEST(PixelInfo, CopiesAreWholeImages) {
  Random random(12);
  CImgPixelInfo const image = InfoImage(RandomImage(random, 5, 4, 3));
  CImgPixelInfo const copy(image);
  CImgPixelInfo assigned;
  assigned = image;
  EXPECT_TRUE(SameBits(image, copy));
  EXPECT_TRUE(SameBits(image, assigned));
}

}  // namespace
}  // namespace orb::test
