// Mode 9 of CImgComposit: one of two frames for each pixel.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/composite_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/composite_calls.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::CompositeArguments;

CompositeArguments Reject(int radius, double ratio = 1.0, int to256 = 0) {
  CompositeArguments c;
  c.mode = 9;
  c.radius = radius;
  c.ratio = ratio;
  c.to256 = to256;
  c.threshold = 0.5;
  return c;
}

// All samples `value`, levels 0 to 255, true extrema 0 to 200.
COrbImage Flat(float value, int size = 9, int planes = 1) {
  COrbImage image(-32, size, size, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), value));
  for (int p = 0; p < planes; ++p) OrbTestAccess::SetExtrema(image, p, 0.0, 200.0);
  return image;
}

CImgComposit Joined(COrbImage& first, COrbImage& second, CompositeArguments const& c, float before = 0.0f) {
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  SetSamples(dst, std::vector<float>(static_cast<std::size_t>(dst.GetPixelCount()), before));
  Apply(dst, first, second, c);
  return dst;
}

TEST(RejectionComposite, EqualsThePlainFormula) {
  Random random(41);
  std::uniform_real_distribution<double> shift(-3.0, 3.0);
  std::uniform_real_distribution<double> threshold(0.2, 1.0);
  std::uniform_real_distribution<double> ratio(0.5, 1.5);
  for (int i = 0; i < 400; ++i) {
    int const planes = i % 3 == 0 ? 3 : 1;
    COrbImage first =
        RandomImage(random, 1 + static_cast<int>(random() % 40), 1 + static_cast<int>(random() % 12), planes);
    COrbImage second =
        i % 5 == 0
            ? RandomImage(random, 2 + static_cast<int>(random() % 40), 2 + static_cast<int>(random() % 12), planes)
            : RandomImage(random, first.GetWidth() + 1, first.GetHeight() + 1, i % 7 == 0 ? 1 : planes);
    for (COrbImage* frame : {&first, &second}) {
      OrbTestAccess::SetExtrema(*frame, 0, -100.0, 400.0);
      OrbTestAccess::SetExtrema(*frame, 1, -100.0, 9000.0);
    }
    second.SetStdCtr(second.GetWidth() / 2, second.GetHeight() / 2);
    CompositeArguments c = Reject(static_cast<int>(random() % 7) - 1, ratio(random), i % 2);
    c.threshold = threshold(random);
    c.dx = i % 4 == 0 ? 0.0 : shift(random);
    c.dy = i % 4 == 0 ? 0.0 : shift(random);
    c.angle = i % 2 == 0 ? 0.0 : shift(random) * 60.0;
    for (RectCase& rect : RectCases(first.GetWidth(), first.GetHeight())) {
      CImgComposit dst;
      dst.Create(first, nullptr, nullptr);
      SetRandomLevels(dst, random);
      FillRandom(dst, random);
      COrbImage expected(dst);
      reference::RejectionComposite(expected, first, second, c, rect.Pointer());
      Apply(dst, first, second, c, rect.Pointer());
      ASSERT_TRUE(SameBits(expected, dst))
          << "run " << i << ' ' << rect.name << " radius " << c.radius << " to256 " << c.to256;
      ASSERT_TRUE(SameLevels(expected, dst));
    }
  }
}

