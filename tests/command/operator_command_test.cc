// orbimg apply and its like: the operators of the catalogue on files.
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <tuple>
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
  EXPECT_TRUE(FailsInOneLine(Apply("lab-enhance", Name(1), {"-f"}), Exit::kUsage, {"mono.fits", "must have 3"}));
}

TEST_F(OperatorTest, PointOperatorsTakeTheirParameters) {
  host::Frame frame = ReadFrame(Name(3));
  CImgBright bright;
  bright.CopyImage(frame.image, nullptr, nullptr);
  bright.Do(10.0, -64.0, 100.0, &frame.image, nullptr, 0);
  ASSERT_TRUE(Succeeds(Apply("bright", Name(3), {"--brightness", "10", "--contrast", "-64", "--pivot", "100", "-f"})));
  EXPECT_TRUE(SameBits(bright, ReadFrame(folder / "out.fits").image));
  CImgCalculation subtract;
  subtract.CopyImage(frame.image, nullptr, nullptr);
  subtract.Do(50.0, 1, 1, &frame.image, nullptr, 0);
  ASSERT_TRUE(Succeeds(Apply("calculate", Name(3), {"--value", "50", "--operation", "subtract", "--clamp", "-f"})));
  EXPECT_TRUE(SameBits(subtract, ReadFrame(folder / "out.fits").image));
}

// What suits every image has its default in the image: 37 x 29 samples with levels from -20 to 310.
TEST_F(OperatorTest, DefaultsFollowTheImage) {
  struct Case {
    char const* name;
    std::vector<std::string> same;
  };
  for (Case const& c :
       {Case{"rotational-gradient", {"--x", "18", "--y", "14"}}, Case{"digital-development", {"--pivot", "310"}},
        Case{"background-smooth", {"--level", "145"}}}) {
    std::vector<std::string> arguments{"filter", c.name, Name(1), "-f", "-o", folder / "out.fits"};
    ASSERT_TRUE(Succeeds(RunQuietly(arguments)));
    host::Frame const byDefault = ReadFrame(folder / "out.fits");
    arguments.insert(arguments.end(), c.same.begin(), c.same.end());
    ASSERT_TRUE(Succeeds(RunQuietly(arguments)));
    EXPECT_TRUE(SameBits(ReadFrame(folder / "out.fits").image, byDefault.image)) << c.name;
    EXPECT_FALSE(SameBits(ReadFrame(Name(1)).image, byDefault.image)) << c.name;
  }
}

TEST_F(OperatorTest, CurvesOfPointsAndPresetsBecomeTables) {
  host::Frame frame = ReadFrame(Name(3));
  std::vector<float> master;
  std::vector<float> straight;
  for (int i = 0; i < 256; ++i) {
    straight.push_back(static_cast<float>(i / 255.0));
    master.push_back(static_cast<float>(std::pow(i / 255.0, 0.5)));
  }
  std::vector<float> half = straight;
  for (int i = 0; i < 256; ++i) half[static_cast<std::size_t>(i)] = static_cast<float>(0.5 * (i / 255.0));
  float* const curves[] = {master.data(), straight.data(), half.data(), straight.data()};
  CImgToneCurve expected;
  expected.CopyImage(frame.image, nullptr, nullptr);
  expected.Do(const_cast<float**>(curves), 256, &frame.image, nullptr, 0);
  WriteText(folder / "half.txt", "0 0\n1 0.5\n");
  ASSERT_TRUE(Succeeds(
      Apply("curve", Name(3),
            {"--preset", "gamma", "--amount", "2", "--curve-green", folder / "half.txt", "--samples", "256"})));
  host::Frame const result = ReadFrame(folder / "out.fits");
  EXPECT_TRUE(SameBits(expected, result.image));
  std::string cards;
  for (std::string const& card : result.header.cards) cards += card.substr(8);
  EXPECT_NE(std::string::npos, cards.find("orbimg apply curve: gamma 2, green half.txt, 256 samples")) << cards;
}

TEST_F(OperatorTest, CurvesAreRefusedBeforeAnyWork) {
  std::string const mono = Name(1);
  WriteText(folder / "bad.txt", "0 0\n2 1\n");
  WriteText(folder / "good.txt", "0 0\n1 1\n");
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {}), Exit::kUsage, {"curve", "--preset"}));
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {"--preset", "steep"}), Exit::kUsage, {"--preset", "midtone"}));
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {"--preset", "gamma", "--amount", "90"}), Exit::kUsage,
                             {"--amount", "0.1 to 10"}));
  EXPECT_TRUE(
      FailsInOneLine(Apply("curve", mono, {"--preset", "linear", "--amount", "2"}), Exit::kUsage, {"--amount"}));
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {"--amount", "2"}), Exit::kUsage, {"--amount", "--preset"}));
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {"--curve", folder / "bad.txt"}), Exit::kInput, {"bad.txt"}));
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {"--curve", folder / "good.txt", "--preset", "linear"}), Exit::kUsage,
                             {"--preset", "--curve"}));
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {"--curve", folder / "good.txt", "--samples", "1"}), Exit::kUsage,
                             {"--samples"}));
  EXPECT_TRUE(FailsInOneLine(Apply("curve", mono, {"--curve-red", folder / "good.txt"}), Exit::kUsage,
                             {"mono.fits", "--curve-red"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "out.fits"));
}

