// CImgDrawText: what letters leave of an image, and add to it. The letters themselves are the rasteriser's.
#include <algorithm>
#include <climits>
#include <cmath>
#include <set>

#include <gtest/gtest.h>
#include <tests/reference/draw_text_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/fonts.h>
#include <tests/support/hostile_store.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr unsigned long kWhite = 0xffffff;

LOGFONT Font(int height) {
  LOGFONT font;
  font.lfHeight = height;
  return font;
}

// All samples the same, at the levels 0 to 255.
CImgDrawText Even(int width, int height, int planes, float value) {
  CImgDrawText image;
  image.CopyImage(COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), value));
  return image;
}

std::set<float> ValuesOf(COrbImage const& image) {
  std::vector<float> const samples = SamplesOf(image);
  return {samples.begin(), samples.end()};
}

class DrawText : public testing::Test {
 protected:
  void SetUp() override { SKIP_WITHOUT_FONTS(); }

  // The image after a text, and what the plain way makes of it.
  struct Pair {
    CImgDrawText drawn;
    COrbImage expected;
  };
  static Pair Draw(COrbImage& src, COrbImage const& before, CPoint pt, std::string const& text, LOGFONT font,
                   unsigned long colour, int antialias) {
    Pair pair{{}, COrbImage(before)};
    pair.drawn.CopyImage(before, nullptr, nullptr);
    EXPECT_EQ(reference::DrawText(pair.expected, src, pt, text, font, colour, antialias), 1);
    EXPECT_EQ(pair.drawn.Do(&src, pt, text, &font, colour, antialias), 1);
    return pair;
  }
};

TEST_F(DrawText, WithoutAntialiasThereIsLetterAndBackground) {
  CImgDrawText image = Even(60, 40, 1, 0.0f);
  LOGFONT font = Font(-24);
  ASSERT_EQ(image.Do(&image, {4, 4}, "Mg8", &font, kWhite, 0), 1);
  EXPECT_EQ(ValuesOf(image), (std::set<float>{0.0f, 255.0f}));
}

TEST_F(DrawText, AntialiasGoesInQuarters) {
  CImgDrawText image = Even(120, 60, 1, 0.0f);
  LOGFONT font = Font(-40);
  ASSERT_EQ(image.Do(&image, {4, 4}, "Mg8", &font, kWhite, 1), 1);
  EXPECT_EQ(ValuesOf(image), (std::set<float>{0.0f, 63.75f, 127.5f, 191.25f, 255.0f}));
}

TEST_F(DrawText, AnyAntialiasButZeroCounts) {
  COrbImage src = Even(60, 40, 1, 10.0f);
  EXPECT_TRUE(SameBits(Draw(src, src, {0, 0}, "Orion", Font(20), kWhite, 1).drawn,
                       Draw(src, src, {0, 0}, "Orion", Font(20), kWhite, -5).drawn));
}

TEST_F(DrawText, TheTextBeginsAtThePoint) {
  CImgDrawText image = Even(80, 50, 1, 0.0f);
  LOGFONT font = Font(20);
  ASSERT_EQ(image.Do(&image, {15, 7}, "Mg", &font, kWhite, 0), 1);
  TextBox box;
  ASSERT_TRUE(RasterizeText(font, 1, "Mg", box));
  for (int y = 0; y < 50; ++y) {
    for (int x = 0; x < 80; ++x) {
      bool const isIn = x >= 15 && y >= 7 && x < 15 + box.width && y < 7 + box.height;
      EXPECT_EQ(image.GetPixelGrayRaw(x, y, 0), isIn && box.IsLetter(x - 15, y - 7) ? 255.0f : 0.0f);
    }
  }
}

TEST_F(DrawText, ABoxMayBeOneRowHigh) {
  CImgDrawText image = Even(90, 3, 1, 0.0f);
  LOGFONT font = Font(1);
  font.lfWidth = 6;
  ASSERT_EQ(image.Do(&image, {2, 1}, "MMMMM", &font, kWhite, 0), 1);
  TextBox box;
  ASSERT_TRUE(RasterizeText(font, 1, "MMMMM", box));
  ASSERT_EQ(box.height, 1);
  for (int x = 0; x < 90; ++x) {
    bool const isIn = x >= 2 && x < 2 + box.width;
    EXPECT_EQ(image.GetPixelGrayRaw(x, 1, 0), isIn && box.IsLetter(x - 2, 0) ? 255.0f : 0.0f);
  }
}

