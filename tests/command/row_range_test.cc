#include <hosts/orbimg/row_range.h>

#include <cmath>
#include <random>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

using host::FrameTransform;
using host::RowRange;

TEST(RowRange, AFrameThatLiesAlikeNeedsTheBandAndAMargin) {
  RowRange const rows = host::FindRowsToRead(FrameTransform(), 1000, 500, RowRange{100, 200});
  EXPECT_EQ(rows.top, 98);
  EXPECT_EQ(rows.bottom, 202);
}

TEST(RowRange, NothingIsReadOffTheFrame) {
  FrameTransform far;
  far.dy = -5000.0;
  EXPECT_EQ(host::FindRowsToRead(far, 1000, 500, RowRange{0, 10}).Count(), 0);
  far.dy = 5000.0;
  EXPECT_EQ(host::FindRowsToRead(far, 1000, 500, RowRange{0, 10}).Count(), 0);
}

TEST(RowRange, HugeShiftsDoNotOverflow) {
  FrameTransform far;
  far.dy = 1e300;
  EXPECT_EQ(host::FindRowsToRead(far, 1000, 500, RowRange{0, 10}).Count(), 0);
}

// Whatever the transform, no row outside the range takes part: a frame that holds junk there samples alike.
TEST(RowRange, HoldsEveryRowThatTheSamplerReads) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> shift(-20.0, 20.0);
  std::uniform_real_distribution<double> turn(-180.0, 180.0);
  for (int round = 0; round < 200; ++round) {
    FrameTransform const t{shift(random), shift(random), round % 3 == 0 ? 0.0 : turn(random), 15.0, 12.0};
    RowRange const band{round % 20, round % 20 + 1 + round % 5};
    COrbImage clean(-32, 30, 25, 1, 1.0, 0.0, 1, nullptr, nullptr);
    RowRange const rows = host::FindRowsToRead(t, 25, 40, band);
    for (int y = 0; y < 25; ++y) {
      for (int x = 0; x < 30; ++x) {
        clean.SetPixelGrayRaw(x, y, rows.top <= y && y < rows.bottom ? 1.0f : NAN, 0);
      }
    }
    clean.SetStdCtr(t.cx, t.cy);
    double const s = std::sin(t.angle * 0.017453292519943295);
    double const c = std::cos(t.angle * 0.017453292519943295);
    for (int y = band.top; y < band.bottom; ++y) {
      for (int x = 0; x < 40; ++x) {
        float const v = clean.GetPixelGrayRaw(x, y, t.dx, t.dy, s, c, 1.0, 0, 0.0, 0, nullptr, nullptr, nullptr);
        ASSERT_FALSE(std::isnan(v)) << "round " << round << " at " << x << ", " << y;
      }
    }
  }
}

}  // namespace
}  // namespace orb::test
