// The members of COrbImage on lightness and colour: brightness by lightness, L, ab and Lab planes, and their samples.
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/color_reference.h>
#include <tests/reference/sampler_reference.h>
#include <tests/support/float_units.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/scratch_settings.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using Owned = std::unique_ptr<COrbImage>;

COrbImage FlatImage(int width, int height, int planes) {
  return COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
}

void ExpectEqualsReference(COrbImage& image) {
  Owned const l(image.MakeLPlane());
  COrbImage const expectedL = reference::LPlane(image);
  EXPECT_TRUE(SameWithinOneUnit(expectedL, *l));
  EXPECT_TRUE(SameLevels(expectedL, *l));
  Owned const lab(image.MakeLabPlane());
  COrbImage const expectedLab = reference::LabPlane(image);
  EXPECT_TRUE(SameWithinOneUnit(expectedLab, *lab));
  EXPECT_TRUE(SameLevels(expectedLab, *lab));
  for (int clip : {0, 1, -1}) {
    Owned const ab(image.MakeAbPlane(clip));
    COrbImage const expectedAb = reference::AbPlane(image, clip);
    EXPECT_TRUE(SameWithinOneUnit(expectedAb, *ab));
    EXPECT_TRUE(SameLevels(expectedAb, *ab));
  }
}

TEST(LabPlanes, EqualThePlainFormula) {
  Random random(51);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 7, 33, 127, 128, 129, 300}) {
      for (int height : {1, 5}) {
        SCOPED_TRACE(testing::Message() << width << 'x' << height << 'x' << planes);
        COrbImage image = RandomImage(random, width, height, planes);
        ExpectEqualsReference(image);
      }
    }
  }
}

TEST(LabPlanes, EqualThePlainFormulaFarBeyondTheLevels) {
  Random random(52);
  for (int planes : {1, 3}) {
    COrbImage image = FlatImage(140, 11, planes);
    FillRandom(image, random, -4000.0, 9000.0);
    SetRandomLevels(image, random);
    ExpectEqualsReference(image);
    StrewSpecialSamples(image, random);
    ExpectEqualsReference(image);
  }
}

TEST(LabPlanes, EqualThePlainFormulaWithLevelsInvertedOrWithoutRange) {
  Random random(53);
  for (int planes : {1, 3}) {
    COrbImage image = RandomImage(random, 40, 6, planes);
    image.CImage::SetLevel(0, 200.0, -50.0);
    ExpectEqualsReference(image);
    image.CImage::SetLevel(planes - 1, 100.0, 100.0);
    ExpectEqualsReference(image);
  }
}

// A level and a factor that a float does not hold: 1000000.1 is 1000000.125 there.
TEST(LabPlanes, ColourReadsItsLevelsAsFloatsAndMonoExactly) {
  COrbImage mono = FlatImage(1, 1, 1);
  COrbImage colour = FlatImage(1, 1, 3);
  double const min = 1000000.1;
  double const max = min + 0.7;
  for (COrbImage* each : {&mono, &colour}) {
    for (int p = 0; p < each->GetPlanes(); ++p) {
      each->CImage::SetLevel(p, min, max);
      each->SetPixelGrayRaw(0, 0, 1000000.5f, p);
    }
  }
  double const exact = (1000000.5 - min) / (max - min);
  double const rounded = (1000000.5 - 1000000.125) * static_cast<float>(255.0 / (max - min)) / 255.0;
  ASSERT_GT(std::fabs(exact - rounded), 0.01);
  CColor c;
  c.RgbToLab(exact, exact, exact);
  EXPECT_NEAR(c.GetL(), Owned(mono.MakeLPlane())->GetPixelGrayRaw(0, 0, 0), 1e-4);
  c.RgbToLab(rounded, rounded, rounded);
  EXPECT_NEAR(c.GetL(), Owned(colour.MakeLPlane())->GetPixelGrayRaw(0, 0, 0), 1e-4);
}

