// CImgDrawLine: which samples a line takes, and their value.
#include <climits>
#include <set>
#include <utility>

#include <gtest/gtest.h>
#include <tests/reference/draw_line_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using Pixels = std::set<std::pair<int, int>>;

CImgDrawLine Black(int width, int height, int planes = 1) {
  CImgDrawLine image;
  image.CopyImage(COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  return image;
}

// The samples that a white line takes on a black mono image.
Pixels PixelsOf(CPoint from, CPoint to, int width = 12, int height = 9) {
  CImgDrawLine image = Black(width, height);
  image.Do(from, to, RGB(255, 255, 255));
  Pixels pixels;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (image.GetPixelGrayRaw(x, y, 0) != 0.0f) pixels.insert({x, y});
    }
  }
  return pixels;
}

TEST(DrawLine, EqualEndsWriteOneSample) { EXPECT_EQ(PixelsOf({4, 5}, {4, 5}), (Pixels{{4, 5}})); }

TEST(DrawLine, IncludesBothEnds) {
  EXPECT_EQ(PixelsOf({0, 0}, {3, 1}), (Pixels{{0, 0}, {1, 0}, {2, 1}, {3, 1}}));
  EXPECT_EQ(PixelsOf({2, 1}, {2, 4}), (Pixels{{2, 1}, {2, 2}, {2, 3}, {2, 4}}));
  EXPECT_EQ(PixelsOf({2, 4}, {2, 1}), (Pixels{{2, 1}, {2, 2}, {2, 3}, {2, 4}}));
  EXPECT_EQ(PixelsOf({5, 3}, {2, 3}), (Pixels{{2, 3}, {3, 3}, {4, 3}, {5, 3}}));
  EXPECT_EQ(PixelsOf({0, 0}, {1, 3}), (Pixels{{0, 0}, {0, 1}, {1, 2}, {1, 3}}));
}

TEST(DrawLine, AHalfGoesAcrossInTheDirectionOfTravel) {
  EXPECT_EQ(PixelsOf({3, 1}, {0, 0}), (Pixels{{3, 1}, {2, 1}, {1, 0}, {0, 0}}));
  EXPECT_EQ(PixelsOf({0, 0}, {2, 1}), (Pixels{{0, 0}, {1, 1}, {2, 1}}));
  EXPECT_EQ(PixelsOf({2, 1}, {0, 0}), (Pixels{{2, 1}, {1, 0}, {0, 0}}));
}

// Both branches draw the same pixels at 45 degrees but for lines that leave the image; the count tells that no pixel is
// visited twice or left out.
TEST(DrawLine, At45DegreesEachColumnHasOneSample) {
  EXPECT_EQ(PixelsOf({1, 7}, {6, 2}), (Pixels{{1, 7}, {2, 6}, {3, 5}, {4, 4}, {5, 3}, {6, 2}}));
  EXPECT_EQ(PixelsOf({6, 6}, {4, 4}), (Pixels{{6, 6}, {5, 5}, {4, 4}}));
}

TEST(DrawLine, WhiteIsTheUpperLevelOfAMonoImage) {
  CImgDrawLine image = Black(3, 1);
  image.CImage::SetLevel(0, 100.0, 1124.5);
  image.Do({1, 0}, {1, 0}, RGB(255, 255, 255));
  EXPECT_EQ(image.GetPixelGrayRaw(1, 0, 0), 1124.5f);
  EXPECT_EQ(image.GetPixelGrayRaw(0, 0, 0), 0.0f);
}

TEST(DrawLine, GrayIsTheMiddleOfTheLargestAndTheSmallest) {
  CImgDrawLine image = Black(3, 1);
  image.CImage::SetLevel(0, 100.0, 1120.0);
  image.Do({0, 0}, {0, 0}, RGB(255, 0, 0));
  image.Do({1, 0}, {1, 0}, RGB(20, 100, 60));
  image.Do({2, 0}, {2, 0}, RGB(10, 250, 251));
  EXPECT_EQ(image.GetPixelGrayRaw(0, 0, 0), static_cast<float>(1020.0 * 127.5 * 0.00392156862745098 + 100.0));
  EXPECT_EQ(image.GetPixelGrayRaw(1, 0, 0), static_cast<float>(1020.0 * 60.0 * 0.00392156862745098 + 100.0));
  EXPECT_EQ(image.GetPixelGrayRaw(2, 0, 0), static_cast<float>(1020.0 * 130.5 * 0.00392156862745098 + 100.0));
}

TEST(DrawLine, EachPlaneHasItsByteByItsLevels) {
  CImgDrawLine image = Black(1, 1, 3);
  image.CImage::SetLevel(0, 0.0, 510.0);
  image.CImage::SetLevel(1, 10.0, 265.0);
  image.CImage::SetLevel(2, -100.0, 155.0);
  image.Do({0, 0}, {0, 0}, RGB(10, 20, 30) | 0xff000000u);
  EXPECT_EQ(image.GetPixelGrayRaw(0, 0, 0), 20.0f);
  EXPECT_EQ(image.GetPixelGrayRaw(0, 0, 1), 30.0f);
  EXPECT_EQ(image.GetPixelGrayRaw(0, 0, 2), -70.0f);
}

