#include <hosts/orbimg/run_text.h>

#include <string>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

std::string English(int id, std::string first = "", std::string second = "") {
  std::string text = LoadString(id);
  for (std::string const& number : {first, second}) {
    std::size_t const place = text.find("%d");
    if (place != std::string::npos) text.replace(place, 2, number);
  }
  std::optional<host::RunText> const run = host::ReadRunText(text);
  return run ? run->English() : "none";
}

TEST(RunText, TellsPlaneAndIteration) {
  EXPECT_EQ("preparing", English(6154));
  EXPECT_EQ("plane 2, preparing", English(6155, "2"));
  EXPECT_EQ("iteration 17", English(6156, "17"));
  EXPECT_EQ("plane 3, iteration 12", English(6157, "3", "12"));
  EXPECT_EQ("preparing", English(6158));
  EXPECT_EQ("plane 1, preparing", English(6159, "1"));
  EXPECT_EQ("iteration 4", English(6160, "4"));
  EXPECT_EQ("plane 1, iteration 9", English(6161, "1", "9"));
  EXPECT_EQ("preparing", English(6162));
  EXPECT_EQ("plane 2, preparing", English(6163, "2"));
}

TEST(RunText, OtherTextsAreNone) {
  EXPECT_EQ("none", English(6104));
  EXPECT_EQ("none", English(6156, "x"));
  EXPECT_FALSE(host::ReadRunText(""));
  EXPECT_FALSE(host::ReadRunText(std::string(LoadString(6154)) + "!"));
}

TEST(RunText, BoxesComeInEnglishElsewhereThanInJapan) {
  ASSERT_EQ(0, setenv("LC_ALL", "C", 1));
  EXPECT_EQ("cancelled", host::BoxText(LoadString(6149)));
  EXPECT_NE(std::string::npos, host::BoxText(LoadString(6150)).find("not enough memory"));
  EXPECT_EQ("another", host::BoxText("another"));
  ASSERT_EQ(0, setenv("LC_ALL", "ja_JP.UTF-8", 1));
  EXPECT_EQ(LoadString(6149), host::BoxText(LoadString(6149)));
  ASSERT_EQ(0, unsetenv("LC_ALL"));
}

}  // namespace
}  // namespace orb::test
