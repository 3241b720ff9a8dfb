// CImgFilter: the small neighbourhoods.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/small_filter_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/filter_runs.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/plain_images.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr int kUnknownShape = 5;
constexpr int kShapes[] = {0, 1, 2, kUnknownShape};

int CellsOf(int shape) { return shape == 0 ? 5 : shape == 1 ? 9 : shape == 2 ? 21 : 1; }

// Runs a filter and its plain form on images of many shapes, samples and rectangles.
template <typename Fast, typename Plain>
void ExpectEqual(unsigned seed, Fast fast, Plain plain) {
  Random random(seed);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 4, 5, 17, 40, 600}) {
      for (int height : {1, 2, 3, 7}) {
        if (width == 600 && (planes == 3 || height != 3)) continue;
        COrbImage src = RandomImage(random, width, height, planes);
        if (height != 7) StrewSpecialSamples(src, random, 12);
        ExpectEqualInEveryRectangle<CImgFilter>(random, src, fast, plain);
      }
    }
  }
}

TEST(BaseFilter, RadiusOfAShape) {
  CImgFilter filter;
  for (int shape : {0, 1, 2, 3, -1}) {
    int const expected = shape == 2 ? 2 : shape == 0 || shape == 1 ? 1 : 0;
    EXPECT_EQ(expected, filter.GetMeanR(shape));
    EXPECT_EQ(expected, filter.GetMedianR(shape));
    EXPECT_EQ(expected, filter.GetMinMaxR(shape));
  }
}

TEST(BaseFilter, MedianEqualsThePlainForm) {
  for (int shape : kShapes) {
    SCOPED_TRACE(shape);
    ExpectEqual(
        31, [&](CImgFilter& dst, COrbImage& src, CRect* rect) { dst.MedianFilter(shape, &src, rect, 0); },
        [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::SmallMedian(dst, src, shape, rect); });
  }
}

TEST(BaseFilter, MinMaxEqualsThePlainFormAtEveryRank) {
  for (int shape : kShapes) {
    int const n = CellsOf(shape);
    for (int index : {0, 1, n / 2 - 1, n - 2, n - 1}) {
      if (index < 0 || index >= n) continue;
      SCOPED_TRACE(testing::Message() << shape << ' ' << index);
      ExpectEqual(
          32, [&](CImgFilter& dst, COrbImage& src, CRect* rect) { dst.MinMaxFilter(shape, index, &src, rect, 0); },
          [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::SmallMinMax(dst, src, shape, index, rect); });
    }
  }
}

TEST(BaseFilter, EveryRankOfEveryShape) {
  Random random(33);
  COrbImage src = RandomImage(random, 70, 6, 1);
  for (int shape : {0, 1, 2}) {
    for (int index = 0; index < CellsOf(shape); ++index) {
      CImgFilter dst;
      dst.CopyImage(src, nullptr, nullptr);
      COrbImage expected(src);
      reference::SmallMinMax(expected, src, shape, index, nullptr);
      dst.MinMaxFilter(shape, index, &src, nullptr, 0);
      EXPECT_TRUE(SameBits(expected, dst)) << shape << ' ' << index;
    }
  }
}

TEST(BaseFilter, UnSharpMaskEqualsThePlainForm) {
  for (int shape : kShapes) {
    for (double threshold : {0.0, 0.3}) {
      SCOPED_TRACE(testing::Message() << shape << ' ' << threshold);
      ExpectEqual(
          34,
          [&](CImgFilter& dst, COrbImage& src, CRect* rect) {
            dst.UnSharpMask(1.5, shape, 0.6, threshold, &src, rect, 0);
          },
          [&](COrbImage& dst, COrbImage& src, CRect* rect) {
            for (int p = 0; p < dst.GetPlanes(); ++p) {
              // A code that is no shape copies the source.
              double const limit = shape == kUnknownShape ? std::numeric_limits<double>::infinity() : threshold;
              reference::SmallUnSharpMask(dst, src, 1.5, shape, 0.6, limit, p, rect);
            }
          });
    }
  }
}

TEST(BaseFilter, LaplacianEqualsThePlainForm) {
  for (int shape : kShapes) {
    SCOPED_TRACE(shape);
    ExpectEqual(
        35, [&](CImgFilter& dst, COrbImage& src, CRect* rect) { dst.LaplacianFilter(shape, &src, rect, 0); },
        [&](COrbImage& dst, COrbImage& src, CRect* rect) { reference::SmallLaplacian(dst, src, shape, rect); });
  }
}

