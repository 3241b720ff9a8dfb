// CImgToneCurve: a staircase within the levels, straight lines beyond, the plane's curve before the master's.
#include <cmath>

#include <tests/reference/tone_curve_reference.h>
#include <tests/support/point_operator_test.h>

namespace orb::test {
namespace {

struct OpenToneCurve : CImgToneCurve {
  using CImgToneCurve::CalcToneCurve;
};

std::vector<float> Identity(int count) {
  std::vector<float> curve;
  for (int i = 0; i < count; ++i) curve.push_back(static_cast<float>(i / (count - 1.0)));
  return curve;
}

double At(std::vector<float> curve, double value) {
  OpenToneCurve image;
  return image.CalcToneCurve(curve.data(), static_cast<int>(curve.size()), value);
}

// A mono or colour pixel through curves, with the levels 0 to 255.
float Curved(std::vector<std::vector<float>> curves, float sample, int plane) {
  std::vector<float*> pointers;
  for (std::vector<float>& curve : curves) pointers.push_back(curve.data());
  CImgToneCurve image;
  image.CopyImage(curves.size() == 1 ? MonoRow({sample}) : ColourPixel(sample, sample, sample), nullptr, nullptr);
  image.Do(pointers.data(), static_cast<int>(curves[0].size()), &image, nullptr, 0);
  return image.GetPixelGrayRaw(0, 0, plane);
}

TEST(ToneCurve, TheIdentityIsAStaircase) {
  std::vector<float> const curve = Identity(6);  // steps of 51
  EXPECT_EQ(0.0, At(curve, 0.0));
  EXPECT_EQ(0.0, At(curve, 50.9));
  EXPECT_FLOAT_EQ(51.0f, static_cast<float>(At(curve, 51.1)));
  EXPECT_FLOAT_EQ(51.0f, static_cast<float>(At(curve, 101.9)));
  EXPECT_FLOAT_EQ(204.0f, static_cast<float>(At(curve, 254.9)));
  EXPECT_EQ(255.0, At(curve, 255.0));
}

TEST(ToneCurve, BelowZeroARisingCurveGivesZeroAndAFallingOneItsLine) {
  EXPECT_EQ(0.0, At({0.25f, 0.5f}, -10.0));
  EXPECT_EQ(5.0, At({0.75f, 0.25f}, -10.0));  // s = -0.5
  EXPECT_EQ(0.5 * 255.0, At({0.5f, 0.5f}, -10.0));
  EXPECT_EQ(20.0, At({0.75f, 0.25f, 0.0f}, -20.0));  // s counts in curves, not in steps: -0.5 * 2
}

// Intended: the line beyond white passes through (B, B).
TEST(ToneCurve, BeyondWhiteTheLinePassesThroughTheLastEntry) {
  EXPECT_NEAR(300.0, At(Identity(256), 300.0), 1e-4);
  EXPECT_EQ(0.25 * (300.0 - 127.5) + 127.5, At({0.25f, 0.5f}, 300.0));
  EXPECT_EQ(127.5, At({0.75f, 0.5f}, 300.0));
  EXPECT_EQ(127.5, At({0.5f, 0.5f}, 300.0));
  EXPECT_EQ(127.5, At({0.5f, 0.5f}, std::numeric_limits<double>::infinity()));
}

TEST(ToneCurve, NotANumberStaysOne) {
  EXPECT_TRUE(std::isnan(At(Identity(5), std::numeric_limits<double>::quiet_NaN())));
}

TEST(ToneCurve, FewerThanTwoEntries) {
  for (double v : {-20.0, 0.0, 100.0, 255.0, 300.0}) {
    EXPECT_EQ(0.5 * 255.0, At({0.5f}, v));
    EXPECT_EQ(v, At({}, v));
  }
  float* none[] = {nullptr, nullptr, nullptr, nullptr};
  CImgToneCurve image;
  image.CopyImage(ColourPixel(-20.0f, 100.0f, 300.0f), nullptr, nullptr);
  image.Do(none, 0, &image, nullptr, 0);
  EXPECT_FLOAT_EQ(-20.0f, image.GetPixelGrayRaw(0, 0, 0));
  EXPECT_FLOAT_EQ(100.0f, image.GetPixelGrayRaw(0, 0, 1));
  EXPECT_FLOAT_EQ(300.0f, image.GetPixelGrayRaw(0, 0, 2));
}

TEST(ToneCurve, ThePlanesCurveActsBeforeTheMaster) {
  std::vector<float> const low = {0.25f, 0.25f};
  std::vector<float> const square = {0.0f, 0.0625f, 0.25f, 0.5625f, 1.0f};
  std::vector<float> const straight = Identity(5);
  // Red: 0.25 first, which the master makes 0.0625. Green and blue: 0.5, which the master makes 0.25.
  std::vector<std::vector<float>> const curves = {square, {0.25f, 0.25f, 0.25f, 0.25f, 0.25f}, straight, straight};
  EXPECT_FLOAT_EQ(0.0625f * 255.0f, Curved(curves, 130.0f, 0));
  EXPECT_FLOAT_EQ(0.25f * 255.0f, Curved(curves, 130.0f, 1));
  EXPECT_FLOAT_EQ(0.25f * 255.0f, Curved(curves, 130.0f, 2));
  EXPECT_FLOAT_EQ(0.25f * 255.0f, Curved({low}, 130.0f, 0));
}

TEST(ToneCurve, ClassFormulaEqualsThePlainOne) {
  Random random(1);
  std::uniform_real_distribution<float> entry(-0.5f, 1.5f);
  std::uniform_real_distribution<double> value(-50.0, 310.0);
  for (int i = 0; i < 3000; ++i) {
    std::vector<float> curve(2 + random() % 40);
    for (float& e : curve) e = random() % 4 == 0 ? 0.5f : entry(random);
    double const v = value(random);
    EXPECT_EQ(reference::ToneCurveAt(curve.data(), static_cast<int>(curve.size()), v), At(curve, v));
  }
}

TEST(ToneCurve, EqualsThePlainFormulaEverywhere) {
  Random random(2);
  std::uniform_real_distribution<float> entry(-0.5f, 1.5f);
  for (int count : {2, 3, 17, 256, 1000}) {
    std::vector<std::vector<float>> curves(4, std::vector<float>(static_cast<std::size_t>(count)));
    std::vector<float*> pointers;
    for (std::vector<float>& curve : curves) {
      for (float& e : curve) e = entry(random);
      pointers.push_back(curve.data());
    }
    if (count == 17) curves[0][0] = std::numeric_limits<float>::quiet_NaN();
    if (count == 3) curves[2] = {0.5f, 0.5f, 0.5f};
    ExpectTheReference<CImgToneCurve>(
        random, [&](CImgToneCurve& dst, COrbImage* src, CRect* rect) { dst.Do(pointers.data(), count, src, rect, 0); },
        [&](COrbImage& dst, COrbImage* src, CRect* rect) {
          reference::ApplyToneCurves(dst, pointers.data(), count, *src, rect);
        });
  }
}

// Intended: announces the rows of the image, ticks for those of the rectangle.
TEST(ToneCurve, AnnouncesTheRowsOfTheImageWhateverTheRectangle) {
  std::vector<float> curve = Identity(9);
  float* curves[] = {curve.data(), curve.data(), curve.data(), curve.data()};
  for (int planes : {1, 3}) {
    RecordingWindow window;
    CImgToneCurve dst;
    dst.CopyImage(COrbImage(-32, 4, 10, planes, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
    dst.SetProgressHandle(&window);
    CRect rect(0, 2, 4, 5);
    dst.Do(curves, 9, &dst, &rect, 0);
    EXPECT_TRUE(window.IsSilent());
    dst.Do(curves, 9, &dst, &rect, 1);
    EXPECT_EQ(std::vector<std::string>{"トーンカーブ調整処理中..."}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(10 * planes, OrbTestAccess::ProgressOf(dst).total);
    EXPECT_EQ(3 * planes, window.polls);
    EXPECT_EQ(30, window.positions.back());
  }
  ExpectNothingButStartAndEnd<CImgToneCurve>(
      "トーンカーブ調整処理中...",
      [&](CImgToneCurve& dst, COrbImage* src, CRect* rect, int on) { dst.Do(curves, 9, src, rect, on); });
}

}  // namespace
}  // namespace orb::test
