// CImgLabColorEnhance: the formula, gains by sign, and what departs from the common contract.
#include <limits>
#include <memory>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/lab_color_enhance_reference.h>
#include <tests/support/float_units.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using reference::LabGains;

// L from about -5 to 130, a and b of both signs, some exactly 0.
COrbImage RandomLab(Random& random, int width, int height) {
  COrbImage lab(-32, width, height, 3, 1.0, 0.0, 1, nullptr, nullptr);
  std::uniform_real_distribution<float> l(-5.0f, 130.0f);
  std::uniform_real_distribution<float> chroma(-60.0f, 60.0f);
  std::uniform_int_distribution<int> kind(0, 9);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      lab.SetPixelGrayRaw(x, y, kind(random) == 0 ? 8.0f : l(random), 0);
      lab.SetPixelGrayRaw(x, y, kind(random) == 0 ? 0.0f : chroma(random), 1);
      lab.SetPixelGrayRaw(x, y, kind(random) == 0 ? -0.0f : chroma(random), 2);
    }
  }
  SetRandomLevels(lab, random);
  return lab;
}

CImgLabColorEnhance JunkLike(COrbImage const& lab, Random& random) {
  CImgLabColorEnhance dst;
  dst.Create(lab, nullptr, nullptr);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  return dst;
}

TEST(LabColorEnhance, EqualsThePlainFormulaEverywhere) {
  Random random(61);
  LabGains const gains[] = {{1, 1, 1, 1}, {1.5, 0.5, 2.0, 0.25}, {0, 0, 0, 0}, {-1, 3, 1e3, -2}};
  for (int width : {1, 2, 7, 40, 128, 131}) {
    for (int height : {1, 3, 30}) {
      COrbImage lab = RandomLab(random, width, height);
      for (RectCase& c : RectCases(width, height)) {
        LabGains const& g = gains[random() % 4];
        CImgLabColorEnhance dst = JunkLike(lab, random);
        COrbImage expected(dst);
        reference::LabColorEnhance(expected, lab, g, c.Pointer());
        dst.Do(&lab, g.aPlus, g.aMinus, g.bPlus, g.bMinus, c.Pointer(), 0);
        EXPECT_TRUE(SameWithinOneUnitOfLevels(expected, dst)) << c.name << ' ' << width << 'x' << height;
        EXPECT_TRUE(SameLevels(expected, dst));
      }
    }
  }
}

TEST(LabColorEnhance, EqualsThePlainFormulaForSamplesOfEveryKind) {
  Random random(62);
  for (LabGains const& g : {LabGains{1, 1, 1, 1}, LabGains{1.5, 0.5, -2.0, 0.0},
                            LabGains{std::numeric_limits<double>::infinity(), 1, 1, std::nan("")}}) {
    COrbImage lab = RandomLab(random, 140, 9);
    StrewSpecialSamples(lab, random, 4);
    CImgLabColorEnhance dst = JunkLike(lab, random);
    COrbImage expected(dst);
    reference::LabColorEnhance(expected, lab, g, nullptr);
    dst.Do(&lab, g.aPlus, g.aMinus, g.bPlus, g.bMinus, nullptr, 0);
    EXPECT_TRUE(SameWithinOneUnitOfLevels(expected, dst));
  }
}

TEST(LabColorEnhance, TwoGainsServeBothSigns) {
  Random random(63);
  COrbImage lab = RandomLab(random, 21, 5);
  CImgLabColorEnhance two = JunkLike(lab, random);
  CImgLabColorEnhance four(two);
  two.Do(&lab, 1.7, 0.4, nullptr, 0);
  four.Do(&lab, 1.7, 1.7, 0.4, 0.4, nullptr, 0);
  EXPECT_TRUE(SameBits(four, two));
}