TEST(RejectionComposite, SpecialSamplesAndNumbers) {
  double const infinity = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  Random random(42);
  for (int const radius : {0, -1, 1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    for (int const to256 : {0, 1}) {
      COrbImage first = RandomImage(random, 17, 6, 1);
      COrbImage second = RandomImage(random, 17, 6, 1);
      second.SetStdCtr(8, 3);
      StrewSpecialSamples(first, random);
      StrewSpecialSamples(second, random);
      OrbTestAccess::SetExtrema(first, 0, 0.0, 300.0);
      OrbTestAccess::SetExtrema(second, 0, 0.0, 300.0);
      for (double const dx : {0.0, 0.5, 1e18, infinity, nan}) {
        for (double const angle : {0.0, 30.0, nan}) {
          CompositeArguments c = Reject(radius, 0.9, to256);
          c.dx = dx;
          c.angle = angle;
          CImgComposit dst;
          dst.CopyImage(first, nullptr, nullptr);
          COrbImage expected(dst);
          reference::RejectionComposite(expected, first, second, c, nullptr);
          Apply(dst, first, second, c);
          ASSERT_TRUE(SameValues(expected, dst)) << "radius " << radius << ' ' << to256 << ' ' << dx << ' ' << angle;
        }
      }
    }
  }
}

TEST(RejectionComposite, WithoutAWindowTheLowerStands) {
  COrbImage first = Flat(100.0f);
  COrbImage second = Flat(60.0f);
  CImgComposit const half = Joined(first, second, Reject(0, 0.5));
  CImgComposit const twice = Joined(first, second, Reject(0, 2.0));
  for (int y = 1; y < 8; ++y) {
    for (int x = 1; x < 8; ++x) {
      EXPECT_EQ(30.0f, const_cast<CImgComposit&>(half).GetPixelGrayRaw(x, y, 0));
      EXPECT_EQ(100.0f, const_cast<CImgComposit&>(twice).GetPixelGrayRaw(x, y, 0));
    }
  }
}

TEST(RejectionComposite, NearTheEdgeOfTheSecondFrameTheFirstStands) {
  COrbImage first = Flat(100.0f);
  COrbImage second = Flat(60.0f);
  for (int const radius : {0, 1}) {
    CImgComposit dst = Joined(first, second, Reject(radius));
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 9; ++x) {
        bool const edge = x < 1 || x >= 8 || y < 1 || y >= 8;
        EXPECT_EQ(edge ? 100.0f : 60.0f, dst.GetPixelGrayRaw(x, y, 0)) << x << ' ' << y;
      }
    }
  }
  CompositeArguments c = Reject(0);
  c.dx = 0.25;  // column 1 lies at 0.75, column 8 at 7.75
  CImgComposit shifted = Joined(first, second, c);
  EXPECT_EQ(100.0f, shifted.GetPixelGrayRaw(1, 4, 0));
  EXPECT_EQ(60.0f, shifted.GetPixelGrayRaw(2, 4, 0));
  EXPECT_EQ(60.0f, shifted.GetPixelGrayRaw(8, 4, 0));
}

TEST(RejectionComposite, RadiusBeyondTwoActsAsTwo) {
  Random random(43);
  COrbImage first = RandomImage(random, 20, 10, 1);
  COrbImage second = RandomImage(random, 20, 10, 1);
  OrbTestAccess::SetExtrema(first, 0, 0.0, 400.0);
  OrbTestAccess::SetExtrema(second, 0, 0.0, 400.0);
  auto const joined = [&](int radius) {
    CompositeArguments c = Reject(radius);
    c.threshold = 0.97;
    return Joined(first, second, c);
  };
  EXPECT_TRUE(SameBits(joined(2), joined(5)));
  EXPECT_FALSE(SameBits(joined(2), joined(1)));
}

// The decision runs on the pixel alone: a dark pixel beside a bright one does not see it.
TEST(RejectionComposite, NegativeRadiusIsAnEmptyWindow) {
  COrbImage first = Flat(50.0f);
  COrbImage second = Flat(60.0f);
  second.SetPixelGrayRaw(4, 4, 200.0f, 0);
  EXPECT_EQ(50.0f, Joined(first, second, Reject(-1, 0.1)).GetPixelGrayRaw(4, 4, 0) * 2.5f);  // bmax * ratio is 20
  EXPECT_EQ(6.0f, Joined(first, second, Reject(-1, 0.1)).GetPixelGrayRaw(3, 4, 0));
}

TEST(RejectionComposite, AStarInBothFramesIsTheLower) {
  COrbImage first = Flat(10.0f);
  COrbImage second = Flat(12.0f);
  first.SetPixelGrayRaw(4, 4, 200.0f, 0);
  second.SetPixelGrayRaw(4, 4, 190.0f, 0);
  EXPECT_EQ(190.0f, Joined(first, second, Reject(1)).GetPixelGrayRaw(4, 4, 0));
  EXPECT_EQ(200.0f, Joined(first, second, Reject(1, 1.25)).GetPixelGrayRaw(4, 4, 0));
}

TEST(RejectionComposite, BesideAnObjectInTheFirstFrameOnlyTheSecondStands) {
  COrbImage first = Flat(10.0f);
  COrbImage second = Flat(12.0f);
  first.SetPixelGrayRaw(4, 4, 200.0f, 0);
  CImgComposit dst = Joined(first, second, Reject(1));
  EXPECT_EQ(12.0f, dst.GetPixelGrayRaw(4, 4, 0));
  EXPECT_EQ(12.0f, dst.GetPixelGrayRaw(3, 4, 0));
  EXPECT_EQ(10.0f, dst.GetPixelGrayRaw(2, 4, 0));
}

