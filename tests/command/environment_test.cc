#include <hosts/orbimg/environment.h>

#include <gtest/gtest.h>

namespace orb::test {
namespace {

TEST(ParseBytes, UnitsArePowersOf1024) {
  EXPECT_EQ(host::ParseBytes("4096"), 4096);
  EXPECT_EQ(host::ParseBytes("100k"), 100 * 1024);
  EXPECT_EQ(host::ParseBytes("512M"), 512LL * 1024 * 1024);
  EXPECT_EQ(host::ParseBytes("1.5G"), 1536LL * 1024 * 1024);
  EXPECT_EQ(host::ParseBytes("2GiB"), 2LL << 30);
  EXPECT_EQ(host::ParseBytes("2GB"), 2LL << 30);
  EXPECT_EQ(host::ParseBytes("1T"), 1LL << 40);
}

TEST(ParseBytes, WhatIsNoSizeGives0) {
  for (char const* text : {"", "M", "-5M", "0", "12X", "12MM", "1e300", "nan", "inf", "5 M"}) {
    EXPECT_EQ(host::ParseBytes(text), 0) << text;
  }
}

TEST(FormatBytes, RoundsUpSoThatTheFigureIsEnough) {
  EXPECT_EQ(host::FormatBytes(1), "1 KiB");
  EXPECT_EQ(host::FormatBytes((1 << 20) + 1), "2 MiB");
  EXPECT_EQ(host::FormatBytes(3LL << 29), "1.5 GiB");
}

}  // namespace
}  // namespace orb::test
