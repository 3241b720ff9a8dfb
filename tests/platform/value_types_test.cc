// The platform's value types: rectangles, colours, bitmap headers.
#include <cstddef>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

TEST(Rect, StartsEmpty) {
  CRect const rect;
  EXPECT_EQ(0, rect.left);
  EXPECT_EQ(0, rect.top);
  EXPECT_EQ(0, rect.right);
  EXPECT_EQ(0, rect.bottom);
  EXPECT_TRUE(rect.IsRectEmpty());
}

TEST(Rect, RightAndBottomLieOnePast) {
  CRect const rect(2, 3, 10, 20);
  EXPECT_EQ(8, rect.Width());
  EXPECT_EQ(17, rect.Height());
  EXPECT_TRUE(rect.PtInRect(CPoint(2, 3)));
  EXPECT_TRUE(rect.PtInRect(CPoint(9, 19)));
  EXPECT_FALSE(rect.PtInRect(CPoint(10, 19)));
  EXPECT_FALSE(rect.PtInRect(CPoint(9, 20)));
  EXPECT_FALSE(rect.PtInRect(CPoint(1, 3)));
  EXPECT_FALSE(rect.PtInRect(CPoint(2, 2)));
}

TEST(Rect, EmptyWithoutColumnsOrRows) {
  EXPECT_TRUE(CRect(5, 0, 5, 9).IsRectEmpty());
  EXPECT_TRUE(CRect(0, 5, 9, 5).IsRectEmpty());
  EXPECT_TRUE(CRect(9, 0, 5, 9).IsRectEmpty());
  EXPECT_FALSE(CRect(0, 0, 1, 1).IsRectEmpty());
}

TEST(Rect, IsSetAndCleared) {
  CRect rect;
  rect.SetRect(1, 2, 3, 4);
  EXPECT_EQ(1, rect.left);
  EXPECT_EQ(2, rect.top);
  EXPECT_EQ(3, rect.right);
  EXPECT_EQ(4, rect.bottom);
  rect.SetRectEmpty();
  EXPECT_EQ(0, rect.right);
  EXPECT_EQ(0, rect.left);
}

TEST(Color, RedLiesInTheLowByte) {
  EXPECT_EQ(0x00332211u, RGB(0x11, 0x22, 0x33));
  EXPECT_EQ(0x000000ffu, RGB(255, 0, 0));
  COLORREF const color = 0x00aabbccu;
  EXPECT_EQ(0xcc, GetRValue(color));
  EXPECT_EQ(0xbb, GetGValue(color));
  EXPECT_EQ(0xaa, GetBValue(color));
}

TEST(BitmapHeader, LiesInMemoryAsBitmapsHaveIt) {
  EXPECT_EQ(40u, sizeof(BITMAPINFOHEADER));
  EXPECT_EQ(4u, offsetof(BITMAPINFOHEADER, biWidth));
  EXPECT_EQ(8u, offsetof(BITMAPINFOHEADER, biHeight));
  EXPECT_EQ(14u, offsetof(BITMAPINFOHEADER, biBitCount));
  EXPECT_EQ(32u, offsetof(BITMAPINFOHEADER, biClrUsed));
  EXPECT_EQ(0u, offsetof(RGBQUAD, rgbBlue));
  EXPECT_EQ(2u, offsetof(RGBQUAD, rgbRed));
}

}  // namespace
}  // namespace orb::test