TEST_F(DrawText, ColourIsMixedByCoverage) {
  CImgDrawText image = Even(120, 60, 3, 100.0f);
  LOGFONT font = Font(-40);
  ASSERT_EQ(image.Do(&image, {4, 4}, "Mg8", &font, RGB(200, 40, 255), 1), 1);
  for (float const v : SamplesOf(image)) {
    bool isMixed = false;
    for (double const c : {0.0, 0.25, 0.5, 0.75, 1.0}) {
      for (double const colour : {200.0, 40.0, 255.0}) isMixed |= std::abs(100.0 * (1 - c) + colour * c - v) < 1e-4;
    }
    EXPECT_TRUE(isMixed) << v;
  }
  EXPECT_EQ(ValuesOf(image).count(40.0f), 1u);
}

TEST_F(DrawText, AMonoImageTakesTheGrayByte) {
  CImgDrawText image = Even(60, 40, 1, 0.0f);
  LOGFONT font = Font(-24);
  ASSERT_EQ(image.Do(&image, {4, 4}, "Mg8", &font, RGB(255, 0, 0), 0), 1);
  float const gray =
      static_cast<float>(255.0 * (static_cast<float>(255 * 0.00196078431372549) * 255.0) * 0.00392156862745098);
  EXPECT_EQ(ValuesOf(image), (std::set<float>{0.0f, gray}));
  EXPECT_NEAR(gray, 127.5, 1e-4);
}

TEST_F(DrawText, BlackLettersBlackOut) {
  CImgDrawText image = Even(60, 40, 1, 51.0f);
  LOGFONT font = Font(-24);
  ASSERT_EQ(image.Do(&image, {4, 4}, "Mg8", &font, 0, 0), 1);
  EXPECT_EQ(ValuesOf(image), (std::set<float>{0.0f, 51.0f}));
}

TEST_F(DrawText, LettersLieAtTheLevelsOfTheImage) {
  CImgDrawText image = Even(60, 40, 3, 500.0f);
  for (int p = 0; p < 3; ++p) image.CImage::SetLevel(p, 100.0, 1120.0 + p);
  LOGFONT font = Font(-24);
  ASSERT_EQ(image.Do(&image, {4, 4}, "Mg8", &font, kWhite, 0), 1);
  std::vector<float> const samples = SamplesOf(image);
  for (std::size_t p = 0; p < 3; ++p) {
    auto const begin = samples.begin() + static_cast<std::ptrdiff_t>(p * 2400);
    EXPECT_NEAR(*std::max_element(begin, begin + 2400), 1120.0 + static_cast<double>(p), 1e-3);
    EXPECT_EQ(image.GetLevelMax(static_cast<int>(p)), 1120.0 + static_cast<double>(p));
  }
}

TEST_F(DrawText, EqualsThePlainWayEverywhere) {
  Random random(21);
  std::uniform_int_distribution<int> anyWhere(-60, 45);
  char const* const texts[] = {"M 31", "", "&j", "天の川 Orion", "A"};
  int const heights[] = {-5, 9, -14, 24, 4};
  for (int i = 0; i < 240; ++i) {
    int const width = 1 + static_cast<int>(random() % 40);
    int const height = 1 + static_cast<int>(random() % 12);
    COrbImage src = RandomImage(random, width, height, i % 2 == 0 ? 1 : 3);
    COrbImage before(src);
    SetRandomLevels(before, random);
    FillJunk(before);
    LOGFONT font = Font(heights[i % 5]);
    font.lfWeight = i % 3 == 0 ? 700 : 0;
    font.lfItalic = i % 4 == 0;
    font.lfWidth = i % 7 == 0 ? 5 : 0;
    CPoint const pt(i % 3 == 0 ? 0 : anyWhere(random), i % 4 == 0 ? 0 : anyWhere(random) / 3);
    Pair const pair = Draw(src, before, pt, texts[i / 5 % 5], font, random() & kWhite, i / 2 % 2);
    ASSERT_TRUE(SameBits(pair.expected, pair.drawn)) << i << ": " << width << 'x' << height;
    EXPECT_TRUE(SameLevels(before, pair.drawn));
  }
}

