// CImgFilterBlur and CImgFilterSharp.
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/filter_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/filter_runs.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/plain_images.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::PerPlane;

template <typename Filter, typename Fast, typename Plain>
void ExpectEqual(unsigned seed, Fast fast, Plain plain, bool areSpecial = true) {
  Random random(seed);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 7, 16, 40, 70}) {
      for (int height : {1, 2, 5, 12}) {
        if (width == 70 && (height != 5 || planes != 1)) continue;
        COrbImage src = RandomImage(random, width, height, planes);
        if (areSpecial && height == 5) StrewSpecialSamples(src, random, 40);
        ExpectEqualInEveryRectangle<Filter>(random, src, fast, plain);
      }
    }
  }
}

// Parameters of up to three planes.
PerPlane Three(double a, double b, double c) { return PerPlane{a, b, c}; }

TEST(KernelFilter, MeanEqualsThePlainForm) {
  PerPlane range = Three(2.0, 4.5, -1.0);
  PerPlane weight = Three(0.5, 1.0, 2.0);
  ExpectEqual<CImgFilterBlur>(
      41,
      [&](CImgFilterBlur& dst, COrbImage& src, CRect* rect) {
        dst.MeanFilter(range.data(), weight.data(), &src, rect, 0);
      },
      [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::MeanFilter(dst, src, range, weight, rect); });
}

TEST(KernelFilter, SmallGaussianEqualsThePlainForm) {
  PerPlane sigma = Three(0.9, 1.9, -1.0);
  ExpectEqual<CImgFilterBlur>(
      42, [&](CImgFilterBlur& dst, COrbImage& src, CRect* rect) { dst.GaussianFilter(sigma.data(), &src, rect, 0); },
      [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::GaussianFilter(dst, src, sigma, rect); });
}

TEST(KernelFilter, BlurMedianEqualsThePlainForm) {
  PerPlane range = Three(1.0, 2.3, 3.0);
  ExpectEqual<CImgFilterBlur>(
      43, [&](CImgFilterBlur& dst, COrbImage& src, CRect* rect) { dst.MedianFilter(range.data(), &src, rect, 0); },
      [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::BlurMedianFilter(dst, src, range, rect); });
}

TEST(KernelFilter, MeanWithoutEdgeEqualsThePlainForm) {
  PerPlane range = Three(1.0, 2.3, 4.0);
  PerPlane weight = Three(0.5, 1.0, 2.0);
  ExpectEqual<CImgFilterBlur>(
      44,
      [&](CImgFilterBlur& dst, COrbImage& src, CRect* rect) {
        dst.MeanWithoutEdgeFilter(range.data(), weight.data(), &src, rect, 0);
      },
      [&](COrbImage& dst, COrbImage& src, CRect* rect) {
        reference::MeanWithoutEdgeFilter(dst, src, range, weight, rect);
      });
}

TEST(KernelFilter, SharpEqualsThePlainForm) {
  PerPlane range = Three(0.5, 2.3, 4.0);
  PerPlane weight = Three(0.5, 1.0, 2.0);
  ExpectEqual<CImgFilterSharp>(
      45,
      [&](CImgFilterSharp& dst, COrbImage& src, CRect* rect) {
        dst.SharpFilter(range.data(), weight.data(), &src, rect, 0);
      },
      [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::SharpFilter(dst, src, range, weight, rect); });
}

TEST(KernelFilter, SharpEdgeEqualsThePlainForm) {
  PerPlane range = Three(0.5, 2.3, -1.0);
  PerPlane weight = Three(0.5, 1.0, 2.0);
  ExpectEqual<CImgFilterSharp>(
      46,
      [&](CImgFilterSharp& dst, COrbImage& src, CRect* rect) {
        dst.SharpEdgeFilter(range.data(), weight.data(), &src, rect, 0);
      },
      [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::SharpEdgeFilter(dst, src, range, weight, rect); });
}

