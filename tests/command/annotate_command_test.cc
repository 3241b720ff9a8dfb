// orbimg annotate: what is drawn is what the library draws, where it was asked for, and nothing else changes.
#include <cstdlib>

#include <unistd.h>

#include <gtest/gtest.h>
#include <hosts/io/picture_file.h>
#include <hosts/orbimg/annotation.h>
#include <hosts/orbimg/star_table.h>
#include <tests/command/command_support.h>
#include <tests/support/fonts.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using Json = nlohmann::json;

constexpr char kStars[] =
    R"([{"file": "nights/in.fits", "stars": [{"x": 20.4, "y": 30.5, "peak": 900.4, "flux": 5000.0},
  {"x": 50.0, "y": 12.0, "peak": 100.0, "flux": 400.0}, {"x": 500.0, "y": 12.0, "peak": 90.0, "flux": 300.0}]}])";

class Annotate : public testing::Test {
 protected:
  COrbImage Make(std::string const& name, int planes = 1, int width = 80, int height = 60) {
    COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
    FillRandom(image, random, 100.0, 1000.0);
    host::FitsHeader header;
    header.SetNumber("CBLACK", 100.0, "");
    header.SetNumber("CWHITE", 1120.0, "");
    header.SetText("OBJECT", "M 31", "");
    WriteFrame(folder / name, image, header);
    return ReadFrame(folder / name).image;
  }

