// CImgFilterSpecial::NebularSmootherFilter.
#include <cmath>
#include <limits>

#include <tests/filters/operator_trials.h>
#include <tests/reference/star_filter_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using Filter = CImgFilterSpecial;

Filter Smoothed(COrbImage& src, double sigma, double threshold, double clearRadius) {
  Filter dst;
  dst.CopyImage(src, nullptr, nullptr);
  FillJunk(dst);
  dst.NebularSmootherFilter(sigma, threshold, clearRadius, &src, nullptr, 0);
  return dst;
}

// Noise of 1 around 100 with a few stars; levels 0 to 1000.
void MakeNebula(COrbImage& image, Random& random, int oneStarIn) {
  FillRandom(image, random, 99.0, 101.0);
  std::uniform_int_distribution<int> chance(0, oneStarIn - 1);
  for (int p = 0; p < image.GetPlanes(); ++p) {
    image.CImage::SetLevel(p, 0.0, 1000.0 + p);
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        if (chance(random) == 0) image.SetPixelGrayRaw(x, y, 500.0f, p);
      }
    }
  }
}

// 100 everywhere, levels 0 to 1000, a star of 900 in column `star` of the middle row.
COrbImage StarImage(int width, int height, int star) {
  COrbImage image = FlatImage(width, height, 100.0f);
  image.SetLevel(0, 0.0, 1000.0);
  image.SetPixelGrayRaw(star, height / 2, 900.0f, 0);
  return image;
}

void ExpectPlainFormula(COrbImage& src, CRect* rect, Random& random, int n, std::string const& name) {
  double const sigmas[] = {1.2, 0.5, 2.5, -0.5, 4.0, -1.0, 0.0};
  double const thresholds[] = {0.1, 0.02, 0.5, 100.0, 0.0};
  double const radii[] = {1.0, 0.5, 2.3, 6.0, 1.5, -1.0};
  double const sigma = sigmas[n % 7];
  double const threshold = thresholds[n % 5];
  double const clearRadius = radii[n % 6];
  Filter dst = JunkLike<Filter>(src, random);
  COrbImage expected(dst);
  reference::NebularSmootherFilter(expected, sigma, threshold, clearRadius, src, rect);
  dst.NebularSmootherFilter(sigma, threshold, clearRadius, &src, rect, 0);
  EXPECT_TRUE(SameValues(expected, dst)) << name << ' ' << sigma << ' ' << threshold << ' ' << clearRadius;
  EXPECT_TRUE(SameLevels(expected, dst));
}

TEST(NebulaSmooth, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  int n = 0;
  EachShape(random, [&](COrbImage& src, CRect* rect, std::string const& name) {
    if (n % 3 != 0) MakeNebula(src, random, n % 2 == 0 ? 60 : 8);
    if (n % 5 == 4) StrewSpecialSamples(src, random, 40);
    ExpectPlainFormula(src, rect, random, n++, name);
  });
}

// Wide enough for several blocks of columns, each in a way of its own.
TEST(NebulaSmooth, EqualsThePlainFormulaOnWideRows) {
  Random random(2);
  for (int n = 0; n < 42; ++n) {
    COrbImage src = RandomImage(random, 300, 14, n % 2 == 0 ? 1 : 3);
    MakeNebula(src, random, 400);
    ExpectPlainFormula(src, nullptr, random, n, "wide");
  }
}

TEST(NebulaSmooth, AThresholdOfZeroLeavesEverySample) {
  Random random(3);
  COrbImage src = RandomImage(random, 20, 9, 3);
  EXPECT_TRUE(SameBits(src, Smoothed(src, 1.5, 0.0, 2.0))) << "every edge is at least 0";
}

TEST(NebulaSmooth, ARadiusBelowZeroLeavesEverySample) {
  Random random(4);
  COrbImage src = RandomImage(random, 20, 9, 3);
  EXPECT_TRUE(SameBits(src, Smoothed(src, -2.5, 100.0, 2.0)));
  EXPECT_TRUE(SameBits(src, Smoothed(src, -1e300, 100.0, 2.0)));
}

TEST(NebulaSmooth, TheGaussianHasTheRadiusAboveItsSigma) {
  COrbImage src = FlatImage(9, 9, 0.0f);
  src.SetPixelGrayRaw(4, 4, 1.0f, 0);
  for (double sigma : {0.5, 1.0}) {
    int const radius = sigma == 0.5 ? 1 : 2;
    CFilterKernel gaussian;
    gaussian.MakeGaussian(radius, sigma);
    Filter const dst = Smoothed(src, sigma, 100.0, 1.0);
    for (int x = 0; x < 9; ++x) {
      float const weight = std::abs(x - 4) <= radius ? gaussian.Value(x - 4, 0) : 0.0f;
      EXPECT_NEAR(weight, dst.GetImageAdr(x, 4, 0, 1, nullptr)[0], 1e-7) << sigma << ' ' << x;
    }
  }
}

