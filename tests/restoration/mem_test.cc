// CImgMem: the road from image to solver and back.
#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/mem_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

class StyleWindow : public RecordingWindow {
 public:
  std::vector<unsigned> styles;

  void OnMessageBox(char const* text, unsigned style) override {
    RecordingWindow::OnMessageBox(text, style);
    styles.push_back(style);
  }
};

// A positive sky with gaussian stars.
CImgMem Sky(Random& random, int width, int height, int planes) {
  CImgMem image;
  image.Create(COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  std::normal_distribution<double> noise(100.0, 3.0);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double const dx = x - width * (0.3 + 0.1 * p);
        double const dy = y - height * 0.6;
        double const star = 900.0 * std::exp(-(dx * dx + dy * dy) / 8.0);
        image.SetPixelGrayRaw(x, y, static_cast<float>(noise(random) + star), p);
      }
    }
  }
  SetRandomLevels(image, random);
  return image;
}

TEST(Mem, EqualsTheTranscriptionEverywhere) {
  Random random(1);
  struct Case {
    int width;
    int height;
    int planes;
  };
  for (Case c :
       {Case{64, 64, 1}, {64, 32, 3}, {75, 50, 1}, {33, 40, 3}, {40, 12, 1}, {1, 1, 1}, {7, 1, 1}, {1, 9, 3}}) {
    for (bool const hasRect : {false, true}) {
      CImgMem image = Sky(random, c.width, c.height, c.planes);
      COrbImage expected(image);
      CRect rect(c.width / 4, c.height / 5, c.width, c.height);
      CRect* const window = hasRect ? &rect : nullptr;
      EXPECT_EQ(reference::Mem(expected, 1.5, 3.0, 4, window), image.Do(1.5, 3.0, 4, window, 0));
      EXPECT_TRUE(SameValues(expected, image)) << c.width << 'x' << c.height << 'x' << c.planes << ' ' << hasRect;
      EXPECT_TRUE(SameLevels(expected, image));
    }
  }
}

TEST(Mem, NoLimitOfIterationsAtZeroOrBelow) {
  Random random(2);
  for (int iterations : {0, -5}) {
    CImgMem image = Sky(random, 32, 32, 1);
    COrbImage expected(image);
    ASSERT_EQ(1, reference::Mem(expected, 1.0, 3.0, 0, nullptr));
    EXPECT_EQ(1, image.Do(1.0, 3.0, iterations, nullptr, 0));
    EXPECT_TRUE(SameBits(expected, image));
  }
}

// A window of 75 x 50 is worked on in 128 x 64 from (26, 7) on; the margin is data of value 0.
TEST(Mem, PadsToPowersOfTwoWithTheWindowInTheMiddle) {
  Random random(3);
  CImgMem small = Sky(random, 75, 50, 1);
  CImgMem padded;
  padded.Create(COrbImage(-32, 128, 64, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  padded.PixelBlt(26, 7, 75, 50, &small, 0, 0, 0);
  ASSERT_EQ(1, small.Do(1.5, 3.0, 6, nullptr, 0));
  ASSERT_EQ(1, padded.Do(1.5, 3.0, 6, nullptr, 0));
  CImgMem middle = small;
  FillJunk(middle);
  middle.PixelBlt(0, 0, 75, 50, &padded, 26, 7, 0);
  EXPECT_TRUE(SameBits(small, middle));
}

TEST(Mem, ArrayOfThePointSpreadIsHalfAPixelOffAndOnlyItsFirstElementNormalised) {
  CImgMem image;
  for (double sigma : {0.7, 2.0, 25.0}) {
    std::unique_ptr<float[]> const gauss(OrbTestAccess::MakeGauss(image, sigma, 63, 63));
    std::vector<float> const actual(gauss.get(), gauss.get() + 63 * 63);
    EXPECT_TRUE(SameBits(reference::MemGauss(sigma, 63, 63), actual));
    EXPECT_EQ(actual[31 * 63 + 31], actual[32 * 63 + 32]);
    EXPECT_EQ(actual[31 * 63 + 31], actual[31 * 63 + 32]);
    double const second = std::exp(-(30.5 * 30.5 + 31.5 * 31.5) / (2.0 * sigma * sigma)) / (sigma * sigma * 6.28318);
    EXPECT_EQ(static_cast<float>(second), actual[1]);
  }
  // From sigma 25 on the array does not hold the whole gaussian, and the first element shows it.
  std::unique_ptr<float[]> const wide(OrbTestAccess::MakeGauss(image, 25.0, 63, 63));
  EXPECT_GT(wide[0], 2.0f * wide[1]);
}

double CentreAlongX(COrbImage& image) {
  double sum = 0.0;
  double moment = 0.0;
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      double const v = image.GetPixelGrayRaw(x, y, 0) - 10.0;
      sum += v;
      moment += v * x;
    }
  }
  return moment / sum;
}