TEST_F(OperatorTest, FalseColourRunsBetweenTheLevelsAndShowsTheRestInGray) {
  host::Frame frame = ReadFrame(Name(1));
  ASSERT_TRUE(Succeeds(Apply("false-colour", Name(1), {"--palette", "fire", "--rect", "0", "0", "37", "10"})));
  host::Frame result = ReadFrame(folder / "out.fits");
  ASSERT_EQ(3, result.image.GetPlanes());
  CImgFalseColor expected;
  COrbImage blank(-32, 37, 29, 3, 1.0, 0.0, 1, nullptr, nullptr);
  expected.Swap(&blank);
  for (int p = 0; p < 3; ++p) expected.CImage::SetLevel(p, -20.0, 310.0);
  expected.Do(-20.0, 310.0, 5, 0, &frame.image, nullptr, 0);
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(-20.0, result.image.GetLevelMin(p));
    EXPECT_EQ(310.0, result.image.GetLevelMax(p));
    for (int x = 0; x < 37; ++x) {
      ASSERT_EQ(expected.GetPixelGrayRaw(x, 9, p), result.image.GetPixelGrayRaw(x, 9, p));
      ASSERT_EQ(frame.image.GetPixelGrayRaw(x, 10, 0), result.image.GetPixelGrayRaw(x, 10, p));
    }
  }
  std::string cards;
  for (std::string const& card : result.header.cards) cards += card.substr(8);
  EXPECT_NE(std::string::npos, cards.find("low -20, high 310, palette fire")) << cards;
}

TEST_F(OperatorTest, EqualisedImageIsSeenThroughItsOwnExtrema) {
  ASSERT_TRUE(Succeeds(Apply("equalise", Name(3), {})));
  COrbImage source = ReadFrame(Name(3)).image;
  host::Frame result = ReadFrame(folder / "out.fits");
  source.CalcMinMax();
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(source.GetMinPixel(p), result.image.GetLevelMin(p));
    EXPECT_EQ(source.GetMaxPixel(p), result.image.GetLevelMax(p));
    double sum = 0.0;
    for (int y = 0; y < 29; ++y) {
      for (int x = 0; x < 37; ++x) sum += result.image.GetPixelGray256f(x, y, p);
    }
    EXPECT_NEAR(127.5, sum / (37 * 29), 0.2);  // all ranks once
  }
}

std::string HistoryOf(host::FitsHeader const& header) {
  std::string text;
  for (std::string const& card : header.cards) {
    if (card.starts_with("HISTORY")) text += card.substr(8);
  }
  return text;
}

TEST_F(OperatorTest, HeaderGoesOnWithOneHistoryCardMore) {
  ASSERT_TRUE(Succeeds(Apply("lab-enhance", Name(3), {"--red-gain", "2.25", "--rect", "1", "2", "30", "20"})));
  host::FitsHeader const header = ReadFrame(folder / "out.fits").header;
  EXPECT_EQ("M 51", header.Text("OBJECT"));
  std::string const cards = HistoryOf(header);
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

// What a file says of positions in the sky does not hold for samples that have moved.
TEST_F(OperatorTest, CoordinatesGoWhereSamplesMove) {
  host::Frame frame = ReadFrame(Name(3));
  frame.header.SetNumber("CRPIX1", 12.0, "");
  frame.header.SetText("CTYPE1", "RA---TAN", "");
  WriteFrame(folder / "sky.fits", frame.image, frame.header);
  CImgCrop expected;
  expected.CopyImage(frame.image, nullptr, nullptr);
  ASSERT_EQ(1, expected.Do(CRect(3, 5, 30, 21), &frame.image, 0));
  CommandResult const result = RunQuietly(
      {"transform", "crop", folder / "sky.fits", "--rect", "3", "5", "30", "21", "--json", "-o", folder / "out.fits"});
  ASSERT_TRUE(Succeeds(result));
  EXPECT_EQ(27, Json::parse(result.out)["width"]);
  EXPECT_EQ(16, Json::parse(result.out)["height"]);
  host::Frame const written = ReadFrame(folder / "out.fits");
  EXPECT_TRUE(SameBits(expected, written.image));
  EXPECT_TRUE(SameLevels(expected, written.image));
  EXPECT_FALSE(written.header.Has("CRPIX1"));
  EXPECT_FALSE(written.header.Has("CTYPE1"));
  EXPECT_EQ("M 51", written.header.Text("OBJECT"));
  EXPECT_TRUE(HistoryOf(written.header).starts_with("orbimg transform crop: rectangle 3 5 30 21"));
  ASSERT_TRUE(Succeeds(Apply("invert", folder / "sky.fits", {"-f"})));
  EXPECT_TRUE(ReadFrame(folder / "out.fits").header.Has("CRPIX1"));
}

TEST_F(OperatorTest, AnglesOfNothingAndImagesOutOfBoundsAreRefused) {
  auto const transform = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "transform");
    arguments.insert(arguments.end(), {Name(1), "-o", folder / "out.fits"});
    return RunQuietly(arguments);
  };
  EXPECT_TRUE(FailsInOneLine(transform({"rotate", "--angle", "0"}), Exit::kUsage, {"mono.fits", "turns nothing"}));
  EXPECT_TRUE(FailsInOneLine(transform({"bin", "--x", "38"}), Exit::kUsage, {"mono.fits", "0 x 14", "from 1 to"}));
  EXPECT_TRUE(FailsInOneLine(transform({"crop"}), Exit::kUsage, {"--rect"}));
  EXPECT_TRUE(FailsInOneLine(transform({"rotate", "--angle", "30", "--grow", "--memory", "4K"}), Exit::kResources,
                             {"--memory", "mono.fits", "at least"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "out.fits"));
}