TEST(RejectionComposite, BesideAnObjectInTheSecondFrameOnlyTheFirstStands) {
  COrbImage first = Flat(14.0f);
  COrbImage second = Flat(12.0f);
  second.SetPixelGrayRaw(4, 4, 200.0f, 0);
  CImgComposit dst = Joined(first, second, Reject(1));
  EXPECT_EQ(14.0f, dst.GetPixelGrayRaw(4, 4, 0));
  EXPECT_EQ(14.0f, dst.GetPixelGrayRaw(3, 4, 0));
  EXPECT_EQ(12.0f, dst.GetPixelGrayRaw(2, 4, 0));
}

// Intended: the largest of the second frame starts from b, not from b * ratio, and bright is tested before the ratio.
TEST(RejectionComposite, TheRatioComesAfterTheBrightTests) {
  COrbImage first = Flat(14.0f);
  COrbImage second = Flat(12.0f);
  second.SetPixelGrayRaw(4, 4, 200.0f, 0);
  // bmax is 200 and bright although b * ratio, 20, is not; the lower of a and bmax * ratio = 20.
  EXPECT_EQ(14.0f, Joined(first, second, Reject(1, 0.1)).GetPixelGrayRaw(3, 4, 0));
  // 99 * 3 would be bright; 99 is not.
  second.SetPixelGrayRaw(4, 4, 99.0f, 0);
  EXPECT_EQ(14.0f, Joined(first, second, Reject(-1, 3.0)).GetPixelGrayRaw(4, 4, 0));
}

// Intended: raw samples are bright from the bound on, samples on the 256-scale only above it.
TEST(RejectionComposite, BrightStartsAtTheBoundForRawSamplesAndAboveItOnThe256Scale) {
  COrbImage first = Flat(14.0f);
  COrbImage second = Flat(12.0f);
  second.SetPixelGrayRaw(4, 4, 100.0f, 0);  // 0.5 of 200
  EXPECT_EQ(14.0f, Joined(first, second, Reject(1)).GetPixelGrayRaw(3, 4, 0));
  COrbImage other = Flat(10.0f);
  other.SetPixelGrayRaw(4, 4, 100.0f, 0);
  COrbImage plain = Flat(12.0f);
  EXPECT_EQ(12.0f, Joined(other, plain, Reject(1)).GetPixelGrayRaw(3, 4, 0));
  EXPECT_EQ(10.0f, Joined(other, plain, Reject(1)).GetPixelGrayRaw(2, 4, 0));
  second.SetPixelGrayRaw(4, 4, 127.5f, 0);  // 0.5 of 255
  CImgComposit at = Joined(first, second, Reject(1, 1.0, 1));
  EXPECT_NEAR(12.0f, at.GetPixelGrayRaw(3, 4, 0), 1e-5);
  second.SetPixelGrayRaw(4, 4, 127.6f, 0);
  CImgComposit above = Joined(first, second, Reject(1, 1.0, 1));
  EXPECT_NEAR(14.0f, above.GetPixelGrayRaw(3, 4, 0), 1e-5);
}

TEST(RejectionComposite, EachFrameHasABoundOfItsOwnForRawSamples) {
  COrbImage first = Flat(14.0f);
  COrbImage second = Flat(12.0f);
  OrbTestAccess::SetExtrema(first, 0, 0.0, 1000.0);
  first.SetPixelGrayRaw(4, 4, 200.0f, 0);  // dark in a frame that reaches 1000
  EXPECT_EQ(12.0f, Joined(first, second, Reject(1)).GetPixelGrayRaw(4, 4, 0));
  second.SetPixelGrayRaw(5, 4, 150.0f, 0);  // bright in a frame that reaches 200
  EXPECT_EQ(150.0f, Joined(first, second, Reject(1)).GetPixelGrayRaw(4, 4, 0));
}