TEST(KernelFilter, UnSharpMaskEqualsThePlainForm) {
  PerPlane sigma = Three(1.0, 2.2, 3.0);
  PerPlane strength = Three(0.5, 1.0, 3.0);
  PerPlane threshold = Three(0.0, 0.3, 0.1);
  ExpectEqual<CImgFilterSharp>(
      47,
      [&](CImgFilterSharp& dst, COrbImage& src, CRect* rect) {
        dst.UnSharpMask(sigma.data(), strength.data(), threshold.data(), &src, rect, 0);
      },
      [&](COrbImage& dst, COrbImage& src, CRect* rect) {
        reference::UnSharpMask(dst, src, sigma, strength, threshold, rect);
      });
}

// How many units in the last place two floats lie apart.
std::int64_t UlpsBetween(float a, float b) {
  auto const place = [](float v) {
    auto const bits = std::bit_cast<std::int32_t>(v);
    return static_cast<std::int64_t>(bits < 0 ? INT32_MIN - bits : bits);
  };
  return std::abs(place(a) - place(b));
}

// A Gaussian in two steps beside the plain sum, on any samples: the bound that the header states, and the rounding of
// both to float.
TEST(KernelFilter, LargeGaussianKeepsItsBound) {
  Random random(48);
  for (double sigma : {2.0, 3.7, 5.0, 8.0}) {
    COrbImage src = RandomImage(random, 75, 20, 1);
    COrbImage sizes(src);
    for (int y = 0; y < 20; ++y) {
      for (int x = 0; x < 75; ++x) sizes.SetPixelGrayRaw(x, y, std::abs(src.GetPixelGrayRaw(x, y, 0)), 0);
    }
    COrbImage expected(src);
    COrbImage scale(src);
    reference::GaussianFilter(expected, src, PerPlane{sigma}, nullptr);
    reference::GaussianFilter(scale, sizes, PerPlane{sigma}, nullptr);
    CImgFilterBlur dst;
    dst.CopyImage(src, nullptr, nullptr);
    FillJunk(dst);
    dst.GaussianFilter(sigma, &src, nullptr, 0);
    for (int y = 0; y < 20; ++y) {
      for (int x = 0; x < 75; ++x) {
        double const bound = (1.75 + 0.5 + 0.5 + 1e-3) / 16777216.0 * scale.GetPixelGrayRaw(x, y, 0);
        ASSERT_NEAR(expected.GetPixelGrayRaw(x, y, 0), dst.GetPixelGrayRaw(x, y, 0), bound)
            << sigma << " at " << x << ',' << y;
      }
    }
  }
}

