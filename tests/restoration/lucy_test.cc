// CImgLucy: the whole, against the plain iteration, and what its runs report.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <orbimg/restoration/lucy_iteration_internal.h>
#include <tests/reference/lucy_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

CImgLucy LucyOf(COrbImage const& image) {
  CImgLucy lucy;
  lucy.CopyImage(image, nullptr, nullptr);
  return lucy;
}

// A sky of 100 with stars, blurred by a gaussian of sigma 1.5, with some noise, and pixels far below 0.
COrbImage StarField(Random& random, int width, int height, int planes) {
  COrbImage image = RandomImage(random, width, height, planes);
  std::normal_distribution<double> noise(0.0, 3.0);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double v = 100.0 + noise(random);
        for (int n = 1; n <= 3; ++n) {
          double const dx = x - width * n / 4.0;
          double const dy = y - height * (4 - n) / 5.0;
          v += 900.0 * n * std::exp(-(dx * dx + dy * dy) / (2.0 * 1.5 * 1.5));
        }
        image.SetPixelGrayRaw(x, y, (x * 7 + y * 13) % 97 == 5 ? -500.0f : static_cast<float>(v), p);
      }
    }
  }
  return image;
}

TEST(Lucy, EqualsThePlainIteration) {
  Random random(1);
  for (auto [w, h] : {std::pair(1, 1), std::pair(10, 10), std::pair(37, 5), std::pair(64, 64), std::pair(70, 66),
                      std::pair(30, 81)}) {
    for (int iterations : {0, 1, 2, 5}) {
      CImgLucy image = LucyOf(StarField(random, w, h, w == 10 ? 3 : 1));
      COrbImage expected(image);
      reference::Lucy(expected, 1.5, 2.0, 8.0, iterations);
      EXPECT_EQ(1, image.Do(1.5, 2.0, 8.0, iterations, nullptr, 0));
      EXPECT_TRUE(SameBits(expected, image)) << w << 'x' << h << ' ' << iterations;
      EXPECT_TRUE(SameLevels(expected, image));
    }
  }
}

TEST(Lucy, EqualsThePlainIterationForWideBlursAndDarkFields) {
  Random random(2);
  for (double sigma : {0.5, 3.0, 12.0}) {
    CImgLucy image = LucyOf(RandomImage(random, 66, 70, 1));
    COrbImage expected(image);
    reference::Lucy(expected, sigma, 1.0, 20.0, 8);
    EXPECT_EQ(1, image.Do(sigma, 1.0, 20.0, 8, nullptr, 0));
    EXPECT_TRUE(SameBits(expected, image)) << sigma;
  }
}

// Every level of acceleration, and the counts of iterations.
TEST(Lucy, EveryAccelerationEqualsThePlainIteration) {
  Random random(3);
  COrbImage const image = StarField(random, 65, 64, 1);
  std::vector<float> const psf = reference::LucyGauss(1.5, 64, 64);
  for (int acceleration : {kLucyPlain, kLucyLineSearch, kLucyTurbo}) {
    std::vector<float> expected = SamplesOf(image);
    std::vector<double> const chi = reference::LucyPlane(expected, 65, 64, psf, 64, 64, 6, 1.0, 4.0, acceleration);
    // The state as the preparation of a plane without padding leaves it.
    LucyState s;
    s.nx = s.dataWidth = 65;
    s.ny = s.dataHeight = 64;
    std::vector<float> const data = SamplesOf(image);
    s.weight.assign(data.size(), 1.0f);
    double sum = 0.0, n = 0.0;
    for (std::size_t i = 0; i < data.size(); ++i) {
      if (data[i] < -20.0f) s.weight[i] = 0.0f;
      if (s.weight[i] == 0.0f) continue;
      sum += data[i];
      n += 1.0;
    }
    s.norm.assign(data.size(), 0.0f);
    for (std::size_t y = 0; y < 64; ++y) std::copy_n(&psf[64 * y], 64, &s.norm[65 * y]);
    s.estimate.assign(data.size(), static_cast<float>(sum / n));
    s.background.assign(1, 0.0f);
    double chiSq = 0.0;
    EXPECT_EQ(kLucyDone, LucyIterate(&s, 1.0, 4.0, 6, 1.0, data.data(), 1, 0, &chiSq, 1, acceleration, 0, nullptr, 0));
    EXPECT_TRUE(SameBits(expected, s.estimate)) << acceleration;
    EXPECT_EQ(chi.back(), chiSq);
    EXPECT_EQ(acceleration == kLucyTurbo, !s.prevStep.empty());
  }
}

