#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/natural_order.h>

namespace orb::test {
namespace {

TEST(NaturalOrder, NumbersCompareAsNumbers) {
  std::vector<std::string> names{"frame10.fits", "frame2.fits", "frame1.fits", "Frame3.fits", "frame.fits"};
  std::sort(names.begin(), names.end(), host::ComesNaturallyBefore);
  EXPECT_EQ(names,
            (std::vector<std::string>{"Frame3.fits", "frame.fits", "frame1.fits", "frame2.fits", "frame10.fits"}));
}

TEST(NaturalOrder, EveryRunOfDigitsCounts) {
  EXPECT_TRUE(host::ComesNaturallyBefore("n2/f10", "n10/f2"));
  EXPECT_FALSE(host::ComesNaturallyBefore("n10/f2", "n2/f10"));
}

TEST(NaturalOrder, NumbersLongerThanAnyIntegerCompare) {
  EXPECT_TRUE(host::ComesNaturallyBefore("a99999999999999999999998", "a99999999999999999999999"));
}

TEST(NaturalOrder, LeadingZerosDecideOnlyBetweenEqualNumbers) {
  EXPECT_TRUE(host::ComesNaturallyBefore("f002", "f3"));
  EXPECT_TRUE(host::ComesNaturallyBefore("f02", "f2"));
  EXPECT_FALSE(host::ComesNaturallyBefore("f2", "f02"));
}

TEST(NaturalOrder, ANameIsNotBeforeItself) { EXPECT_FALSE(host::ComesNaturallyBefore("f1", "f1")); }

TEST(NaturalOrder, BytesAboveAsciiCompareUnsigned) { EXPECT_TRUE(host::ComesNaturallyBefore("z", "\xe3\x81\x82")); }

}  // namespace
}  // namespace orb::test
