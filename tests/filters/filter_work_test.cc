// The frame of CImgFilter and its work images.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

std::unique_ptr<CImgFilter> FilterOf(COrbImage const& image) {
  auto filter = std::make_unique<CImgFilter>();
  filter->CopyImage(image, nullptr, nullptr);
  return filter;
}

std::vector<int> ClampedBy(CImgFilter& filter, CRect* rect) {
  CRect const bounds = OrbTestAccess::CalcRect(filter, rect);
  return {bounds.left, bounds.top, bounds.right, bounds.bottom};
}

// The source position of a place in the border.
int Mirrored(int work, int radius, int length) {
  int at = std::abs(work - radius);
  if (at > length - 1) at = 2 * length - at - 1;
  return std::clamp(at, 0, length - 1);
}

float MeanOf(COrbImage& work, int x, int y) {
  double const m = work.GetLevelMin(0);
  double const range = work.GetLevelRange(0);
  double sum = 0;
  for (int p = 0; p < 3; ++p) sum += (work.GetPixelGrayRaw(x, y, p) - m) / range * 255;
  return static_cast<float>(sum * 0.3333333333333333 * range * 0.00392156862745098 + m);
}

TEST(FilterFrame, ClampsTheRectangle) {
  auto const filter = FilterOf(COrbImage(-32, 10, 8, 1, 1.0, 0.0, 1, nullptr, nullptr));
  CRect outside(-3, 4, 40, 50);
  EXPECT_EQ((std::vector<int>{0, 4, 10, 8}), ClampedBy(*filter, &outside));
  EXPECT_EQ((std::vector<int>{0, 0, 10, 8}), ClampedBy(*filter, nullptr));
  CRect reversed(7, 6, 2, 1);
  EXPECT_EQ((std::vector<int>{7, 6, 2, 1}), ClampedBy(*filter, &reversed));
}

TEST(FilterFrame, TellsTheShiftOfALargerImage) {
  auto const filter = FilterOf(COrbImage(-32, 10, 8, 1, 1.0, 0.0, 1, nullptr, nullptr));
  int dx = 77;
  int dy = 77;
  COrbImage same(-32, 10, 8, 1, 1.0, 0.0, 1, nullptr, nullptr);
  OrbTestAccess::CalcShift(*filter, dx, dy, same);
  EXPECT_EQ(77, dx);
  EXPECT_EQ(77, dy);
  COrbImage wider(-32, 15, 5, 1, 1.0, 0.0, 1, nullptr, nullptr);
  OrbTestAccess::CalcShift(*filter, dx, dy, wider);
  EXPECT_EQ(2, dx);
  EXPECT_EQ(-1, dy);
}

TEST(FilterFrame, SetsTheAddressesOfRows) {
  auto const filter = FilterOf(COrbImage(-32, 6, 4, 3, 1.0, 0.0, 1, nullptr, nullptr));
  float* rows[5];
  OrbTestAccess::SetFilterAdr(*filter, 2, 0, 1, 2, rows, 2);
  EXPECT_EQ(5, LocksLeft(*filter));
  int const expected[5] = {2, 1, 0, 1, 2};
  for (int k = 0; k < 5; ++k) EXPECT_EQ(filter->GetImageAdr(2, expected[k], 1, 1, nullptr), rows[k]);
  filter->UnlockAll();
  OrbTestAccess::SetFilterAdr(*filter, 2, 3, 1, 1, rows, 0);
  EXPECT_EQ(0, LocksLeft(*filter));
  EXPECT_EQ(rows[1], rows[2]);
}

TEST(FilterWork, CopiesIntoAMirroredBorder) {
  Random random(21);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 5, 9}) {
      for (int height : {1, 3, 8}) {
        for (int radius : {1, 2, 3, 6}) {
          auto const filter = FilterOf(RandomImage(random, width, height, planes));
          std::unique_ptr<COrbImage> const work(filter->MakeFilterWork(radius, 0));
          ASSERT_EQ(width + 2 * radius, work->GetWidth());
          ASSERT_EQ(height + 2 * radius, work->GetHeight());
          ASSERT_EQ(planes, work->GetPlanes());
          EXPECT_TRUE(SameLevels(*filter, *work));
          for (int p = 0; p < planes; ++p) {
            for (int y = 0; y < work->GetHeight(); ++y) {
              for (int x = 0; x < work->GetWidth(); ++x) {
                ASSERT_EQ(filter->GetPixelGrayRaw(Mirrored(x, radius, width), Mirrored(y, radius, height), p),
                          work->GetPixelGrayRaw(x, y, p))
                    << width << 'x' << height << ' ' << radius << " at " << x << ',' << y << ',' << p;
              }
            }
          }
        }
      }
    }
  }
}