TEST_F(OperatorTest, RotationFillsWithTheSameGrayInEveryPlane) {
  host::Frame frame = ReadFrame(Name(3));
  double fill[3];
  for (int p = 0; p < 3; ++p) fill[p] = frame.image.ToRaw(100.0, p);
  CImgRotate expected;
  expected.CopyImage(frame.image, nullptr, nullptr);
  ASSERT_EQ(1, expected.Do(-20.0, fill, &frame.image, 1, 0));
  ASSERT_TRUE(Succeeds(RunQuietly(
      {"transform", "rotate", Name(3), "--angle", "-20", "--fill", "100", "--grow", "-o", folder / "out.fits"})));
  EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "out.fits").image));
}

TEST_F(OperatorTest, ScrollGoesTheWayItIsTold) {
  host::Frame frame = ReadFrame(Name(1));
  for (auto [name, amount, axis] : {std::tuple{"up", 5, 0}, {"down", -5, 0}, {"right", 5, 1}, {"left", -5, 1}}) {
    CImgScroll expected;
    expected.CopyImage(frame.image, nullptr, nullptr);
    expected.Do(amount, axis, &frame.image, 0);
    ASSERT_TRUE(Succeeds(RunQuietly(
        {"transform", "scroll", Name(1), "--amount", "5", "--direction", name, "-f", "-o", folder / "out.fits"})));
    EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "out.fits").image)) << name;
  }
}

TEST_F(OperatorTest, TurnsGoTheWayTheyAreTold) {
  host::Frame frame = ReadFrame(Name(3));
  for (auto [name, quarters] : {std::pair{"quarter-right", 1}, {"half", 2}, {"quarter-left", 3}}) {
    COrbImage expected(frame.image);
    for (int i = 0; i < quarters; ++i) {
      CImgRotate turned;
      turned.CopyImage(expected, nullptr, nullptr);
      ASSERT_EQ(1, turned.Do90(1, &expected, 0));
      expected = turned;
    }
    ASSERT_TRUE(Succeeds(RunQuietly({"transform", "turn", Name(3), "--by", name, "-f", "-o", folder / "out.fits"})));
    EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "out.fits").image)) << name;
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
  EXPECT_EQ(Exit::kDone, result.status);
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

TEST(OperatorGroups, AllOperatorsOfAGroupHaveTheirSubcommand) {
  for (OperatorEntry const& entry : host::Catalogue()) {
    if (entry.group.empty()) continue;
    CommandResult const help = RunLoudly({entry.group, entry.CommandName(), "--help"});
    EXPECT_EQ(Exit::kDone, help.status) << entry.group << ' ' << entry.name;
    for (Parameter const& parameter : entry.parameters) {
      EXPECT_NE(std::string::npos, help.out.find("--" + parameter.name)) << entry.name;
    }
  }
}

// What an entry of these groups may ask for is what a command line of one image can give.
TEST(OperatorGroups, HoldNothingThatNeedsAStack) {
  for (char const* group : {"apply", "filter", "restore", "transform", "sky"}) {
    for (OperatorEntry const* entry : host::OperatorsOf(group)) EXPECT_FALSE(entry->TakesFrames()) << entry->name;
  }
}

// Every operator of a group runs on a mono or a colour image with its defaults.
TEST(OperatorGroups, RunWithTheirDefaults) {
  ScratchFolder folder;
  Random random(2);
  WriteFrame(folder / "mono.fits", RandomImage(random, 24, 20, 1));
  WriteFrame(folder / "colour.fits", RandomImage(random, 24, 20, 3));
  for (char const* group : {"apply", "filter", "transform"}) {
    for (OperatorEntry const* entry : host::OperatorsOf(group)) {
      bool isDone = false;
      for (char const* file : {"mono.fits", "colour.fits"}) {
        std::vector<std::string> arguments{group, entry->name, folder / file, "-f", "-o", folder / "out.fits"};
        if (host::TakesSourceFile(*entry))
          arguments.insert(arguments.end(), {host::OptionName(entry->sourceName), folder / file});
        if (!entry->tables.empty()) arguments.insert(arguments.end(), {"--preset", "linear"});
        if (entry->cutsToRectangle) arguments.insert(arguments.end(), {"--rect", "2", "3", "20", "15"});
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