TEST(LabPlanes, ClipActsOnOverexposedColourOnly) {
  COrbImage colour = FlatImage(2, 1, 3);
  SetSamples(colour, {100.0f, 100.0f, 200.0f, 400.0f, 50.0f, 50.0f});
  Owned const open(colour.MakeAbPlane(0));
  Owned const clipped(colour.MakeAbPlane(1));
  EXPECT_EQ(open->GetPixelGrayRaw(0, 0, 0), clipped->GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(open->GetPixelGrayRaw(0, 0, 1), clipped->GetPixelGrayRaw(0, 0, 1));
  EXPECT_NE(open->GetPixelGrayRaw(1, 0, 0), clipped->GetPixelGrayRaw(1, 0, 0));
  EXPECT_NE(open->GetPixelGrayRaw(1, 0, 1), clipped->GetPixelGrayRaw(1, 0, 1));
  CColor c;
  c.RgbToLab(100 * kInverse255, 255 * kInverse255, 50 * kInverse255);
  EXPECT_FLOAT_EQ(static_cast<float>(c.Geta()), clipped->GetPixelGrayRaw(1, 0, 0));

  // The gray of an overexposed mono image is not cut: its a and b are those of 400, not of 255.
  COrbImage mono = FlatImage(1, 1, 1);
  mono.SetPixelGrayRaw(0, 0, 397.0f, 0);
  c.RgbToLab(397 / 255.0 * 255.0 * kInverse255, 397 / 255.0 * 255.0 * kInverse255, 397 / 255.0 * 255.0 * kInverse255);
  for (int clip : {0, 1}) {
    Owned const ab(mono.MakeAbPlane(clip));
    EXPECT_EQ(static_cast<float>(c.Geta()), ab->GetPixelGrayRaw(0, 0, 0));
    EXPECT_EQ(static_cast<float>(c.Getb()), ab->GetPixelGrayRaw(0, 0, 1));
  }
}

TEST(LabPlanes, LightnessIsLimitedAtBothEnds) {
  COrbImage image = FlatImage(4, 1, 3);
  SetSamples(image, {-1.0f, -500.0f, 5000.0f, 9000.0f, -1.0f, 0.0f, 5000.0f, 6000.0f, 0.0f, -0.0f, 5000.0f, 5001.0f});
  Owned const lab(image.MakeLabPlane());
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(0.0f, lab->GetPixelGrayRaw(0, 0, p));
    EXPECT_EQ(0.0f, lab->GetPixelGrayRaw(1, 0, p));
    EXPECT_EQ(lab->GetPixelGrayRaw(2, 0, p), lab->GetPixelGrayRaw(3, 0, p));
  }
  EXPECT_GT(lab->GetPixelGrayRaw(2, 0, 0), 700.0f);
}

TEST(LabPlanes, AMonoImageHasNoColour) {
  Random random(54);
  COrbImage image = RandomImage(random, 200, 3, 1);
  Owned const ab(image.MakeAbPlane(0));
  for (float v : SamplesOf(*ab)) EXPECT_NEAR(0.0, v, 1e-11);
}