TEST(DrawLine, AnImageOfTwoPlanesHasNoThird) {
  CImgDrawLine image = Black(2, 2, 2);
  image.Do({0, 0}, {1, 1}, RGB(10, 20, 30));
  EXPECT_EQ(SamplesOf(image), (std::vector<float>{10, 0, 0, 10, 20, 0, 0, 20}));
}

TEST(DrawLine, AFourthPlaneStays) {
  CImgDrawLine image = Black(1, 1, 4);
  image.Do({0, 0}, {0, 0}, RGB(1, 2, 3));
  EXPECT_EQ(SamplesOf(image), (std::vector<float>{1, 2, 3, 0}));
}

TEST(DrawLine, EqualsThePlainLineEverywhere) {
  Random random(11);
  std::uniform_int_distribution<int> anyWhere(-30, 60);
  for (int i = 0; i < 3000; ++i) {
    int const width = 1 + static_cast<int>(random() % 40);
    int const height = 1 + static_cast<int>(random() % 12);
    COrbImage const src = RandomImage(random, width, height, i % 2 == 0 ? 1 : 3);
    CImgDrawLine dst;
    dst.CopyImage(src, nullptr, nullptr);
    COrbImage expected(src);
    CPoint const from(anyWhere(random), anyWhere(random));
    CPoint const to(anyWhere(random), anyWhere(random));
    unsigned long const colour = random() & 0xffffffu;
    reference::DrawLine(expected, from, to, colour);
    dst.Do(from, to, colour);
    ASSERT_TRUE(SameBits(expected, dst)) << from.x << ',' << from.y << " to " << to.x << ',' << to.y;
    EXPECT_TRUE(SameLevels(expected, dst));
  }
}

// The part of a line that lies on the image is the one that the whole line has there.
TEST(DrawLine, FarEndsGiveTheSamePixels) {
  Random random(12);
  std::uniform_int_distribution<int> far(-20000, 20000);
  int drawn = 0;
  for (int i = 0; i < 300; ++i) {
    CImgDrawLine dst = Black(31, 17);
    COrbImage expected(dst);
    CPoint const middle(static_cast<int>(random() % 31), static_cast<int>(random() % 17));
    CPoint const reach(far(random), far(random));
    CPoint const from(middle.x - reach.x, middle.y - reach.y);
    CPoint const to(middle.x + reach.x, middle.y + reach.y);
    reference::DrawLine(expected, from, to, RGB(255, 255, 255));
    dst.Do(from, to, RGB(255, 255, 255));
    ASSERT_TRUE(SameBits(expected, dst));
    drawn += SamplesOf(dst) != SamplesOf(Black(31, 17)) ? 1 : 0;
  }
  EXPECT_GT(drawn, 290);
}

TEST(DrawLine, AnyTwoEndsAreSafe) {
  int const ends[] = {INT_MIN, INT_MIN + 1, -1, 0, 5, 8, 9, INT_MAX - 1, INT_MAX};
  CImgDrawLine image = Black(9, 6, 3);
  for (int x1 : ends) {
    for (int y1 : ends) {
      for (int x2 : ends) {
        for (int y2 : ends) image.Do({x1, y1}, {x2, y2}, RGB(1, 1, 1));
      }
    }
  }
  // From corner to corner of all numbers, x - y is 0 everywhere.
  CImgDrawLine diagonal = Black(4, 4);
  diagonal.Do({INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, RGB(255, 255, 255));
  EXPECT_EQ(SamplesOf(diagonal), (std::vector<float>{255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255}));
}

TEST(DrawLine, AnEmptyImageTakesNothing) {
  CImgDrawLine image;
  image.Do({0, 0}, {5, 5}, RGB(1, 1, 1));
  EXPECT_EQ(image.GetPixelCount(), 0);
}

TEST(DrawLine, SaysNothing) {
  RecordingWindow window;
  CImgDrawLine image = Black(5, 5);
  image.SetProgressHandle(&window);
  image.Do({0, 0}, {4, 2}, RGB(1, 1, 1));
  EXPECT_TRUE(window.IsSilent());
}

TEST(DrawLine, WorksOnAHostileStore) {
  Random random(13);
  COrbImage const src = RandomImage(random, 14, 9, 3);
  CImgDrawLine dst;
  dst.CopyImage(src, nullptr, nullptr);
  COrbImage expected(src);
  MakeHostile(dst);
  reference::DrawLine(expected, {1, 8}, {13, 0}, RGB(9, 80, 200));
  dst.Do({1, 8}, {13, 0}, RGB(9, 80, 200));
  EXPECT_TRUE(SameBits(expected, dst));
  EXPECT_EQ(0, LocksLeft(dst));
}

}  // namespace
}  // namespace orb::test
