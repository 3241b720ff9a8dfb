#include <hosts/orbimg/windowed_frame.h>

#include <gtest/gtest.h>

namespace orb::test {
namespace {

using host::Shape;
using host::WindowedFrame;

TEST(WindowedFrame, RowsHaveTheAddressesOfTheWholeFrame) {
  Shape const shape{37, 1000, 3};
  WindowedFrame frame(shape);
  frame.Open(100, 200);
  COrbImage image;
  frame.ShowIn(image);
  EXPECT_EQ(image.GetWidth(), 37);
  EXPECT_EQ(image.GetHeight(), 1000);
  EXPECT_EQ(image.GetPlanes(), 3);
  for (int p = 0; p < 3; ++p) {
    frame.Row(p, 100)[0] = 1.0f + static_cast<float>(p);
    frame.Row(p, 199)[36] = 10.0f + static_cast<float>(p);
  }
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(image.GetPixelGrayRaw(0, 100, p), 1.0f + static_cast<float>(p));
    EXPECT_EQ(image.GetPixelGrayRaw(36, 199, p), 10.0f + static_cast<float>(p));
  }
}

TEST(WindowedFrame, OpeningGivesZerosAndGivesUpWhatWasThere) {
  WindowedFrame frame(Shape{100, 100, 1});
  frame.Open(0, 100);
  for (int y = 0; y < 100; ++y) frame.Row(0, y)[50] = 7.0f;
  frame.Open(20, 60);
  EXPECT_EQ(frame.Top(), 20);
  EXPECT_EQ(frame.Bottom(), 60);
  for (int y = 20; y < 60; ++y) EXPECT_EQ(frame.Row(0, y)[50], 0.0f);
}

TEST(WindowedFrameDeathTest, ARowThatIsNotOpenEndsTheProgram) {
  WindowedFrame frame(Shape{4096, 100, 1});
  frame.Open(0, 10);
  EXPECT_DEATH(frame.Row(0, 50)[0] = 1.0f, "");
}

// Sixteen terabytes of frame, one row of it in memory.
TEST(WindowedFrame, TakesAddressesForTheFrameAndMemoryForTheWindow) {
  WindowedFrame frame(Shape{1 << 20, 1 << 22, 1});
  frame.Open(3000000, 3000001);
  frame.Row(0, 3000000)[77] = 5.0f;
  EXPECT_EQ(frame.Row(0, 3000000)[77], 5.0f);
}

TEST(WindowedFrame, AnEmptyWindowIsAllowed) {
  WindowedFrame frame(Shape{10, 10, 1});
  frame.Open(5, 5);
  EXPECT_EQ(frame.Top(), frame.Bottom());
}

}  // namespace
}  // namespace orb::test