TEST(NebulaSmooth, StarsAndTheirSurroundingsStay) {
  Random random(5);
  COrbImage src = FlatImage(31, 31, 0.0f);
  FillRandom(src, random, 99.0, 101.0);
  src.SetLevel(0, 0.0, 1000.0);
  src.SetPixelGrayRaw(15, 15, 900.0f, 0);
  // The star is an edge, and so are its eight neighbours; the clear radius counts from each of them.
  Filter const dst = Smoothed(src, 3.0, 0.1, 2.0);
  for (int x = 0; x < 31; ++x) {
    bool const isKept = dst.GetImageAdr(x, 15, 0, 1, nullptr)[0] == src.GetPixelGrayRaw(x, 15, 0);
    EXPECT_EQ(std::abs(x - 15) <= 3, isKept) << x;
  }
}

// A star and its neighbours lie under the Gaussian of the samples around, and have no part in their means.
TEST(NebulaSmooth, EdgesHaveNoPartInTheMean) {
  COrbImage src = StarImage(31, 31, 15);
  Filter const dst = Smoothed(src, 4.0, 0.1, 1.0);
  for (int x = 0; x < 31; ++x) {
    if (x != 15) {
      EXPECT_NEAR(100.0, dst.GetImageAdr(x, 15, 0, 1, nullptr)[0], 1e-4) << x;
    }
  }
}

TEST(NebulaSmooth, TheThresholdIsAFractionOfTheRange) {
  COrbImage src = StarImage(15, 15, 7);
  // The star's edge is 8 * 800, or 6.4 of the range, which is 6.375 times 256/255.
  EXPECT_EQ(900.0f, Smoothed(src, 1.0, 6.37, 0.5).GetPixelGrayRaw(7, 7, 0));
  EXPECT_NE(900.0f, Smoothed(src, 1.0, 6.38, 0.5).GetPixelGrayRaw(7, 7, 0));
}

TEST(NebulaSmooth, EveryPlaneIsSearchedForItsOwnEdges) {
  Random random(6);
  COrbImage src = RandomImage(random, 40, 20, 3);
  MakeNebula(src, random, 50);
  Filter const all = Smoothed(src, 2.0, 0.1, 2.5);
  for (int p = 0; p < 3; ++p) {
    COrbImage plane(-32, 40, 20, 1, 1.0, 0.0, 1, nullptr, nullptr);
    plane.SetLevel(0, src.GetLevelMin(p), src.GetLevelMax(p));
    std::copy_n(src.GetImageAdr(0, 0, p, 1, nullptr), 800, plane.GetImageAdr(0, 0, 0, 0, nullptr));
    Filter const alone = Smoothed(plane, 2.0, 0.1, 2.5);
    std::vector<float> const samples(all.GetImageAdr(0, 0, p, 1, nullptr), all.GetImageAdr(0, 0, p, 1, nullptr) + 800);
    EXPECT_TRUE(SameBits(SamplesOf(alone), samples)) << p;
  }
}

// R is 4 and the height 3: the search for edges ends two rows above the sample's own, so that the star right below does
// not keep it.
TEST(NebulaSmooth, IntendedLowImagesEndTheSearchAboveTheSample) {
  Random random(7);
  for (int height : {3, 9}) {
    COrbImage src = FlatImage(31, height, 0.0f);
    FillRandom(src, random, 99.0, 101.0);
    src.SetLevel(0, 0.0, 1000.0);
    src.SetPixelGrayRaw(15, 2, 900.0f, 0);
    Filter dst = Smoothed(src, 3.0, 2.0, 1.0);  // the star alone reaches twice the range
    EXPECT_EQ(900.0f, dst.GetPixelGrayRaw(15, 2, 0));
    EXPECT_EQ(height == 9, src.GetPixelGrayRaw(15, 1, 0) == dst.GetPixelGrayRaw(15, 1, 0)) << height;
  }
}

TEST(NebulaSmooth, ALargestFloatIsAnEdge) {
  COrbImage src = FlatImage(15, 15, 100.0f);
  src.SetPixelGrayRaw(7, 7, std::numeric_limits<float>::max(), 0);
  Filter const dst = Smoothed(src, 1.0, std::numeric_limits<double>::infinity(), 0.5);
  EXPECT_EQ(std::numeric_limits<float>::max(), dst.GetImageAdr(7, 7, 0, 1, nullptr)[0]);
  EXPECT_NEAR(100.0, dst.GetImageAdr(8, 7, 0, 1, nullptr)[0], 1e-4);
}

TEST(NebulaSmooth, ReportsTheRowsOfEachPlane) {
  auto const call = [](double sigma) {
    return [sigma](Filter& dst, COrbImage& src, CRect* rect, int progress) {
      dst.NebularSmootherFilter(sigma, 0.1, 1.0, &src, rect, progress);
    };
  };
  ExpectRowsOfEachPlane<Filter>("ネビュラスムース処理中...", call(1.5));
  ExpectRowsOfEachPlane<Filter>("ネビュラスムース処理中...", call(-9.0));
}

TEST(NebulaSmooth, WorksOnAHostileStore) {
  ExpectSameOnAHostileStore<Filter>([](Filter& dst, COrbImage& src, CRect* rect, int progress) {
    dst.NebularSmootherFilter(1.5, 2.0, 1.0, &src, rect, progress);
  });
}

}  // namespace
}  // namespace orb::test