TEST(KernelFilter, LargeGaussianOfASkyIsWithinOneUnitInTheLastPlace) {
  Random random(49);
  COrbImage src(-32, 400, 30, 1, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(src, random, 900.0, 1500.0);
  for (int i = 0; i < 40; ++i) src.SetPixelGrayRaw(37 * i % 400, 7 * i % 30, 50000.0f, 0);
  for (double sigma : {2.0, 5.0, 10.0}) {
    COrbImage expected(src);
    reference::GaussianFilter(expected, src, PerPlane{sigma}, nullptr);
    CImgFilterBlur dst;
    dst.CopyImage(src, nullptr, nullptr);
    dst.GaussianFilter(sigma, &src, nullptr, 0);
    for (int y = 0; y < 30; ++y) {
      for (int x = 0; x < 400; ++x) {
        ASSERT_LE(UlpsBetween(expected.GetPixelGrayRaw(x, y, 0), dst.GetPixelGrayRaw(x, y, 0)), 1)
            << sigma << " at " << x << ',' << y;
      }
    }
  }
}

TEST(KernelFilter, LargeGaussianCarriesInfinitiesAsThePlainSumDoes) {
  Random random(50);
  COrbImage src = RandomImage(random, 90, 14, 1);
  src.SetPixelGrayRaw(20, 3, std::numeric_limits<float>::infinity(), 0);
  src.SetPixelGrayRaw(24, 9, -std::numeric_limits<float>::infinity(), 0);
  src.SetPixelGrayRaw(70, 6, std::numeric_limits<float>::quiet_NaN(), 0);
  COrbImage expected(src);
  reference::GaussianFilter(expected, src, PerPlane{2.0}, nullptr);
  CImgFilterBlur dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.GaussianFilter(2.0, &src, nullptr, 0);
  for (int y = 0; y < 14; ++y) {
    for (int x = 0; x < 90; ++x) {
      float const e = expected.GetPixelGrayRaw(x, y, 0);
      float const a = dst.GetPixelGrayRaw(x, y, 0);
      ASSERT_EQ(std::isnan(e), std::isnan(a)) << x << ',' << y;
      if (std::isinf(e)) {
        ASSERT_EQ(e, a) << x << ',' << y;
      }
    }
  }
}

// Rows are computed several at a time where there are several; that must not show.
TEST(KernelFilter, RowByRowEqualsTheWhole) {
  Random random(53);
  COrbImage src = RandomImage(random, 600, 11, 1);
  CImgFilterBlur whole;
  whole.CopyImage(src, nullptr, nullptr);
  for (double sigma : {1.0, 5.0}) {
    CImgFilterBlur rows(whole);
    whole.GaussianFilter(sigma, &src, nullptr, 0);
    for (int y = 0; y < 11; ++y) {
      CRect row(0, y, 600, y + 1);
      rows.GaussianFilter(sigma, &src, &row, 0);
    }
    EXPECT_TRUE(SameBits(whole, rows)) << sigma;
  }
  CImgFilterBlur rows(whole);
  whole.MeanFilter(6.0, 0.7, &src, nullptr, 0);
  for (int y = 0; y < 11; ++y) {
    CRect row(0, y, 600, y + 1);
    rows.MeanFilter(6.0, 0.7, &src, &row, 0);
  }
  EXPECT_TRUE(SameBits(whole, rows));
}

TEST(KernelFilter, AGaussianKeepsAConstantAndTheMean) {
  COrbImage src = Constant(60, 40, 1000.0f);
  CImgFilterBlur dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.GaussianFilter(5.0, &src, nullptr, 0);
  for (int x = 0; x < 60; ++x) EXPECT_NEAR(1000.0, dst.GetPixelGrayRaw(x, 20, 0), 0.01);
  src = Constant(61, 61, 0.0f);
  src.SetPixelGrayRaw(30, 30, 1000.0f, 0);
  dst.CopyImage(src, nullptr, nullptr);
  dst.GaussianFilter(5.0, &src, nullptr, 0);
  double sum = 0.0;
  for (float v : SamplesOf(dst)) sum += v;
  EXPECT_NEAR(1000.0, sum, 0.01);
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(19, 30, 0));  // the tails are cut at radius 10
  EXPECT_LT(0.0f, dst.GetPixelGrayRaw(20, 30, 0));
}

TEST(KernelFilter, GaussianRadiusIsTwiceTheWholePart) {
  COrbImage src = Constant(21, 21, 0.0f);
  src.SetPixelGrayRaw(10, 10, 1.0f, 0);
  struct Case {
    double sigma;
    int radius;
  };
  for (Case const c : {Case{0.9, 1}, Case{1.9, 2}, Case{2.0, 4}, Case{-1.0, 1}}) {
    CImgFilterBlur dst;
    dst.CopyImage(src, nullptr, nullptr);
    dst.GaussianFilter(c.sigma, &src, nullptr, 0);
    EXPECT_NE(0.0f, dst.GetPixelGrayRaw(10 + c.radius, 10, 0)) << c.sigma;
    EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(11 + c.radius, 10, 0)) << c.sigma;
  }
}

