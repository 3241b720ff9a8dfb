// CImgRgbCmpst and CImgCmyComposit: colour out of three exposures.
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/channel_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/plain_images.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::Exposure;

COrbImage Constant(float value) { return test::Constant(2, 2, value); }

// The arguments of either composite; `planes` is of the RGB composite only.
struct Call {
  Exposure exposures[3];
  CRect* rect = nullptr;
  int outside = 0;
  int* planes = nullptr;
  int progress = 0;
};

void Apply(CImgRgbCmpst& dst, Call const& c) {
  Exposure const* const e = c.exposures;
  dst.Do(e[0].image, e[0].dx, e[0].dy, e[0].angle, e[1].image, e[1].dx, e[1].dy, e[1].angle, e[2].image, e[2].dx,
         e[2].dy, e[2].angle, c.rect, c.outside, c.planes, c.progress);
}

void Apply(CImgCmyComposit& dst, Call const& c) {
  Exposure const* const e = c.exposures;
  dst.Do(e[0].image, e[0].dx, e[0].dy, e[0].angle, e[1].image, e[1].dx, e[1].dy, e[1].angle, e[2].image, e[2].dx,
         e[2].dy, e[2].angle, c.rect, c.outside, c.progress);
}

void ApplyPlain(CImgRgbCmpst&, COrbImage& expected, Call const& c) {
  reference::RgbComposite(expected, c.exposures[0], c.exposures[1], c.exposures[2], c.rect, c.outside, c.planes);
}

void ApplyPlain(CImgCmyComposit&, COrbImage& expected, Call const& c) {
  reference::CmyComposite(expected, c.exposures[0], c.exposures[1], c.exposures[2], c.rect, c.outside);
}

Call Of(COrbImage& a, COrbImage& b, COrbImage& c) {
  return Call{{{&a, 0, 0, 0}, {&b, 0, 0, 0}, {&c, 0, 0, 0}}, nullptr, 0, nullptr, 0};
}

// What all of this file's rules of both classes are tested on.
template <typename Composite>
class ChannelComposite : public testing::Test {
 protected:
  static void ExpectPlain(int width, int height, Call const& call, std::string const& what) {
    Composite dst;
    dst.CopyImage(Empty(width, height, 3), nullptr, nullptr);
    FillJunk(dst);
    COrbImage expected(dst);
    ApplyPlain(dst, expected, call);
    Apply(dst, call);
    ASSERT_TRUE(SameValues(expected, dst)) << what;
    ASSERT_TRUE(SameLevels(expected, dst)) << what;
  }

  Random random{61};
};

using Composites = testing::Types<CImgRgbCmpst, CImgCmyComposit>;
TYPED_TEST_SUITE(ChannelComposite, Composites);

TYPED_TEST(ChannelComposite, EqualsThePlainFormulaForEveryKindOfSource) {
  std::uniform_real_distribution<double> shift(-5.0, 5.0);
  for (int kinds = 0; kinds < 8; ++kinds) {
    COrbImage a = RandomImage(this->random, 19, 11, (kinds & 1) != 0 ? 3 : 1);
    COrbImage b = RandomImage(this->random, 25, 9, (kinds & 2) != 0 ? 3 : 1);
    COrbImage c = RandomImage(this->random, 17, 14, (kinds & 4) != 0 ? 3 : 1);
    a.SetStdCtr(8.5, 3.0);
    b.SetDefaultCenter();
    for (double const angle : {0.0, 3.0, 130.0}) {
      Call call = Of(a, b, c);
      call.outside = -1234;
      for (Exposure& e : call.exposures) e = {e.image, shift(this->random), shift(this->random), angle};
      call.exposures[kinds % 3].angle = 0.0;
      this->ExpectPlain(23, 12, call, std::to_string(kinds) + " angle " + std::to_string(angle));
    }
  }
}

TYPED_TEST(ChannelComposite, EqualsThePlainFormulaOnEverySizeAndRectangle) {
  for (int const width : {1, 2, 3, 17, 40}) {
    for (int const height : {1, 5, 12}) {
      COrbImage a = RandomImage(this->random, width + 1, height + 1, 1);
      COrbImage b = RandomImage(this->random, width + 2, std::max(height - 1, 2), 3);
      COrbImage c = RandomImage(this->random, std::max(width - 1, 2), height + 2, 1);
      for (RectCase& rect : RectCases(width, height)) {
        Call call = Of(a, b, c);
        call.rect = rect.Pointer();
        call.exposures[1] = {&b, 1.5, -0.25, 0.0};
        call.exposures[2] = {&c, 0.25, 1.0, 15.0};
        this->ExpectPlain(width, height, call, rect.name);
      }
    }
  }
}