TEST(BaseFilter, SamplesEqualThePlainForm) {
  Random random(36);
  CImgFilter image;
  image.CopyImage(RandomImage(random, 9, 6, 3), nullptr, nullptr);
  for (int shape : kShapes) {
    for (int y = 0; y < 6; ++y) {
      for (int x = 0; x < 9; ++x) {
        for (int p : {0, 2}) {
          float* rows[5];
          int const r = image.GetMeanR(shape);
          OrbTestAccess::SetFilterAdr(image, x, y, p, r, rows, 0);
          auto const expected = reference::MeanAround(image, x, y, shape, 0.4, p);
          double mean = expected.plain;
          float const raw = image.GetMeanRaw(rows, x, shape, 0.4, &mean);
          EXPECT_EQ(expected.weighted, raw);
          EXPECT_EQ(expected.plain, mean);
          EXPECT_EQ(raw, image.GetMeanRaw(rows, x, shape, 0.4, nullptr));
          EXPECT_EQ(raw, image.GetMeanRaw(x, y, shape, 0.4, p));
          EXPECT_EQ(static_cast<float>(raw - image.GetLevelMin(p)), image.GetMeanGray(rows, x, shape, 0.4, p));
          EXPECT_EQ(image.To256(raw, p), image.GetMean256f(rows, x, shape, 0.4, p));
          float const median = image.GetMedianRaw(rows, x, shape);
          EXPECT_EQ(reference::RankAround(image, x, y, shape, CellsOf(shape) / 2, p), median);
          EXPECT_EQ(median, image.GetMedianRaw(x, y, shape, p));
          EXPECT_EQ(static_cast<float>(median - image.GetLevelMin(p)), image.GetMedianGray(rows, x, shape, p));
          EXPECT_EQ(image.To256(median, p), image.GetMedian256f(rows, x, shape, p));
          EXPECT_EQ(reference::RankAround(image, x, y, shape, 0, p), image.GetMinMaxRaw(rows, x, shape, 0));
          OrbTestAccess::SetFilterAdr(image, x, y, p, 1, rows, 0);
          double const v = std::abs(reference::SecondDifference(image, x, y, shape, p));
          float const laplacian = image.GetLaplacianRaw(rows, x, shape, p);
          EXPECT_EQ(static_cast<float>(v + image.GetLevelMin(p)), laplacian);
          EXPECT_EQ(static_cast<float>(laplacian - image.GetLevelMin(p)), image.GetLaplacianGray(rows, x, shape, p));
          EXPECT_EQ(image.To256(laplacian, p), image.GetLaplacian256f(rows, x, shape, p));
          EXPECT_EQ(reference::HighPass(image, x, y, p), image.HighPassRaw(x, y, p));
        }
      }
    }
  }
}

TEST(BaseFilter, WeightsZeroAndOne) {
  CImgFilter image;
  image.CopyImage(ImageOf(3, 3, {1, 2, 3, 4, 50, 6, 7, 8, 9}), nullptr, nullptr);
  float* rows[3];
  OrbTestAccess::SetFilterAdr(image, 1, 1, 0, 1, rows, 0);
  double mean = 0.0;
  EXPECT_EQ(50.0f, image.GetMeanRaw(rows, 1, 0, 0.0, &mean));
  EXPECT_EQ(14.0, mean);
  EXPECT_EQ(14.0f, image.GetMeanRaw(rows, 1, 0, 1.0, &mean));
}

TEST(BaseFilter, TheCornerReadsItsOneSide) {
  CImgFilter image;
  image.CopyImage(ImageOf(3, 3, {9, 2, 90, 4, 5, 90, 90, 90, 90}), nullptr, nullptr);
  // Rows 1, 0, 1 and columns 1, 0, 1: once 9, twice 2, twice 4, four times 5.
  EXPECT_EQ(5.0f, image.GetMedianRaw(0, 0, 1, 0));
  float* rows[3];
  OrbTestAccess::SetFilterAdr(image, 0, 0, 0, 1, rows, 0);
  float const sorted[9] = {2, 2, 4, 4, 5, 5, 5, 5, 9};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(sorted[i], image.GetMinMaxRaw(rows, 0, 1, i));
  EXPECT_EQ(2.0f, image.GetMinMaxRaw(rows, 0, 1, -1));
  EXPECT_EQ(9.0f, image.GetMinMaxRaw(rows, 0, 1, 9));
}

// Intended: an offset that leaves the row is negated, so the outer neighbour of column 1 is column 3.
TEST(BaseFilter, OffsetsThatLeaveTheRowAreNegated) {
  CImgFilter image;
  image.CopyImage(ImageOf(6, 1, {0, 0, 0, 7, 0, 0}), nullptr, nullptr);
  float* rows[5];
  OrbTestAccess::SetFilterAdr(image, 1, 0, 0, 2, rows, 0);
  // Columns 3, 0, 1, 2, 3 in three rows.
  double mean = 0.0;
  image.GetMeanRaw(rows, 1, 2, 1.0, &mean);
  EXPECT_EQ(42.0 * 0.047619047619047616, mean);
}

TEST(BaseFilter, MinimumAndMaximumOfTwentyOne) {
  std::vector<float> samples(25);
  for (std::size_t i = 0; i < 25; ++i) samples[i] = static_cast<float>(i + 1);
  samples[0] = -5.0f;  // a corner: not in the shape
  samples[24] = 500.0f;
  CImgFilter image;
  image.CopyImage(ImageOf(5, 5, samples), nullptr, nullptr);
  float* rows[5];
  OrbTestAccess::SetFilterAdr(image, 2, 2, 0, 2, rows, 0);
  EXPECT_EQ(2.0f, image.GetMinMaxRaw(rows, 2, 2, 0));
  EXPECT_EQ(24.0f, image.GetMinMaxRaw(rows, 2, 2, 20));
}

