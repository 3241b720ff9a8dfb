// CImgComposit: its modes, in both scales, against the plain transcription and by worked numbers.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/composite_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/composite_calls.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::CompositeArguments;

// Samples one below the other, none of them in the last column or row, so that without a shift they are read as stored.
// Levels 0 to 255.
COrbImage Column(std::vector<float> const& samples) {
  COrbImage image(-32, 2, static_cast<int>(samples.size()) + 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (std::size_t y = 0; y < samples.size(); ++y) image.SetPixelGrayRaw(0, static_cast<int>(y), samples[y], 0);
  return image;
}

// The results of `mode` for pairs of raw samples; on the 256-scale with levels 0 to 255, where raw equals scale.
std::vector<float> Combine(CompositeArguments const& c, std::vector<float> const& a, std::vector<float> const& b) {
  COrbImage first = Column(a);
  COrbImage second = Column(b);
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  Apply(dst, first, second, c);
  std::vector<float> results;
  for (std::size_t y = 0; y < a.size(); ++y) results.push_back(dst.GetPixelGrayRaw(0, static_cast<int>(y), 0));
  return results;
}

CompositeArguments Mode(int mode, int to256) {
  CompositeArguments c;
  c.mode = mode;
  c.to256 = to256;
  return c;
}

TEST(Composite, EqualsThePlainFormulaInEveryModeAndScale) {
  Random random(21);
  std::uniform_real_distribution<double> shift(-4.0, 4.0);
  for (int mode = -1; mode <= 12; ++mode) {
    if (mode == 9) continue;
    for (int const to256 : {0, 1}) {
      for (int const planes : {1, 3}) {
        for (int const secondPlanes : {1, 3}) {
          COrbImage first = RandomImage(random, 23, 9, planes);
          COrbImage second = RandomImage(random, 19, 11, secondPlanes);
          second.SetStdCtr(8.5, 3.0);
          for (double const angle : {0.0, 3.0, 120.0}) {
            CompositeArguments c = Mode(mode, to256);
            c.dx = shift(random);
            c.dy = shift(random);
            c.angle = angle;
            c.ratio = shift(random);
            c.clamp = static_cast<int>(random() % 2);
            CImgComposit dst;
            dst.Create(first, nullptr, nullptr);
            SetRandomLevels(dst, random);
            FillJunk(dst);
            COrbImage expected(dst);
            reference::Composite(expected, first, second, c, nullptr);
            Apply(dst, first, second, c);
            ASSERT_TRUE(SameBits(expected, dst)) << "mode " << mode << " to256 " << to256 << " planes " << planes << '/'
                                                 << secondPlanes << " angle " << angle;
            ASSERT_TRUE(SameLevels(expected, dst));
          }
        }
      }
    }
  }
}

TEST(Composite, EqualsThePlainFormulaOnEverySizeAndRectangle) {
  Random random(22);
  std::uniform_int_distribution<int> mode(0, 8);
  for (int const width : {2, 3, 7, 16, 40}) {
    for (int const height : {2, 5, 12}) {
      for (int const planes : {1, 3}) {
        COrbImage first = RandomImage(random, width, height, planes);
        COrbImage second = RandomImage(random, width, height, planes);
        second.SetDefaultCenter();
        for (RectCase& rect : RectCases(width, height)) {
          CompositeArguments c = Mode(mode(random), static_cast<int>(random() % 2));
          c.dx = 0.75;
          c.dy = -1.25;
          c.angle = random() % 2 == 0 ? 0.0 : -20.0;
          CImgComposit dst;
          dst.Create(first, nullptr, nullptr);
          SetRandomLevels(dst, random);
          FillJunk(dst);
          COrbImage expected(dst);
          reference::Composite(expected, first, second, c, rect.Pointer());
          Apply(dst, first, second, c, rect.Pointer());
          ASSERT_TRUE(SameBits(expected, dst)) << rect.name << ' ' << width << 'x' << height << 'x' << planes;
        }
      }
    }
  }
}

TEST(Composite, SpecialSamplesAndNumbers) {
  double const infinity = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  Random random(23);
  for (int mode = 0; mode <= 8; ++mode) {
    for (int const to256 : {0, 1}) {
      for (int const planes : {1, 3}) {
        COrbImage first = RandomImage(random, 17, 6, planes);
        COrbImage second = RandomImage(random, 17, 6, planes);
        second.SetStdCtr(8, 3);
        StrewSpecialSamples(first, random);
        StrewSpecialSamples(second, random);
        for (double const dx : {0.0, 0.5, 1e18, infinity, nan}) {
          for (double const angle : {0.0, 30.0, 1e300, nan}) {
            CompositeArguments c = Mode(mode, to256);
            c.dx = dx;
            c.angle = angle;
            c.ratio = 0.3;
            c.clamp = 1;
            CImgComposit dst;
            dst.CopyImage(first, nullptr, nullptr);
            COrbImage expected(dst);
            reference::Composite(expected, first, second, c, nullptr);
            Apply(dst, first, second, c);
            ASSERT_TRUE(SameValues(expected, dst))
                << "mode " << mode << ' ' << to256 << " shift " << dx << ' ' << angle;
          }
        }
      }
    }
  }
}

TEST(Composite, WeightsAtTheirEnds) {
  CompositeArguments c = Mode(2, 0);
  c.ratio = 0.0;
  EXPECT_EQ((std::vector<float>{10, -7}), Combine(c, {10, -7}, {3, 4}));
  c.ratio = 1.0;
  EXPECT_EQ((std::vector<float>{3, 4}), Combine(c, {10, -7}, {3, 4}));
  c.ratio = 0.25;
  EXPECT_EQ((std::vector<float>{8.25}), Combine(c, {10}, {3}));
}

TEST(Composite, PlainModes) {
  EXPECT_EQ((std::vector<float>{6.5}), Combine(Mode(0, 0), {10}, {3}));
  EXPECT_EQ((std::vector<float>{13}), Combine(Mode(1, 0), {10}, {3}));
  EXPECT_EQ((std::vector<float>{7, 7}), Combine(Mode(6, 0), {10, 3}, {3, 10}));
  EXPECT_EQ((std::vector<float>{10, 10}), Combine(Mode(7, 0), {10, 3}, {3, 10}));
  EXPECT_EQ((std::vector<float>{3, 3}), Combine(Mode(8, 0), {10, 3}, {3, 10}));
}

TEST(Composite, TiesOfMaximumAndMinimumTakeTheSecond) {
  for (int const mode : {7, 8}) {
    float const result = Combine(Mode(mode, 0), {0.0f}, {-0.0f})[0];
    EXPECT_TRUE(std::signbit(result)) << mode;
  }
}

TEST(Composite, SubtractKeepsNegativeDifferencesUnlessClamped) {
  CompositeArguments c = Mode(3, 0);
  EXPECT_EQ((std::vector<float>{-7, 7}), Combine(c, {3, 10}, {10, 3}));
  c.clamp = 1;
  EXPECT_EQ((std::vector<float>{0, 7}), Combine(c, {3, 10}, {10, 3}));
}

TEST(Composite, MultiplyHoldsItsFactorOnThe256ScaleOnly) {
  double const step = 0.00392156862745098;
  std::vector<float> const scaled = Combine(Mode(4, 1), {200, 200, 200, 200}, {-5, 0, 51, 300});
  EXPECT_EQ(0.0f, scaled[0]);
  EXPECT_EQ(0.0f, scaled[1]);
  EXPECT_EQ(static_cast<float>(255.0 * (200.0 / 255.0 * 255.0 * (51 * step)) * step), scaled[2]);
  EXPECT_EQ(static_cast<float>(255.0 * (200.0 / 255.0 * 255.0) * step), scaled[3]);
  EXPECT_FALSE(std::signbit(Combine(Mode(4, 1), {200}, {-0.0f})[0]));
  EXPECT_EQ((std::vector<float>{-1000, 60000}), Combine(Mode(4, 0), {200, 200}, {-5, 300}));
}

TEST(Composite, DivideByNothing) {
  EXPECT_EQ((std::vector<float>{7, 7, -3}), Combine(Mode(5, 0), {7, 7, 6}, {0.0f, -0.0f, -2}));
  EXPECT_EQ(7.0f / 1e-30f, Combine(Mode(5, 0), {7}, {1e-30f})[0]);
}

TEST(Composite, DivideHoldsItsDivisorOnThe256Scale) {
  double const smallest = 0.001 * 0.00392156862745098;
  double const step = 0.00392156862745098;
  std::vector<float> const results = Combine(Mode(5, 1), {2, 2, 2, 2}, {-9, 0.001f, 255, 9000});
  float const a = static_cast<float>(2.0 / 255.0 * 255.0);
  EXPECT_EQ(static_cast<float>(255.0 * (2.0 / 255.0 * 255.0 / smallest) * step), results[0]);
  EXPECT_EQ(a, results[2]);
  EXPECT_EQ(a, results[3]);
}

TEST(Composite, OffTheSecondFrame) {
  COrbImage first = Column({100});
  COrbImage second = Column({50});
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  struct Case {
    int mode, to256;
    float result;
  };
  float const a = static_cast<float>(255.0 * (100.0 / 255.0 * 255.0) * 0.00392156862745098);
  for (Case const c : {Case{4, 1, a}, Case{5, 1, a}, Case{0, 1, 50.0f}, Case{1, 1, a}, Case{4, 0, 0.0f},
                       Case{5, 0, 100.0f}, Case{0, 0, 50.0f}, Case{8, 0, 0.0f}, Case{12, 1, a}}) {
    CompositeArguments arguments = Mode(c.mode, c.to256);
    arguments.dx = 10.0;
    Apply(dst, first, second, arguments);
    EXPECT_EQ(c.result, dst.GetPixelGrayRaw(0, 0, 0)) << "mode " << c.mode << " to256 " << c.to256;
  }
}

// Intended: an unknown mode goes through the 256-scale even when raw samples are asked for.
TEST(Composite, UnknownModeBringsTheFirstFrameIntoTheLevelsOfTheDestination) {
  COrbImage first = Column({300});
  first.CImage::SetLevel(0, 100.0, 500.0);
  COrbImage second = Column({1});
  for (int const mode : {12, 10, -1}) {
    CImgComposit dst;
    dst.Create(first, nullptr, nullptr);
    dst.CImage::SetLevel(0, 0.0, 255.0);
    Apply(dst, first, second, Mode(mode, 0));
    EXPECT_EQ(127.5f, dst.GetPixelGrayRaw(0, 0, 0)) << mode;
    EXPECT_EQ(255.0, dst.GetLevelMax(0));
  }
}

// Intended: a mono destination rounds the sampled value to float before it is combined, a colour one does not.
TEST(Composite, OnlyMonoRoundsTheSampledValue) {
  COrbImage mono(-32, 3, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(mono, {1, 2, 4, 1, 2, 4});
  COrbImage zeros(-32, 3, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage colorZeros(-32, 3, 2, 3, 1.0, 0.0, 1, nullptr, nullptr);
  CompositeArguments c = Mode(2, 0);
  c.ratio = 3.0;
  c.dx = -0.1;
  CImgComposit gray;
  gray.Create(zeros, nullptr, nullptr);
  Apply(gray, zeros, mono, c);
  CImgComposit color;
  color.Create(colorZeros, nullptr, nullptr);
  Apply(color, colorZeros, mono, c);
  double const b = 2 * 0.1 + 1 * (1 - 0.1);
  EXPECT_EQ(static_cast<float>(3.0 * static_cast<float>(b)), gray.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(static_cast<float>(3.0 * b), color.GetPixelGrayRaw(0, 0, 2));
  EXPECT_NE(gray.GetPixelGrayRaw(0, 0, 0), color.GetPixelGrayRaw(0, 0, 2));
}

TEST(Composite, MonoDestinationSeesColorAsBrightness) {
  COrbImage first = Column({0});
  COrbImage second(-32, 2, 2, 3, 1.0, 0.0, 1, nullptr, nullptr);
  second.SetPixelGrayRaw(0, 0, 100.0f, 0);
  second.SetPixelGrayRaw(0, 0, 200.0f, 1);
  second.SetPixelGrayRaw(0, 0, 50.0f, 2);
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  Apply(dst, first, second, Mode(1, 0));
  EXPECT_EQ(static_cast<float>(0.114 * 50 + 0.587 * 200 + 0.299 * 100), dst.GetPixelGrayRaw(0, 0, 0));
}

TEST(Composite, EveryImageHasItsOwnLevels) {
  COrbImage first = Column({300});
  first.CImage::SetLevel(0, 100.0, 500.0);  // 127.5
  COrbImage second = Column({30});
  second.CImage::SetLevel(0, 10.0, 110.0);  // 51
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  dst.CImage::SetLevel(0, 1000.0, 1510.0);
  Apply(dst, first, second, Mode(1, 1));
  EXPECT_EQ(static_cast<float>(510.0 * (127.5 + 20.0 / 100.0 * 255.0) * 0.00392156862745098 + 1000.0),
            dst.GetPixelGrayRaw(0, 0, 0));
}

TEST(Composite, ShortFormIsTheLongOneWithItsDefaults) {
  Random random(24);
  COrbImage first = RandomImage(random, 12, 9, 3);
  COrbImage second = RandomImage(random, 12, 9, 3);
  OrbTestAccess::SetExtrema(first, 0, -100.0, 400.0);
  OrbTestAccess::SetExtrema(second, 0, -100.0, 400.0);
  RecordingWindow window;
  for (int const mode : {0, 2, 3, 9}) {
    for (int const to256 : {0, 1}) {
      CImgComposit brief;
      brief.Create(first, nullptr, nullptr);
      brief.SetProgressHandle(&window);
      CImgComposit full(brief);
      brief.Do(&first, &second, 0.5, 0.25, 0.0, mode, to256);
      full.Do(&first, &second, 0.5, 0.25, 0.0, mode, 0.5, to256, 0, 0.95, 0, nullptr, 0, -1);
      EXPECT_TRUE(SameBits(full, brief)) << mode;
    }
  }
  EXPECT_TRUE(window.IsSilent());
}

TEST(Composite, InPlaceEqualsCopy) {
  Random random(25);
  COrbImage first = RandomImage(random, 33, 8, 3);
  COrbImage second = RandomImage(random, 33, 8, 3);
  for (int const to256 : {0, 1}) {
    CompositeArguments c = Mode(0, to256);
    c.dx = 0.5;
    EXPECT_TRUE(InPlaceEqualsCopy(first, second, c)) << to256;
  }
}

TEST(Composite, BothSourcesMayBeOneImage) {
  Random random(26);
  COrbImage source = RandomImage(random, 14, 7, 1);
  CompositeArguments c = Mode(6, 0);
  c.dx = 1.5;
  CImgComposit dst;
  dst.Create(source, nullptr, nullptr);
  COrbImage expected(dst);
  reference::Composite(expected, source, source, c, nullptr);
  MakeHostile(source);
  Apply(dst, source, source, c);
  EXPECT_TRUE(SameBits(expected, dst));
  EXPECT_EQ(0, LocksLeft(source));
}

TEST(Composite, ProgressCountsRowsWhateverThePlanes) {
  for (int const planes : {1, 3}) {
    RecordingWindow window;
    COrbImage source(-32, 4, 6, planes, 1.0, 0.0, 1, nullptr, nullptr);
    CImgComposit dst;
    dst.CopyImage(source, nullptr, nullptr);
    dst.SetProgressHandle(&window);
    CRect rect(0, 1, 4, 5);
    Apply(dst, source, source, Mode(0, 0), &rect, 1);
    EXPECT_EQ(std::vector<std::string>{"コンポジット処理中..."}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(4, OrbTestAccess::ProgressOf(dst).total);
    EXPECT_EQ((std::vector<int>{25, 50, 75, 100}), window.positions);
    EXPECT_EQ(4, window.polls);
  }
}

TEST(Composite, ShowsTheMessageItIsGiven) {
  RecordingWindow window;
  COrbImage source(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  CImgComposit dst;
  dst.CopyImage(source, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  Apply(dst, source, source, Mode(0, 0), nullptr, 1, 6124);
  EXPECT_EQ(std::vector<std::string>{"反転処理中..."}, window.starts);
}

TEST(Composite, EmptyRectangleEndsAtOnce) {
  Random random(27);
  COrbImage source = RandomImage(random, 6, 8, 1);
  CRect const rects[] = {CRect(2, 2, 2, 6), CRect(0, 5, 6, 3), CRect(50, 0, 60, 8), CRect(6, 8, 0, 0)};
  int const totals[] = {4, -2, 8, -8};
  for (int i = 0; i < 4; ++i) {
    RecordingWindow window;
    CImgComposit dst;
    dst.CopyImage(source, nullptr, nullptr);
    dst.SetProgressHandle(&window);
    CRect rect = rects[i];
    Apply(dst, source, source, Mode(1, 0), &rect, 1);
    EXPECT_TRUE(SameBits(source, dst));
    EXPECT_EQ(1u, window.starts.size());
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(0, window.polls);
    EXPECT_EQ(totals[i], OrbTestAccess::ProgressOf(dst).total);
  }
}

TEST(Composite, EscapeChangesNothing) {
  Random random(28);
  COrbImage first = RandomImage(random, 9, 9, 3);
  RecordingWindow window;
  window.escapeAtPoll = 2;
  CImgComposit quiet;
  quiet.Create(first, nullptr, nullptr);
  Apply(quiet, first, first, Mode(1, 0));
  CImgComposit pressed;
  pressed.Create(first, nullptr, nullptr);
  pressed.SetProgressHandle(&window);
  Apply(pressed, first, first, Mode(1, 0), nullptr, 1);
  EXPECT_TRUE(SameBits(quiet, pressed));
  EXPECT_EQ(9, window.polls);
}

TEST(Composite, KeepsStandardPointsAndLevels) {
  Random random(29);
  COrbImage first = RandomImage(random, 9, 9, 1);
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  dst.SetStdPt(0, CfPoint(3, 4));
  dst.CImage::SetLevel(0, 5.0, 6.0);
  first.SetStdPt(1, CfPoint(1, 1));
  Apply(dst, first, first, Mode(1, 1));
  EXPECT_EQ(3, dst.GetStdPt(0).x);
  EXPECT_EQ(1, dst.GetStdPtNum());
  EXPECT_EQ(5.0, dst.GetLevelMin(0));
  EXPECT_EQ(6.0, dst.GetLevelMax(0));
}

TEST(Composite, WorksOnAHostileStore) {
  Random random(30);
  for (int const planes : {1, 3}) {
    COrbImage first = RandomImage(random, 12, 7, planes);
    COrbImage second = RandomImage(random, 10, 9, planes);
    second.SetStdCtr(5, 5);
    for (double const angle : {0.0, 10.0}) {
      CompositeArguments c = Mode(0, 1);
      c.dx = 0.5;
      c.angle = angle;
      EXPECT_TRUE(WorksOnHostileStores(first, second, c)) << angle;
    }
  }
}

TEST(Composite, IsAnOperatorThatCopies) {
  Random random(31);
  CImgComposit a;
  a.CopyImage(RandomImage(random, 5, 4, 3), nullptr, nullptr);
  CImgComposit const b(a);
  EXPECT_TRUE(SameBits(a, b));
  CImgComposit c;
  c = b;
  EXPECT_TRUE(SameBits(a, c));
  EXPECT_TRUE(SameLevels(a, c));
}

}  // namespace
}  // namespace orb::test
