// CImgCalculation: the five results, raw and unclamped, and its run.
#include <tests/reference/calculation_reference.h>
#include <tests/support/point_operator_test.h>

namespace orb::test {
namespace {

float Calculated(double value, int operation, int clamp, float sample) {
  CImgCalculation image;
  image.CopyImage(MonoRow({sample}), nullptr, nullptr);
  image.SetLevel(0, 7.0, 9.0);  // of no effect
  image.Do(value, operation, clamp, &image, nullptr, 0);
  return image.GetPixelGrayRaw(0, 0, 0);
}

TEST(Calculation, ResultsOfEachOperation) {
  EXPECT_EQ(8.0f, Calculated(2.0, 0, 0, 6.0f));
  EXPECT_EQ(4.0f, Calculated(2.0, 1, 0, 6.0f));
  EXPECT_EQ(12.0f, Calculated(2.0, 2, 0, 6.0f));
  EXPECT_EQ(3.0f, Calculated(2.0, 3, 0, 6.0f));
  EXPECT_EQ(6.0f, Calculated(2.0, 4, 0, 6.0f));
  EXPECT_EQ(6.0f, Calculated(2.0, -1, 1, 6.0f));
}

TEST(Calculation, OnlyAClampedDifferenceIsHeldAtZero) {
  EXPECT_EQ(-4.0f, Calculated(10.0, 1, 0, 6.0f));
  EXPECT_EQ(0.0f, Calculated(10.0, 1, 1, 6.0f));
  EXPECT_EQ(-4.0f, Calculated(-10.0, 0, 1, 6.0f));
  EXPECT_EQ(-60.0f, Calculated(-10.0, 2, 1, 6.0f));
  EXPECT_EQ(-3.0f, Calculated(-2.0, 3, 1, 6.0f));
}

TEST(Calculation, DivisionByZeroCopiesTheSource) {
  Random random(1);
  COrbImage src = RandomImage(random, 13, 5, 3);
  CImgCalculation dst;
  dst.Create(src, nullptr, nullptr);
  dst.Do(0.0, 3, 0, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(src, dst));
}

TEST(Calculation, NullSourceIsTheDestination) {
  Random random(2);
  COrbImage const src = RandomImage(random, 17, 4, 3);
  for (int operation = -1; operation <= 4; ++operation) {
    CImgCalculation expected;
    expected.CopyImage(src, nullptr, nullptr);
    expected.Do(2.5, operation, 1, &expected, nullptr, 0);
    CImgCalculation dst;
    dst.CopyImage(src, nullptr, nullptr);
    dst.Do(2.5, operation, 1, nullptr, nullptr, 0);
    EXPECT_TRUE(SameBits(expected, dst)) << operation;
  }
}

TEST(Calculation, EqualsThePlainFormulaEverywhere) {
  Random random(3);
  for (int operation : {-3, 0, 1, 2, 3, 4}) {
    for (double value : {0.0, -0.0, 1.0 / 3.0, -77.7, 1e-300, 1e300}) {
      int const clamp = static_cast<int>(random() % 2);
      ExpectTheReference<CImgCalculation>(
          random,
          [&](CImgCalculation& dst, COrbImage* src, CRect* rect) { dst.Do(value, operation, clamp, src, rect, 0); },
          [&](COrbImage& dst, COrbImage* src, CRect* rect) {
            reference::Calculate(dst, value, operation, clamp, src, rect);
          });
    }
  }
}

TEST(Calculation, ProgressCountsRowsOfEveryPlane) {
  ExpectRowsOfEveryPlane<CImgCalculation>("演算処理中...", [](CImgCalculation& dst, COrbImage* src, CRect* rect,
                                                              int on) { dst.Do(1.0, 0, 0, src, rect, on); });
}

}  // namespace
}  // namespace orb::test
