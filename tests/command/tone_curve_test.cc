// Curves through points, presets, and the files of points.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/curve_file.h>
#include <hosts/orbimg/tone_curve.h>
#include <tests/io/scratch_folder.h>

namespace orb::test {
namespace {

using host::CurvePoint;
using host::CurvePreset;
using host::CurveThrough;
using host::ToneCurve;

TEST(ToneCurve, TwoPointsAreTheStraightLine) {
  ToneCurve const curve = CurveThrough({{0.0, 0.0}, {1.0, 1.0}});
  for (int i = 0; i <= 64; ++i) EXPECT_NEAR(i / 64.0, curve(i / 64.0), 1e-15);
}

TEST(ToneCurve, GoesThroughItsPointsAndIsLevelBesideThem) {
  std::vector<CurvePoint> const points{{0.1, 0.3}, {0.2, 0.8}, {0.6, 0.5}, {0.9, 0.9}};
  ToneCurve const curve = CurveThrough(points);
  for (CurvePoint const& p : points) EXPECT_DOUBLE_EQ(p.y, curve(p.x));
  EXPECT_EQ(0.3, curve(0.0));
  EXPECT_EQ(0.9, curve(1.0));
}

TEST(ToneCurve, RisesAndFallsOnlyAsItsPointsDo) {
  std::vector<CurvePoint> const points{{0.0, 0.0},  {0.1, 0.02}, {0.12, 0.7}, {0.4, 0.71},
                                       {0.5, 0.71}, {0.7, 0.1},  {1.0, 1.0}};
  ToneCurve const curve = CurveThrough(points);
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    double const step = (points[i + 1].x - points[i].x) / 200.0;
    double before = points[i].y;
    for (int k = 1; k <= 200; ++k) {
      double const now = curve(points[i].x + k * step);
      if (points[i].y <= points[i + 1].y) {
        EXPECT_GE(now, before - 1e-15) << i << ' ' << k;
      }
      if (points[i].y >= points[i + 1].y) {
        EXPECT_LE(now, before + 1e-15) << i << ' ' << k;
      }
      before = now;
    }
  }
}

// Points on a parabola: the pieces meet with equal slopes, and lie near it.
TEST(ToneCurve, IsSmooth) {
  std::vector<CurvePoint> points;
  for (int i = 0; i <= 10; ++i) points.push_back({i / 10.0, i * i / 100.0});
  ToneCurve const curve = CurveThrough(points);
  double const h = 1e-6;
  for (int i = 1; i < 10; ++i) {
    double const x = i / 10.0;
    EXPECT_NEAR((curve(x) - curve(x - h)) / h, (curve(x + h) - curve(x)) / h, 1e-3) << x;
  }
  for (int i = 0; i <= 100; ++i) EXPECT_NEAR(i * i / 1e4, curve(i / 100.0), 2e-3);
}

TEST(ToneCurve, PresetsLeadFromBlackToWhite) {
  for (CurvePreset const& preset : host::CurvePresets()) {
    for (double const amount : {preset.least, preset.byDefault, preset.most}) {
      SCOPED_TRACE(preset.name);
      EXPECT_NEAR(0.0, preset.at(0.0, amount), 1e-15);
      EXPECT_NEAR(1.0, preset.at(1.0, amount), 1e-15);
      double before = 0.0;
      for (int i = 1; i <= 50; ++i) {
        double const now = preset.at(i / 50.0, amount);
        EXPECT_GE(now, before);
        before = now;
      }
    }
  }
}

TEST(ToneCurve, PresetsAreWhatTheirNamesSay) {
  EXPECT_EQ(0.3, host::FindCurvePreset("linear").at(0.3, 0.0));
  EXPECT_DOUBLE_EQ(0.5, host::FindCurvePreset("gamma").at(0.25, 2.0));
  EXPECT_DOUBLE_EQ(0.5, host::FindCurvePreset("midtone").at(0.1, 0.1));
  EXPECT_DOUBLE_EQ(std::asinh(2.0) / std::asinh(10.0), host::FindCurvePreset("asinh").at(0.2, 10.0));
}

TEST(ToneCurve, SamplesBothEnds) {
  std::vector<float> const table = host::SampleCurve(CurveThrough({{0.0, 0.25}, {1.0, 0.75}}), 5);
  EXPECT_EQ((std::vector<float>{0.25f, 0.375f, 0.5f, 0.625f, 0.75f}), table);
}

class CurveFile : public testing::Test {
 protected:
  std::vector<CurvePoint> Read(std::string const& text) {
    WriteText(folder / "curve.txt", text);
    return host::ReadCurvePoints(folder / "curve.txt");
  }

  void ExpectRefused(std::string const& text, std::string const& part) {
    try {
      Read(text);
      ADD_FAILURE() << "accepted: " << text;
    } catch (host::HostError const& error) {
      EXPECT_EQ(host::Exit::kInput, error.Status());
      EXPECT_NE(std::string::npos, std::string(error.what()).find("curve.txt: " + part)) << error.what();
    }
  }

  ScratchFolder folder;
};

TEST_F(CurveFile, TextAndJsonGiveTheSamePoints) {
  for (std::string const text : {"# x y\n0 0\n\n0.25, 0.5 # lift\n1\t1\n", "[[0, 0], [0.25, 0.5], [1, 1]]",
                                 " {\"points\": [[0, 0], [0.25, 0.5], [1, 1]]}"}) {
    std::vector<CurvePoint> const points = Read(text);
    ASSERT_EQ(3u, points.size()) << text;
    EXPECT_EQ(0.25, points[1].x);
    EXPECT_EQ(0.5, points[1].y);
    EXPECT_EQ(1.0, points[2].y);
  }
}

TEST_F(CurveFile, RefusesWhatIsNoCurve) {
  ExpectRefused("0 0\n", "1 points");
  ExpectRefused("# nothing\n", "0 points");
  ExpectRefused("0 0\n1\n", "line 2");
  ExpectRefused("0 0\n1 1 1\n", "line 2");
  ExpectRefused("0 0\none 1\n", "line 2");
  ExpectRefused("0 0\n1 1.5\n", "point 2");
  ExpectRefused("0 0\nnan 1\n", "line 2");
  ExpectRefused("0.5 0\n0.5 1\n", "point 2");
  ExpectRefused("[[0, 0], [1]]", "point 2");
  ExpectRefused("[[0, 0], 7]", "point 2");
  ExpectRefused("[[0, 0], [1, \"white\"]]", "is no curve");
  ExpectRefused("{\"curve\": []}", "is no curve");
  ExpectRefused("[[0, 0]", "is no curve");
  ExpectRefused("[[0, 0], [-1, 1]]", "point 2");
}

TEST_F(CurveFile, RefusesAFileOfAnotherKind) {
  EXPECT_THROW(host::ReadCurvePoints(folder / "none.txt"), host::HostError);
  ExpectRefused(std::string(2 << 20, '0'), "is too large");
}

}  // namespace
}  // namespace orb::test
