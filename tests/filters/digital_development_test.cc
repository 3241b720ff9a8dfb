// CImgFilterSpecial::DigitalDvlp.
#include <cmath>

#include <tests/filters/operator_trials.h>
#include <tests/reference/star_filter_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using Filter = CImgFilterSpecial;

Filter Developed(COrbImage& src, double pivot, double weight, std::vector<int> from) {
  Filter dst;
  dst.CopyImage(src, nullptr, nullptr);
  FillJunk(dst);
  dst.DigitalDvlp(pivot, weight, &src, from.data(), nullptr, 0);
  return dst;
}

TEST(DigitalDevelopment, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  std::vector<std::vector<int>> const choices = {{0, 1, 2}, {0, 0, 0}, {3, 3, 3}, {2, 7, 1}, {1, 3, 0}};
  double const weights[] = {1.0, 0.0, 0.3, -0.25, 2.0};
  double const pivots[] = {120.0, 0.0, -300.0, 1e5};
  int n = 0;
  EachShape(random, [&](COrbImage& src, CRect* rect, std::string const& name) {
    std::vector<int> from = choices[static_cast<std::size_t>(n % 5)];
    double const weight = weights[n / 5 % 5];
    double const pivot = pivots[n % 4];
    if (n++ % 5 == 4) StrewSpecialSamples(src, random);
    Filter dst = JunkLike<Filter>(src, random);
    COrbImage expected(dst);
    reference::DigitalDvlp(expected, pivot, weight, src, from.data(), rect);
    dst.DigitalDvlp(pivot, weight, &src, from.data(), rect, 0);
    EXPECT_TRUE(SameValues(expected, dst)) << name << ' ' << weight << ' ' << pivot;
    EXPECT_TRUE(SameLevels(expected, dst));
  });
}

// Enough samples that a column would show which is sure of its float and should not be; few that are not numbers, so
// that most blocks of columns are sure, and samples of short digits, whose results lie between two floats.
TEST(DigitalDevelopment, EqualsThePlainFormulaOnLargerImages) {
  Random random(9);
  std::vector<std::vector<int>> const choices = {{0, 1, 2}, {3, 3, 3}, {0, 0, 0}};
  int n = 0;
  for (double pivot : {120.0, 64.0, -90.0, 1e7}) {
    for (std::vector<int> from : choices) {
      COrbImage src = RandomImage(random, 1100, 60, 3);
      if (n % 3 == 0) StrewSpecialSamples(src, random, 20000);
      if (n % 2 == 0) {
        for (int p = 0; p < 3; ++p) {
          float* const samples = src.GetImageAdr(0, 0, p, 0, nullptr);
          for (int i = 0; i < 1100 * 60; ++i) samples[i] = std::trunc(samples[i]);
          src.CImage::SetLevel(p, -64.0, 191.0 + 64.0 * p);
        }
      }
      Filter dst = JunkLike<Filter>(src, random);
      if (n % 4 == 1) dst.CImage::SetLevel(1, 1e5, 1e5 + 1e-3);
      if (n % 4 == 2) dst.CImage::SetLevel(2, 0.0, 1e-250);
      COrbImage expected(dst);
      reference::DigitalDvlp(expected, pivot, n % 2, src, from.data(), nullptr);
      dst.DigitalDvlp(pivot, n % 2, &src, from.data(), nullptr, 0);
      EXPECT_TRUE(SameValues(expected, dst)) << n;
      ++n;
    }
  }
}

TEST(DigitalDevelopment, LevelsOfEveryKindAreDividedBy) {
  Random random(10);
  for (double range : {0.0, 1e-300, 1e300, -50.0, 1e-40}) {
    COrbImage src = RandomImage(random, 30, 9, 1);
    src.SetLevel(0, 10.0, 10.0 + range);
    Filter dst = JunkLike<Filter>(src, random);
    COrbImage expected(dst);
    int from[] = {0};
    reference::DigitalDvlp(expected, 30.0, 1.0, src, from, nullptr);
    dst.DigitalDvlp(30.0, 1.0, &src, from, nullptr, 0);
    EXPECT_TRUE(SameValues(expected, dst)) << range;
  }
}

