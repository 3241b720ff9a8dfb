// RasterizeText: the box, where the letters lie in it, and what a font record changes. The shapes are the fonts'.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <thread>

#include <unistd.h>

#include <gtest/gtest.h>
#include <platform/text_rasterizer.h>
#include <tests/support/fonts.h>

namespace orb::test {
namespace {

LOGFONT Font(int height) {
  LOGFONT font;
  font.lfHeight = height;
  return font;
}

TextBox BoxOf(LOGFONT const& font, std::string const& text, int scale = 1) {
  TextBox box;
  EXPECT_TRUE(RasterizeText(font, scale, text, box)) << text;
  EXPECT_EQ(box.letters.size(), static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height));
  for (std::uint8_t const pixel : box.letters) EXPECT_LE(pixel, 1);
  return box;
}

int Ink(TextBox const& box) { return std::accumulate(box.letters.begin(), box.letters.end(), 0); }

// The middle of the letters, as a fraction of the box's height from the top.
double MiddleOf(TextBox const& box) {
  double sum = 0.0;
  for (int y = 0; y < box.height; ++y) {
    for (int x = 0; x < box.width; ++x) sum += box.IsLetter(x, y) ? y + 0.5 : 0.0;
  }
  return sum / Ink(box) / box.height;
}

class Rasterizer : public testing::Test {
 protected:
  void SetUp() override { SKIP_WITHOUT_FONTS(); }
};

TEST_F(Rasterizer, APositiveHeightIsThatOfTheBox) {
  for (int const height : {1, 2, 7, 12, 24, 72, 301}) {
    EXPECT_EQ(BoxOf(Font(height), "Mg").height, height);
    EXPECT_EQ(BoxOf(Font(height), "Mg", 2).height, 2 * height);
  }
}

TEST_F(Rasterizer, ANegativeHeightIsThatOfTheLetters) {
  TextBox const byLine = BoxOf(Font(60), "Mg");
  TextBox const byLetters = BoxOf(Font(-60), "Mg");
  EXPECT_GT(byLetters.height, 60);
  EXPECT_LT(byLetters.height, 120);
  EXPECT_GT(byLetters.width, byLine.width);
  EXPECT_GE(BoxOf(Font(-1), "M").height, 1);
}

TEST_F(Rasterizer, NoHeightIsTheDefaultAtAnyScale) {
  for (int const scale : {1, 2}) {
    TextBox const box = BoxOf(Font(0), "Mg 31", scale);
    TextBox const expected = BoxOf(Font(-kDefaultLetterHeight), "Mg 31", scale);
    EXPECT_EQ(box.letters, expected.letters);
    EXPECT_EQ(box.width, expected.width);
  }
}

TEST_F(Rasterizer, ScaleIsAFactorOfHeightAndWidth) {
  LOGFONT font = Font(-20);
  font.lfWidth = 9;
  LOGFONT twice = Font(-40);
  twice.lfWidth = 18;
  EXPECT_EQ(BoxOf(font, "Orion", 2).letters, BoxOf(twice, "Orion").letters);
}

TEST_F(Rasterizer, LettersStandUpright) {
  EXPECT_LT(MiddleOf(BoxOf(Font(-40), "''")), 0.4);
  EXPECT_GT(MiddleOf(BoxOf(Font(-40), "__")), 0.7);
  TextBox const box = BoxOf(Font(-40), "M     ");
  for (int y = 0; y < box.height; ++y) {
    for (int x = box.width / 2; x < box.width; ++x) EXPECT_FALSE(box.IsLetter(x, y));
  }
}

TEST_F(Rasterizer, AnEmptyTextHasABoxWithoutWidth) {
  TextBox const box = BoxOf(Font(30), "");
  EXPECT_EQ(box.width, 0);
  EXPECT_EQ(box.height, 30);
}

TEST_F(Rasterizer, BlanksTakeRoomAndNoInk) {
  TextBox const box = BoxOf(Font(-30), "   ");
  EXPECT_GT(box.width, 10);
  EXPECT_EQ(Ink(box), 0);
  EXPECT_EQ(BoxOf(Font(-30), "M M").width, BoxOf(Font(-30), "M\nM").width);
  EXPECT_EQ(BoxOf(Font(-30), "M M").letters, BoxOf(Font(-30), "M\tM").letters);
}

TEST_F(Rasterizer, AnAmpersandIsALetter) {
  EXPECT_EQ(BoxOf(Font(-30), "&&").width, 2 * BoxOf(Font(-30), "&").width);
  EXPECT_GT(Ink(BoxOf(Font(-30), "a&b")), Ink(BoxOf(Font(-30), "ab")));
}

TEST_F(Rasterizer, BoldHasMoreInk) {
  LOGFONT bold = Font(-40);
  bold.lfWeight = 700;
  LOGFONT regular = Font(-40);
  regular.lfWeight = 400;
  EXPECT_GT(Ink(BoxOf(bold, "Orion")), Ink(BoxOf(regular, "Orion")) * 5 / 4);
  EXPECT_EQ(BoxOf(regular, "Orion").letters, BoxOf(Font(-40), "Orion").letters);
  bold.lfWeight = INT_MAX;
  EXPECT_GT(Ink(BoxOf(bold, "Orion")), Ink(BoxOf(regular, "Orion")));
  regular.lfWeight = INT_MIN;
  EXPECT_EQ(BoxOf(regular, "Orion").letters, BoxOf(Font(-40), "Orion").letters);
}

// The upper end of an upright stroke lies right of its lower end.
TEST_F(Rasterizer, ItalicLeans) {
  LOGFONT italic = Font(-60);
  italic.lfItalic = true;
  TextBox const box = BoxOf(italic, "I");
  auto const leftmost = [&](int from, int to) {
    int left = box.width;
    for (int y = from; y < to; ++y) {
      for (int x = 0; x < box.width; ++x) left = box.IsLetter(x, y) ? std::min(left, x) : left;
    }
    return left;
  };
  EXPECT_GT(leftmost(0, box.height / 3), leftmost(box.height / 2, box.height));
}

TEST_F(Rasterizer, JapaneseMayBeBoldAndItalicToo) {
  if (!CanDrawJapanese()) GTEST_SKIP() << "no font with Japanese letters is installed";
  LOGFONT bold = Font(-40);
  bold.lfWeight = 700;
  LOGFONT italic = Font(-40);
  italic.lfItalic = true;
  TextBox const plain = BoxOf(Font(-40), "天の川");
  EXPECT_GT(Ink(BoxOf(bold, "天の川")), Ink(plain));
  EXPECT_NE(BoxOf(italic, "天の川").letters, plain.letters);
}

TEST_F(Rasterizer, AWidthStretchesTheLetters) {
  LOGFONT narrow = Font(-40);
  narrow.lfWidth = 10;
  LOGFONT wide = narrow;
  wide.lfWidth = 30;
  TextBox const a = BoxOf(narrow, "MMMMMMMM");
  TextBox const b = BoxOf(wide, "MMMMMMMM");
  EXPECT_EQ(a.height, b.height);
  EXPECT_NEAR(static_cast<double>(b.width) / a.width, 3.0, 0.25);
  wide.lfWidth = -30;
  EXPECT_EQ(BoxOf(wide, "M").letters, BoxOf(
                                          [&] {
                                            wide.lfWidth = 30;
                                            return wide;
                                          }(),
                                          "M")
                                          .letters);
}

TEST_F(Rasterizer, JapaneseComesFromAnotherFace) {
  if (!CanDrawJapanese()) GTEST_SKIP() << "no font with Japanese letters is installed";
  TextBox const milkyWay = BoxOf(Font(-40), "天の川");
  EXPECT_GT(milkyWay.width, 100);
  EXPECT_EQ(milkyWay.missing, 0);
  EXPECT_NE(BoxOf(Font(-40), "天").letters, BoxOf(Font(-40), "川").letters);
  TextBox const mixed = BoxOf(Font(-40), "M 31 天の川");
  EXPECT_EQ(mixed.height, BoxOf(Font(-40), "M 31 ").height);
  EXPECT_NEAR(mixed.width, BoxOf(Font(-40), "M 31 ").width + milkyWay.width, 2);
}

TEST_F(Rasterizer, ACharacterThatNoFaceHasShowsAsASign) {
  TextBox const box = BoxOf(Font(-40), "M\U000E8000\U000E8001");  // in no font's range
  EXPECT_GT(Ink(box), Ink(BoxOf(Font(-40), "M")));
  EXPECT_EQ(box.missing, 2);
  EXPECT_EQ(BoxOf(Font(-40), "M").missing, 0);
  EXPECT_EQ(BoxOf(Font(-40), "M\u200B\uFE0FM").letters, BoxOf(Font(-40), "MM").letters);
}

TEST_F(Rasterizer, BytesThatAreNoUtf8BecomeReplacements) {
  TextBox const one = BoxOf(Font(-30), "\uFFFD");
  for (char const* bad : {"\x80", "\xFF", "\xC0", "\xC3", "\xF8"}) {
    EXPECT_EQ(BoxOf(Font(-30), bad).letters, one.letters) << +static_cast<unsigned char>(*bad);
  }
  TextBox const three = BoxOf(Font(-30), "\uFFFD\uFFFD\uFFFD");
  for (char const* bad : {"\xED\xA0\x80", "\xE0\x80\x80", "\xE3\x81\xC3"}) {  // surrogate, overlong, broken off
    EXPECT_EQ(BoxOf(Font(-30), bad).width, three.width);
  }
  EXPECT_EQ(BoxOf(Font(-30), "\xF4\x90\x80\x80").width, BoxOf(Font(-30), "\uFFFD\uFFFD\uFFFD\uFFFD").width);
  EXPECT_EQ(BoxOf(Font(-30), "\xC3M").letters, BoxOf(Font(-30), "\uFFFDM").letters);
}

TEST_F(Rasterizer, AnUnknownFaceGivesAnotherOne) {
  LOGFONT font = Font(-30);
  font.lfFaceName = "No such family at all";
  EXPECT_GT(Ink(BoxOf(font, "Orion")), 0);
}

TEST_F(Rasterizer, AnInstalledFamilyIsFoundInAnyCase) {
  std::string const family = FindFontFamily("");
  ASSERT_FALSE(family.empty());
  EXPECT_EQ(FindFontFamily(family), family);
  std::string lower = family;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  EXPECT_EQ(FindFontFamily(lower), family);
  EXPECT_FALSE(FindFontFamily("monospace").empty());
  EXPECT_EQ(FindFontFamily("No such family at all"), "");
}

TEST_F(Rasterizer, ANamedFaceIsTaken) {
  std::string const sans = FindFontFamily("sans-serif");
  std::string const mono = FindFontFamily("monospace");
  if (sans == mono) GTEST_SKIP() << "only one family is installed";
  LOGFONT font = Font(-40);
  font.lfFaceName = sans;
  TextBox const first = BoxOf(font, "Willow");
  font.lfFaceName = mono;
  EXPECT_NE(BoxOf(font, "Willow").letters, first.letters);
  EXPECT_EQ(BoxOf(font, "WWWWWW").width, BoxOf(font, "iiiiii").width);
}

TEST_F(Rasterizer, WhatIsTooLargeIsRefused) {
  TextBox box;
  box.width = 77;
  for (int const height : {INT_MIN, INT_MIN + 1, -kMostFontPixels - 1, kMostFontPixels + 1, INT_MAX}) {
    EXPECT_FALSE(RasterizeText(Font(height), 1, "M", box)) << height;
  }
  EXPECT_FALSE(RasterizeText(Font(-kMostFontPixels / 2 - 1), 2, "M", box));
  LOGFONT wide = Font(10);
  for (int const width : {INT_MIN, -kMostFontPixels - 1, kMostFontPixels, INT_MAX}) {
    wide.lfWidth = width;
    EXPECT_FALSE(RasterizeText(wide, 1, "M", box)) << width;
  }
  EXPECT_FALSE(RasterizeText(Font(-4000), 2, std::string(20, 'M'), box));
  EXPECT_EQ(box.width, 77);
}

TEST_F(Rasterizer, LargeLettersAreDrawn) {
  TextBox const box = BoxOf(Font(-2000), "M");
  EXPECT_GT(Ink(box), 100000);
}

TEST_F(Rasterizer, ThreadsDoNotDisturbEachOther) {
  TextBox const expected = BoxOf(Font(-30), "M 31 天の川");
  std::vector<std::thread> threads;
  std::vector<int> same(4, 0);
  for (std::size_t i = 0; i < same.size(); ++i) {
    threads.emplace_back([&, i] {
      for (int n = 0; n < 5; ++n) {
        TextBox box;
        bool const drawn = RasterizeText(Font(-30), 1, "M 31 天の川", box);
        same[i] += drawn && box.letters == expected.letters && FindFontFamily("serif") != "" ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(same, std::vector<int>(4, 5));
}

// In a process of its own, whose Fontconfig knows of no font.
TEST(RasterizerWithoutFonts, DrawsNothing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  std::string const config = (std::filesystem::temp_directory_path() / "orbimg_no_fonts.conf").string();
  std::ofstream(config) << "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig></fontconfig>";
  EXPECT_EXIT(
      {
        setenv("FONTCONFIG_FILE", config.c_str(), 1);
        TextBox box;
        bool const drawn = RasterizeText(LOGFONT{}, 1, "M", box);
        _exit(!drawn && FindFontFamily("").empty() && FindFontFamily("DejaVu Sans").empty() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orb::test
