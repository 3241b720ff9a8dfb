// CImgSeparation and CImgSepatation: one channel out of three planes.
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

constexpr bool IsSum(CImgSeparation const&) { return false; }
constexpr bool IsSum(CImgSepatation const&) { return true; }

template <typename Operator>
class SeparationOf : public testing::Test {
 protected:
  // A pixel of 10, 20, 40, with levels 0 to 100, 0 to 200, 0 to 300 of its planes.
  SeparationOf() : pixel(Empty(1, 1, 3)) {
    SetSamples(pixel, {10, 20, 40});
    for (int p = 0; p < 3; ++p) pixel.CImage::SetLevel(p, 0.0, 100.0 * (p + 1));
  }

  // Leaves everything as it is, and says whether the run was started.
  static void ExpectRefused(COrbImage const& destination, COrbImage& source, RecordingWindow& window) {
    Operator dst;
    dst.CopyImage(destination, nullptr, nullptr);
    dst.SetProgressHandle(&window);
    dst.Do(&source, 1, 1);
    EXPECT_TRUE(SameBits(destination, dst));
    EXPECT_TRUE(SameLevels(destination, dst));
    EXPECT_EQ(0, window.polls);
    EXPECT_TRUE(window.ends.empty());
    EXPECT_EQ(window.starts.empty() ? 0 : 1, OrbTestAccess::ProgressOf(dst).on);
  }

  static Operator Separated(COrbImage& source, int channel) {
    Operator dst;
    dst.CopyImage(Empty(source.GetWidth(), source.GetHeight(), 1), nullptr, nullptr);
    dst.CImage::SetLevel(0, -3.0, -2.0);
    dst.Do(&source, channel, 0);
    return dst;
  }

  Random random{71};
  COrbImage pixel;
};

using Operators = testing::Types<CImgSeparation, CImgSepatation>;
TYPED_TEST_SUITE(SeparationOf, Operators);

TYPED_TEST(SeparationOf, EqualsThePlainFormulaInEveryChannelAndSize) {
  for (int channel = -1; channel <= 7; ++channel) {
    for (int const width : {1, 2, 7, 16, 33, 40}) {
      for (int const height : {1, 5}) {
        COrbImage source = RandomImage(this->random, width, height, 3);
        if (height > 1) StrewSpecialSamples(source, this->random);
        TypeParam dst;
        dst.CopyImage(RandomImage(this->random, width, height, 1), nullptr, nullptr);
        FillJunk(dst);
        COrbImage expected(dst);
        reference::Separation(expected, source, channel, IsSum(dst));
        dst.Do(&source, channel, 0);
        ASSERT_TRUE(SameValues(expected, dst)) << channel << ' ' << width << 'x' << height;
        ASSERT_TRUE(SameLevels(expected, dst)) << channel;
      }
    }
  }
}

TYPED_TEST(SeparationOf, PrimariesAreCopiedWithTheirLevels) {
  for (int channel = 0; channel < 3; ++channel) {
    TypeParam const dst = this->Separated(this->pixel, channel);
    EXPECT_EQ(SamplesOf(this->pixel)[static_cast<std::size_t>(channel)], SamplesOf(dst)[0]);
    EXPECT_EQ(0.0, dst.GetLevelMin(0));
    EXPECT_EQ(100.0 * (channel + 1), dst.GetLevelMax(0));
  }
}