TEST(Mem, ResultLiesHalfAPixelTowardsTheOrigin) {
  CImgMem image;
  image.Create(COrbImage(-32, 64, 64, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      double const r2 = (x - 32.0) * (x - 32.0) + (y - 32.0) * (y - 32.0);
      image.SetPixelGrayRaw(x, y, static_cast<float>(10.0 + 1000.0 * std::exp(-r2 / 8.0)), 0);
    }
  }
  ASSERT_NEAR(32.0, CentreAlongX(image), 1e-3);
  float const peak = image.GetPixelGrayRaw(32, 32, 0);
  ASSERT_EQ(1, image.Do(1.5, 1.0, 40, nullptr, 0));
  EXPECT_NEAR(31.5, CentreAlongX(image), 0.02);
  EXPECT_GT(image.GetPixelGrayRaw(31, 31, 0), 1.3f * peak);
}

TEST(Mem, TextsOfAGreyAndOfAColourImage) {
  Random random(4);
  std::string const method = "最大エントロピー法(ESC：ｷｬﾝｾﾙ) - ";
  for (int planes : {1, 3}) {
    RecordingWindow window;
    CImgMem image = Sky(random, 64, 64, planes);
    image.SetProgressHandle(&window);
    ASSERT_EQ(1, image.Do(1.0, 3.0, 2, nullptr, 1));
    std::vector<std::string> expected;
    for (int p = 1; p <= planes; ++p) {
      std::string const plane = planes == 1 ? "" : "プレーン " + std::to_string(p);
      std::string const after = planes == 1 ? "" : " " + plane;
      expected.push_back("最大エントロピー法 - 準備中" + after);
      expected.push_back(method + "前処理中" + after);
      expected.push_back(method + "前処理中" + after);
      for (int k = 1; k <= 2; ++k) {
        std::string const pass = std::to_string(k) + "回目";
        expected.push_back(method + "処理中 " + (planes == 1 ? pass : plane + " (" + pass + ")"));
      }
    }
    EXPECT_EQ(expected, window.starts);
    EXPECT_EQ(std::vector<std::string>(2 * static_cast<std::size_t>(planes), "(null)"), window.ends);
    EXPECT_TRUE(window.boxes.empty());
  }
}

TEST(Mem, ProgressChangesNoSampleAndWithoutItAllIsSilent) {
  Random random(5);
  RecordingWindow window;
  CImgMem image = Sky(random, 16, 16, 1);
  CImgMem shown = image;
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.Do(1.0, 3.0, 2, nullptr, 0));
  EXPECT_TRUE(window.IsSilent());
  shown.SetProgressHandle(&window);
  EXPECT_EQ(1, shown.Do(1.0, 3.0, 2, nullptr, 1));
  EXPECT_TRUE(SameBits(image, shown));
}

TEST(Mem, EscapeAtAnyPollChangesNothing) {
  Random random(6);
  CImgMem const before = Sky(random, 16, 12, 3);
  RecordingWindow whole;
  CImgMem done = before;
  done.SetProgressHandle(&whole);
  ASSERT_EQ(1, done.Do(1.0, 3.0, 1, nullptr, 1));
  for (int poll = 1; poll <= whole.polls; ++poll) {
    StyleWindow window;
    window.escapeAtPoll = poll;
    CImgMem image = before;
    image.SetProgressHandle(&window);
    EXPECT_EQ(0, image.Do(1.0, 3.0, 1, nullptr, 1)) << poll;
    EXPECT_TRUE(SameBits(before, image)) << poll;
    EXPECT_EQ(std::vector<std::string>{"キャンセルされました。"}, window.boxes);
    EXPECT_EQ(std::vector<unsigned>{64}, window.styles);
    EXPECT_EQ(poll, window.polls);
    EXPECT_EQ(0, OrbTestAccess::ProgressOf(image).on);
  }
}

