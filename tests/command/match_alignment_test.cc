// Aligning frames by their mean squared difference.
#include <string>

#include <gtest/gtest.h>
#include <hosts/orbimg/match_alignment.h>
#include <orbimg/orbimg.h>
#include <tests/command/synthetic_stars.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::AlignByMatching;
using host::AlignmentMethod;
using host::AlignmentOutcome;
using host::MatchAlignmentSettings;
using host::PrepareForMatching;

// A soft blob with two smaller ones, laid so that the true shift to the unmoved one is (dx, dy).
COrbImage Blobs(double dx, double dy, double noise, unsigned seed) {
  COrbImage image = SkyImage(200, 160, 500.0, noise, seed);
  AddGaussian(image, 100.0 - dx, 80.0 - dy, 60.0, 14.0);
  AddGaussian(image, 60.0 - dx, 50.0 - dy, 90.0, 4.0);
  AddGaussian(image, 130.0 - dx, 110.0 - dy, 80.0, 4.0);
  return image;
}

AlignmentOutcome Match(COrbImage const& reference, COrbImage const& frame, MatchAlignmentSettings const& settings) {
  return AlignByMatching(PrepareForMatching(reference, settings), PrepareForMatching(frame, settings), settings);
}

TEST(MatchAlignment, FindsTheFractionOfAPixel) {
  MatchAlignmentSettings settings;
  settings.range = 40;
  for (double dx : {0.0, 3.3, -7.5, 12.8}) {
    for (double dy : {-5.75, 0.25, 9.5}) {
      AlignmentOutcome const outcome = Match(Blobs(0.0, 0.0, 3.0, 1), Blobs(dx, dy, 3.0, 2), settings);
      ASSERT_TRUE(outcome.alignment) << outcome.reason;
      EXPECT_EQ(AlignmentMethod::kMatch, outcome.alignment->method);
      EXPECT_NEAR(dx, outcome.alignment->transform.dx, 0.15);
      EXPECT_NEAR(dy, outcome.alignment->transform.dy, 0.15);
      EXPECT_EQ(0.0, outcome.alignment->transform.angle);
      EXPECT_EQ(0, outcome.alignment->starsMatched);
      EXPECT_FALSE(outcome.alignment->rms.has_value());
    }
  }
}

// A frame that is mostly noise does not settle on half pixels.
TEST(MatchAlignment, NoiseDoesNotDrawTowardsHalfPixels) {
  MatchAlignmentSettings settings;
  settings.range = 20;
  double sum = 0.0;
  for (unsigned seed = 0; seed < 8; ++seed) {
    AlignmentOutcome const outcome = Match(Blobs(0.0, 0.0, 25.0, seed), Blobs(4.0, 0.0, 25.0, seed + 100), settings);
    ASSERT_TRUE(outcome.alignment) << outcome.reason;
    EXPECT_NEAR(4.0, outcome.alignment->transform.dx, 1.0);
    sum += outcome.alignment->transform.dx;
  }
  EXPECT_NEAR(4.0, sum / 8.0, 0.2);
}

TEST(MatchAlignment, HotPixelsDoNotHoldTheFrame) {
  COrbImage reference = Blobs(0.0, 0.0, 3.0, 1);
  COrbImage frame = Blobs(6.0, 4.0, 3.0, 2);
  for (int i = 5; i < 150; i += 9) {
    *reference.GetImageAdr(i, i, 0, 0, nullptr) = 20000.0f;
    *frame.GetImageAdr(i, i, 0, 0, nullptr) = 20000.0f;
  }
  MatchAlignmentSettings settings;
  settings.range = 30;
  AlignmentOutcome const outcome = Match(reference, frame, settings);
  ASSERT_TRUE(outcome.alignment) << outcome.reason;
  EXPECT_NEAR(6.0, outcome.alignment->transform.dx, 0.2);
  EXPECT_NEAR(4.0, outcome.alignment->transform.dy, 0.2);
}

TEST(MatchAlignment, TheStartMovesTheSearch) {
  MatchAlignmentSettings settings;
  settings.range = 20;
  AlignmentOutcome const missed = Match(Blobs(0.0, 0.0, 3.0, 1), Blobs(25.0, 0.0, 3.0, 2), settings);
  EXPECT_FALSE(missed.alignment);
  EXPECT_EQ("no best shift within 10 pixels of the start: the match still improves at the edge of the range",
            missed.reason);
  settings.startX = 22.0;
  AlignmentOutcome const found = Match(Blobs(0.0, 0.0, 3.0, 1), Blobs(25.0, 0.0, 3.0, 2), settings);
  ASSERT_TRUE(found.alignment) << found.reason;
  EXPECT_NEAR(25.0, found.alignment->transform.dx, 0.2);
}

TEST(MatchAlignment, FramesWithoutAnythingAreRefused) {
  COrbImage const empty(-32, 60, 50, 1, 1.0, 0.0, 1, nullptr, nullptr);
  MatchAlignmentSettings settings;
  settings.range = 20;
  EXPECT_FALSE(Match(empty, empty, settings).alignment);
  settings.startX = 500.0;
  EXPECT_EQ("no shift within 10 pixels of the start leaves an overlap with the reference",
            Match(empty, empty, settings).reason);
}

TEST(MatchAlignment, NeitherCopyChanges) {
  MatchAlignmentSettings settings;
  settings.range = 10;
  COrbImage const reference = PrepareForMatching(Blobs(0.0, 0.0, 3.0, 1), settings);
  COrbImage const frame = PrepareForMatching(Blobs(1.0, 0.0, 3.0, 2), settings);
  COrbImage const referenceBefore(reference);
  COrbImage const frameBefore(frame);
  AlignByMatching(reference, frame, settings);
  EXPECT_TRUE(SameBits(referenceBefore, reference));
  EXPECT_TRUE(SameBits(frameBefore, frame));
}

}  // namespace
}  // namespace orb::test