// Both windows are bright, but not both pixels: the neighbours that are joined already decide.
TEST(RejectionComposite, NeighboursDecideWhereBothWindowsAreBright) {
  COrbImage first = Flat(14.0f);
  COrbImage second = Flat(12.0f);
  first.SetPixelGrayRaw(5, 5, 200.0f, 0);
  second.SetPixelGrayRaw(5, 5, 200.0f, 0);
  CompositeArguments const c = Reject(1);
  CImgComposit dst = Joined(first, second, c);
  // Around (4, 4) everything joined so far is 12, the lower one.
  EXPECT_EQ(12.0f, dst.GetPixelGrayRaw(4, 4, 0));
  // Where the first frame was taken before, it is taken again.
  second.SetPixelGrayRaw(3, 3, 16.0f, 0);
  second.SetPixelGrayRaw(4, 3, 16.0f, 0);
  second.SetPixelGrayRaw(3, 4, 16.0f, 0);
  EXPECT_EQ(14.0f, Joined(first, second, c).GetPixelGrayRaw(4, 4, 0));
}

TEST(RejectionComposite, ATieOfTheNeighboursTakesTheSecondFrame) {
  COrbImage first = Flat(20.0f);
  COrbImage second = Flat(10.0f);
  first.SetPixelGrayRaw(2, 2, 200.0f, 0);
  second.SetPixelGrayRaw(2, 2, 200.0f, 0);
  CompositeArguments const c = Reject(1);
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  SetSamples(dst, std::vector<float>(81, 15.0f));
  CRect rect(1, 1, 2, 2);
  Apply(dst, first, second, c, &rect);
  EXPECT_EQ(10.0f, dst.GetPixelGrayRaw(1, 1, 0));
}