TEST(Mem, NoiseOfZeroShowsTheMemoryMessageAndChangesNothing) {
  Random random(7);
  StyleWindow window;
  CImgMem image = Sky(random, 16, 16, 1);
  COrbImage const before(image);
  image.SetProgressHandle(&window);
  EXPECT_EQ(0, image.Do(1.0, 0.0, 5, nullptr, 0));
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_EQ(
      std::vector<std::string>{
          "メモリが不足しています。起動しているアプリケーションをいくつか終了してから、再度実行してください。"},
      window.boxes);
  EXPECT_EQ(std::vector<unsigned>{0}, window.styles);
}

TEST(Mem, BoxGoesToTheMainWindowWhereTheImageHasNone) {
  Random random(8);
  StyleWindow window;
  CImgMem image = Sky(random, 16, 16, 1);
  image.SetProgressHandle(nullptr);
  SetMainWindow(&window);
  EXPECT_EQ(0, image.Do(1.0, 0.0, 5, nullptr, 0));
  SetMainWindow(nullptr);
  EXPECT_EQ(1u, window.boxes.size());
  EXPECT_EQ(0, image.Do(1.0, 0.0, 5, nullptr, 0));
}

TEST(Mem, RectangleOfTheImagesSizeIsTheWholeImageWhereverItLies) {
  Random random(9);
  CImgMem whole = Sky(random, 20, 10, 1);
  CImgMem moved = whole;
  CRect rect(5, 5, 25, 15);
  EXPECT_EQ(1, whole.Do(1.0, 3.0, 2, nullptr, 0));
  EXPECT_EQ(1, moved.Do(1.0, 3.0, 2, &rect, 0));
  EXPECT_TRUE(SameBits(whole, moved));
}

