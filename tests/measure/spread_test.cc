// CalcSpread: the deviation and the median of CImgPixelInfo, for one plane.
#include <cmath>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

bool IsSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

TEST(Spread, IsThatOfPixelInfo) {
  Random random(1);
  for (bool isSpecial : {false, true}) {
    CImgPixelInfo image;
    image.CopyImage(RandomImage(random, 40, 30, 3), nullptr, nullptr);
    if (isSpecial) StrewSpecialSamples(image, random, 200);
    for (CRect const& rect : {CRect(0, 0, 40, 30), CRect(3, 4, 4, 5), CRect(7, 2, 24, 3), CRect(-5, 20, 9, 90),
                              CRect(50, 50, 60, 60), CRect(9, 9, 2, 2)}) {
      double unused[3][3];
      double deviation[3];
      double median[3];
      image.Calc(rect, unused[0], unused[1], unused[2], deviation, median);
      for (int p = 0; p < 3; ++p) {
        Spread const spread = CalcSpread(image, rect, p);
        EXPECT_TRUE(IsSame(deviation[p], spread.deviation)) << rect.left << ' ' << p;
        EXPECT_TRUE(IsSame(median[p], spread.median)) << rect.left << ' ' << p;
      }
      EXPECT_EQ(0.0, CalcSpread(image, rect, 3).median);
    }
  }
}

}  // namespace
}  // namespace orb::test