TEST(KernelFilter, ScalarsServeAllPlanes) {
  Random random(51);
  COrbImage src = RandomImage(random, 25, 11, 3);
  auto const expectSame = [&](auto filter, auto scalars, auto arrays) {
    auto other = filter;
    scalars(filter);
    arrays(other);
    EXPECT_TRUE(SameBits(other, filter));
  };
  PerPlane two(3, 2.5);
  PerPlane half(3, 0.5);
  PerPlane tenth(3, 0.1);
  CImgFilterBlur blur;
  blur.CopyImage(src, nullptr, nullptr);
  CImgFilterSharp sharp;
  sharp.CopyImage(src, nullptr, nullptr);
  expectSame(
      blur, [&](auto& f) { f.MeanFilter(2.5, 0.5, &src, nullptr, 0); },
      [&](auto& f) { f.MeanFilter(two.data(), half.data(), &src, nullptr, 0); });
  expectSame(
      blur, [&](auto& f) { f.GaussianFilter(2.5, &src, nullptr, 0); },
      [&](auto& f) { f.GaussianFilter(two.data(), &src, nullptr, 0); });
  expectSame(
      blur, [&](auto& f) { f.MedianFilter(2.5, &src, nullptr, 0); },
      [&](auto& f) { f.MedianFilter(two.data(), &src, nullptr, 0); });
  expectSame(
      blur, [&](auto& f) { f.MeanWithoutEdgeFilter(2.5, 0.5, &src, nullptr, 0); },
      [&](auto& f) { f.MeanWithoutEdgeFilter(two.data(), half.data(), &src, nullptr, 0); });
  expectSame(
      sharp, [&](auto& f) { f.SharpFilter(2.5, 0.5, &src, nullptr, 0); },
      [&](auto& f) { f.SharpFilter(two.data(), half.data(), &src, nullptr, 0); });
  expectSame(
      sharp, [&](auto& f) { f.SharpEdgeFilter(2.5, 0.5, &src, nullptr, 0); },
      [&](auto& f) { f.SharpEdgeFilter(two.data(), half.data(), &src, nullptr, 0); });
  expectSame(
      sharp, [&](auto& f) { f.UnSharpMask(2.5, 0.5, 0.1, &src, nullptr, 0); },
      [&](auto& f) { f.UnSharpMask(two.data(), half.data(), tenth.data(), &src, nullptr, 0); });
}

TEST(KernelFilter, AMeanOfMinusOneIsTheCross) {
  COrbImage src = ImageOf(3, 3, {1, 2, 3, 4, 50, 6, 7, 8, 9});
  CImgFilterBlur dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.MeanFilter(-1.0, 1.0, &src, nullptr, 0);
  EXPECT_EQ(14.0f, dst.GetPixelGrayRaw(1, 1, 0));
}

TEST(KernelFilter, AMeanOfWeightZeroCopies) {
  Random random(52);
  COrbImage src = RandomImage(random, 20, 9, 1);
  CImgFilterBlur dst;
  dst.CopyImage(src, nullptr, nullptr);
  FillJunk(dst);
  dst.MeanFilter(3.0, 0.0, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(src, dst));
}

TEST(KernelFilter, SharpOnAConstant) {
  COrbImage src = Constant(9, 9, 64.0f);
  CImgFilterSharp dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.SharpFilter(2.0, 2.0, &src, nullptr, 0);
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(4, 4, 0));
  dst.SharpFilter(2.0, 1.0, &src, nullptr, 0);
  EXPECT_EQ(64.0f, dst.GetPixelGrayRaw(4, 4, 0));
}