// What lies outside the image is data of value 0, like the margin.
TEST(Mem, WindowBeyondTheImageStaysWithinIt) {
  Random random(10);
  CImgMem image = Sky(random, 20, 16, 3);
  CImgMem larger;
  larger.Create(COrbImage(-32, 32, 32, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  larger.PixelBlt(6, 9, 20, 16, &image, 0, 0, 0);
  CRect rect(-6, -9, 26, 23);
  EXPECT_EQ(1, larger.Do(1.0, 3.0, 2, nullptr, 0));
  EXPECT_EQ(1, image.Do(1.0, 3.0, 2, &rect, 0));
  CImgMem middle = image;
  middle.PixelBlt(0, 0, 20, 16, &larger, 6, 9, 0);
  EXPECT_TRUE(SameBits(middle, image));
}

TEST(Mem, EveryRectangleAndEverySampleIsSafe) {
  Random random(11);
  for (RectCase& c : RectCases(20, 14)) {
    CImgMem image = Sky(random, 20, 14, 1);
    StrewSpecialSamples(image, random);
    COrbImage const before(image);
    EXPECT_EQ(c.name == "extreme" ? 0 : 1, image.Do(1.0, 3.0, 3, c.Pointer(), 0)) << c.name;
    for (int y = 0; y < 14; ++y) {
      for (int x = 0; x < 20; ++x) {
        if (!c.useRect || c.rect.PtInRect(CPoint(x, y))) continue;
        float const was = *before.GetImageAdr(x, y, 0, 1, nullptr);
        EXPECT_TRUE(SameBits(std::vector<float>{was}, {image.GetPixelGrayRaw(x, y, 0)})) << c.name;
      }
    }
  }
}

TEST(Mem, EmptyWindowStartsAndEndsItsRun) {
  Random random(12);
  for (CRect rect : {CRect(5, 5, 5, 9), CRect(9, 9, 2, 2)}) {
    RecordingWindow window;
    CImgMem image = Sky(random, 16, 16, 1);
    COrbImage const before(image);
    image.SetProgressHandle(&window);
    EXPECT_EQ(1, image.Do(1.0, 3.0, 3, &rect, 1));
    EXPECT_TRUE(SameBits(before, image));
    EXPECT_EQ(std::vector<std::string>{"最大エントロピー法 - 準備中"}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  }
}

TEST(Mem, WindowBeyondAllMemoryIsZeroWithoutAWord) {
  Random random(13);
  RecordingWindow window;
  CImgMem image = Sky(random, 16, 16, 3);
  COrbImage const before(image);
  image.SetProgressHandle(&window);
  CRect vast(0, 0, 1 << 30, 1 << 30);
  EXPECT_EQ(0, image.Do(1.0, 3.0, 3, &vast, 1));
  CRect vastest(-2147483647, -2147483647, 2147483647, 2147483647);
  EXPECT_EQ(0, image.Do(1.0, 3.0, 3, &vastest, 1));
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(window.IsSilent());
}

TEST(Mem, PlaneCodes) {
  RecordingWindow window;
  COrbImage reporter;
  reporter.SetProgressHandle(&window);
  std::vector<float> psf(64, 1.0f / 64.0f);
  std::vector<float> in(64, 5.0f);
  std::vector<float> out(64);
  EXPECT_EQ(1, MemRestorePlane(in.data(), out.data(), 8, 8, psf.data(), 8, 7, 1.0, 2, &reporter, 0));
  EXPECT_EQ(1, MemRestorePlane(in.data(), out.data(), 8, 8, psf.data(), 7, 8, 1.0, 2, &reporter, 0));
  EXPECT_TRUE(window.IsSilent());
  for (int const side : {1 << 30, (1 << 30) - 1, 2147483647}) {
    window.ends.clear();
    EXPECT_EQ(7, MemRestorePlane(in.data(), out.data(), side, side, psf.data(), 7, 7, 1.0, 2, &reporter, 0));
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  }
}

TEST(Mem, KeepsLevelsAndPoints) {
  Random random(14);
  CImgMem image = Sky(random, 16, 16, 3);
  image.SetStdPt(0, CfPoint(3.5, 4.5));
  image.SetStdCtr(8.0, 7.0);
  COrbImage const before(image);
  ASSERT_EQ(1, image.Do(1.0, 3.0, 2, nullptr, 0));
  EXPECT_TRUE(SameLevels(before, image));
  EXPECT_EQ(3.5, image.GetStdPt(0).fx);
  EXPECT_EQ(8.0, image.GetStdCtr().fx);
}

TEST(Mem, WorksOnAHostileStore) {
  Random random(15);
  CImgMem kind = Sky(random, 20, 12, 3);
  CImgMem hostile = kind;
  MakeHostile(hostile);
  EXPECT_EQ(1, kind.Do(1.0, 3.0, 2, nullptr, 0));
  EXPECT_EQ(1, hostile.Do(1.0, 3.0, 2, nullptr, 0));
  EXPECT_TRUE(SameBits(kind, hostile));
  EXPECT_EQ(0, LocksLeft(hostile));
}

TEST(Mem, TwoOnTwoThreadsGiveTheBitsOfOneAfterTheOther) {
  Random random(16);
  CImgMem const first = Sky(random, 64, 32, 1);
  CImgMem const second = Sky(random, 33, 70, 1);
  auto const restore = [](CImgMem image) {
    EXPECT_EQ(1, image.Do(1.5, 3.0, 6, nullptr, 0));
    return image;
  };
  CImgMem const expectedFirst = restore(first);
  CImgMem const expectedSecond = restore(second);
  CImgMem atOnce;
  std::thread other([&] { atOnce.CopyImage(restore(first), nullptr, nullptr); });
  CImgMem const here = restore(second);
  other.join();
  EXPECT_TRUE(SameBits(expectedFirst, atOnce));
  EXPECT_TRUE(SameBits(expectedSecond, here));
}

}  // namespace
}  // namespace orb::test
