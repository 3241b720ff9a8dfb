// orbimg map: the operator on a file, where its disk comes from, and what is refused.
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include <hosts/io/picture_file.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using Json = nlohmann::json;

// The text of all HISTORY cards, which break it where a card is full.
std::string HistoryOf(host::FitsHeader const& header) {
  std::string text;
  for (std::string const& card : header.cards) {
    if (card.starts_with("HISTORY ")) text += card.substr(8);
  }
  return text;
}

class MapTest : public testing::Test {
 protected:
  void SetUp() override {
    host::FitsHeader header;
    header.SetText("OBJECT", "Jupiter", "");
    header.SetText("CTYPE1", "RA---TAN", "");
    for (int planes : {1, 3}) WriteFrame(Name(planes), RandomImage(random, 61, 51, planes), header);
  }

  std::string Name(int planes) const { return folder / (planes == 1 ? "mono.fits" : "colour.fits"); }
  std::string Output() const { return folder / "map.fits"; }

  CommandResult Map(int planes, std::vector<std::string> more) {
    more.insert(more.begin(), {"map", Name(planes), "-f", "-o", Output()});
    return RunQuietly(more);
  }

  Random random{31};
  ScratchFolder folder;
};

TEST_F(MapTest, IsTheOperator) {
  for (int planes : {1, 3}) {
    COrbImage photograph(ReadFrame(Name(planes)).image);
    CImgExpansion expected;
    expected.CopyImage(COrbImage(-32, 81, 40, planes, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
    expected.Do(&photograph, 30.5, 24.0, 20.0, 3.0, -25.0, 0.9, 1, nullptr, 0);
    ASSERT_TRUE(Succeeds(Map(planes, {"--center", "30.5", "24", "--radius", "20", "--tilt-y", "3", "--tilt-x", "-25",
                                      "--flattening", "0.9", "--graticule", "--width", "81"})));
    host::Frame const map = ReadFrame(Output());
    EXPECT_TRUE(SameBits(expected, map.image));
    EXPECT_TRUE(SameLevels(photograph, map.image));
    EXPECT_EQ("Jupiter", map.header.Text("OBJECT"));
    EXPECT_FALSE(map.header.Text("CTYPE1").has_value());
    EXPECT_TRUE(HistoryOf(map.header).starts_with("orbimg map: x 30.5, y 24, radius 20,"));
    EXPECT_NE(std::string::npos, HistoryOf(map.header).find("graticule"));
  }
}

TEST_F(MapTest, TheEdgesOfTheDiskGiveItsCentreRadiusAndFlattening) {
  CommandResult const result = Map(1, {"--disk", "10", "12", "50", "48", "--json"});
  ASSERT_TRUE(Succeeds(result));
  Json const told = Json::parse(result.out);
  EXPECT_EQ(1024, told["width"]);
  EXPECT_EQ(512, told["height"]);
  EXPECT_EQ(30.0, told["parameters"]["x"]);
  EXPECT_EQ(30.0, told["parameters"]["y"]);
  EXPECT_EQ(20.0, told["parameters"]["radius"]);
  EXPECT_EQ(0.9, told["parameters"]["flattening"]);
  EXPECT_EQ(false, told["parameters"]["graticule"]);
  CommandResult const round = Map(1, {"--disk", "10", "12", "50", "48", "--flattening", "1", "--json"});
  EXPECT_EQ(1.0, Json::parse(round.out)["parameters"]["flattening"]);
}

TEST_F(MapTest, ADiskBeyondTheImageIsTold) {
  CommandResult const result = Map(1, {"--center", "30", "25", "--radius", "26"});
  EXPECT_EQ(Exit::kDone, result.status);
  EXPECT_NE(std::string::npos,
            result.err.find("a disk of radius 26 around 30, 25 reaches beyond the image of 61 x 51"));
}

TEST_F(MapTest, WritesAPicture) {
  ASSERT_TRUE(Succeeds(Map(3, {"--disk", "10", "12", "50", "48", "--preview", folder / "map.png"})));
  EXPECT_TRUE(std::filesystem::exists(folder / "map.png"));
}

TEST_F(MapTest, RefusesWhatIsNoDisk) {
  EXPECT_TRUE(FailsInOneLine(Map(1, {}), Exit::kUsage, {"--disk", "--center", "--radius"}));
  EXPECT_TRUE(FailsInOneLine(Map(1, {"--center", "1", "2"}), Exit::kUsage, {"--radius above 0"}));
  EXPECT_TRUE(FailsInOneLine(Map(1, {"--disk", "50", "12", "10", "48"}), Exit::kUsage, {"50 12 10 48", "no disk"}));
  EXPECT_TRUE(FailsInOneLine(Map(1, {"--disk", "1", "2", "3", "4", "--radius", "3"}), Exit::kUsage, {"--radius"}));
  EXPECT_TRUE(FailsInOneLine(Map(1, {"--disk", "1", "2", "3", "4", "--width", "1"}), Exit::kUsage, {"--width"}));
  EXPECT_TRUE(
      FailsInOneLine(Map(1, {"--disk", "1", "2", "3", "4", "--flattening", "3"}), Exit::kUsage, {"flattening is 3"}));
  EXPECT_FALSE(std::filesystem::exists(Output()));
}

}  // namespace
}  // namespace orb::test