// Intended: in the first column or row the missing neighbour is the pixel itself, with what stood there before.
TEST(RejectionComposite, TheFirstPixelReadsWhatTheDestinationHeld) {
  COrbImage first = Flat(20.0f);
  COrbImage second = Flat(10.0f, 12);
  first.SetPixelGrayRaw(1, 1, 200.0f, 0);
  second.SetPixelGrayRaw(3, 3, 200.0f, 0);
  CompositeArguments c = Reject(1);
  c.dx = -2.0;
  c.dy = -2.0;
  EXPECT_EQ(20.0f, Joined(first, second, c, 18.0f).GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(10.0f, Joined(first, second, c, 12.0f).GetPixelGrayRaw(0, 0, 0));
}

TEST(RejectionComposite, AnglesBeyondARightAngleAreSampledAsTheirMirrorImage) {
  Random random(44);
  COrbImage first = RandomImage(random, 20, 20, 1);
  COrbImage second = RandomImage(random, 20, 20, 1);
  second.SetStdCtr(10, 10);
  CompositeArguments c = Reject(0);
  CompositeArguments mirrored = c;
  c.angle = 45.0;
  mirrored.angle = 135.0;
  CImgComposit at45 = Joined(first, second, c);
  CImgComposit at135 = Joined(first, second, mirrored);
  for (int y = 0; y < 20; ++y) {
    for (int x = 0; x < 20; ++x) {
      EXPECT_NEAR(at45.GetPixelGrayRaw(x, y, 0), at135.GetPixelGrayRaw(x, y, 0), 1e-2) << x << ' ' << y;
    }
  }
}

// Intended: the levels of plane 0 for the pixel and the result, the plane's own in the window.
TEST(RejectionComposite, LevelsOfPlaneZeroServeEveryPlane) {
  COrbImage first = Flat(10.0f, 9, 3);
  COrbImage second = Flat(300.0f, 9, 3);
  first.CImage::SetLevel(2, 0.0, 9.0);  // plane 2 is bright by its own levels
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  dst.CImage::SetLevel(0, 0.0, 510.0);
  dst.CImage::SetLevel(2, 0.0, 2550.0);
  CompositeArguments c = Reject(0, 1.0, 1);
  Apply(dst, first, second, c);
  EXPECT_NEAR(20.0f, dst.GetPixelGrayRaw(4, 4, 2), 1e-5);
  // With a window, amax is 10 / 9 * 255 by plane 2's levels: bright, and lower than b only by being so.
  c.radius = 1;
  c.threshold = 1.05;
  second.CImage::SetLevel(2, 0.0, 30000.0);
  Apply(dst, first, second, c);
  EXPECT_NEAR(2 * 300.0 / 30000.0 * 255.0, dst.GetPixelGrayRaw(4, 4, 2), 1e-4);
}

// Intended: a window's position in the second frame is x + tap + sx - x, where sums round; tap + sx alone would not.
TEST(RejectionComposite, WindowPositionsRoundWithTheColumnAdded) {
  COrbImage first = Flat(14.0f, 12);
  COrbImage second = Flat(12.0f, 12);
  second.SetPixelGrayRaw(4, 4, 200.0f, 0);
  CompositeArguments c = Reject(1);
  // Column 5 lies a hair left of 2.5: 6 + 2.4999999999999996 is 8.5, so that the window ends with column 4, not 3.
  c.dx = 2.5000000000000004;
  EXPECT_EQ(14.0f, Joined(first, second, c).GetPixelGrayRaw(5, 4, 0));
  EXPECT_EQ(12.0f, Joined(first, second, c).GetPixelGrayRaw(4, 4, 0));
}

TEST(RejectionComposite, PlanesAreChosenIndependently) {
  COrbImage first = Flat(100.0f, 9, 3);
  COrbImage second = Flat(60.0f, 9, 3);
  second.SetPixelGrayRaw(4, 4, 140.0f, 1);
  CImgComposit dst = Joined(first, second, Reject(0));
  EXPECT_EQ(60.0f, dst.GetPixelGrayRaw(4, 4, 0));
  EXPECT_EQ(100.0f, dst.GetPixelGrayRaw(4, 4, 1));
  EXPECT_EQ(60.0f, dst.GetPixelGrayRaw(4, 4, 2));
}

// Intended: the total counts rows, the ticks count rows of every plane.
TEST(RejectionComposite, AColorImageRunsPastAHundredPercent) {
  RecordingWindow window;
  COrbImage source = Flat(1.0f, 4, 3);
  CImgComposit dst;
  dst.CopyImage(source, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  Apply(dst, source, source, Reject(0), nullptr, 1);
  EXPECT_EQ(std::vector<std::string>{"コンポジット処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(4, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(12, window.polls);
  ASSERT_EQ(12u, window.positions.size());
  EXPECT_EQ(300, window.positions.back());
}

TEST(RejectionComposite, SilentWithoutProgressAndDeafToEscape) {
  RecordingWindow window;
  window.escapeAtPoll = 1;
  COrbImage first = Flat(20.0f);
  COrbImage second = Flat(10.0f);
  CImgComposit quiet = Joined(first, second, Reject(1));
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  Apply(dst, first, second, Reject(1));
  EXPECT_TRUE(window.IsSilent());
  FillJunk(dst);
  Apply(dst, first, second, Reject(1), nullptr, 1);
  EXPECT_TRUE(SameBits(quiet, dst));
}

TEST(RejectionComposite, EmptyRectangleChangesNothing) {
  RecordingWindow window;
  COrbImage source = Flat(3.0f);
  for (CRect rect : {CRect(0, 4, 9, 4), CRect(9, 9, 0, 0), CRect(4, 0, 4, 9)}) {
    CImgComposit dst;
    dst.CopyImage(source, nullptr, nullptr);
    dst.SetProgressHandle(&window);
    Apply(dst, source, source, Reject(2, 0.5), &rect, 1);
    EXPECT_TRUE(SameBits(source, dst));
  }
  EXPECT_EQ(3u, window.starts.size());
  EXPECT_EQ(3u, window.ends.size());
}

TEST(RejectionComposite, InPlaceEqualsCopyWithoutAWindow) {
  Random random(45);
  COrbImage first = RandomImage(random, 33, 8, 3);
  COrbImage second = RandomImage(random, 33, 8, 3);
  for (int const to256 : {0, 1}) {
    CompositeArguments c = Reject(0, 0.9, to256);
    c.dx = 0.5;
    EXPECT_TRUE(InPlaceEqualsCopy(first, second, c)) << to256;
  }
}

TEST(RejectionComposite, WorksOnAHostileStore) {
  Random random(46);
  COrbImage first = RandomImage(random, 12, 7, 3);
  COrbImage second = RandomImage(random, 14, 9, 3);
  OrbTestAccess::SetExtrema(first, 0, 0.0, 400.0);
  OrbTestAccess::SetExtrema(second, 0, 0.0, 400.0);
  second.SetStdCtr(5, 5);
  for (int const radius : {0, 2}) {
    for (double const angle : {0.0, 10.0}) {
      CompositeArguments c = Reject(radius, 1.0, 1);
      c.dx = 0.5;
      c.angle = angle;
      EXPECT_TRUE(WorksOnHostileStores(first, second, c)) << angle;
    }
  }
}

}  // namespace
}  // namespace orb::test