// Intended: the plain mean is tested, the weighted one sharpens.
TEST(BaseFilter, UnSharpMaskTestsThePlainMean) {
  COrbImage src = ImageOf(3, 3, {10, 10, 10, 10, 20, 10, 10, 10, 10});
  CImgFilter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.UnSharpMask(1.0, 0, 0.0, 0.39, &src, nullptr, 0);  // m / c - 1 is -0.4, the weighted mean the centre itself
  EXPECT_EQ(20.0f, dst.GetPixelGrayRaw(1, 1, 0));
  dst.UnSharpMask(1.0, 0, 0.25, 0.39, &src, nullptr, 0);  // (10 + 20) / 2
  EXPECT_EQ(25.0f, dst.GetPixelGrayRaw(1, 1, 0));
  dst.UnSharpMask(1.0, 0, 0.25, 0.41, &src, nullptr, 0);
  EXPECT_EQ(20.0f, dst.GetPixelGrayRaw(1, 1, 0));
}

TEST(BaseFilter, UnSharpMaskOnSamplesOfZero) {
  COrbImage src = ImageOf(5, 1, {0, 0, 0, 8, 8});
  CImgFilter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.UnSharpMask(1.0, 0, 1.0, 1e30, &src, nullptr, 0);
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(1, 0, 0));   // 0 / 0 is below
  EXPECT_EQ(-1.6f, dst.GetPixelGrayRaw(2, 0, 0));  // an infinite ratio above
  EXPECT_EQ(8.0f, dst.GetPixelGrayRaw(4, 0, 0));
}

TEST(BaseFilter, UnSharpMaskOfOnePlane) {
  Random random(37);
  RecordingWindow window;
  COrbImage src = RandomImage(random, 12, 9, 3);
  CImgFilter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  COrbImage expected(dst);
  CRect rect(1, 2, 11, 7);
  reference::SmallUnSharpMask(expected, src, 2.0, 1, 1.0, 0.1, 1, &rect);
  dst.UnSharpMask(2.0, 1, 1.0, 0.1, &src, 1, &rect, 1);
  EXPECT_TRUE(SameBits(expected, dst));
  // Intended: announced for all planes, walked for one.
  EXPECT_EQ(15, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(5, window.polls);
  EXPECT_EQ(std::vector<std::string>{"アンシャープマスク処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
}

// Intended: the floor of plane 0 for all planes, and the sample above for a code that is no shape.
TEST(BaseFilter, LaplacianTakesTheFloorOfPlaneZero) {
  COrbImage src(-32, 3, 3, 3, 1.0, 0.0, 1, nullptr, nullptr);
  for (int p = 0; p < 3; ++p) {
    src.CImage::SetLevel(p, 100.0 * (p + 1), 1000.0);
    for (int i = 0; i < 9; ++i) src.SetPixelGrayRaw(i % 3, i / 3, static_cast<float>(i), p);
  }
  CImgFilter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.LaplacianFilter(kUnknownShape, &src, nullptr, 0);
  for (int p = 0; p < 3; ++p) EXPECT_EQ(101.0f, dst.GetPixelGrayRaw(1, 1, p));
  dst.LaplacianFilter(1, &src, nullptr, 0);
  for (int p = 0; p < 3; ++p) EXPECT_EQ(100.0f, dst.GetPixelGrayRaw(1, 1, p));
}

TEST(BaseFilter, HighPassClampsBothCoordinates) {
  CImgFilter image;
  image.CopyImage(ImageOf(2, 2, {1, 2, 4, 8}), nullptr, nullptr);
  // Around (0, 0): itself three times, 2 and 4 twice each, 8 once.
  EXPECT_EQ(std::abs(8.0f - (3 + 4 + 8 + 8)), image.HighPassRaw(0, 0, 0));
  EXPECT_EQ(image.HighPassRaw(0, 0, 0), image.HighPassRaw(-9, -9, 0) + 15.0f);
  image.CopyImage(ImageOf(2, 2, {3, 3, 3, 3}), nullptr, nullptr);
  EXPECT_EQ(0.0f, image.HighPassRaw(1, 0, 0));
}

TEST(BaseFilter, MessagesOfTheFilters) {
  COrbImage src(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  RecordingWindow window;
  CImgFilter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  dst.UnSharpMask(1.0, 0, 1.0, 0.0, &src, nullptr, 1);
  dst.MedianFilter(0, &src, nullptr, 1);
  dst.MinMaxFilter(0, 0, &src, nullptr, 1);
  dst.LaplacianFilter(0, &src, nullptr, 1);
  EXPECT_EQ((std::vector<std::string>{"アンシャープマスク処理中...", "中央値フィルタ処理中",
                                      "ミニマム／マキシマムフィルター処理中...", "輪郭検出処理中..."}),
            window.starts);
  EXPECT_EQ(std::vector<std::string>(4, "(null)"), window.ends);
  EXPECT_EQ(4 * 18, window.polls);
}

}  // namespace
}  // namespace orb::test