TEST(Lucy, StopsAtAChiSquareOfOne) {
  Random random(4);
  CImgLucy image = LucyOf(StarField(random, 64, 64, 1));
  std::vector<float> data = SamplesOf(image);
  std::size_t const runs =
      reference::LucyPlane(data, 64, 64, reference::LucyGauss(1.5, 64, 64), 64, 64, 200, 1.0, 60.0, 2).size() - 1;
  ASSERT_LT(runs, 200u);
  RecordingWindow window;
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.Do(1.5, 1.0, 60.0, 200, nullptr, 1));
  EXPECT_EQ(runs + 1, window.starts.size());
}

TEST(Lucy, WithoutIterationsTheMeanComesBack) {
  CImgLucy image;
  image.CopyImage(COrbImage(-32, 10, 10, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  std::vector<float> samples(100, 30.0f);
  samples[5] = 130.0f;
  samples[6] = -1000.0f;  // left out
  SetSamples(image, samples);
  EXPECT_EQ(1, image.Do(1.5, 1.0, 5.0, 0, nullptr, 0));
  EXPECT_EQ(std::vector<float>(100, static_cast<float>((97 * 30.0 + 130.0 + 30.0) / 99.0)), SamplesOf(image));
}

TEST(Lucy, PixelsOutOfReachAreZero) {
  CImgLucy image;
  image.CopyImage(COrbImage(-32, 90, 70, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  std::vector<float> samples(90 * 70, -1000.0f);
  samples[90 * 35 + 45] = 50.0f;
  SetSamples(image, samples);
  EXPECT_EQ(1, image.Do(1.0, 1.0, 5.0, 0, nullptr, 0));
  EXPECT_EQ(50.0f, image.GetPixelGrayRaw(45, 35, 0));
  EXPECT_EQ(50.0f, image.GetPixelGrayRaw(46, 36, 0));
  EXPECT_EQ(0.0f, image.GetPixelGrayRaw(45, 60, 0));
  EXPECT_EQ(0.0f, image.GetPixelGrayRaw(2, 2, 0));
}

// No margin from 64 x 64 on: what is at one edge reaches over to the other.
TEST(Lucy, EdgesOfALargeImageTouch) {
  CImgLucy image;
  image.CopyImage(COrbImage(-32, 100, 80, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  std::vector<float> samples(100 * 80, 100.0f);
  samples[100 * 40] = 9000.0f;
  SetSamples(image, samples);
  EXPECT_EQ(1, image.Do(2.0, 1.0, 5.0, 1, nullptr, 0));
  float const beside = image.GetPixelGrayRaw(1, 40, 0);
  EXPECT_NEAR(beside, image.GetPixelGrayRaw(99, 40, 0), 1e-3 * beside);
  EXPECT_GT(beside, 2.0f * image.GetPixelGrayRaw(50, 40, 0));
}

TEST(Lucy, SharpensStarsAndKeepsTheirLight) {
  CImgLucy image;
  image.CopyImage(COrbImage(-32, 64, 64, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  double before = 0.0;
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      double const v = 100.0 + 5000.0 * std::exp(-((x - 31) * (x - 31) + (y - 33) * (y - 33)) / (2.0 * 2.0 * 2.0));
      image.SetPixelGrayRaw(x, y, static_cast<float>(v), 0);
      before += v;
    }
  }
  EXPECT_EQ(1, image.Do(2.0, 1.0, 1.0, 20, nullptr, 0));
  double after = 0.0;
  for (float v : SamplesOf(image)) {
    EXPECT_GE(v, 0.0f);
    after += v;
  }
  EXPECT_NEAR(1.0, after / before, 0.01);
  EXPECT_GT(image.GetPixelGrayRaw(31, 33, 0), 15000.0f);
  EXPECT_LT(image.GetPixelGrayRaw(34, 33, 0), 900.0f);  // before: 1723
}

// Intended: from a sigma of 10 up the array's sum is well below 1, and only the first element shows the normalising.
TEST(Lucy, OnlyTheFirstElementOfTheGaussianIsNormalised) {
  CImgLucy lucy;
  for (double sigma : {1.0, 10.0, 30.0}) {
    std::unique_ptr<float[]> const psf(OrbTestAccess::MakeGauss(lucy, sigma, 64, 64));
    std::vector<float> const expected = reference::LucyGauss(sigma, 64, 64);
    EXPECT_TRUE(SameBits(expected, std::vector<float>(psf.get(), psf.get() + 64 * 64)));
    EXPECT_EQ(static_cast<float>(1.0 / (sigma * sigma * 6.28318)), psf[32 * 64 + 32]);
  }
  std::unique_ptr<float[]> const wide(OrbTestAccess::MakeGauss(lucy, 30.0, 64, 64));
  EXPECT_FALSE(wide[0] <= wide[1]);
}

TEST(Lucy, RectangleIsRestoredByItself) {
  Random random(5);
  COrbImage const start = StarField(random, 40, 30, 1);
  CImgLucy image = LucyOf(start);
  COrbImage expected(start);
  COrbImage part(-32, 21, 13, 1, 1.0, 0.0, 1, nullptr, nullptr);
  part.PixelBlt(0, 0, 21, 13, &expected, 7, 5, 0);
  reference::Lucy(part, 1.5, 1.0, 5.0, 3);
  expected.PixelBlt(7, 5, 21, 13, &part, 0, 0, 0);
  CRect rect(7, 5, 28, 18);
  EXPECT_EQ(1, image.Do(1.5, 1.0, 5.0, 3, &rect, 0));
  EXPECT_TRUE(SameBits(expected, image));
}

// Intended: only sizes are compared.
TEST(Lucy, RectangleOfTheImagesSizeIsTheWholeImage) {
  Random random(6);
  COrbImage const start = StarField(random, 20, 10, 1);
  CImgLucy whole = LucyOf(start);
  CImgLucy shifted = LucyOf(start);
  CRect rect(5, -3, 25, 7);
  whole.Do(1.5, 1.0, 5.0, 2, nullptr, 0);
  EXPECT_EQ(1, shifted.Do(1.5, 1.0, 5.0, 2, &rect, 0));
  EXPECT_TRUE(SameBits(whole, shifted));
}

TEST(Lucy, StaysInsideTheImageForEveryRectangle) {
  Random random(7);
  COrbImage const start = StarField(random, 20, 10, 3);
  for (CRect rect : {CRect(-5, -5, 5, 5), CRect(15, 5, 40, 30), CRect(100, 100, 120, 105), CRect(-50, 2, -40, 6)}) {
    CImgLucy image = LucyOf(start);
    EXPECT_EQ(1, image.Do(1.5, 1.0, 5.0, 1, &rect, 0));
  }
  for (CRect rect :
       {CRect(5, 5, 5, 8), CRect(9, 8, 2, 1), CRect(INT_MIN, 0, INT_MAX, 5), CRect(0, 0, INT_MAX, INT_MAX)}) {
    CImgLucy image = LucyOf(start);
    RecordingWindow window;
    image.SetProgressHandle(&window);
    EXPECT_EQ(0, image.Do(1.5, 1.0, 5.0, 1, &rect, 1));
    EXPECT_TRUE(SameBits(start, image));
    EXPECT_TRUE(window.IsSilent());
  }
}

TEST(Lucy, SamplesThatAreNoNumbersEndARunAllTheSame) {
  for (float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), -0.0f}) {
    CImgLucy image;
    image.CopyImage(COrbImage(-32, 5, 4, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
    image.SetPixelGrayRaw(2, 2, bad, 0);
    EXPECT_EQ(1, image.Do(1.5, 1.0, 5.0, 3, nullptr, 0));
  }
}

TEST(Lucy, RunsOfAMonoImage) {
  Random random(8);
  CImgLucy image = LucyOf(StarField(random, 20, 10, 1));
  RecordingWindow window;
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.Do(1.5, 1.0, 0.5, 2, nullptr, 1));
  EXPECT_EQ((std::vector<std::string>{"ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 準備中",
                                      "ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 処理中 1回目",
                                      "ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 処理中 2回目"}),
            window.starts);
  EXPECT_EQ((std::vector<std::string>{"(null)", "", ""}), window.ends);
  EXPECT_TRUE(window.boxes.empty() && window.texts.empty());
  EXPECT_EQ(5, window.positions.front());
  EXPECT_EQ(10, window.positions[1]);
  EXPECT_EQ(100, window.positions.back());
  // At the start of an iteration, and again with the first row of its first transform.
  EXPECT_EQ(4, std::count(window.positions.begin(), window.positions.end(), 0));
}

TEST(Lucy, RunsOfAColourImageNameTheirPlane) {
  Random random(9);
  CImgLucy image = LucyOf(StarField(random, 20, 10, 3));
  RecordingWindow window;
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.Do(1.5, 1.0, 0.5, 1, nullptr, 1));
  ASSERT_EQ(6u, window.starts.size());
  EXPECT_EQ("ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 準備中 プレーン 2", window.starts[2]);
  EXPECT_EQ("ルーシー＆リチャードソン法(ESC：ｷｬﾝｾﾙ) - 処理中 プレーン 3 (1回目)", window.starts[5]);
}

TEST(Lucy, SilentWithoutProgress) {
  Random random(10);
  CImgLucy image = LucyOf(StarField(random, 20, 10, 3));
  RecordingWindow window;
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.Do(1.5, 1.0, 0.5, 1, nullptr, 0));
  EXPECT_TRUE(window.IsSilent());
}

// The percentage at which ESC was pressed, and in which run.
struct Escape {
  int result;
  int run;
  int percent;
  bool isUnchanged;
  std::vector<std::string> ends;
  std::vector<std::string> boxes;
};

Escape PressAt(COrbImage const& start, int poll) {
  CImgLucy image = LucyOf(start);
  RecordingWindow window;
  class Pressed : public RecordingWindow {
   public:
    int run = 0;
    int percent = -1;
    bool PollEscape() override {
      bool const isPressed = RecordingWindow::PollEscape();
      if (isPressed) {
        run = static_cast<int>(starts.size()) - 1;
        percent = positions.back();
      }
      return isPressed;
    }
  } pressed;
  pressed.escapeAtPoll = poll;
  image.SetProgressHandle(&pressed);
  int const result = image.Do(1.5, 1.0, 0.5, 2, nullptr, 1);
  return {result, pressed.run, pressed.percent, static_cast<bool>(SameBits(start, image)), pressed.ends, pressed.boxes};
}

// Intended: what ESC does depends on the stage: it cancels, or drops a step, or ends the plane.
TEST(Lucy, EscapeAtEveryPoll) {
  Random random(11);
  COrbImage const start = StarField(random, 12, 9, 1);
  std::vector<int> seen(3, 0);
  for (int poll = 1;; ++poll) {
    Escape const e = PressAt(start, poll);
    if (e.percent < 0) break;
    bool const isCancelled = e.run == 0 || e.percent < 40;
    if (isCancelled) {
      EXPECT_EQ(0, e.result) << e.run << ' ' << e.percent;
      EXPECT_TRUE(e.isUnchanged);
      EXPECT_EQ(std::vector<std::string>{"キャンセルされました。"}, e.boxes);
      EXPECT_EQ("(null)", e.ends.back());
      ++seen[0];
    } else if (e.percent != 40 && e.percent != 90) {  // these two belong to two stages each
      EXPECT_EQ(1, e.result) << e.run << ' ' << e.percent;
      EXPECT_FALSE(e.isUnchanged);
      EXPECT_TRUE(e.boxes.empty());
      // A dropped step goes on to the next iteration; a cancel in the chi-square ends the plane.
      EXPECT_EQ(e.percent > 90 ? static_cast<std::size_t>(e.run) + 1 : 3u, e.ends.size());
      EXPECT_EQ("", e.ends.back());
      ++seen[e.percent < 90 ? 1 : 2];
    }
  }
  for (int count : seen) EXPECT_GT(count, 10);
}

TEST(Lucy, CancelOnALaterPlaneLeavesTheImage) {
  Random random(12);
  COrbImage const start = StarField(random, 12, 9, 3);
  CImgLucy whole = LucyOf(start);
  RecordingWindow all;
  whole.SetProgressHandle(&all);
  whole.Do(1.5, 1.0, 0.5, 1, nullptr, 1);
  Escape const e = PressAt(start, all.polls * 5 / 6);
  EXPECT_GE(e.run, 2);
  if (e.result == 0) {
    EXPECT_TRUE(e.isUnchanged);
  }
  CImgLucy image = LucyOf(start);
  RecordingWindow window;
  window.escapeAtPoll = all.polls * 2 / 3 + 3;  // in the preparation of the third plane
  image.SetProgressHandle(&window);
  EXPECT_EQ(0, image.Do(1.5, 1.0, 0.5, 1, nullptr, 1));
  EXPECT_TRUE(SameBits(start, image));
}

TEST(Lucy, WorksOnAHostileStore) {
  Random random(13);
  COrbImage const start = StarField(random, 12, 7, 3);
  CImgLucy expected = LucyOf(start);
  CImgLucy image = LucyOf(start);
  MakeHostile(image);
  expected.Do(1.5, 1.0, 5.0, 2, nullptr, 0);
  image.Do(1.5, 1.0, 5.0, 2, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, image));
  EXPECT_EQ(0, LocksLeft(image));
}

TEST(Lucy, TwoThreadsGiveTheBitsOfOneAfterTheOther) {
  Random random(14);
  COrbImage const first = StarField(random, 70, 64, 1);
  COrbImage const second = StarField(random, 66, 80, 1);
  CImgLucy expected[2] = {LucyOf(first), LucyOf(second)};
  CImgLucy together[2] = {LucyOf(first), LucyOf(second)};
  for (CImgLucy& image : expected) image.Do(1.5, 1.0, 2.0, 6, nullptr, 0);
  std::thread a([&] { together[0].Do(1.5, 1.0, 2.0, 6, nullptr, 0); });
  std::thread b([&] { together[1].Do(1.5, 1.0, 2.0, 6, nullptr, 0); });
  a.join();
  b.join();
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(SameBits(expected[i], together[i]));
}

}  // namespace
}  // namespace orb::test
