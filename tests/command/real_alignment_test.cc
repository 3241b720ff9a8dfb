// Real frames: shifts and rotations agree with those measured by other means.
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <hosts/orbimg/alignment.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::AlignByStars;
using host::AlignmentOutcome;
using host::FindStars;
using host::Frame;
using host::FrameTransform;
using host::Position;
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
  printf("reference %zu\n", referenceStars.size());
  for (Measured const& measured :
       {Measured{"021", 53.54, -83.41, -0.017}, Measured{"050", 38.26, -54.14, -0.015},
        Measured{"080", 19.12, -24.78, -0.009}, Measured{"110", 0.0, 0.0, 0.0}, Measured{"140", -20.52, 21.39, 0.010},
        Measured{"170", -42.78, 37.92, 0.022}, Measured{"200", -65.81, 50.42, 0.037},
        Measured{"229", -87.11, 57.30, 0.054}}) {
    Frame frame;
    ReadFits(folder + measured.name + ".fits", frame);
    std::vector<Star> const stars = FindStars(frame.image, StarFinderSettings{});
    AlignmentOutcome const outcome =
        AlignByStars(reference.image, referenceStars, frame.image, stars, StarAlignmentSettings{});
    ASSERT_TRUE(outcome.alignment) << measured.name << ": " << outcome.reason;
    FrameTransform const& t = outcome.alignment->transform;
    printf("%s stars %zu matched %d rms %.3f: %.2f %.2f %.4f\n", measured.name, stars.size(), outcome.alignment->starsMatched, outcome.alignment->rms, t.dx, t.dy, t.angle);
    EXPECT_LT(LargestDistance(TransformOf(measured, 545.5, 367.5), t, 1092, 736), 0.3) << measured.name;
    EXPECT_LT(outcome.alignment->rms, 0.3) << measured.name;
    EXPECT_GT(outcome.alignment->starsMatched, 80) << measured.name;
  }
}

TEST(RealFrames, FaintSeriesAligns) {
  std::string const folder = SamplePath("series_m13/");
  if (folder.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  Frame reference;
  ReadFits(folder + "M13_blue_0001_crop.fits", reference);
  std::vector<Star> const referenceStars = FindStars(reference.image, StarFinderSettings{});
  printf("reference %zu\n", referenceStars.size());
  for (Measured const& measured : {Measured{"M13_blue_0002_crop", 11.4, -1.0, 0.0}, Measured{"M13_blue_0003", 24.2, -3.5, 0.0},
                                   Measured{"M13_blue_0004_crop", 34.4, -4.1, 0.0}, Measured{"M13_blue_0005", 46.7, -3.9, 0.0}}) {
    Frame frame;
    ReadFits(folder + measured.name + ".fits", frame);
    std::vector<Star> const stars = FindStars(frame.image, StarFinderSettings{});
    printf("%s stars %zu\n", measured.name, stars.size());
    AlignmentOutcome const outcome =
        AlignByStars(reference.image, referenceStars, frame.image, stars, StarAlignmentSettings{});
    EXPECT_TRUE(outcome.alignment) << measured.name << ": " << outcome.reason;
    if (!outcome.alignment) continue;
    FrameTransform const& t = outcome.alignment->transform;
    printf("%s matched %d rms %.3f: %.2f %.2f %.4f\n", measured.name, outcome.alignment->starsMatched, outcome.alignment->rms, t.dx, t.dy, t.angle);
    EXPECT_LT(LargestDistance(TransformOf(measured, 255.5, 255.5), t, 512, 512), 0.5) << measured.name;
  }
}

}  // namespace
}  // namespace orb::test
