// orbimg apply and its like: the operators of the catalogue on files.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/io/picture_file.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/operator_job.h>
#include <hosts/orbimg/operator_options.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using host::OperatorEntry;
using host::Parameter;
using Json = nlohmann::json;

class OperatorTest : public testing::Test {
 protected:
  void SetUp() override {
    for (int planes : {1, 3}) {
      host::FitsHeader header;
      header.SetText("OBJECT", "M 51", "");
      header.SetNumber("CBLACK", -20.0, "");
      header.SetNumber("CWHITE", 310.0, "");
      WriteFrame(Name(planes), RandomImage(random, 37, 29, planes), header);
    }
  }

  std::string Name(int planes) const { return folder / (planes == 1 ? "mono.fits" : "colour.fits"); }

  CommandResult Apply(std::string const& name, std::string const& file, std::vector<std::string> more) {
    more.insert(more.begin(), {"apply", name, file, "-o", folder / "out.fits"});
    return RunQuietly(more);
  }

  Random random{12};
  ScratchFolder folder;
};

TEST_F(OperatorTest, IsTheOperatorWithAnyNumberOfThreads) {
  for (int planes : {1, 3}) {
    host::Frame frame = ReadFrame(Name(planes));
    CImgInvert expected;
    expected.CopyImage(frame.image, nullptr, nullptr);
    expected.Do(&frame.image, nullptr, 0);
    for (char const* threads : {"1", "3"}) {
      ASSERT_TRUE(Succeeds(Apply("invert", Name(planes), {"--threads", threads, "-f"})));
      host::Frame const result = ReadFrame(folder / "out.fits");
      EXPECT_TRUE(SameBits(expected, result.image));
      EXPECT_TRUE(SameLevels(expected, result.image));
    }
  }
}

TEST_F(OperatorTest, ARectangleLimitsWhatChanges) {
  host::Frame frame = ReadFrame(Name(3));
  CImgInvert expected;
  expected.CopyImage(frame.image, nullptr, nullptr);
  CRect rect(3, 5, 30, 21);
  expected.Do(&frame.image, &rect, 0);
  ASSERT_TRUE(Succeeds(Apply("invert", Name(3), {"--rect", "3", "5", "30", "21"})));
  EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "out.fits").image));
}

TEST_F(OperatorTest, PlanesMayChange) {
  host::Frame colour = ReadFrame(Name(3));
  COrbImage gray(colour.image);
  ASSERT_EQ(1, gray.ToGray(&colour.image, 0));
  ASSERT_TRUE(Succeeds(Apply("gray", Name(3), {})));
  EXPECT_TRUE(SameBits(gray, ReadFrame(folder / "out.fits").image));
  ASSERT_TRUE(Succeeds(Apply("colour", Name(1), {"-f"})));
  host::Frame const result = ReadFrame(folder / "out.fits");
  ASSERT_EQ(3, result.image.GetPlanes());
  std::vector<float> const mono = SamplesOf(ReadFrame(Name(1)).image);
  std::vector<float> const three = SamplesOf(result.image);
  for (std::size_t i = 0; i < three.size(); ++i) ASSERT_EQ(mono[i % mono.size()], three[i]);
}

TEST_F(OperatorTest, LabEnhanceTakesAnOrdinaryColourImage) {
  host::Frame frame = ReadFrame(Name(3));
  std::unique_ptr<COrbImage> const lab(frame.image.MakeLabPlane());
  CImgLabColorEnhance expected;
  expected.CopyImage(frame.image, nullptr, nullptr);
  expected.Do(lab.get(), 2.0, 1.5, 1.5, 0.5, nullptr, 0);
  ASSERT_TRUE(Succeeds(Apply("lab-enhance", Name(3), {"--red-gain", "2", "--blue-gain", "0.5"})));
  EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "out.fits").image));
  EXPECT_TRUE(FailsInOneLine(Apply("lab-enhance", Name(1), {"-f"}), Exit::kUsage, {"mono.fits", "planes"}));
}

TEST_F(OperatorTest, HeaderGoesOnWithOneHistoryCardMore) {
  ASSERT_TRUE(Succeeds(Apply("lab-enhance", Name(3), {"--red-gain", "2.25", "--rect", "1", "2", "30", "20"})));
  host::FitsHeader const header = ReadFrame(folder / "out.fits").header;
  EXPECT_EQ("M 51", header.Text("OBJECT"));
  std::string cards;
  for (std::string const& card : header.cards) {
    if (card.starts_with("HISTORY")) cards += card.substr(8);
  }
  EXPECT_TRUE(cards.starts_with("orbimg apply lab-enhance: red-gain 2.25, green-gain 1.5,")) << cards;
  EXPECT_NE(std::string::npos, cards.find("rectangle 1 2 30 20")) << cards;
}

TEST_F(OperatorTest, PreviewIsTheResultThroughItsLevels) {
  ASSERT_TRUE(Succeeds(Apply("invert", Name(1), {"--preview", folder / "p.png"})));
  COrbImage result = ReadFrame(folder / "out.fits").image;
  COrbImage picture;
  host::ReadPng(folder / "p.png", picture);
  for (int y = 0; y < 29; ++y) {
    for (int x = 0; x < 37; ++x) ASSERT_EQ(result.GetPixelGray256(x, y, 0), picture.GetPixelGrayRaw(x, y, 0));
  }
}

TEST_F(OperatorTest, PrintsJson) {
  CommandResult const result = Apply("lab-enhance", Name(3), {"--red-gain", "2", "--json"});
  ASSERT_TRUE(Succeeds(result));
  Json const printed = Json::parse(result.out);
  EXPECT_EQ("lab-enhance", printed["operator"]);
  EXPECT_EQ(2.0, printed["parameters"]["red-gain"]);
  EXPECT_EQ(-20.0, printed["levels"][2]["black"]);
  EXPECT_EQ("", Apply("invert", Name(1), {"-f"}).out);
}