  CommandResult Run(std::vector<std::string> const& more, std::string const& in = "in.fits",
                    std::string const& out = "out.fits") const {
    std::vector<std::string> arguments{"annotate", folder / in, "-o", folder / out, "-f"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunQuietly(arguments);
  }

  COrbImage Result() const { return ReadFrame(folder / "out.fits").image; }

  Random random{31};
  ScratchFolder folder;
};

TEST_F(Annotate, LinesAreTheLibrarys) {
  for (int const planes : {1, 3}) {
    CImgDrawLine expected;
    std::string const name = "in" + std::to_string(planes) + ".fits";
    expected.CopyImage(Make(name, planes), nullptr, nullptr);
    expected.Do({3, 4}, {70, 50}, RGB(0xff, 0xd0, 0x70));
    expected.Do({-5, 20}, {30, -10}, RGB(0xff, 0xd0, 0x70));
    ASSERT_TRUE(
        Succeeds(Run({"--line", "3", "4", "70", "50", "--line", "-5", "20", "30", "-10", "--color", "#ffd070"}, name)));
    EXPECT_TRUE(SameBits(expected, Result()));
    EXPECT_TRUE(SameLevels(expected, Result()));
  }
}

TEST_F(Annotate, HeaderIsCarriedOnWithOneMoreCard) {
  Make("in.fits");
  ASSERT_TRUE(Succeeds(Run({"--line", "0", "0", "5", "5"})));
  std::string const file = ReadText(folder / "out.fits");
  EXPECT_NE(file.find("OBJECT  = 'M 31"), std::string::npos);
  EXPECT_NE(file.find("orbimg annotate: CImgDrawLine"), std::string::npos);
}

TEST_F(Annotate, TextIsTheLibrarysWithinItsBoxAndNothingChangesBesideIt) {
  SKIP_WITHOUT_FONTS();
  LOGFONT font;
  font.lfHeight = -15;
  font.lfWeight = 400;
  for (int const planes : {1, 3}) {
    for (bool const plain : {false, true}) {
      int const scale = plain ? 1 : 2;
      std::string const name = "in" + std::to_string(planes) + (plain ? "p.fits" : ".fits");
      COrbImage const before = Make(name, planes);
      CImgDrawText drawn;
      drawn.CopyImage(before, nullptr, nullptr);
      ASSERT_EQ(drawn.Do(&drawn, {10, 20}, "M 31", &font, RGB(1, 200, 99), plain ? 0 : 1), 1);
      std::vector<std::string> arguments{"--text", "10", "20", "M 31", "--size", "15", "--color", "01c863"};
      if (plain) arguments.emplace_back("--plain");
      ASSERT_TRUE(Succeeds(Run(arguments, name)));
      TextBox box;
      ASSERT_TRUE(RasterizeText(font, scale, "M 31", box));
      COrbImage expected(before);
      expected.PixelBlt(10, 20, box.width / scale, box.height / scale, &drawn, 10, 20, 0);
      EXPECT_TRUE(SameBits(expected, Result()));
      EXPECT_NE(SamplesOf(before), SamplesOf(expected));
    }
  }
}

TEST_F(Annotate, TextMayLeaveTheImage) {
  SKIP_WITHOUT_FONTS();
  Make("in.fits");
  for (char const* x : {"-20", "70"}) {
    for (char const* y : {"-8", "52"}) EXPECT_TRUE(Succeeds(Run({"--text", x, y, "Milky Way"})));
  }
}

TEST_F(Annotate, WhatLiesOffTheImageIsSaid) {
  SKIP_WITHOUT_FONTS();
  COrbImage const before = Make("in.fits");
  CommandResult const result = Run({"--text", "200", "5", "Orion", "--line", "-9", "0", "-1", "50"});
  EXPECT_EQ(result.status, Exit::kDone);
  EXPECT_NE(result.err.find("--text Orion: lies off the image of 80 x 60"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("--line -9 0 -1 50: lies off the image"), std::string::npos) << result.err;
  EXPECT_TRUE(SameBits(before, Result()));
}

TEST_F(Annotate, CharactersWithoutAFontAreSaid) {
  SKIP_WITHOUT_FONTS();
  Make("in.fits");
  CommandResult const result = Run({"--text", "5", "5", "M\U000E8000"});
  EXPECT_EQ(result.status, Exit::kDone);
  EXPECT_NE(result.err.find("no installed font has 1 of its characters"), std::string::npos) << result.err;
}

TEST_F(Annotate, StarsGetStrokesAndALabel) {
  SKIP_WITHOUT_FONTS();
  COrbImage const before = Make("in.fits");
  WriteText(folder / "stars.json", kStars);
  host::TextStyle style;
  style.font.lfHeight = -12;
  style.font.lfWeight = 400;
  COrbImage expected(before);
  EXPECT_TRUE(host::AnnotateStar(expected, {20.4, 30.5}, "900", style).isSeen);
  EXPECT_TRUE(host::AnnotateStar(expected, {50.0, 12.0}, "100", style).isSeen);
  ASSERT_TRUE(Succeeds(Run({"--stars", folder / "stars.json", "--size", "12", "--label", "peak", "--max", "2"})));
  COrbImage result = Result();
  EXPECT_TRUE(SameBits(expected, result));
  // The star itself is left alone; left, right, above and below it are strokes.
  EXPECT_EQ(before.GetImageAdr(20, 31, 0, 1, nullptr)[0], result.GetPixelGrayRaw(20, 31, 0));
  for (CPoint const p : {CPoint(14, 31), CPoint(26, 31), CPoint(20, 25), CPoint(20, 37)}) {
    EXPECT_EQ(result.GetPixelGrayRaw(p.x, p.y, 0), 1120.0f) << p.x << ' ' << p.y;
  }
}

TEST_F(Annotate, StarsOffTheImageAreCounted) {
  Make("in.fits");
  WriteText(folder / "stars.json", kStars);
  CommandResult const result = Run({"--stars", folder / "stars.json", "--label", "none"});
  EXPECT_EQ(result.status, Exit::kDone);
  EXPECT_NE(result.err.find("1 of 3 stars lie off the image of 80 x 60"), std::string::npos) << result.err;
}

TEST_F(Annotate, ALabelAtTheRightEdgeStandsOnTheLeft) {
  SKIP_WITHOUT_FONTS();
  COrbImage const before = Make("in.fits");
  host::TextStyle style;
  style.font.lfHeight = -12;
  COrbImage right(before);
  COrbImage left(before);
  host::AnnotateStar(right, {40.0, 30.0}, "77", style);
  host::AnnotateStar(left, {70.0, 30.0}, "77", style);
  auto const isChanged = [&](COrbImage& image, int fromX, int toX) {
    for (int y = 25; y < 29; ++y) {
      for (int x = fromX; x < toX; ++x) {
        if (image.GetPixelGrayRaw(x, y, 0) != before.GetImageAdr(x, y, 0, 1, nullptr)[0]) return true;
      }
    }
    return false;
  };
  EXPECT_TRUE(isChanged(right, 50, 70));
  EXPECT_FALSE(isChanged(right, 10, 30));
  EXPECT_TRUE(isChanged(left, 40, 60));
}

TEST_F(Annotate, TheTableOfAFoundFrameFits) {
  COrbImage image(-32, 80, 70, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::normal_distribution<float> noise(100.0f, 1.0f);
  for (int y = 0; y < 70; ++y) {
    for (int x = 0; x < 80; ++x) {
      double const r2 = (x - 40.0) * (x - 40.0) + (y - 30.0) * (y - 30.0);
      image.SetPixelGrayRaw(x, y, noise(random) + static_cast<float>(500.0 * std::exp(-r2 / 4.0)), 0);
    }
  }
  WriteFrame(folder / "in.fits", image);
  CommandResult const table = RunLoudly({"stars", "--json", folder / "in.fits"});
  WriteText(folder / "stars.json", table.out);
  std::vector<host::Star> const stars = host::ReadStarTable(folder / "stars.json", folder / "in.fits");
  ASSERT_EQ(stars.size(), Json::parse(table.out)[0]["stars"].size());
  EXPECT_NEAR(stars[0].x, 40.0, 0.1);
  ASSERT_TRUE(Succeeds(Run({"--stars", folder / "stars.json", "--label", "none", "--max", "1"})));
  EXPECT_NE(SamplesOf(image), SamplesOf(Result()));
}

TEST_F(Annotate, OfSeveralFramesTheOneOfThatNameIsTaken) {
  Json table = Json::parse(kStars);
  table.push_back(Json{{"file", "other.fits"}, {"stars", Json::array()}});
  WriteText(folder / "two.json", table.dump());
  EXPECT_EQ(host::ReadStarTable(folder / "two.json", "somewhere/in.fits").size(), 3u);
  EXPECT_TRUE(host::ReadStarTable(folder / "two.json", "other.fits").empty());
  Make("third.fits");
  EXPECT_TRUE(FailsInOneLine(Run({"--stars", folder / "two.json", "--label", "none"}, "third.fits"), Exit::kUsage,
                             {"two.json", "2 frames", "third.fits"}));
}

TEST_F(Annotate, WhatIsNoTableIsRefused) {
  Make("in.fits");
  for (char const* text : {"{}", "[]", "no json", "[1]", R"([{"file": "a", "stars": [{"x": 1}]}])",
                           R"([{"file": 1, "stars": []}])", "7", "[{\"file\": \"a\", \"stars\": 3}]"}) {
    WriteText(folder / "bad.json", text);
    EXPECT_TRUE(FailsInOneLine(Run({"--stars", folder / "bad.json", "--label", "none"}), Exit::kInput,
                               {"bad.json", "orbimg stars --json"}))
        << text;
  }
  EXPECT_TRUE(FailsInOneLine(Run({"--stars", folder / "none.json"}), Exit::kInput, {"none.json"}));
}

TEST_F(Annotate, PositionsWithoutSenseAreOffTheImage) {
  COrbImage const before = Make("in.fits");
  WriteText(folder / "far.json",
            R"([{"file": "a", "stars": [{"x": 1e300, "y": 0}, {"x": 5, "y": -1e12}, {"x": -1, "y": 3}]}])");
  EXPECT_EQ(Run({"--stars", folder / "far.json", "--label", "none"}).status, Exit::kDone);
  EXPECT_TRUE(SameBits(before, Result()));
}

TEST_F(Annotate, APictureShowsTheColourInThreePlanes) {
  Make("in.fits");
  ASSERT_TRUE(Succeeds(Run({"--line", "10", "10", "20", "10", "--color", "#ff8000", "--rgb"}, "in.fits", "out.png")));
  COrbImage picture;
  host::ReadPng(folder / "out.png", picture);
  ASSERT_EQ(picture.GetPlanes(), 3);
  EXPECT_NEAR(picture.GetPixelGrayRaw(15, 10, 0), 255.0f, 1.0f);
  EXPECT_NEAR(picture.GetPixelGrayRaw(15, 10, 1), 128.0f, 1.0f);
  EXPECT_NEAR(picture.GetPixelGrayRaw(15, 10, 2), 0.0f, 1.0f);
  EXPECT_EQ(picture.GetPixelGrayRaw(15, 11, 0), picture.GetPixelGrayRaw(15, 11, 2));
  ASSERT_TRUE(Succeeds(Run({"--line", "10", "10", "20", "10", "--color", "#ff8000", "--rgb"})));
  EXPECT_EQ(Result().GetPlanes(), 3);
}

TEST_F(Annotate, APictureMayBeAnnotated) {
  Make("in.fits");
  ASSERT_TRUE(Succeeds(Run({"--line", "0", "0", "1", "1"}, "in.fits", "a.png")));
  ASSERT_TRUE(Succeeds(Run({"--line", "0", "0", "79", "59"}, "a.png", "b.png")));
  ASSERT_TRUE(Succeeds(Run({"--line", "0", "0", "79", "59", "--view"}, "in.fits", "c.bmp")));
  EXPECT_TRUE(ReadText(folder / "c.bmp").starts_with("BM"));
}

TEST_F(Annotate, AFamilyThatIsNotInstalledIsNamed) {
  SKIP_WITHOUT_FONTS();
  Make("in.fits");
  EXPECT_TRUE(FailsInOneLine(Run({"--text", "1", "1", "M", "--font", "No such family"}), Exit::kUsage,
                             {"--font", "No such family", "fc-list"}));
  EXPECT_TRUE(Succeeds(Run({"--text", "1", "1", "M", "--font", "monospace"})));
  EXPECT_TRUE(Succeeds(Run({"--text", "1", "1", "M", "--font", FindFontFamily("")})));
}

TEST_F(Annotate, WrongArgumentsAreNamed) {
  Make("in.fits");
  EXPECT_TRUE(FailsInOneLine(Run({}), Exit::kUsage, {"--line", "--text", "--stars"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--line", "1", "2", "3"}), Exit::kUsage, {"--line"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--line", "1", "2", "3", "4.5"}), Exit::kUsage, {"--line", "4.5", "X1 Y1 X2 Y2"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--text", "a", "2", "M"}), Exit::kUsage, {"--text", "a", "X Y TEXT"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--text", "1", "2", ""}), Exit::kUsage, {"--text", "empty"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--text", "99999999999", "2", "M"}), Exit::kUsage, {"--text", "99999999999"}));
  for (char const* color : {"red", "#12345", "#1234567", "#12345g", "-12345", "", "#+12345"}) {
    EXPECT_TRUE(FailsInOneLine(Run({"--line", "1", "2", "3", "4", std::string("--color=") + color}), Exit::kUsage,
                               {"--color", *color != '\0' ? "#RRGGBB" : ""}))
        << color;
  }
  EXPECT_TRUE(FailsInOneLine(Run({"--line", "1", "2", "3", "4", "--size", "0"}), Exit::kUsage, {"--size"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--stars", "x", "--label", "name"}), Exit::kUsage, {"--label"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "out.fits"));
}

TEST_F(Annotate, ATextTooLargeIsRefused) {
  SKIP_WITHOUT_FONTS();
  Make("in.fits");
  EXPECT_TRUE(FailsInOneLine(Run({"--text", "1", "1", std::string(500, 'M'), "--size", "2000"}), Exit::kFailed,
                             {"too large", "--size"}));
}

// In a process of its own, whose Fontconfig knows of no font: lines are drawn, text is refused.
TEST_F(Annotate, WithoutAnyFontTextIsRefusedAndLinesAreNot) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        WriteText(folder / "fonts.conf",
                  "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig></fontconfig>");
        setenv("FONTCONFIG_FILE", (folder / "fonts.conf").c_str(), 1);
        Make("in.fits");
        bool const refused = static_cast<bool>(FailsInOneLine(Run({"--text", "1", "1", "M"}), Exit::kFailed,
                                                              {"no font is installed", "fonts-dejavu-core"}));
        bool const drawn = static_cast<bool>(Succeeds(Run({"--line", "1", "1", "9", "9"})));
        _exit(refused && drawn ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orb::test