TEST_F(DrawText, SpecialSamplesPassLikeInThePlainWay) {
  Random random(22);
  for (int planes : {1, 3}) {
    for (int antialias : {0, 1}) {
      COrbImage src = RandomImage(random, 40, 20, planes);
      StrewSpecialSamples(src, random);
      Pair const pair = Draw(src, src, {3, 2}, "M 31", Font(15), RGB(255, 130, 7), antialias);
      EXPECT_TRUE(SameValues(pair.expected, pair.drawn));
    }
  }
}

// What the second composite adds where there is no letter is 0, and not nothing: here it turns the sign of a zero.
TEST_F(DrawText, AddingNothingIsASumToo) {
  COrbImage src = Even(6, 5, 1, -0.0f);
  src.SetPixelGrayRaw(2, 2, 7.0f, 0);
  src.CImage::SetLevel(0, -0.0, -255.0);
  Pair const pair = Draw(src, src, {100, 100}, "M", Font(6), kWhite, 0);
  EXPECT_TRUE(SameBits(pair.expected, pair.drawn));
  EXPECT_TRUE(std::signbit(SamplesOf(pair.drawn)[0]));
}

TEST_F(DrawText, TheSourceMayBeTheImageItself) {
  Random random(23);
  for (int planes : {1, 3}) {
    COrbImage src = RandomImage(random, 50, 30, planes);
    CImgDrawText inPlace;
    inPlace.CopyImage(src, nullptr, nullptr);
    LOGFONT font = Font(18);
    ASSERT_EQ(inPlace.Do(&inPlace, {5, 3}, "M 31", &font, RGB(9, 200, 77), 1), 1);
    EXPECT_TRUE(SameBits(Draw(src, src, {5, 3}, "M 31", font, RGB(9, 200, 77), 1).expected, inPlace));
  }
}

TEST_F(DrawText, TheSourceIsOnlyRead) {
  Random random(24);
  COrbImage src = RandomImage(random, 50, 30, 3);
  COrbImage const before(src);
  Draw(src, Even(50, 30, 3, 7.0f), {5, 3}, "M 31", Font(18), kWhite, 1);
  EXPECT_TRUE(SameBits(before, src));
}

TEST_F(DrawText, AnEmptyTextTakesTheSourceThroughBothComposites) {
  Random random(25);
  COrbImage src = RandomImage(random, 33, 8, 3);
  COrbImage const before = Even(33, 8, 3, 0.0f);
  Pair const pair = Draw(src, before, {0, 0}, "", Font(18), kWhite, 1);
  EXPECT_TRUE(SameBits(pair.expected, pair.drawn));
  EXPECT_NE(SamplesOf(pair.drawn), SamplesOf(before));
}

TEST_F(DrawText, AnyPositionIsSafe) {
  Random random(26);
  COrbImage src = RandomImage(random, 20, 10, 1);
  COrbImage const off = Draw(src, src, {1000, 0}, "M", Font(12), kWhite, 0).expected;
  for (int const x : {INT_MIN, INT_MAX, -1000}) {
    for (int const y : {INT_MIN, INT_MAX, 0}) {
      EXPECT_TRUE(SameBits(off, Draw(src, src, {x, y}, "M", Font(12), kWhite, 0).drawn));
      EXPECT_TRUE(SameBits(off, Draw(src, src, {y, x}, "M", Font(12), kWhite, 0).drawn));
    }
  }
}