// Intended: rows below the centre enter as zeros, and only where they lie inside the image.
TEST(KernelFilter, BlurMedianHasNoSamplesBelow) {
  COrbImage src = ImageOf(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  CImgFilterBlur dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.MedianFilter(1.5, &src, nullptr, 0);
  EXPECT_EQ(2.0f, dst.GetPixelGrayRaw(1, 1, 0));  // 0 0 0 1 2 3 4 5 6
  EXPECT_EQ(7.0f, dst.GetPixelGrayRaw(1, 2, 0));  // 4 5 6 7 8 9
  dst.MedianFilter(-1.0, &src, nullptr, 0);
  EXPECT_EQ(4.0f, dst.GetPixelGrayRaw(1, 1, 0));  // the cross: 0 2 4 5 6
  EXPECT_EQ(7.0f, dst.GetPixelGrayRaw(0, 2, 0));  // 4 7 8
  dst.MedianFilter(0.5, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(src, dst)) << "the centre alone";
}

TEST(KernelFilter, MeanWithoutEdgeKeepsAConstant) {
  COrbImage src = Constant(9, 9, 64.0f);
  CImgFilterBlur dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.MeanWithoutEdgeFilter(1.0, 1.0, &src, nullptr, 0);
  for (int i = 0; i < 9; ++i) EXPECT_NEAR(64.0, dst.GetPixelGrayRaw(i, i, 0), 1e-5);
}

// Intended: t is held from above only, so a strongly negative one takes more than the whole source.
TEST(KernelFilter, TheEdgeShareIsHeldFromAboveOnly) {
  COrbImage src = Constant(5, 5, 100.0f);
  src.SetPixelGrayRaw(2, 2, 0.0f, 0);
  src.CImage::SetLevel(0, 0.0, 200.0);
  CImgFilterBlur dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.MeanWithoutEdgeFilter(1.0, 1.0, &src, nullptr, 0);
  // e = -400, t = -2, a = 4: (1 - 4) * 80 + 4 * 0
  EXPECT_NEAR(-240.0, dst.GetPixelGrayRaw(2, 2, 0), 1e-4);
  src.SetPixelGrayRaw(2, 2, 1000.0f, 0);
  dst.MeanWithoutEdgeFilter(1.0, 1.0, &src, nullptr, 0);
  EXPECT_EQ(1000.0f, dst.GetPixelGrayRaw(2, 2, 0));  // t = 18, held at 1
}

TEST(KernelFilter, UnSharpMaskOnSamplesOfZero) {
  COrbImage src = ImageOf(7, 1, {0, 0, 0, 0, 0, 9, 9});
  CImgFilterSharp dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.UnSharpMask(1.0, 1.0, 1e30, &src, nullptr, 0);
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(1, 0, 0));  // 0 / 0
  EXPECT_GT(0.0f, dst.GetPixelGrayRaw(4, 0, 0));  // an infinite ratio
  EXPECT_EQ(9.0f, dst.GetPixelGrayRaw(6, 0, 0));
}

TEST(KernelFilter, MessagesOfTheFilters) {
  COrbImage src(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  RecordingWindow window;
  CImgFilterBlur blur;
  blur.CopyImage(src, nullptr, nullptr);
  blur.SetProgressHandle(&window);
  blur.MeanFilter(1.0, 1.0, &src, nullptr, 1);
  blur.GaussianFilter(1.0, &src, nullptr, 1);
  blur.MedianFilter(1.0, &src, nullptr, 1);
  blur.MeanWithoutEdgeFilter(1.0, 1.0, &src, nullptr, 1);
  CImgFilterSharp sharp;
  sharp.CopyImage(src, nullptr, nullptr);
  sharp.SetProgressHandle(&window);
  sharp.SharpFilter(1.0, 1.0, &src, nullptr, 1);
  sharp.SharpEdgeFilter(1.0, 1.0, &src, nullptr, 1);
  sharp.UnSharpMask(1.0, 1.0, 0.0, &src, nullptr, 1);
  EXPECT_EQ((std::vector<std::string>{"平均化フィルタ処理中...", "ガウスフィルタ処理中...", "中央値フィルタ処理中",
                                      "平均化フィルタ処理中...", "シャープフィルタ処理中", "シャープフィルタ処理中",
                                      "アンシャープマスク処理中..."}),
            window.starts);
  EXPECT_EQ(std::vector<std::string>(7, "(null)"), window.ends);
  EXPECT_EQ(7 * 18, window.polls);
}

}  // namespace
}  // namespace orb::test
