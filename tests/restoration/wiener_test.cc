// CImgWiener, and what it does with a CFourierPlane.
#include <climits>
#include <cmath>
#include <limits>
#include <numeric>
#include <thread>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/wiener_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

CImgWiener WienerOf(COrbImage const& image) {
  CImgWiener wiener;
  wiener.CopyImage(image, nullptr, nullptr);
  return wiener;
}

double MeanOf(COrbImage const& image) {
  std::vector<float> const samples = SamplesOf(image);
  return std::accumulate(samples.begin(), samples.end(), 0.0) / static_cast<double>(samples.size());
}

TEST(Wiener, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 5, 16, 17, 33, 40}) {
      for (int height : {1, 2, 3, 7, 12, 32}) {
        CImgWiener image = WienerOf(RandomImage(random, width, height, planes));
        COrbImage expected(image);
        reference::Wiener(expected, 1.3, 0.02);
        EXPECT_EQ(1, image.Do(1.3, 0.02, nullptr, 0));
        EXPECT_TRUE(SameBits(expected, image)) << width << 'x' << height << 'x' << planes;
        EXPECT_TRUE(SameLevels(expected, image));
      }
    }
  }
}

// On the 256-scale, the root mean square of the difference over that of the result.
double RelativeDifference(COrbImage& expected, COrbImage& actual) {
  double difference = 0.0;
  double whole = 0.0;
  for (int p = 0; p < expected.GetPlanes(); ++p) {
    for (int y = 0; y < expected.GetHeight(); ++y) {
      for (int x = 0; x < expected.GetWidth(); ++x) {
        double const e = expected.To256(expected.GetPixelGrayRaw(x, y, p), p);
        double const d = actual.To256(actual.GetPixelGrayRaw(x, y, p), p) - e;
        difference += d * d;
        whole += e * e;
      }
    }
  }
  return std::sqrt(difference / whole);
}

// Large images go through transforms of real planes.
TEST(Wiener, LargeImagesAgreeWithThePlainFormula) {
  Random random(9);
  for (auto [w, h, planes] : {std::tuple(64, 64, 1), std::tuple(33, 40, 3), std::tuple(130, 65, 1),
                              std::tuple(100, 256, 1), std::tuple(40, 200, 3)}) {
    for (double noise : {1.0, 0.02, 1e-4}) {
      for (double radius : {0.8, 2.5}) {
        CImgWiener image = WienerOf(RandomImage(random, w, h, planes));
        COrbImage expected(image);
        reference::Wiener(expected, radius, noise);
        EXPECT_EQ(1, image.Do(radius, noise, nullptr, 0));
        double const difference = RelativeDifference(expected, image);
        EXPECT_LT(difference, 1e-6 * (1.0 + 1.0 / std::sqrt(noise))) << w << 'x' << h << ' ' << noise << ' ' << radius;
        EXPECT_TRUE(SameLevels(expected, image));
      }
    }
  }
}

TEST(Wiener, RectangleIsRestoredByItself) {
  Random random(2);
  CImgWiener image = WienerOf(RandomImage(random, 40, 30, 3));
  COrbImage expected(image);
  COrbImage part(-32, 21, 13, 3, 1.0, 0.0, 1, nullptr, nullptr);
  for (int p = 0; p < 3; ++p) part.CImage::SetLevel(p, image.GetLevelMin(p), image.GetLevelMax(p));
  part.PixelBlt(0, 0, 21, 13, &image, 7, 5, 0);
  reference::Wiener(part, 0.9, 0.1);
  expected.PixelBlt(7, 5, 21, 13, &part, 0, 0, 0);
  CRect rect(7, 5, 28, 18);
  EXPECT_EQ(1, image.Do(0.9, 0.1, &rect, 0));
  EXPECT_TRUE(SameBits(expected, image));
}

// Intended: only sizes are compared.
TEST(Wiener, RectangleOfTheImagesSizeIsTheWholeImage) {
  Random random(3);
  COrbImage const start = RandomImage(random, 20, 10, 1);
  CImgWiener whole = WienerOf(start);
  CImgWiener shifted = WienerOf(start);
  CRect rect(5, -3, 25, 7);
  whole.Do(1.0, 0.1, nullptr, 0);
  EXPECT_EQ(1, shifted.Do(1.0, 0.1, &rect, 0));
  EXPECT_TRUE(SameBits(whole, shifted));
}