TEST(LabPlanes, WhiteIs100AndBlackIs0) {
  COrbImage image = FlatImage(2, 1, 1);
  image.CImage::SetLevel(0, 100.0, 500.0);
  SetSamples(image, {500.0f, 100.0f});
  Owned const l(image.MakeLPlane());
  EXPECT_EQ(100.0f, l->GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(0.0f, l->GetPixelGrayRaw(1, 0, 0));
}

TEST(LabPlanes, AreNewImagesThatKeepOnlyTheCentre) {
  RecordingWindow window;
  COrbImage image = FlatImage(5, 4, 3);
  image.SetProgressHandle(&window);
  image.SetStdPt(0, CfPoint(1.5, 2.5));
  image.SetStdCtr(3.25, 1.5);
  for (int p = 0; p < 3; ++p) image.CImage::SetLevel(p, 10.0 + p, 90.0 + p);
  int planes = 1;
  for (Owned const& made : {Owned(image.MakeLPlane()), Owned(image.MakeAbPlane(0)), Owned(image.MakeLabPlane())}) {
    EXPECT_EQ(planes++, made->GetPlanes());
    EXPECT_EQ(5, made->GetWidth());
    EXPECT_EQ(4, made->GetHeight());
    EXPECT_EQ(-32, made->GetBitsPixel());
    EXPECT_EQ(3.25, made->GetStdCtr().fx);
    EXPECT_EQ(1.5, made->GetStdCtr().fy);
    EXPECT_FALSE(made->IsValidStdPt(0));
    EXPECT_EQ(MainWindow(), OrbTestAccess::ProgressWindowOf(*made));
  }
}

TEST(LabPlanes, OnlyTheLightnessTakesLevelsThoseOfPlane0) {
  COrbImage image = FlatImage(2, 2, 3);
  for (int p = 0; p < 3; ++p) image.CImage::SetLevel(p, 10.0 + p, 90.0 + p);
  Owned const l(image.MakeLPlane());
  EXPECT_EQ(10.0, l->GetLevelMin(0));
  EXPECT_EQ(90.0, l->GetLevelMax(0));
  for (Owned const& made : {Owned(image.MakeAbPlane(1)), Owned(image.MakeLabPlane())}) {
    for (int p = 0; p < made->GetPlanes(); ++p) {
      EXPECT_EQ(0.0, made->GetLevelMin(p));
      EXPECT_EQ(255.0, made->GetLevelMax(p));
    }
  }
}

TEST(LabPlanes, ProgressIsAlwaysOn) {
  COrbImage image = FlatImage(3, 7, 3);
  char const* const texts[] = {"Lチャンネルを作成中...", "abチャンネルを作成中...", "Labチャンネルを作成中..."};
  for (int which = 0; which < 3; ++which) {
    RecordingWindow window;
    window.escapeAtPoll = 2;
    image.SetProgressHandle(&window);
    Owned const made(which == 0 ? image.MakeLPlane() : which == 1 ? image.MakeAbPlane(0) : image.MakeLabPlane());
    EXPECT_EQ(std::vector<std::string>{texts[which]}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(7, OrbTestAccess::ProgressOf(image).total);
    EXPECT_EQ(7, window.polls);
    EXPECT_EQ(7u, window.positions.size());
    EXPECT_TRUE(window.texts.empty());
  }
}

TEST(LabPlanes, AreNullForTwoPlanes) {
  RecordingWindow window;
  COrbImage image = FlatImage(3, 3, 2);
  image.SetProgressHandle(&window);
  EXPECT_EQ(nullptr, image.MakeLPlane());
  EXPECT_EQ(nullptr, image.MakeAbPlane(0));
  EXPECT_EQ(nullptr, image.MakeLabPlane());
  EXPECT_TRUE(window.IsSilent());
}

TEST(LabPlanes, AreNullForLackOfMemory) {
  RecordingWindow window;
  COrbImage image = FlatImage(3, 3, 3);
  image.SetProgressHandle(&window);
  ScratchSettings const settings(1, "/no/such/folder");
  EXPECT_EQ(nullptr, image.MakeLPlane());
  EXPECT_EQ(nullptr, image.MakeAbPlane(0));
  EXPECT_EQ(nullptr, image.MakeLabPlane());
  EXPECT_TRUE(window.IsSilent());
}

TEST(LabPlanes, WorkOnAHostileStore) {
  Random random(55);
  COrbImage image = RandomImage(random, 150, 7, 3);
  Owned const expected(image.MakeLabPlane());
  MakeHostile(image);
  Owned const made(image.MakeLabPlane());
  EXPECT_TRUE(SameBits(*expected, *made));
  EXPECT_EQ(0, LocksLeft(image));
  EXPECT_EQ(0, LocksLeft(*made));
}

TEST(LabPlanes, LeaveTheSourceAsItIs) {
  Random random(56);
  COrbImage image = RandomImage(random, 20, 7, 3);
  COrbImage const before(image);
  Owned const made(image.MakeLabPlane());
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
}

TEST(BrightL, IsTheGrayOfEqualLightness) {
  COrbImage image;
  EXPECT_NEAR(255.0, image.CalcBrightL(255.0, 255.0, 255.0), 1e-10);
  EXPECT_EQ(0.0, image.CalcBrightL(0.0, 0.0, 0.0));
  EXPECT_NEAR(128.0, image.CalcBrightL(128.0, 128.0, 128.0), 1e-10);
  EXPECT_EQ(image.CalcBrightL(5000.0, 5000.0, 5000.0), image.CalcBrightL(6000.0, 6000.0, 6000.0));
  EXPECT_NE(image.CalcBrightL(4999.0, 5000.0, 5000.0), image.CalcBrightL(5000.0, 5000.0, 5000.0));
  EXPECT_EQ(image.CalcBrightL(-5000.0, 200.0, 200.0), image.CalcBrightL(-6000.0, 200.0, 200.0));
}

TEST(BrightL, EqualsThePlainFormula) {
  Random random(57);
  std::uniform_real_distribution<double> value(-7000.0, 7000.0);
  std::uniform_real_distribution<double> small(-20.0, 300.0);
  COrbImage image;
  for (int i = 0; i < 3000; ++i) {
    auto& of = i % 2 == 0 ? value : small;
    double const r = of(random);
    double const g = of(random);
    double const b = of(random);
    EXPECT_EQ(reference::BrightL(r, g, b), image.CalcBrightL(r, g, b)) << r << ' ' << g << ' ' << b;
  }
  EXPECT_TRUE(std::isnan(image.CalcBrightL(std::nan(""), 1.0, 1.0)));
}

TEST(LabSamples, EqualThePlainSampler) {
  Random random(58);
  COrbImage planes = FlatImage(9, 7, 2);
  FillRandom(planes, random);
  COrbImage l = RandomImage(random, 9, 7, 1);
  double const turn = 0.3;
  reference::Place const places[] = {{0.0, 0.0, 0.0, 1.0, 1.0},
                                     {2.5, -1.25, 0.0, 1.0, 1.0},
                                     {0.5, 0.75, 0.0, 1.0, 0.6},
                                     {-1.5, 0.5, std::sin(turn), std::cos(turn), 1.0},
                                     {0.25, 0.5, std::sin(turn), std::cos(turn), 1.7},
                                     {1.0, 2.0, 1.0, 0.0, -0.8}};
  for (COrbImage* each : {&planes, &l}) each->SetStdCtr(4.5, 3.0);
  for (reference::Place const& g : places) {
    for (int y = -2; y < 9; ++y) {
      for (int x = -2; x < 11; ++x) {
        float const expected = static_cast<float>(reference::PixelGrayRaw(l, x, y, g, 0, -7.1, false).value[0]);
        EXPECT_EQ(expected, l.GetPixelL(x, y, g.dx, g.dy, g.sinA, g.cosA, g.scale, -7.1));
        double a = 0.0;
        double b = 0.0;
        planes.GetPixelAb(x, y, g.dx, g.dy, g.sinA, g.cosA, g.scale, &a, &b, -7.1);
        EXPECT_EQ(reference::PixelGrayRaw(planes, x, y, g, 0, -7.1, false).value[0], a);
        EXPECT_EQ(reference::PixelGrayRaw(planes, x, y, g, 1, -7.1, false).value[0], b);
      }
    }
  }
}

TEST(LabSamples, UseTheRealNumberTestAtTheEdges) {
  COrbImage l = FlatImage(3, 1, 1);
  SetSamples(l, {10.0f, 20.0f, 30.0f});
  EXPECT_EQ(-1.0f, l.GetPixelL(0, 0, 0.25, 0.0, 0.0, 1.0, 1.0, -1.0));  // at -0.25
  EXPECT_EQ(30.0f, l.GetPixelL(3, 0, 0.25, 0.0, 0.0, 1.0, 1.0, -1.0));  // at 2.75, held at the last column
  EXPECT_EQ(-1.0f, l.GetPixelL(3, 0, 0.0, 0.0, 0.0, 1.0, 1.0, -1.0));   // at 3
  EXPECT_EQ(17.5f, l.GetPixelL(1, 0, 0.25, 0.0, 0.0, 1.0, 1.0, -1.0));  // at 0.75
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(-1.0f, l.GetPixelL(1, 0, nan, 0.0, 0.0, 1.0, 1.0, -1.0));
}

}  // namespace
}  // namespace orb::test