TYPED_TEST(SeparationOf, OtherChannelsRunAndChangeNothing) {
  COrbImage source = RandomImage(this->random, 5, 4, 3);
  for (int const channel : {-1, 6, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    RecordingWindow window;
    TypeParam dst;
    dst.CopyImage(RandomImage(this->random, 5, 4, 1), nullptr, nullptr);
    COrbImage const before(dst);
    dst.SetProgressHandle(&window);
    dst.Do(&source, channel, 1);
    EXPECT_TRUE(SameBits(before, dst));
    EXPECT_TRUE(SameLevels(before, dst));
    EXPECT_EQ(1u, window.starts.size());
    EXPECT_EQ(4, window.polls);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  }
}

TYPED_TEST(SeparationOf, UnfitImagesChangeNothing) {
  COrbImage const mono = RandomImage(this->random, 5, 4, 1);
  COrbImage const color = RandomImage(this->random, 5, 4, 3);
  struct Case {
    COrbImage destination;
    COrbImage source;
  };
  Case cases[] = {{mono, RandomImage(this->random, 5, 4, 2)},
                  {mono, mono},
                  {color, color},
                  {RandomImage(this->random, 5, 4, 2), color},
                  {mono, RandomImage(this->random, 6, 4, 3)},
                  {mono, RandomImage(this->random, 5, 3, 3)}};
  for (Case& c : cases) {
    RecordingWindow window;
    this->ExpectRefused(c.destination, c.source, window);
    // Intended: the one has started its run already, and leaves it open.
    EXPECT_EQ(IsSum(TypeParam()) ? 0u : 1u, window.starts.size());
  }
}

TYPED_TEST(SeparationOf, SilentWithoutProgress) {
  RecordingWindow window;
  COrbImage color = RandomImage(this->random, 5, 4, 3);
  COrbImage mono = RandomImage(this->random, 5, 4, 1);
  for (COrbImage* source : {&color, &mono}) {
    TypeParam dst;
    dst.CopyImage(mono, nullptr, nullptr);
    dst.SetProgressHandle(&window);
    dst.Do(source, 3, 0);
    EXPECT_TRUE(window.IsSilent());
    EXPECT_EQ(0, OrbTestAccess::ProgressOf(dst).on);
  }
}

TYPED_TEST(SeparationOf, ProgressCountsTheRowsOfTheImage) {
  RecordingWindow window;
  COrbImage source = RandomImage(this->random, 5, 4, 3);
  TypeParam dst;
  dst.CopyImage(Empty(5, 4, 1), nullptr, nullptr);
  dst.SetProgressHandle(&window);
  dst.Do(&source, 2, 1);
  EXPECT_EQ(std::vector<std::string>{"RGB３色分解中"}, window.starts);
  EXPECT_EQ(4, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ((std::vector<int>{25, 50, 75, 100}), window.positions);
  EXPECT_EQ(4, window.polls);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
}

// Intended: only the class that adds has a text of its own for complements, and for channels that do not exist.
TYPED_TEST(SeparationOf, MessageOfAChannel) {
  COrbImage source = RandomImage(this->random, 2, 2, 3);
  for (int channel = -1; channel <= 6; ++channel) {
    RecordingWindow window;
    TypeParam dst;
    dst.CopyImage(Empty(2, 2, 1), nullptr, nullptr);
    dst.SetProgressHandle(&window);
    dst.Do(&source, channel, 1);
    bool const isOwn = IsSum(dst) && (channel < 0 || channel > 2);
    EXPECT_EQ(std::vector<std::string>{isOwn ? "CMY３色分解中" : "RGB３色分解中"}, window.starts) << channel;
  }
}

TYPED_TEST(SeparationOf, WorksOnAHostileStore) {
  COrbImage source = RandomImage(this->random, 12, 7, 3);
  TypeParam const expected = this->Separated(source, 4);
  TypeParam dst;
  dst.CopyImage(Empty(12, 7, 1), nullptr, nullptr);
  MakeHostile(dst);
  MakeHostile(source);
  dst.Do(&source, 4, 0);
  EXPECT_TRUE(SameBits(expected, dst));
  EXPECT_EQ(0, LocksLeft(dst));
  EXPECT_EQ(0, LocksLeft(source));
}

TYPED_TEST(SeparationOf, IsAnOperatorThatCopiesAndKeepsItsPoints) {
  TypeParam a;
  a.CopyImage(RandomImage(this->random, 5, 4, 1), nullptr, nullptr);
  a.SetStdPt(0, CfPoint(3, 2));
  TypeParam const b(a);
  TypeParam c;
  c = b;
  EXPECT_TRUE(SameBits(a, b));
  EXPECT_TRUE(SameBits(a, c));
  COrbImage source = RandomImage(this->random, 5, 4, 3);
  source.SetStdPt(1, CfPoint(1, 1));
  c.Do(&source, 0, 0);
  EXPECT_EQ(1, c.GetStdPtNum());
  EXPECT_EQ(3, c.GetStdPt(0).x);
}

struct Outcome {
  float sample;
  double levelMax;
};

template <typename Operator>
void ExpectComplements(COrbImage& pixel, std::vector<Outcome> const& expected) {
  for (int channel = 3; channel < 6; ++channel) {
    Operator dst;
    dst.CopyImage(Empty(1, 1, 1), nullptr, nullptr);
    dst.Do(&pixel, channel, 0);
    Outcome const& e = expected[static_cast<std::size_t>(channel - 3)];
    EXPECT_EQ(e.sample, SamplesOf(dst)[0]) << channel;
    EXPECT_EQ(0.0, dst.GetLevelMin(0));
    EXPECT_EQ(e.levelMax, dst.GetLevelMax(0)) << channel;
  }
}

// Intended: yellow, made of green and red, has the levels of magenta, made of blue and red.
using Separation = SeparationOf<CImgSeparation>;
TEST_F(Separation, ComplementsAreMeans) {
  ExpectComplements<CImgSeparation>(pixel, {{30.0f, 250.0}, {25.0f, 200.0}, {15.0f, 200.0}});
}

using Sepatation = SeparationOf<CImgSepatation>;
TEST_F(Sepatation, ComplementsAreSums) {
  ExpectComplements<CImgSepatation>(pixel, {{60.0f, 500.0}, {50.0f, 400.0}, {30.0f, 400.0}});
}

TEST_F(Separation, ANewRunOverridesOneThatIsOpen) {
  RecordingWindow window;
  COrbImage unfit = Empty(2, 2, 3);
  CImgSeparation dst;
  dst.CopyImage(Empty(1, 1, 1), nullptr, nullptr);
  dst.SetProgressHandle(&window);
  dst.Do(&unfit, 0, 1);
  dst.Do(&pixel, 0, 0);
  EXPECT_EQ(1u, window.starts.size());
  EXPECT_TRUE(window.ends.empty());
  EXPECT_EQ(0, window.polls);
}

}  // namespace
}  // namespace orb::test