TEST(LabColorEnhance, EachGainActsOnItsSignAlone) {
  COrbImage lab(-32, 4, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(lab, {50, 50, 50, 50, 20, -20, 5, 5, 5, 5, 20, -20});
  CImgLabColorEnhance plain;
  plain.CopyImage(lab, nullptr, nullptr);
  plain.Do(&lab, 1.0, 1.0, nullptr, 0);
  for (int n = 0; n < 4; ++n) {
    double g[4] = {1.0, 1.0, 1.0, 1.0};
    g[n] = 0.5;
    CImgLabColorEnhance dst;
    dst.CopyImage(lab, nullptr, nullptr);
    dst.Do(&lab, g[0], g[1], g[2], g[3], nullptr, 0);
    float const a[4] = {20, -20, 5, 5};
    float const b[4] = {5, 5, 20, -20};
    for (int x = 0; x < 4; ++x) {
      bool const isMeant = (n == 0 && a[x] > 0) || (n == 1 && a[x] < 0) || (n == 2 && b[x] > 0) || (n == 3 && b[x] < 0);
      EXPECT_EQ(isMeant, plain.GetPixelGrayRaw(x, 0, 0) != dst.GetPixelGrayRaw(x, 0, 0)) << n << ' ' << x;
    }
  }
}

TEST(LabColorEnhance, GainsOf1GiveTheRgbOfTheLabPlanesBack) {
  Random random(64);
  COrbImage rgb(-32, 40, 30, 3, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(rgb, random, 110.0, 390.0);
  for (int p = 0; p < 3; ++p) rgb.CImage::SetLevel(p, 100.0, 400.0);
  std::unique_ptr<COrbImage> const lab(rgb.MakeLabPlane());
  CImgLabColorEnhance dst;
  dst.CopyImage(rgb, nullptr, nullptr);
  FillJunk(dst);
  dst.Do(lab.get(), 1.0, 1.0, nullptr, 0);
  std::vector<float> const before = SamplesOf(rgb);
  std::vector<float> const after = SamplesOf(dst);
  for (std::size_t i = 0; i < before.size(); ++i) ASSERT_NEAR(before[i], after[i], 0.01) << i;
}

TEST(LabColorEnhance, GainsOf0GiveGray) {
  Random random(65);
  COrbImage lab = RandomLab(random, 30, 20);
  CImgLabColorEnhance dst;
  dst.Create(lab, nullptr, nullptr);
  dst.Do(&lab, 0.0, 0.0, nullptr, 0);
  for (int y = 0; y < 20; ++y) {
    for (int x = 0; x < 30; ++x) {
      if (lab.GetPixelGrayRaw(x, y, 0) < 1.0f) continue;
      EXPECT_FLOAT_EQ(dst.GetPixelGrayRaw(x, y, 0), dst.GetPixelGrayRaw(x, y, 1));
      EXPECT_FLOAT_EQ(dst.GetPixelGrayRaw(x, y, 0), dst.GetPixelGrayRaw(x, y, 2));
    }
  }
}

TEST(LabColorEnhance, StoresByTheLevelsOfEachPlane) {
  COrbImage lab(-32, 1, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  lab.SetPixelGrayRaw(0, 0, 100.0f, 0);
  CImgLabColorEnhance dst;
  dst.CopyImage(lab, nullptr, nullptr);
  for (int p = 0; p < 3; ++p) dst.CImage::SetLevel(p, 10.0 * p, 1000.0 + 100.0 * p);
  dst.Do(&lab, 1.0, 1.0, nullptr, 0);
  for (int p = 0; p < 3; ++p) EXPECT_FLOAT_EQ(1000.0f + 100.0f * static_cast<float>(p), dst.GetPixelGrayRaw(0, 0, p));
}

TEST(LabColorEnhance, InPlaceEqualsCopy) {
  Random random(66);
  COrbImage lab = RandomLab(random, 150, 11);
  CImgLabColorEnhance copy;
  copy.CopyImage(lab, nullptr, nullptr);
  CImgLabColorEnhance inPlace(copy);
  copy.Do(&lab, 1.5, 0.5, nullptr, 0);
  inPlace.Do(&inPlace, 1.5, 0.5, nullptr, 0);
  EXPECT_TRUE(SameBits(copy, inPlace));
}

TEST(LabColorEnhance, ProgressAnnouncesTheImagesHeightWhateverTheRectangle) {
  Random random(67);
  COrbImage lab = RandomLab(random, 4, 50);
  CRect rect(0, 10, 4, 40);
  RecordingWindow window;
  window.escapeAtPoll = 3;
  CImgLabColorEnhance dst;
  dst.CopyImage(lab, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  dst.Do(&lab, 1.0, 1.0, &rect, 1);
  EXPECT_EQ(std::vector<std::string>{"Lab色彩調整処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(50, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(30, window.polls);
  EXPECT_EQ(60, window.positions.back());
}

TEST(LabColorEnhance, SilentWithoutProgress) {
  Random random(68);
  COrbImage lab = RandomLab(random, 4, 6);
  RecordingWindow window;
  CImgLabColorEnhance dst;
  dst.CopyImage(lab, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  lab.SetProgressHandle(&window);
  dst.Do(&lab, 1.0, 1.0, nullptr, 0);
  EXPECT_TRUE(window.IsSilent());
}

TEST(LabColorEnhance, WorksOnAHostileStore) {
  Random random(69);
  COrbImage lab = RandomLab(random, 150, 7);
  CImgLabColorEnhance expected = JunkLike(lab, random);
  CImgLabColorEnhance dst(expected);
  expected.Do(&lab, 1.5, 1.2, nullptr, 0);
  MakeHostile(dst);
  MakeHostile(lab);
  dst.Do(&lab, 1.5, 1.2, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, dst));
  EXPECT_EQ(0, LocksLeft(dst));
  EXPECT_EQ(0, LocksLeft(lab));
}

}  // namespace
}  // namespace orb::test