TEST(Wiener, StaysInsideTheImageForEveryRectangle) {
  Random random(4);
  COrbImage const start = RandomImage(random, 20, 10, 1);
  for (CRect rect : {CRect(-5, -5, 5, 5), CRect(15, 5, 40, 30), CRect(100, 100, 120, 105), CRect(-50, 2, -40, 6)}) {
    CImgWiener image = WienerOf(start);
    EXPECT_EQ(1, image.Do(1.0, 0.1, &rect, 0));
  }
  for (CRect rect :
       {CRect(5, 5, 5, 8), CRect(9, 8, 2, 1), CRect(INT_MIN, 0, INT_MAX, 5), CRect(0, 0, INT_MAX, INT_MAX)}) {
    CImgWiener image = WienerOf(start);
    RecordingWindow window;
    image.SetProgressHandle(&window);
    EXPECT_EQ(0, image.Do(1.0, 0.1, &rect, 1));
    EXPECT_TRUE(SameBits(start, image));
    EXPECT_TRUE(window.IsSilent());
  }
}

TEST(Wiener, EdgesAreMirroredWithTheLastSampleTwice) {
  COrbImage image(-32, 3, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  std::vector<float> data(2 * 4 * 4, 7e30f);
  LoadPlane(&image, 0, data.data(), 4, 4);
  std::vector<float> expected;
  for (float v : {1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 7, 8, 9, 9}) expected.insert(expected.end(), {v, 0.0f});
  EXPECT_TRUE(SameBits(expected, data));
}

TEST(Wiener, BlurStandsAroundTheOriginUnnormalised) {
  CFourierPlane plane;
  for (auto [w, h] : {std::pair(1, 1), std::pair(2, 4), std::pair(16, 8), std::pair(64, 128)}) {
    for (double s : {0.3, 1.0, 2.5, 40.0}) {
      plane.Create(w, h);
      plane.data.assign(plane.data.size(), 7e30f);
      plane.FillGauss(s);
      EXPECT_TRUE(SameBits(reference::WienerBlur(w, h, s), plane.data)) << w << 'x' << h << ' ' << s;
    }
  }
  EXPECT_EQ(159.15507752443827f, plane.data[0]);
}

TEST(Wiener, PowerRangeStartsWithTheFirstValue) {
  float const nan = std::numeric_limits<float>::quiet_NaN();
  CFourierPlane plane;
  plane.Create(32, 2);
  plane.data.assign(plane.data.size(), 1.0f);
  plane.data[10] = 3.0f;
  plane.data[77] = nan;
  plane.data[126] = plane.data[127] = 0.0f;
  double least = 0.0, most = 0.0;
  plane.GetPowerRange(&least, &most);
  EXPECT_EQ(0.0, least);
  EXPECT_EQ(10.0, most);
  plane.data[0] = nan;
  plane.GetPowerRange(&least, &most);
  EXPECT_TRUE(std::isnan(least) && std::isnan(most));
}

// Intended: the gain of unitary transforms and a blur that is not normalised stays.
TEST(Wiener, GainIsNotCorrected) {
  for (auto [side, gain] : {std::pair(512, 1.024), std::pair(1024, 2.05)}) {
    CImgWiener image;
    image.CopyImage(COrbImage(-32, side, side, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
    image.CImage::SetLevel(0, 50.0, 350.0);
    SetSamples(image, std::vector<float>(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 150.0f));
    CImgWiener noisy = WienerOf(image);
    EXPECT_EQ(1, image.Do(1.0, 0.0, nullptr, 0));
    EXPECT_NEAR(50.0 + 100.0 * gain, MeanOf(image), 0.5);
    EXPECT_EQ(1, noisy.Do(1.0, 0.25, nullptr, 0));
    EXPECT_NEAR(50.0 + 100.0 * gain / 1.25, MeanOf(noisy), 0.5);
  }
}

TEST(Wiener, SharpensABlurredStar) {
  CImgWiener image;
  image.CopyImage(COrbImage(-32, 64, 64, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      image.SetPixelGrayRaw(
          x, y, static_cast<float>(200.0 * std::exp(-((x - 30) * (x - 30) + (y - 33) * (y - 33)) / 4.0)), 0);
    }
  }
  EXPECT_EQ(1, image.Do(2.0, 1e-6, nullptr, 0));
  float const peak = image.GetPixelGrayRaw(30, 33, 0);
  EXPECT_GT(peak, 0.0f);
  // Before: exp(-1/4) = 0.78 of the peak beside it.
  EXPECT_LT(image.GetPixelGrayRaw(31, 33, 0), 0.5f * peak);
  EXPECT_LT(image.GetPixelGrayRaw(34, 33, 0), 0.05f * peak);
}

// Intended: a mono run counts to 115 of 100, and its positions pass 100.
TEST(Wiener, ProgressOfAMonoRunPassesItsEnd) {
  RecordingWindow window;
  CImgWiener image;
  image.CopyImage(COrbImage(-32, 8, 8, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  image.SetProgressHandle(&window);
  image.Do(1.0, 0.1, nullptr, 1);
  EXPECT_EQ(std::vector<std::string>{"ウィーナーフィルタ処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  // The last one is 115 / 100 * 100.0, which is just below 115, truncated.
  EXPECT_EQ((std::vector<int>{5, 15, 25, 30, 55, 80, 105, 114}), window.positions);
  EXPECT_EQ(115, OrbTestAccess::ProgressOf(image).count);
  EXPECT_EQ(8, window.polls);
  EXPECT_TRUE(window.boxes.empty() && window.texts.empty());
}

TEST(Wiener, ProgressOfThreePlanesCountsTo295Of300) {
  RecordingWindow window;
  CImgWiener image;
  image.CopyImage(COrbImage(-32, 8, 8, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  image.SetProgressHandle(&window);
  CRect rect(1, 1, 5, 6);
  image.Do(1.0, 0.1, &rect, 1);
  EXPECT_EQ(300, OrbTestAccess::ProgressOf(image).total);
  EXPECT_EQ(295, OrbTestAccess::ProgressOf(image).count);
  EXPECT_EQ(1u, window.starts.size());
  EXPECT_EQ(18, window.polls);
}

TEST(Wiener, SilentWithoutProgress) {
  RecordingWindow window;
  CImgWiener image;
  image.CopyImage(COrbImage(-32, 8, 8, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.Do(1.0, 0.1, nullptr, 0));
  EXPECT_TRUE(window.IsSilent());
  EXPECT_EQ(300, OrbTestAccess::ProgressOf(image).total);
}

TEST(Wiener, EscapeChangesNothing) {
  Random random(5);
  COrbImage const start = RandomImage(random, 20, 10, 1);
  CImgWiener quiet = WienerOf(start);
  CImgWiener pressed = WienerOf(start);
  RecordingWindow window;
  window.escapeAtPoll = 2;
  pressed.SetProgressHandle(&window);
  quiet.Do(1.0, 0.1, nullptr, 0);
  EXPECT_EQ(1, pressed.Do(1.0, 0.1, nullptr, 1));
  EXPECT_TRUE(SameBits(quiet, pressed));
  EXPECT_EQ(8, window.polls);
}

// Intended: the two columns of a padded plane two wide show the table of two points; no mirror image in the result.
TEST(Wiener, TwoColumnsShowTheTableOfTwoPoints) {
  CImgWiener image;
  image.CopyImage(COrbImage(-32, 2, 1, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  SetSamples(image, {100.0f, 100.0f});
  image.Do(1.0, 0.1, nullptr, 0);
  EXPECT_GT(std::abs(image.GetPixelGrayRaw(0, 0, 0) - image.GetPixelGrayRaw(1, 0, 0)), 1e-3f);
}

TEST(Wiener, TwoThreadsGiveTheBitsOfOneAfterTheOther) {
  Random random(15);
  CImgWiener expected[2] = {WienerOf(RandomImage(random, 100, 70, 1)), WienerOf(RandomImage(random, 40, 30, 3))};
  CImgWiener together[2] = {WienerOf(expected[0]), WienerOf(expected[1])};
  for (CImgWiener& image : expected) image.Do(1.5, 0.01, nullptr, 0);
  std::thread other([&] { together[1].Do(1.5, 0.01, nullptr, 0); });
  together[0].Do(1.5, 0.01, nullptr, 0);
  other.join();
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(SameBits(expected[i], together[i]));
}

TEST(Wiener, WorksOnAHostileStore) {
  Random random(6);
  for (bool useRect : {false, true}) {
    COrbImage const start = RandomImage(random, 12, 7, 3);
    CRect rect(2, 1, 9, 6);
    CImgWiener expected = WienerOf(start);
    CImgWiener image = WienerOf(start);
    MakeHostile(image);
    expected.Do(1.0, 0.1, useRect ? &rect : nullptr, 0);
    image.Do(1.0, 0.1, useRect ? &rect : nullptr, 0);
    EXPECT_TRUE(SameBits(expected, image));
    EXPECT_EQ(0, LocksLeft(image));
  }
}

}  // namespace
}  // namespace orb::test
