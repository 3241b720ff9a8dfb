// Real frames: shifts and rotations agree with those measured by other means.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <hosts/orbimg/alignment.h>
#include <hosts/orbimg/match_alignment.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::AlignByMatching;
using host::AlignByStars;
using host::AlignmentOutcome;
using host::FindStars;
using host::Frame;
using host::FrameTransform;
using host::MatchAlignmentSettings;
using host::Position;
using host::PrepareForMatching;
using host::ReadFits;
using host::RigidMap;
using host::SquaredDistance;
using host::Star;
using host::StarAlignmentSettings;
using host::StarFinderSettings;

// What carries a position of the frame to the reference, y upward: a counter-clockwise rotation in degrees about the
// middle of the frame, then a shift.
struct Measured {
  char const* name;
  double shiftX;
  double shiftY;
  double rotation;
};

// The same, y downward and from the reference to the frame.
FrameTransform TransformOf(Measured const& measured, double middleX, double middleY) {
  return FrameTransform{measured.shiftX, -measured.shiftY, -measured.rotation, middleX, middleY};
}

double LargestDistance(FrameTransform const& a, FrameTransform const& b, int width, int height) {
  double const right = width - 1.0;
  double const bottom = height - 1.0;
  double most = 0.0;
  for (Position const& corner : {Position{0, 0}, Position{right, 0}, Position{0, bottom}, Position{right, bottom}}) {
    most = std::max(most, SquaredDistance(RigidMap(a).ToFrame(corner), RigidMap(b).ToFrame(corner)));
  }
  return std::sqrt(most);
}

TEST(RealFrames, RotatedSeriesAlignsToAThirdOfAPixel) {
  std::string const folder = SamplePath("series_tres1/light_");
  if (folder.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  Frame reference;
  ReadFits(folder + "110.fits", reference);
  std::vector<Star> const referenceStars = FindStars(reference.image, StarFinderSettings{});
  for (Measured const& measured : {Measured{"021", 53.54, -83.41, -0.017}, Measured{"050", 38.26, -54.14, -0.015},
                                   Measured{"080", 19.12, -24.78, -0.009}, Measured{"110", 0.0, 0.0, 0.0},
                                   Measured{"140", -20.52, 21.39, 0.010}, Measured{"170", -42.78, 37.92, 0.022},
                                   Measured{"200", -65.81, 50.42, 0.037}, Measured{"229", -87.11, 57.30, 0.054}}) {
    Frame frame;
    ReadFits(folder + measured.name + ".fits", frame);
    std::vector<Star> const stars = FindStars(frame.image, StarFinderSettings{});
    AlignmentOutcome const outcome =
        AlignByStars(reference.image, referenceStars, frame.image, stars, StarAlignmentSettings{});
    ASSERT_TRUE(outcome.alignment) << measured.name << ": " << outcome.reason;
    FrameTransform const& t = outcome.alignment->transform;
    EXPECT_LT(LargestDistance(TransformOf(measured, 545.5, 367.5), t, 1092, 736), 0.3) << measured.name;
    EXPECT_LT(outcome.alignment->rms.value(), 0.3) << measured.name;
    EXPECT_GT(outcome.alignment->starsMatched, 80) << measured.name;
  }
}

// Single frames of this series show hardly a star. The shifts to compare with come from cross-correlation, good to
// about half a pixel; ours agree with one another to that, too.
TEST(RealFrames, FaintSeriesAlignsByMatching) {
  std::string const folder = SamplePath("series_m13/M13_blue_000");
  if (folder.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  MatchAlignmentSettings const settings;
  std::vector<COrbImage> copies;
  for (char const* number : {"1", "2", "3", "4", "5"}) {
    Frame frame;
    ReadFits(folder + number + "_crop.fits", frame);
    copies.push_back(PrepareForMatching(frame.image, settings));
  }
  auto const align = [&](int reference, int frame) {
    AlignmentOutcome const outcome = AlignByMatching(copies[reference], copies[frame], settings);
    EXPECT_TRUE(outcome.alignment) << frame << ": " << outcome.reason;
    return outcome.alignment ? outcome.alignment->transform : FrameTransform{};
  };
  std::vector<Measured> const table = {{"1", 0.0, 0.0, 0.0},
                                       {"2", 11.4, -1.0, 0.0},
                                       {"3", 24.2, -3.5, 0.0},
                                       {"4", 34.4, -4.1, 0.0},
                                       {"5", 46.7, -3.9, 0.0}};
  for (int i = 1; i < 5; ++i) {
    FrameTransform const found = align(0, i);
    EXPECT_EQ(0.0, found.angle);
    EXPECT_NEAR(table[i].shiftX, found.dx, 0.8) << table[i].name;
    EXPECT_NEAR(-table[i].shiftY, found.dy, 0.8) << table[i].name;
    for (int j = i + 1; j < 5; ++j) {
      EXPECT_NEAR(align(0, j).dx, found.dx + align(i, j).dx, 0.6) << i << ' ' << j;
      EXPECT_NEAR(align(0, j).dy, found.dy + align(i, j).dy, 0.6) << i << ' ' << j;
    }
  }
}

// A rotation of a few hundredths of a degree does not keep a shift from being found.
TEST(RealFrames, BrightSeriesAlignsByMatchingToo) {
  std::string const folder = SamplePath("series_tres1/light_");
  if (folder.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  MatchAlignmentSettings const settings;
  Frame reference;
  Frame frame;
  ReadFits(folder + "110.fits", reference);
  ReadFits(folder + "140.fits", frame);
  AlignmentOutcome const outcome = AlignByMatching(PrepareForMatching(reference.image, settings),
                                                   PrepareForMatching(frame.image, settings), settings);
  ASSERT_TRUE(outcome.alignment) << outcome.reason;
  EXPECT_NEAR(-20.52, outcome.alignment->transform.dx, 0.3);
  EXPECT_NEAR(-21.39, outcome.alignment->transform.dy, 0.3);
}

TEST(RealFrames, FramesOfAnotherFieldAreRefused) {
  std::string const tres = SamplePath("series_tres1/light_110.fits");
  std::string const nebula = SamplePath("deepsky/M57_30s.fits");
  if (tres.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  Frame reference;
  Frame frame;
  ReadFits(tres, reference);
  ReadFits(nebula, frame);
  AlignmentOutcome const outcome =
      AlignByStars(reference.image, FindStars(reference.image, StarFinderSettings{}), frame.image,
                   FindStars(frame.image, StarFinderSettings{}), StarAlignmentSettings{});
  EXPECT_FALSE(outcome.alignment);
  EXPECT_NE(std::string::npos, outcome.reason.find("form no pattern"));
}

}  // namespace
}  // namespace orb::test
