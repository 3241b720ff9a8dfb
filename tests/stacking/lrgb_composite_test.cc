// CImgLrgbCmpst: the formula from images and from planes, the average, and what is read off the sources.
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/lrgb_composite_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/float_units.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using reference::Alignment;
using Owned = std::unique_ptr<COrbImage>;

CImgLrgbCmpst JunkOf(int width, int height, Random& random) {
  CImgLrgbCmpst dst;
  dst.CopyImage(COrbImage(-32, width, height, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  return dst;
}

COrbImage RandomSource(Random& random, int width, int height, int planes) {
  COrbImage image = RandomImage(random, width, height, planes);
  image.SetStdCtr(width / 2.0 - 0.5, height / 2.0);
  return image;
}

Alignment RandomAlignment(Random& random) {
  std::uniform_real_distribution<double> shift(-4.0, 4.0);
  switch (random() % 5) {
    case 0:
      return Alignment{};
    case 1:
      return Alignment{shift(random), shift(random), 0.0, 1.0};
    case 2:
      return Alignment{shift(random), shift(random), 0.0, 0.5 + shift(random) / 10.0};
    case 3:
      return Alignment{shift(random), shift(random), 20.0 * shift(random), 1.0};
    default:
      return Alignment{shift(random), shift(random), 20.0 * shift(random), 1.0 + shift(random) / 8.0};
  }
}

void DoLrgb(CImgLrgbCmpst& dst, COrbImage& luminance, Alignment const& l, COrbImage& colour, Alignment const& c,
            CRect* rect, int average) {
  dst.DoLrgb(&luminance, l.dx, l.dy, l.angle, &colour, c.dx, c.dy, c.angle, c.scale, rect, average, 0);
}

void DoLab(CImgLrgbCmpst& dst, COrbImage& l, Alignment const& placeL, COrbImage& ab, Alignment const& placeC,
           CRect* rect) {
  dst.DoLab(&l, placeL.dx, placeL.dy, placeL.angle, &ab, placeC.dx, placeC.dy, placeC.angle, placeC.scale, rect, 0);
}

// One pixel without shifts.
COrbImage Lrgb1(COrbImage& luminance, COrbImage& colour, int average = 0) {
  CImgLrgbCmpst dst;
  dst.CopyImage(COrbImage(-32, 1, 1, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  DoLrgb(dst, luminance, Alignment{}, colour, Alignment{}, nullptr, average);
  return COrbImage(dst);
}

COrbImage Pixel(std::vector<float> const& samples) {
  COrbImage image(-32, 1, 1, static_cast<int>(samples.size()), 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

TEST(LrgbComposite, EqualsThePlainFormulaEverywhere) {
  Random random(71);
  for (int width : {2, 7, 40, 131}) {
    for (int height : {2, 12}) {
      for (int planes : {11, 13, 31, 33}) {
        COrbImage luminance = RandomSource(random, width, height, planes / 10);
        COrbImage colour = RandomSource(random, width + 3, height - height / 3, planes % 10);
        for (RectCase& c : RectCases(width, height)) {
          SCOPED_TRACE(testing::Message() << c.name << ' ' << width << 'x' << height << " planes " << planes);
          Alignment const placeL = RandomAlignment(random);
          Alignment const placeC = RandomAlignment(random);
          CImgLrgbCmpst dst = JunkOf(width, height, random);
          COrbImage expected(dst);
          reference::LrgbComposite(expected, luminance, placeL, colour, placeC, c.Pointer(), 0);
          DoLrgb(dst, luminance, placeL, colour, placeC, c.Pointer(), 0);
          EXPECT_TRUE(SameWithinOneUnitOfLevels(expected, dst));
          EXPECT_TRUE(SameLevels(expected, dst));
        }
      }
    }
  }
}

TEST(LrgbComposite, AverageEqualsThePlainFormulaBitForBit) {
  Random random(72);
  for (int width : {2, 40, 131}) {
    for (int planes : {11, 13, 31, 33}) {
      COrbImage luminance = RandomSource(random, width, 9, planes / 10);
      COrbImage colour = RandomSource(random, width + 3, 8, planes % 10);
      if (width == 40) StrewSpecialSamples(colour, random);
      for (RectCase& c : RectCases(width, 9)) {
        Alignment const placeL = RandomAlignment(random);
        Alignment const placeC = RandomAlignment(random);
        CImgLrgbCmpst dst = JunkOf(width, 9, random);
        COrbImage expected(dst);
        reference::LrgbComposite(expected, luminance, placeL, colour, placeC, c.Pointer(), 1);
        DoLrgb(dst, luminance, placeL, colour, placeC, c.Pointer(), 1);
        EXPECT_TRUE(SameValues(expected, dst)) << c.name << ' ' << width << " planes " << planes;
        EXPECT_TRUE(SameLevels(expected, dst));
      }
    }
  }
}

TEST(LrgbComposite, FromPlanesEqualsThePlainFormula) {
  Random random(73);
  for (int width : {2, 7, 40, 131}) {
    COrbImage source = RandomSource(random, width, 9, 3);
    COrbImage other = RandomSource(random, width + 2, 8, 3);
    Owned const l(source.MakeLPlane());
    Owned const ab(other.MakeAbPlane(0));
    for (RectCase& c : RectCases(width, 9)) {
      Alignment const placeL = RandomAlignment(random);
      Alignment const placeC = RandomAlignment(random);
      CImgLrgbCmpst dst = JunkOf(width, 9, random);
      COrbImage expected(dst);
      reference::LabComposite(expected, *l, placeL, *ab, placeC, c.Pointer());
      DoLab(dst, *l, placeL, *ab, placeC, c.Pointer());
      EXPECT_TRUE(SameWithinOneUnitOfLevels(expected, dst)) << c.name << ' ' << width;
      EXPECT_TRUE(SameLevels(expected, dst));
    }
  }
}

TEST(LrgbComposite, EqualsThePlainFormulaForSamplesOfEveryKind) {
  Random random(74);
  COrbImage luminance = RandomSource(random, 60, 9, 1);
  COrbImage colour = RandomSource(random, 60, 9, 3);
  StrewSpecialSamples(luminance, random);
  StrewSpecialSamples(colour, random);
  for (int i = 0; i < 5; ++i) {
    Alignment const placeL = RandomAlignment(random);
    Alignment const placeC = RandomAlignment(random);
    CImgLrgbCmpst dst = JunkOf(60, 9, random);
    COrbImage expected(dst);
    reference::LrgbComposite(expected, luminance, placeL, colour, placeC, nullptr, 0);
    DoLrgb(dst, luminance, placeL, colour, placeC, nullptr, 0);
    EXPECT_TRUE(SameWithinOneUnitOfLevels(expected, dst));
    reference::LabComposite(expected, luminance, placeL, colour, placeC, nullptr);
    DoLab(dst, luminance, placeL, colour, placeC, nullptr);
    EXPECT_TRUE(SameWithinOneUnitOfLevels(expected, dst));
  }
}

// L by CIE's weights of X, Y, Z, which are far from those of brightness.
TEST(LrgbComposite, LightnessOfAColourLuminanceIsThatOfLab) {
  COrbImage luminance = Pixel({200.0f, 20.0f, 90.0f});
  COrbImage colour = Pixel({60.0f, 60.0f, 60.0f});
  COrbImage const joined = Lrgb1(luminance, colour);
  COrbImage any;
  double const gray = any.CalcBrightL(200.0, 20.0, 90.0);
  EXPECT_GT(std::fabs(gray - any.CalcBright(200.0, 20.0, 90.0)), 5.0);
  for (int p = 0; p < 3; ++p) EXPECT_NEAR(gray, SamplesOf(joined)[static_cast<std::size_t>(p)], 1e-4);
}

TEST(LrgbComposite, TakesLFromTheOneAndColourFromTheOther) {
  COrbImage luminance = Pixel({130.0f});
  COrbImage colour = Pixel({60.0f, 90.0f, 50.0f});
  COrbImage const joined = Lrgb1(luminance, colour);
  auto const labOf = [](std::vector<float> const& rgb) {
    CColor c;
    c.RgbToLab(rgb[0] / 255.0, rgb[1] / 255.0, rgb[2] / 255.0);
    return c;
  };
  CColor const result = labOf(SamplesOf(joined));
  EXPECT_NEAR(labOf({130.0f, 130.0f, 130.0f}).GetL(), result.GetL(), 1e-3);
  EXPECT_NEAR(labOf({60.0f, 90.0f, 50.0f}).Geta(), result.Geta(), 1e-3);
  EXPECT_NEAR(labOf({60.0f, 90.0f, 50.0f}).Getb(), result.Getb(), 1e-3);
}

TEST(LrgbComposite, AGrayOverAGrayStaysExactlyGray) {
  COrbImage luminance(-32, 256, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int i = 0; i < 1024; ++i) luminance.SetPixelGrayRaw(i % 256, i / 256, static_cast<float>(i) * 0.5f, 0);
  COrbImage colour(luminance);
  CImgLrgbCmpst dst;
  dst.CopyImage(COrbImage(-32, 256, 4, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  DoLrgb(dst, luminance, Alignment{}, colour, Alignment{}, nullptr, 0);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 256; ++x) {
      float const r = dst.GetPixelGrayRaw(x, y, 0);
      EXPECT_EQ(r, dst.GetPixelGrayRaw(x, y, 1));
      EXPECT_EQ(r, dst.GetPixelGrayRaw(x, y, 2));
      EXPECT_NEAR(luminance.GetPixelGrayRaw(x, y, 0), r, 1e-4);
    }
  }
}

TEST(LrgbComposite, ValuesAreLimitedAt0AndAt5000) {
  COrbImage colour = Pixel({60.0f, 90.0f, 50.0f});
  COrbImage tooBright = Pixel({6000.0f});
  COrbImage bright = Pixel({5000.0f});
  COrbImage over255 = Pixel({300.0f});
  COrbImage white = Pixel({255.0f});
  COrbImage negative = Pixel({-40.0f});
  COrbImage black = Pixel({0.0f});
  EXPECT_TRUE(SameBits(Lrgb1(bright, colour), Lrgb1(tooBright, colour)));
  EXPECT_TRUE(SameBits(Lrgb1(black, colour), Lrgb1(negative, colour)));
  EXPECT_FALSE(SameBits(Lrgb1(white, colour), Lrgb1(over255, colour)));
  COrbImage wild = Pixel({6000.0f, -5.0f, 50.0f});
  COrbImage tame = Pixel({5000.0f, 0.0f, 50.0f});
  EXPECT_TRUE(SameBits(Lrgb1(white, tame), Lrgb1(white, wild)));
  // The average limits nothing.
  EXPECT_EQ((std::vector<float>{3030.0f, 3045.0f, 3025.0f}), SamplesOf(Lrgb1(tooBright, colour, 1)));
}

// Nothing is limited: an L below 0 and one far above 100 go through.
TEST(LrgbComposite, FromPlanesLimitsNothing) {
  COrbImage l(-32, 3, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(l, {2000.0f, 3000.0f, -3.0f});
  COrbImage ab(-32, 3, 1, 2, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(ab, {1.0f, 1.0f, 40.0f, -1.0f, -1.0f, 0.0f});
  Random random(75);
  CImgLrgbCmpst dst = JunkOf(3, 1, random);
  DoLab(dst, l, Alignment{}, ab, Alignment{}, nullptr);
  for (int x = 0; x < 3; ++x) {
    CColor c;
    c.LabToRgb(l.GetPixelGrayRaw(x, 0, 0), ab.GetPixelGrayRaw(x, 0, 0), ab.GetPixelGrayRaw(x, 0, 1));
    EXPECT_FLOAT_EQ(static_cast<float>(c.GetR() * 255.0), dst.GetPixelGrayRaw(x, 0, 0)) << x;
    EXPECT_FLOAT_EQ(static_cast<float>(c.GetG() * 255.0), dst.GetPixelGrayRaw(x, 0, 1)) << x;
    EXPECT_FLOAT_EQ(static_cast<float>(c.GetB() * 255.0), dst.GetPixelGrayRaw(x, 0, 2)) << x;
  }
  EXPECT_GT(dst.GetPixelGrayRaw(1, 0, 0), 5000.0f);
}

TEST(LrgbComposite, OffTheColourSourceTheChromaIsThatOfBlack) {
  COrbImage luminance = Pixel({130.0f});
  COrbImage colour = Pixel({60.0f, 90.0f, 50.0f});
  Random random(76);
  CImgLrgbCmpst dst = JunkOf(1, 1, random);
  DoLrgb(dst, luminance, Alignment{}, colour, Alignment{5.0, 0.0, 0.0, 1.0}, nullptr, 0);
  COrbImage black = Pixel({0.0f, 0.0f, 0.0f});
  EXPECT_TRUE(SameBits(Lrgb1(luminance, black), dst));
  for (float v : SamplesOf(dst)) EXPECT_NEAR(130.0f, v, 1e-4);
}

TEST(LrgbComposite, OffTheLuminanceLIsThatOfBlack) {
  COrbImage luminance = Pixel({130.0f});
  COrbImage colour = Pixel({60.0f, 90.0f, 50.0f});
  Random random(77);
  CImgLrgbCmpst dst = JunkOf(1, 1, random);
  DoLrgb(dst, luminance, Alignment{5.0, 0.0, 0.0, 1.0}, colour, Alignment{}, nullptr, 0);
  CColor chroma;
  chroma.RgbToLab(60 * kInverse255, 90 * kInverse255, 50 * kInverse255);
  CColor c;
  c.LabToRgb(0.0, chroma.Geta(), chroma.Getb());
  EXPECT_FLOAT_EQ(static_cast<float>(c.GetR() * 255.0), dst.GetPixelGrayRaw(0, 0, 0));
  EXPECT_FLOAT_EQ(static_cast<float>(c.GetG() * 255.0), dst.GetPixelGrayRaw(0, 0, 1));
  EXPECT_FLOAT_EQ(static_cast<float>(c.GetB() * 255.0), dst.GetPixelGrayRaw(0, 0, 2));
}

TEST(LrgbComposite, AverageHalvesTheOtherOffASource) {
  COrbImage luminance = Pixel({130.0f});
  COrbImage colour = Pixel({60.0f, 90.0f, 50.0f});
  Random random(78);
  CImgLrgbCmpst dst = JunkOf(1, 1, random);
  DoLrgb(dst, luminance, Alignment{}, colour, Alignment{5.0, 0.0, 0.0, 1.0}, nullptr, 1);
  EXPECT_EQ((std::vector<float>{65.0f, 65.0f, 65.0f}), SamplesOf(dst));
  DoLrgb(dst, luminance, Alignment{5.0, 0.0, 0.0, 1.0}, colour, Alignment{}, nullptr, 1);
  EXPECT_EQ((std::vector<float>{30.0f, 45.0f, 25.0f}), SamplesOf(dst));
}

TEST(LrgbComposite, AllPlanesTakeTheLevelsOfTheLuminancesPlane0EvenForAnEmptyRectangle) {
  Random random(79);
  COrbImage luminance = RandomSource(random, 6, 5, 3);
  COrbImage colour = RandomSource(random, 6, 5, 3);
  luminance.CImage::SetLevel(0, 12.5, 99.0);
  Owned const ab(colour.MakeAbPlane(0));
  for (CRect rect : {CRect(0, 0, 6, 5), CRect(3, 3, 3, 3), CRect(5, 4, 1, 1)}) {
    for (int how = 0; how < 3; ++how) {
      CImgLrgbCmpst dst = JunkOf(6, 5, random);
      COrbImage const before(dst);
      if (how < 2) DoLrgb(dst, luminance, Alignment{}, colour, Alignment{}, &rect, how);
      if (how == 2) DoLab(dst, luminance, Alignment{}, *ab, Alignment{}, &rect);
      for (int p = 0; p < 3; ++p) {
        EXPECT_EQ(12.5, dst.GetLevelMin(p));
        EXPECT_EQ(99.0, dst.GetLevelMax(p));
        EXPECT_EQ(86.5, dst.GetLevelRange(p));
      }
      EXPECT_EQ(rect.Width() <= 0, static_cast<bool>(SameBits(before, dst)));
    }
  }
}

// The zoom of the colour source about its own centre; the luminance has none.
TEST(LrgbComposite, ScaleMagnifiesTheColourSourceAlone) {
  Random random(80);
  COrbImage colour = RandomSource(random, 4, 4, 3);
  colour.SetStdCtr(0.0, 0.0);
  COrbImage luminance = RandomSource(random, 8, 8, 1);
  luminance.SetStdCtr(0.0, 0.0);
  CImgLrgbCmpst dst = JunkOf(8, 8, random);
  DoLrgb(dst, luminance, Alignment{}, colour, Alignment{0.0, 0.0, 0.0, 0.5}, nullptr, 1);
  double const first = luminance.GetPixelGray256f(6, 4, 0);
  double const second = colour.GetPixelGray256f(3, 2, 1);
  EXPECT_NEAR(dst.ToRaw((first + second) * 0.5, 1), dst.GetPixelGrayRaw(6, 4, 1), 1e-4);
}

TEST(LrgbComposite, ProgressCountsRows) {
  Random random(81);
  COrbImage luminance = RandomSource(random, 6, 12, 1);
  COrbImage colour = RandomSource(random, 6, 12, 3);
  CRect rect(1, 2, 5, 10);
  for (int how = 0; how < 2; ++how) {
    RecordingWindow window;
    window.escapeAtPoll = 2;
    CImgLrgbCmpst dst = JunkOf(6, 12, random);
    dst.SetProgressHandle(&window);
    if (how == 0) dst.DoLrgb(&luminance, 0, 0, 0, &colour, 0, 0, 0, 1.0, &rect, 0, 1);
    if (how == 1) dst.DoLab(&luminance, 0, 0, 0, &colour, 0, 0, 0, 1.0, &rect, 1);
    EXPECT_EQ(std::vector<std::string>{"LRGB合成処理中..."}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(8, OrbTestAccess::ProgressOf(dst).total);
    EXPECT_EQ(8, window.polls);
    EXPECT_EQ(8u, window.positions.size());
  }
}

TEST(LrgbComposite, AnEmptyRectangleStartsAndEndsItsRun) {
  Random random(82);
  COrbImage luminance = RandomSource(random, 6, 5, 1);
  CRect rect(9, 9, 20, 20);
  RecordingWindow window;
  CImgLrgbCmpst dst = JunkOf(6, 5, random);
  dst.SetProgressHandle(&window);
  dst.DoLrgb(&luminance, 0, 0, 0, &luminance, 0, 0, 0, 1.0, &rect, 0, 1);
  EXPECT_EQ(1u, window.starts.size());
  EXPECT_EQ(1u, window.ends.size());
  EXPECT_EQ(0, window.polls);
}

TEST(LrgbComposite, AverageTurnsProgressOff) {
  Random random(83);
  COrbImage luminance = RandomSource(random, 6, 5, 1);
  RecordingWindow window;
  CImgLrgbCmpst dst = JunkOf(6, 5, random);
  dst.SetProgressHandle(&window);
  luminance.SetProgressHandle(&window);
  dst.DoLrgb(&luminance, 0, 0, 0, &luminance, 0, 0, 0, 1.0, nullptr, 1, 1);
  dst.DoLrgb(&luminance, 0, 0, 0, &luminance, 0, 0, 0, 1.0, nullptr, 0, 0);
  dst.DoLab(&luminance, 0, 0, 0, &luminance, 0, 0, 0, 1.0, nullptr, 0);
  EXPECT_TRUE(window.IsSilent());
}

TEST(LrgbComposite, WorksOnAHostileStore) {
  Random random(84);
  COrbImage luminance = RandomSource(random, 40, 7, 1);
  COrbImage colour = RandomSource(random, 40, 7, 3);
  Owned const ab(colour.MakeAbPlane(0));
  Alignment const place{0.5, -1.25, 3.0, 1.0};
  for (int how = 0; how < 3; ++how) {
    COrbImage first(luminance);
    COrbImage second(how == 2 ? *ab : colour);
    CImgLrgbCmpst expected = JunkOf(40, 7, random);
    CImgLrgbCmpst dst(expected);
    auto const run = [&](CImgLrgbCmpst& to) {
      if (how < 2) DoLrgb(to, first, Alignment{}, second, place, nullptr, how);
      if (how == 2) DoLab(to, first, Alignment{}, second, place, nullptr);
    };
    run(expected);
    for (COrbImage* each : {static_cast<COrbImage*>(&dst), &first, &second}) MakeHostile(*each);
    run(dst);
    EXPECT_TRUE(SameBits(expected, dst)) << how;
    for (COrbImage* each : {static_cast<COrbImage*>(&dst), &first, &second}) EXPECT_EQ(0, LocksLeft(*each));
  }
}

TEST(LrgbComposite, ToleratesEverySizeAndEveryPlacement) {
  Random random(85);
  double const wild[] = {0.0, 1e300, -1e300, std::numeric_limits<double>::infinity(), std::nan("")};
  for (int width : {1, 2, 3}) {
    for (int height : {1, 2}) {
      COrbImage luminance = RandomSource(random, width, height, 1);
      COrbImage colour = RandomSource(random, height, width, 3);
      Owned const ab(colour.MakeAbPlane(0));
      for (double v : wild) {
        for (double angle : {0.0, 30.0, v}) {
          CImgLrgbCmpst dst = JunkOf(width, height, random);
          COrbImage const before(dst);
          dst.DoLrgb(&luminance, v, 0.5, angle, &colour, 0.5, v, angle, v, nullptr, 0, 0);
          dst.DoLab(&luminance, 0.5, v, angle, ab.get(), v, 0.5, angle, v, nullptr, 0);
          EXPECT_FALSE(SameBits(before, dst));
        }
      }
    }
  }
}

}  // namespace
}  // namespace orb::test