TEST_F(OperatorTest, ReadsPng) {
  ASSERT_TRUE(Succeeds(RunQuietly({"render", Name(3), "-o", folder / "in.png"})));
  ASSERT_TRUE(Succeeds(Apply("invert", folder / "in.png", {})));
  COrbImage picture;
  host::ReadPng(folder / "in.png", picture);
  COrbImage result = ReadFrame(folder / "out.fits").image;
  EXPECT_EQ(255.0f - picture.GetPixelGrayRaw(4, 7, 1), result.GetPixelGrayRaw(4, 7, 1));
}

TEST_F(OperatorTest, ShowsProgressUnderTheOperatorsName) {
  CommandResult const result = RunLoudly({"apply", "invert", Name(1), "-o", folder / "out.fits"});
  ASSERT_TRUE(Succeeds(result));
  EXPECT_NE(std::string::npos, result.err.find("Invert 0 %")) << result.err;
}

TEST_F(OperatorTest, RefusesInOneLine) {
  std::string const mono = Name(1);
  EXPECT_TRUE(FailsInOneLine(Apply("no-such", mono, {}), Exit::kUsage, {"apply no-such", "apply --help"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"apply"}), Exit::kUsage, {"apply --help"}));
  EXPECT_TRUE(FailsInOneLine(Apply("lab-enhance", Name(3), {"--red-gain", "1e9"}), Exit::kUsage,
                             {"--red-gain", "from -1000 to 1000"}));
  EXPECT_TRUE(FailsInOneLine(Apply("lab-enhance", Name(3), {"--red-gain", "nan"}), Exit::kUsage, {"--red-gain"}));
  EXPECT_TRUE(FailsInOneLine(Apply("lab-enhance", Name(3), {"--red-gain", "much"}), Exit::kUsage, {"--red-gain"}));
  EXPECT_TRUE(
      FailsInOneLine(Apply("invert", mono, {"--rect", "0", "0", "38", "29"}), Exit::kUsage, {"--rect", "37 x 29"}));
  EXPECT_TRUE(FailsInOneLine(Apply("gray", mono, {"--rect", "0", "0", "3", "3"}), Exit::kUsage, {"--rect"}));
  EXPECT_TRUE(FailsInOneLine(Apply("gray", mono, {}), Exit::kUsage, {"mono.fits", "gray", "one plane"}));
  EXPECT_TRUE(FailsInOneLine(Apply("invert", folder / "none.fits", {}), Exit::kInput, {"none.fits"}));
  EXPECT_TRUE(FailsInOneLine(Apply("invert", mono, {"--preview", folder / "p.jpg"}), Exit::kUsage, {"p.jpg"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "out.fits"));
}

TEST_F(OperatorTest, CtrlCLeavesNothing) {
  host::SetInterrupted(true);
  CommandResult const result = Apply("invert", Name(3), {"--threads", "2"});
  host::SetInterrupted(false);
  EXPECT_TRUE(FailsInOneLine(result, Exit::kInterrupted, {"interrupted"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "out.fits"));
}

// What an entry of these groups may ask for is what a command line of one image can give.
TEST(OperatorGroups, HoldNothingThatNeedsAStack) {
  for (char const* group : {"apply", "filter", "transform", "sky"}) {
    for (OperatorEntry const* entry : host::OperatorsOf(group)) EXPECT_FALSE(entry->TakesFrames()) << entry->name;
  }
}

// Every operator of a group runs on a mono or a colour image with its defaults.
TEST(OperatorGroups, RunWithTheirDefaults) {
  ScratchFolder folder;
  Random random(2);
  WriteFrame(folder / "mono.fits", RandomImage(random, 24, 20, 1));
  WriteFrame(folder / "colour.fits", RandomImage(random, 24, 20, 3));
  for (char const* group : {"apply", "filter"}) {
    for (OperatorEntry const* entry : host::OperatorsOf(group)) {
      bool isDone = false;
      for (char const* file : {"mono.fits", "colour.fits"}) {
        std::vector<std::string> arguments{group, entry->name, folder / file, "-f", "-o", folder / "out.fits"};
        if (host::TakesSourceFile(*entry))
          arguments.insert(arguments.end(), {host::OptionName(entry->sourceName), folder / file});
        if (entry->needsSecond) arguments.insert(arguments.end(), {"--second", folder / file});
        CommandResult const result = RunQuietly(arguments);
        isDone = isDone || result.status == Exit::kDone;
        if (result.status != Exit::kDone) {
          EXPECT_TRUE(FailsInOneLine(result, Exit::kUsage, {file, entry->name}));
        }
      }
      EXPECT_TRUE(isDone) << entry->name;
    }
  }
}

TEST(OperatorOptions, DescribesValuesAsTheyAreGiven) {
  std::vector<Parameter> const parameters{
      {"gain", Parameter::Kind::kReal, "", 0.0, 10.0, 1.0, "a factor", {}},
      {"mode", Parameter::Kind::kChoice, "", 0.0, 1.0, 0.0, "how", {"soft", "hard"}},
      {"clip", Parameter::Kind::kFlag, "", 0.0, 1.0, 0.0, "cuts", {}},
      {"count", Parameter::Kind::kInteger, "", 1.0, 9.0, 3.0, "how many", {}}};
  EXPECT_EQ("gain 0.1, mode hard, clip, count 4", host::DescribeValues(parameters, {0.1, 1.0, 1.0, 4.0}));
  EXPECT_EQ("mode soft", host::DescribeValues(parameters, {0.1, 0.0, 0.0, 4.0}, {"gain", "count"}));
}

}  // namespace
}  // namespace orb::test