TYPED_TEST(ChannelComposite, SpecialSamplesAndNumbers) {
  double const infinity = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  COrbImage a = RandomImage(this->random, 17, 6, 1);
  COrbImage b = RandomImage(this->random, 17, 6, 1);
  COrbImage c = RandomImage(this->random, 17, 6, 3);
  for (COrbImage* each : {&a, &b, &c}) StrewSpecialSamples(*each, this->random);
  for (double const number : {0.0, 0.5, -1e18, infinity, nan}) {
    for (int const outside : {0, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
      Call call = Of(a, b, c);
      call.outside = outside;
      call.exposures[0].dx = number;
      call.exposures[1].dy = number;
      call.exposures[2].angle = number;
      this->ExpectPlain(17, 6, call, std::to_string(number));
    }
  }
}

TYPED_TEST(ChannelComposite, TakesTheLevelsEvenForAnEmptyRectangle) {
  COrbImage a = RandomImage(this->random, 4, 4, 1);
  COrbImage b = RandomImage(this->random, 4, 4, 3);
  COrbImage c = RandomImage(this->random, 4, 4, 3);
  TypeParam dst;
  dst.CopyImage(RandomImage(this->random, 5, 6, 3), nullptr, nullptr);
  COrbImage const before(dst);
  COrbImage expected(dst);
  RecordingWindow window;
  dst.SetProgressHandle(&window);
  CRect rect(3, 5, 3, 1);
  Call call = Of(a, b, c);
  call.rect = &rect;
  call.progress = 1;
  ApplyPlain(dst, expected, call);
  Apply(dst, call);
  EXPECT_TRUE(SameBits(before, dst));
  EXPECT_TRUE(SameLevels(expected, dst));
  EXPECT_FALSE(SameLevels(before, dst));
  EXPECT_EQ(1u, window.starts.size());
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(0, window.polls);
  EXPECT_EQ(-4, OrbTestAccess::ProgressOf(dst).total);
}

TYPED_TEST(ChannelComposite, WorksOnAHostileStore) {
  COrbImage a = RandomImage(this->random, 12, 7, 1);
  COrbImage b = RandomImage(this->random, 11, 9, 3);
  COrbImage c = RandomImage(this->random, 12, 7, 1);
  TypeParam expected;
  expected.CopyImage(RandomImage(this->random, 13, 8, 3), nullptr, nullptr);
  TypeParam dst(expected);
  Call call = Of(a, b, c);
  call.exposures[0].dx = 0.5;
  call.exposures[1].angle = 10.0;
  Apply(expected, call);
  for (COrbImage* each : {static_cast<COrbImage*>(&dst), &a, &b, &c}) MakeHostile(*each);
  Apply(dst, call);
  EXPECT_TRUE(SameBits(expected, dst));
  for (COrbImage* each : {static_cast<COrbImage*>(&dst), &a, &b, &c}) EXPECT_EQ(0, LocksLeft(*each));
}

TYPED_TEST(ChannelComposite, OneImageMayBeAllSources) {
  COrbImage source = RandomImage(this->random, 12, 7, 3);
  Call call = Of(source, source, source);
  call.exposures[2].dx = 1.5;
  this->ExpectPlain(12, 7, call, "one source");
}

TYPED_TEST(ChannelComposite, IsAnOperatorThatCopiesAndKeepsItsPoints) {
  TypeParam a;
  a.CopyImage(RandomImage(this->random, 5, 4, 3), nullptr, nullptr);
  a.SetStdPt(0, CfPoint(3, 2));
  TypeParam const b(a);
  TypeParam c;
  c = b;
  EXPECT_TRUE(SameBits(a, b));
  EXPECT_TRUE(SameBits(a, c));
  EXPECT_TRUE(SameLevels(a, c));
  COrbImage source = RandomImage(this->random, 5, 4, 1);
  source.SetStdPt(1, CfPoint(1, 1));
  Apply(c, Of(source, source, source));
  EXPECT_EQ(1, c.GetStdPtNum());
  EXPECT_EQ(3, c.GetStdPt(0).x);
}

template <typename Composite>
void ExpectReport(std::string const& text) {
  RecordingWindow window;
  COrbImage source = Empty(4, 6, 1);
  Composite dst;
  dst.CopyImage(Empty(4, 6, 3), nullptr, nullptr);
  dst.SetProgressHandle(&window);
  CRect rect(0, 1, 4, 5);
  Call call = Of(source, source, source);
  call.rect = &rect;
  Apply(dst, call);
  EXPECT_TRUE(window.IsSilent());
  call.progress = 1;
  Apply(dst, call);
  EXPECT_EQ(std::vector<std::string>{text}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(4, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ((std::vector<int>{25, 50, 75, 100}), window.positions);
  EXPECT_EQ(4, window.polls);
}

TEST(RgbComposite, ProgressCountsRows) { ExpectReport<CImgRgbCmpst>("RGB合成処理中..."); }
TEST(CmyComposite, ProgressCountsRows) { ExpectReport<CImgCmyComposit>("CMY合成処理中..."); }

TEST(RgbComposite, CopiesMonoSourcesAndTheirLevels) {
  Random random(62);
  COrbImage const plane[3] = {RandomImage(random, 9, 5, 1), RandomImage(random, 9, 5, 1), RandomImage(random, 9, 5, 1)};
  COrbImage sources[3] = {plane[0], plane[1], plane[2]};
  CImgRgbCmpst dst;
  dst.CopyImage(Empty(9, 5, 3), nullptr, nullptr);
  Apply(dst, Of(sources[0], sources[1], sources[2]));
  std::vector<float> expected;
  for (int p = 0; p < 3; ++p) {
    for (float v : SamplesOf(plane[p])) expected.push_back(v);
    EXPECT_EQ(plane[p].GetLevelMin(0), dst.GetLevelMin(p));
    EXPECT_EQ(plane[p].GetLevelMax(0), dst.GetLevelMax(p));
  }
  EXPECT_TRUE(SameBits(expected, SamplesOf(dst)));
}

TEST(RgbComposite, ColorSourcesGiveTheirOwnPlane) {
  COrbImage color = Empty(2, 2, 3);
  SetSamples(color, {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3});
  for (int p = 0; p < 3; ++p) color.CImage::SetLevel(p, p, 10.0 * (p + 1));
  CImgRgbCmpst dst;
  dst.CopyImage(Empty(2, 2, 3), nullptr, nullptr);
  Apply(dst, Of(color, color, color));
  EXPECT_TRUE(SameBits(color, dst));
  EXPECT_TRUE(SameLevels(color, dst));
}

TEST(RgbComposite, OffASourceIsTheOutsideValue) {
  COrbImage source = Constant(5);
  CImgRgbCmpst dst;
  dst.CopyImage(Empty(3, 1, 3), nullptr, nullptr);
  Call call = Of(source, source, source);
  call.outside = -7;
  call.exposures[1].dx = 1.0;
  call.exposures[2].dy = 1.0;
  Apply(dst, call);
  EXPECT_EQ((std::vector<float>{5, 5, -7, -7, 5, 5, -7, -7, -7}), SamplesOf(dst));
}

// Intended: the first flag alone decides between all planes and those that are flagged.
TEST(RgbComposite, FlagsOfThePlanes) {
  COrbImage source = Constant(5);
  struct Case {
    int flags[3];
    std::vector<float> planes;
  };
  for (Case c : {Case{{0, 1, 0}, {-1, 5, -1}}, Case{{0, 0, 1}, {-1, -1, 5}}, Case{{0, 1, 1}, {-1, 5, 5}},
                 Case{{0, 0, 0}, {-1, -1, -1}}, Case{{1, 0, 0}, {5, 5, 5}}, Case{{-1, 0, 1}, {5, 5, 5}}}) {
    CImgRgbCmpst dst;
    dst.CopyImage(Empty(1, 1, 3), nullptr, nullptr);
    SetSamples(dst, {-1, -1, -1});
    RecordingWindow window;
    dst.SetProgressHandle(&window);
    Call call = Of(source, source, source);
    source.CImage::SetLevel(0, 3.0, 4.0);
    call.planes = c.flags;
    call.progress = 1;
    Apply(dst, call);
    EXPECT_EQ(c.planes, SamplesOf(dst)) << c.flags[0] << c.flags[1] << c.flags[2];
    for (int p = 0; p < 3; ++p) EXPECT_EQ(3.0, dst.GetLevelMin(p));
    EXPECT_EQ(1, window.polls);
    EXPECT_EQ(1u, window.ends.size());
  }
}

TEST(RgbComposite, FlaggedPlanesEqualThePlainFormula) {
  Random random(63);
  COrbImage a = RandomImage(random, 17, 9, 1);
  COrbImage b = RandomImage(random, 17, 9, 1);
  COrbImage c = RandomImage(random, 17, 9, 3);
  for (int bits = 0; bits < 8; ++bits) {
    int flags[3] = {bits & 1, bits & 2, bits & 4};
    for (RectCase& rect : RectCases(18, 8)) {
      CImgRgbCmpst dst;
      dst.CopyImage(Empty(18, 8, 3), nullptr, nullptr);
      FillJunk(dst);
      COrbImage expected(dst);
      Call call = Of(a, b, c);
      call.planes = flags;
      call.rect = rect.Pointer();
      call.exposures[1].dx = 0.75;
      call.exposures[2].angle = -12.0;
      ApplyPlain(dst, expected, call);
      MakeHostile(dst);
      Apply(dst, call);
      ASSERT_TRUE(SameBits(expected, dst)) << bits << ' ' << rect.name;
      EXPECT_EQ(0, LocksLeft(dst));
    }
  }
}

// Intended: some planes alone are released all at once, and with them whatever else is locked.
TEST(RgbComposite, OnlyTheFlaggedPathReleasesEveryLock) {
  COrbImage source = Constant(5);
  for (int const first : {0, 1}) {
    int flags[3] = {first, 1, 0};
    CImgRgbCmpst dst;
    dst.CopyImage(Empty(2, 2, 3), nullptr, nullptr);
    void* token = nullptr;
    dst.GetImageAdr(0, 0, 0, 2, &token);
    Call call = Of(source, source, source);
    call.planes = flags;
    Apply(dst, call);
    EXPECT_EQ(first, LocksLeft(dst));
    dst.UnlockAll();
  }
}

// The samples of one pixel of c, m, y.
std::vector<float> Primaries(float cyan, float magenta, float yellow) {
  COrbImage c = Constant(cyan);
  COrbImage m = Constant(magenta);
  COrbImage y = Constant(yellow);
  CImgCmyComposit dst;
  dst.CopyImage(Empty(1, 1, 3), nullptr, nullptr);
  Apply(dst, Of(c, m, y));
  return SamplesOf(dst);
}

// Intended: not halved, so that light of one colour comes out doubled.
TEST(CmyComposite, SumsAreNotHalved) {
  EXPECT_EQ((std::vector<float>{40, 20, 10}), Primaries(15, 25, 30));
  EXPECT_EQ((std::vector<float>{8.5f, 8.5f, 8.5f}), Primaries(8.5f, 8.5f, 8.5f));
  EXPECT_EQ((std::vector<float>{200, 0, 0}), Primaries(0, 100, 100));
}

// In floats the small one would be lost.
TEST(CmyComposite, AddsInDouble) { EXPECT_EQ((std::vector<float>{1.0f, 2e9f, 1.0f}), Primaries(1e9f, 1.0f, 1e9f)); }

TEST(CmyComposite, LevelsAreMeansOfTwo) {
  COrbImage sources[3] = {Constant(1), Constant(2), Constant(3)};
  sources[0].CImage::SetLevel(0, 10.0, 100.0);
  sources[1].CImage::SetLevel(0, 20.0, 300.0);
  sources[2].CImage::SetLevel(0, 60.0, 700.0);
  CImgCmyComposit dst;
  dst.CopyImage(Empty(1, 1, 3), nullptr, nullptr);
  Apply(dst, Of(sources[0], sources[1], sources[2]));
  double const expected[3][2] = {{40.0, 500.0}, {35.0, 400.0}, {15.0, 200.0}};
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(expected[p][0], dst.GetLevelMin(p));
    EXPECT_EQ(expected[p][1], dst.GetLevelMax(p));
  }
}

// Intended: of colour sources cyan is plane 2, magenta plane 0, yellow plane 1; samples and levels alike.
TEST(CmyComposite, ColorSourcesGiveTheirComplementaryOrder) {
  COrbImage color = Empty(2, 2, 3);
  SetSamples(color, {1, 1, 1, 1, 20, 20, 20, 20, 300, 300, 300, 300});
  for (int p = 0; p < 3; ++p) color.CImage::SetLevel(p, p, 10.0 * (p + 1));
  CImgCmyComposit dst;
  dst.CopyImage(Empty(1, 1, 3), nullptr, nullptr);
  Apply(dst, Of(color, color, color));
  EXPECT_EQ((std::vector<float>{1 + 20 - 300, 300 + 20 - 1, 300 + 1 - 20}), SamplesOf(dst));
  double const expected[3][2] = {{0.5, 15.0}, {1.5, 25.0}, {1.0, 20.0}};
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(expected[p][0], dst.GetLevelMin(p));
    EXPECT_EQ(expected[p][1], dst.GetLevelMax(p));
  }
}

TEST(CmyComposite, TheOutsideValueTakesPartInTheSums) {
  COrbImage c = Constant(10);
  COrbImage m = Constant(20);
  COrbImage y = Constant(30);
  CImgCmyComposit dst;
  dst.CopyImage(Empty(1, 1, 3), nullptr, nullptr);
  Call call = Of(c, m, y);
  call.outside = 100;
  call.exposures[1].dx = 5.0;
  Apply(dst, call);
  EXPECT_EQ((std::vector<float>{100 + 30 - 10, 10 + 30 - 100, 10 + 100 - 30}), SamplesOf(dst));
}

}  // namespace
}  // namespace orb::test