TEST(FilterWork, ARadiusOfZeroMeansTwo) {
  auto const filter = FilterOf(COrbImage(-32, 5, 4, 1, 1.0, 0.0, 1, nullptr, nullptr));
  std::unique_ptr<COrbImage> const work(filter->MakeFilterWork(0, 0));
  EXPECT_EQ(9, work->GetWidth());
  EXPECT_EQ(8, work->GetHeight());
  std::unique_ptr<COrbImage> const development(filter->MakeDDWork(0, 0));
  EXPECT_EQ(9, development->GetWidth());
}

TEST(FilterWork, RefusesWhatCannotBe) {
  auto const filter = FilterOf(COrbImage(-32, 5, 4, 1, 1.0, 0.0, 1, nullptr, nullptr));
  EXPECT_EQ(nullptr, filter->MakeFilterWork(-1, 0));
  EXPECT_EQ(nullptr, filter->MakeDDWork(-1, 0));
  EXPECT_EQ(nullptr, filter->MakeFilterWork(2000000000, 0));
  EXPECT_EQ(nullptr, filter->MakeDDWork(1000000000, 0));  // more memory than there is
}

TEST(FilterWork, ReportsRowsCopiedAndRowsBordered) {
  RecordingWindow window;
  auto const filter = FilterOf(COrbImage(-32, 5, 6, 3, 1.0, 0.0, 1, nullptr, nullptr));
  filter->SetProgressHandle(&window);
  std::unique_ptr<COrbImage> const work(filter->MakeFilterWork(3, 1));
  EXPECT_EQ(std::vector<std::string>{"フィルタ処理準備中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(3 * 12 * 2, OrbTestAccess::ProgressOf(*filter).total);
  EXPECT_EQ(3 * 6 + 3 * 12, window.polls);
  RecordingWindow silent;
  filter->SetProgressHandle(&silent);
  std::unique_ptr<COrbImage> const quiet(filter->MakeFilterWork(3, 0));
  EXPECT_TRUE(silent.IsSilent());
}

// Intended: the mean is taken by the levels of plane 0, with equal weights.
TEST(DevelopmentWork, HasTheMeanInAFourthPlane) {
  Random random(22);
  auto const filter = FilterOf(RandomImage(random, 40, 7, 3));
  std::unique_ptr<COrbImage> const work(filter->MakeDDWork(4, 0));
  std::unique_ptr<COrbImage> const plain(filter->MakeFilterWork(4, 0));
  ASSERT_EQ(4, work->GetPlanes());
  EXPECT_EQ(filter->GetLevelMin(0), work->GetLevelMin(3));
  EXPECT_EQ(filter->GetLevelMax(0), work->GetLevelMax(3));
  EXPECT_EQ(filter->GetLevelMin(2), work->GetLevelMin(2));
  EXPECT_NE(filter->GetLevelMin(0), filter->GetLevelMin(1));
  for (int y = 0; y < work->GetHeight(); ++y) {
    for (int x = 0; x < work->GetWidth(); ++x) {
      for (int p = 0; p < 3; ++p) ASSERT_EQ(plain->GetPixelGrayRaw(x, y, p), work->GetPixelGrayRaw(x, y, p));
      ASSERT_EQ(MeanOf(*work, x, y), work->GetPixelGrayRaw(x, y, 3)) << x << ',' << y;
    }
  }
}

TEST(DevelopmentWork, OfAMonoImageHasOnePlane) {
  Random random(23);
  auto const filter = FilterOf(RandomImage(random, 9, 7, 1));
  std::unique_ptr<COrbImage> const work(filter->MakeDDWork(3, 0));
  std::unique_ptr<COrbImage> const plain(filter->MakeFilterWork(3, 0));
  EXPECT_TRUE(SameBits(*plain, *work));
  EXPECT_TRUE(SameLevels(*plain, *work));
}

TEST(DevelopmentWork, ReportsTheMeanTooWhereThereIsOne) {
  for (int planes : {1, 3}) {
    RecordingWindow window;
    auto const filter = FilterOf(COrbImage(-32, 5, 6, planes, 1.0, 0.0, 1, nullptr, nullptr));
    filter->SetProgressHandle(&window);
    std::unique_ptr<COrbImage> const work(filter->MakeDDWork(2, 1));
    int const more = planes == 3 ? 10 : 0;
    EXPECT_EQ(std::vector<std::string>{"デジタル現像処理準備中..."}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(10 * planes * 2 + more, OrbTestAccess::ProgressOf(*filter).total);
    EXPECT_EQ((6 + 10) * planes + more, window.polls);
  }
}

TEST(FilterWork, HoldsOnAHostileStore) {
  Random random(24);
  auto const filter = FilterOf(RandomImage(random, 9, 7, 3));
  std::unique_ptr<COrbImage> const expected(filter->MakeDDWork(3, 0));
  MakeHostile(*filter);
  std::unique_ptr<COrbImage> const work(filter->MakeDDWork(3, 0));
  EXPECT_TRUE(SameBits(*expected, *work));
  EXPECT_EQ(0, LocksLeft(*filter));
}

}  // namespace
}  // namespace orb::test
