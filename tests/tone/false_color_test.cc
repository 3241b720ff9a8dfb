// CImgFalseColor: palettes, repetition, the two ways to a value, and its run.
#include <climits>
#include <cmath>

#include <tests/reference/false_color_reference.h>
#include <tests/support/point_operator_test.h>

namespace orb::test {
namespace {

using reference::Rgb;

struct OpenFalseColor : CImgFalseColor {
  using CImgFalseColor::GetFalseColor;
};

Rgb ColorOf(float value, int palette, int repeat) {
  Rgb rgb{};
  OpenFalseColor().GetFalseColor(value, palette, repeat, &rgb.red, &rgb.green, &rgb.blue);
  return rgb;
}

void ExpectColor(float red, float green, float blue, Rgb const& rgb) {
  EXPECT_FLOAT_EQ(red, rgb.red);
  EXPECT_FLOAT_EQ(green, rgb.green);
  EXPECT_FLOAT_EQ(blue, rgb.blue);
}

// The 256 colours of a palette that is a table.
std::vector<Rgb> TableOf(int palette) {
  if (palette == 5) return reference::FireTable();
  std::vector<Rgb> table;
  for (int i = 0; i < 256; ++i) table.push_back(ColorOf(static_cast<float>(i), palette, 0));
  return table;
}

TEST(FalseColor, StopsOfThePalettes) {
  Rgb const spectrum[] = {{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}};
  Rgb const full[] = {{0, 0, 0}, {0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}, {255, 255, 255}};
  Rgb const blues[] = {{0, 0, 0}, {0, 0, 128}, {0, 0, 255}, {128, 128, 255}, {255, 255, 255}};
  for (int s = 0; s < 5; ++s) {
    ExpectColor(spectrum[s].red, spectrum[s].green, spectrum[s].blue, ColorOf(static_cast<float>(s * 63.75), 0, 0));
    ExpectColor(blues[s].red, blues[s].green, blues[s].blue, ColorOf(static_cast<float>(s * 63.75), 2, 0));
  }
  for (int s = 0; s < 7; ++s) {
    ExpectColor(full[s].red, full[s].green, full[s].blue, ColorOf(static_cast<float>(s) * 42.5f, 1, 0));
  }
}

// Intended: the fraction is by 1/64.
TEST(FalseColor, PaletteOneJumpsAtItsStops) {
  ExpectColor(0.0f, 0.0f, 0.65625f * 255.0f, ColorOf(42.0f, 1, 0));
  EXPECT_LT(ColorOf(42.49f, 1, 0).blue, 170.0f);
  EXPECT_GT(ColorOf(42.51f, 1, 0).blue, 254.0f);
}

TEST(FalseColor, RowsOfTheTables) {
  int const places[] = {0, 32, 64, 96, 128, 160, 192, 224, 255};
  Rgb const cold[] = {{0, 0, 0},      {0, 23, 33},     {0, 59, 78},     {0, 100, 124},  {21, 143, 168},
                      {74, 182, 199}, {140, 213, 224}, {201, 236, 241}, {246, 252, 252}};
  Rgb const warm[] = {{0, 0, 0},      {44, 0, 0},      {104, 1, 0},     {163, 13, 0},   {202, 46, 23},
                      {225, 103, 76}, {239, 162, 143}, {248, 215, 205}, {253, 249, 248}};
  for (std::size_t k = 0; k < 9; ++k) {
    ExpectColor(cold[k].red, cold[k].green, cold[k].blue, ColorOf(static_cast<float>(places[k]), 3, 0));
    ExpectColor(warm[k].red, warm[k].green, warm[k].blue, ColorOf(static_cast<float>(places[k]), 4, 0));
  }
}

TEST(FalseColor, TablesAreBytesThatRiseSmoothly) {
  for (int palette : {3, 4}) {
    std::vector<Rgb> const table = TableOf(palette);
    for (auto const channel : {&Rgb::red, &Rgb::green, &Rgb::blue}) {
      for (std::size_t i = 1; i < table.size(); ++i) {
        EXPECT_EQ(std::floor(table[i].*channel), table[i].*channel);
        EXPECT_GE(table[i].*channel, table[i - 1].*channel) << palette << ' ' << i;
        EXPECT_LE(table[i].*channel - table[i - 1].*channel, 3.0f) << palette << ' ' << i;
      }
    }
  }
}

TEST(FalseColor, RepetitionIsModulo256) {
  ExpectColor(0.0f, 0.0f, 0.0f, ColorOf(128.0f, 9, 2));
  ExpectColor(254.0f, 254.0f, 254.0f, ColorOf(127.0f, 9, 2));
  ExpectColor(255.0f, 255.0f, 255.0f, ColorOf(127.9f, 9, 2));  // 255.8, limited again
  ExpectColor(254.0f, 254.0f, 254.0f, ColorOf(300.0f, 9, 2));  // limited to 255 first
  for (int repeat : {0, -3}) ExpectColor(77.5f, 77.5f, 77.5f, ColorOf(77.5f, 9, repeat));
}

TEST(FalseColor, AnUnknownPaletteIsGray) {
  for (int palette : {-1, 6, 9}) ExpectColor(200.0f, 200.0f, 200.0f, ColorOf(200.0f, palette, 0));
}

TEST(FalseColor, ValuesBeyondTheRampAreItsEnds) {
  for (int palette = 0; palette < 6; ++palette) {
    Rgb const least = ColorOf(0.0f, palette, 0);
    Rgb const most = ColorOf(255.0f, palette, 0);
    ExpectColor(least.red, least.green, least.blue, ColorOf(-std::numeric_limits<float>::infinity(), palette, 0));
    ExpectColor(most.red, most.green, most.blue, ColorOf(std::numeric_limits<float>::infinity(), palette, 0));
  }
}

TEST(FalseColor, NotANumberHasNoColor) {
  for (int palette = 0; palette < 7; ++palette) {
    for (int repeat : {0, 3}) {
      EXPECT_TRUE(std::isnan(ColorOf(std::numeric_limits<float>::quiet_NaN(), palette, repeat).green));
    }
  }
}

TEST(FalseColor, ColorsEqualThePlainFormula) {
  Random random(1);
  std::uniform_real_distribution<float> value(-20.0f, 275.0f);
  for (int palette = 0; palette < 7; ++palette) {
    std::vector<Rgb> const table = TableOf(palette);
    for (int i = 0; i < 1500; ++i) {
      int const repeat = i % 3 == 0 ? static_cast<int>(random() % 9) : i % 3 == 1 ? 0 : INT_MAX - i;
      float const v = i % 5 == 0 ? std::floor(value(random)) : value(random);
      Rgb const expected = reference::FalseColorOf(v, palette, repeat, table);
      Rgb const actual = ColorOf(v, palette, repeat);
      EXPECT_EQ(expected.red, actual.red) << palette << ' ' << repeat << ' ' << v;
      EXPECT_EQ(expected.green, actual.green) << palette << ' ' << repeat << ' ' << v;
      EXPECT_EQ(expected.blue, actual.blue) << palette << ' ' << repeat << ' ' << v;
    }
  }
}

// Mono: the 256-scale. Colour: Intended, no division by the range of the levels.
TEST(FalseColor, OnlyAMonoSourceIsDividedByTheRange) {
  CImgFalseColor dst;
  dst.CopyImage(ColourPixel(0.0f, 0.0f, 0.0f), nullptr, nullptr);
  COrbImage mono = MonoRow({300.0f});
  mono.SetLevel(0, 100.0, 610.0);
  dst.Do(100.0, 610.0, 9, 0, &mono, nullptr, 0);
  EXPECT_FLOAT_EQ(100.0f, dst.GetPixelGrayRaw(0, 0, 1));
  COrbImage colour = ColourPixel(300.0f, 300.0f, 300.0f);
  for (int p = 0; p < 3; ++p) colour.CImage::SetLevel(p, 100.0, 610.0);
  dst.Do(100.0, 610.0, 9, 0, &colour, nullptr, 0);
  EXPECT_FLOAT_EQ(200.0f, dst.GetPixelGrayRaw(0, 0, 1));
}

TEST(FalseColor, LimitsAreFloats) {
  CImgFalseColor dst;
  dst.CopyImage(ColourPixel(0.0f, 0.0f, 0.0f), nullptr, nullptr);
  COrbImage src = MonoRow({100.0f});
  dst.Do(99.99999999, 100.00000001, 9, 0, &src, nullptr, 0);  // both 100 as floats: 0 / 0
  EXPECT_TRUE(std::isnan(dst.GetPixelGrayRaw(0, 0, 0)));
}

TEST(FalseColor, NothingHappensOnAMonoImage) {
  RecordingWindow window;
  COrbImage src = MonoRow({1.0f, 2.0f});
  CImgFalseColor dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  dst.Do(0.0, 1.0, 0, 0, &src, nullptr, 1);
  EXPECT_TRUE(SameBits(src, dst));
  EXPECT_TRUE(window.IsSilent());
}

TEST(FalseColor, EqualsThePlainFormulaEverywhere) {
  Random random(2);
  for (int palette = 0; palette < 7; ++palette) {
    std::vector<Rgb> const table = TableOf(palette);
    for (auto const& [width, height] : {std::pair(1, 1), std::pair(23, 3), std::pair(600, 2)}) {
      for (RectCase& c : RectCases(width, height)) {
        SCOPED_TRACE(c.name);
        int const repeat = static_cast<int>(random() % 4);
        COrbImage src = RandomImage(random, width, height, random() % 2 == 0 ? 1 : 3);
        if (random() % 2 == 0) StrewSpecialSamples(src, random);
        CImgFalseColor dst;
        dst.CopyImage(RandomImage(random, width, height, 3), nullptr, nullptr);
        FillJunk(dst);
        COrbImage expected(dst);
        CImgFalseColor hostile(dst);
        MakeHostile(hostile);
        COrbImage movingSource(src);
        MakeHostile(movingSource);
        reference::FalseColor(expected, -30.0, 320.0, palette, repeat, table, src, c.Pointer());
        dst.Do(-30.0, 320.0, palette, repeat, &src, c.Pointer(), 0);
        hostile.Do(-30.0, 320.0, palette, repeat, &movingSource, c.Pointer(), 0);
        EXPECT_TRUE(SameValues(expected, dst));
        EXPECT_TRUE(SameValues(expected, hostile));
        EXPECT_TRUE(SameLevels(expected, dst));
        EXPECT_EQ(0, LocksLeft(hostile) + LocksLeft(movingSource));
      }
    }
  }
}

TEST(FalseColor, InPlaceEqualsCopy) {
  Random random(3);
  COrbImage const src = RandomImage(random, 700, 3, 3);
  COrbImage source(src);
  CImgFalseColor copy;
  copy.CopyImage(src, nullptr, nullptr);
  copy.Do(0.0, 200.0, 1, 2, &source, nullptr, 0);
  CImgFalseColor inPlace;
  inPlace.CopyImage(src, nullptr, nullptr);
  inPlace.Do(0.0, 200.0, 1, 2, &inPlace, nullptr, 0);
  EXPECT_TRUE(SameBits(copy, inPlace));
}

TEST(FalseColor, ProgressCountsRows) {
  RecordingWindow window;
  COrbImage src(-32, 4, 6, 1, 1.0, 0.0, 1, nullptr, nullptr);
  CImgFalseColor dst;
  dst.CopyImage(COrbImage(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  dst.SetProgressHandle(&window);
  CRect rect(0, 1, 4, 5);
  dst.Do(0.0, 1.0, 0, 0, &src, &rect, 0);
  EXPECT_TRUE(window.IsSilent());
  dst.Do(0.0, 1.0, 0, 0, &src, &rect, 1);
  EXPECT_EQ(std::vector<std::string>{"疑似カラー処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(4, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(4, window.polls);
}

}  // namespace
}  // namespace orb::test