TEST_F(DrawText, OtherNumbersOfPlanes) {
  LOGFONT font = Font(18);
  COrbImage colour = Even(40, 30, 3, 100.0f);
  Pair const three = Draw(colour, colour, {2, 2}, "Mg", font, RGB(200, 40, 255), 1);
  for (int const planes : {2, 4}) {
    CImgDrawText image = Even(40, 30, planes, 100.0f);
    ASSERT_EQ(image.Do(&image, {2, 2}, "Mg", &font, RGB(200, 40, 255), 1), 1);
    for (int p = 0; p < planes; ++p) {
      for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
          float const expected = p < 3 ? three.drawn.GetImageAdr(x, y, p, 1, nullptr)[0] : 100.0f;
          ASSERT_EQ(image.GetPixelGrayRaw(x, y, p), expected);
        }
      }
    }
  }
}

TEST_F(DrawText, TheFontRecordIsOnlyRead) {
  CImgDrawText image = Even(40, 30, 1, 0.0f);
  LOGFONT font = Font(18);
  font.lfWidth = 7;
  ASSERT_EQ(image.Do(&image, {0, 0}, "M", &font, kWhite, 1), 1);
  EXPECT_EQ(font.lfHeight, 18);
  EXPECT_EQ(font.lfWidth, 7);
}

TEST_F(DrawText, StandardPointsAndLevelsStay) {
  CImgDrawText image = Even(40, 30, 1, 0.0f);
  image.SetStdPt(0, CfPoint(3, 4));
  image.SetStdCtr(7, 8);
  LOGFONT font = Font(18);
  ASSERT_EQ(image.Do(&image, {0, 0}, "M", &font, kWhite, 1), 1);
  EXPECT_EQ(image.GetStdPt(0).fx, 3.0);
  EXPECT_EQ(image.GetStdCtr().fy, 8.0);
}

TEST_F(DrawText, ATextTooLargeGivesZeroAndChangesNothing) {
  Random random(27);
  CImgDrawText image;
  image.CopyImage(RandomImage(random, 20, 10, 1), nullptr, nullptr);
  COrbImage const before(image);
  LOGFONT font = Font(-100000);
  EXPECT_EQ(image.Do(&image, {0, 0}, "M", &font, kWhite, 0), 0);
  EXPECT_TRUE(SameBits(before, image));
}

TEST_F(DrawText, LackOfMemoryGivesZero) {
  CImgDrawText image = Even(20, 10, 1, 5.0f);
  LOGFONT font = Font(12);
  CVmManager& manager = CVmManager::OfThread();
  CVmManager const before = manager;
  manager.SetBlockSize(0);
  manager.SetScratchFolder("/no/such/folder");
  EXPECT_EQ(image.Do(&image, {0, 0}, "M", &font, kWhite, 0), 0);
  manager = before;
  EXPECT_EQ(image.Do(&image, {0, 0}, "M", &font, kWhite, 0), 1);
}

TEST_F(DrawText, SaysNothing) {
  RecordingWindow window;
  CImgDrawText image = Even(20, 10, 1, 5.0f);
  image.SetProgressHandle(&window);
  SetMainWindow(&window);
  LOGFONT font = Font(12);
  EXPECT_EQ(image.Do(&image, {0, 0}, "M", &font, kWhite, 0), 1);
  SetMainWindow(nullptr);
  EXPECT_TRUE(window.IsSilent());
}

TEST_F(DrawText, WorksOnAHostileStore) {
  Random random(28);
  for (int planes : {1, 3}) {
    COrbImage src = RandomImage(random, 41, 23, planes);
    COrbImage const before = Even(41, 23, planes, 1.0f);
    Pair pair = Draw(src, before, {6, 3}, "M 31", Font(14), RGB(1, 99, 200), 1);
    CImgDrawText dst;
    dst.CopyImage(before, nullptr, nullptr);
    MakeHostile(dst);
    MakeHostile(src);
    LOGFONT font = Font(14);
    ASSERT_EQ(dst.Do(&src, {6, 3}, "M 31", &font, RGB(1, 99, 200), 1), 1);
    EXPECT_TRUE(SameBits(pair.expected, dst));
    EXPECT_EQ(0, LocksLeft(dst));
    EXPECT_EQ(0, LocksLeft(src));
  }
}

}  // namespace
}  // namespace orb::test