TEST(DigitalDevelopment, DividesByTheBlurAndScalesByTheMean) {
  COrbImage src = FlatImage(10, 10, 100.0f);
  // The mean counts 9 x 9 samples of the 10 x 10: 10000 / 81.
  double const mean = 10000.0 / 81.0;
  EXPECT_NEAR(100.0 / 110.0 * (mean + 10.0), Developed(src, 10.0, 1.0, {0}).GetPixelGrayRaw(4, 4, 0), 1e-4);
}

TEST(DigitalDevelopment, ASampleAtItsBlurAndTheMeanStays) {
  COrbImage src = FlatImage(10, 10, 0.0f);
  src.SetPixelGrayRaw(4, 4, 81.0f, 0);
  // The mean is 1.0; with weight 0 the sample of 1.0 is its own blur.
  src.SetPixelGrayRaw(8, 8, 1.0f, 0);
  src.SetPixelGrayRaw(4, 4, 80.0f, 0);
  EXPECT_NEAR(1.0, Developed(src, 30.0, 0.0, {0}).GetPixelGrayRaw(8, 8, 0), 1e-6);
}

TEST(DigitalDevelopment, SamplesAtOrBelowTheFloorAreNotDivided) {
  COrbImage src = MonoImage(4, 2, {50, 20, 400, 300, 200, 60, 70, 80});
  src.SetLevel(0, 50.0, 305.0);
  Filter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.SetLevel(0, 1000.0, 1000.0 + 2.0 * 255.0);
  int from[] = {0};
  dst.DigitalDvlp(1500.0, 1.0, &src, from, nullptr, 0);
  EXPECT_NEAR(1000.0, dst.GetPixelGrayRaw(0, 0, 0), 1e-3) << "at the floor: the destination's";
  EXPECT_NEAR(940.0, dst.GetPixelGrayRaw(1, 0, 0), 1e-3) << "30 of 255 below it";
  EXPECT_GT(std::fabs(dst.GetPixelGrayRaw(2, 0, 0) - 1700.0), 100.0) << "350 of 255 above it: by the curve";
}

TEST(DigitalDevelopment, WeightZeroIsAPointCurve) {
  COrbImage src = MonoImage(3, 3, {10, 50, 100, 20, 200, 30, 40, 60, 255});
  double sum = 0.0;
  for (float v : SamplesOf(src)) sum += v;
  double const a = 25.0;
  double const b = sum / 4.0 + a;
  std::vector<float> const out = SamplesOf(Developed(src, a, 0.0, {0}));
  for (std::size_t i = 0; i < 9; ++i) {
    double const s = SamplesOf(src)[i];
    EXPECT_NEAR(s / (s + a) * b, out[i], 1e-4) << i;
  }
}

TEST(DigitalDevelopment, OnePlaneForAllKeepsTheColours) {
  Random random(2);
  COrbImage src(-32, 12, 8, 3, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(src, random, 10.0, 200.0);
  Filter const all = Developed(src, 20.0, 1.0, {0, 0, 0});
  Filter const own = Developed(src, 20.0, 1.0, {0, 1, 2});
  auto const at = [](COrbImage const& image, int plane) { return image.GetImageAdr(5, 4, plane, 1, nullptr)[0]; };
  EXPECT_NEAR(at(src, 1) / at(src, 0), at(all, 1) / at(all, 0), 1e-5);
  EXPECT_NEAR(at(src, 2) / at(src, 0), at(all, 2) / at(all, 0), 1e-5);
  EXPECT_EQ(at(all, 0), at(own, 0));
  EXPECT_NE(at(all, 1), at(own, 1));
}

TEST(DigitalDevelopment, IntendedTheMeanTakesEachPlaneByItsOwnLevels) {
  COrbImage src(-32, 10, 10, 3, 1.0, 0.0, 1, nullptr, nullptr);
  float const samples[] = {60.0f, 1100.0f, 5.0f};
  for (int p = 0; p < 3; ++p) std::fill_n(src.GetImageAdr(0, 0, p, 0, nullptr), 100, samples[p]);
  src.CImage::SetLevel(0, 0.0, 255.0);
  src.CImage::SetLevel(1, 1000.0, 1510.0);  // 1100 is 50 of 255
  src.CImage::SetLevel(2, 0.0, 25.5);       // 5 is 50 of 255
  double const v = (60.0 + 50.0 + 50.0) / 3.0;
  double const b = 6000.0 / 81.0 + 20.0;
  EXPECT_NEAR(60.0 / (v + 20.0) * b, Developed(src, 20.0, 1.0, {3, 3, 3}).GetPixelGrayRaw(5, 5, 0), 1e-4);
}

TEST(DigitalDevelopment, IntendedPivotAndMeanGoByPlaneZeroOfTheDestination) {
  COrbImage src(-32, 10, 10, 3, 1.0, 0.0, 1, nullptr, nullptr);
  for (int p = 0; p < 3; ++p) std::fill_n(src.GetImageAdr(0, 0, p, 0, nullptr), 100, 81.0f);
  Filter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.CImage::SetLevel(0, 0.0, 510.0);
  int from[] = {0, 1, 2};
  dst.DigitalDvlp(40.0, 1.0, &src, from, nullptr, 0);
  // On plane 0 of the destination the pivot of 40 is 20, the mean of 100 is 50.
  EXPECT_NEAR(81.0 / (81.0 + 20.0) * (50.0 + 20.0), dst.GetPixelGrayRaw(5, 5, 1), 1e-4);
  EXPECT_NEAR(2.0 * 81.0 / (81.0 + 20.0) * (50.0 + 20.0), dst.GetPixelGrayRaw(5, 5, 0), 1e-4);
}

TEST(DigitalDevelopment, APlaneThatIsNotThereIsZero) {
  COrbImage src = FlatImage(10, 10, 81.0f);
  double const b = 100.0 + 20.0;
  EXPECT_NEAR(81.0 / 20.0 * b, Developed(src, 20.0, 1.0, {1}).GetPixelGrayRaw(5, 5, 0), 1e-3);
  EXPECT_NEAR(81.0 / 20.0 * b, Developed(src, 20.0, 1.0, {-1}).GetPixelGrayRaw(5, 5, 0), 1e-3);
  EXPECT_NEAR(81.0 / (27.0 + 20.0) * b, Developed(src, 20.0, 1.0, {3}).GetPixelGrayRaw(5, 5, 0), 1e-3);
}

TEST(DigitalDevelopment, ADenominatorOfZeroGivesAnInfinity) {
  COrbImage src = FlatImage(10, 10, 64.0f);
  EXPECT_TRUE(std::isinf(Developed(src, -64.0, 0.0, {0}).GetPixelGrayRaw(5, 5, 0)));
}

TEST(DigitalDevelopment, TheMeanIsThatOfTheWholeSource) {
  Random random(3);
  COrbImage src = RandomImage(random, 20, 16, 1);
  int from[] = {0};
  Filter whole;
  whole.CopyImage(src, nullptr, nullptr);
  Filter part(whole);
  Filter outside(whole);
  CRect rect(4, 4, 9, 9);
  CRect nowhere(30, 30, 40, 40);
  whole.DigitalDvlp(20.0, 1.0, &src, from, nullptr, 0);
  part.DigitalDvlp(20.0, 1.0, &src, from, &rect, 0);
  outside.DigitalDvlp(20.0, 1.0, &src, from, &nowhere, 0);
  EXPECT_EQ(whole.GetPixelGrayRaw(5, 6, 0), part.GetPixelGrayRaw(5, 6, 0));
  EXPECT_EQ(src.GetPixelGrayRaw(10, 10, 0), part.GetPixelGrayRaw(10, 10, 0));
  EXPECT_TRUE(SameBits(src, outside));
}

TEST(DigitalDevelopment, ReportsTheRowsOfEachPlane) {
  int from[] = {0, 1, 3};
  ExpectRowsOfEachPlane<Filter>("デジタル現像処理中...", [&](Filter& dst, COrbImage& src, CRect* rect, int progress) {
    dst.DigitalDvlp(20.0, 1.0, &src, from, rect, progress);
  });
}

TEST(DigitalDevelopment, WorksOnAHostileStore) {
  int from[] = {0, 1, 3};
  ExpectSameOnAHostileStore<Filter>([&](Filter& dst, COrbImage& src, CRect* rect, int progress) {
    dst.DigitalDvlp(20.0, 1.0, &src, from, rect, progress);
  });
}

}  // namespace
}  // namespace orb::test
