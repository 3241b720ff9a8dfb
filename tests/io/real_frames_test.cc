// Frames of real cameras and telescopes, read and written back.
#include <cmath>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/picture_file.h>
#include <tests/io/scratch_folder.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

#define ORB_REQUIRE_SAMPLES() \
  if (SamplePath("").empty()) GTEST_SKIP() << "skipped: ORBIMG_SAMPLES does not name the folder of real frames"

struct Known {
  char const* name;
  host::Shape shape;
  char const* type;
  std::int64_t nonFinite;
};

TEST(RealFrames, HaveTheirShapesAndTypes) {
  ORB_REQUIRE_SAMPLES();
  Known const frames[] = {
      {"series_tres1/light_021.fits", {1092, 736, 1}, "unsigned 16-bit integer", 0},
      {"deepsky/M57_30s.fits", {347, 237, 1}, "signed 16-bit integer", 0},
      {"planet/jupiter_256.fits", {256, 256, 1}, "unsigned 8-bit integer", 0},
      {"planet/jupiter_rgb_800.fits", {800, 800, 3}, "unsigned 8-bit integer", 0},
      {"starfield/ntt_na36_sep.fits", {256, 256, 1}, "scaled 16-bit integer", 0},
      {"starfield/spitzer_glimpse_4.5um.fits", {1025, 513, 1}, "32-bit float", 3},
      {"deconvolution/titan_ao.fits", {512, 512, 1}, "64-bit float", 0},
  };
  for (Known const& known : frames) {
    SCOPED_TRACE(known.name);
    host::Frame frame;
    host::FitsReader reader(SamplePath(known.name));
    EXPECT_EQ(known.shape, reader.Shape());
    EXPECT_EQ(known.type, reader.TypeName());
    host::ReadFits(SamplePath(known.name), frame);
    EXPECT_EQ(known.nonFinite, frame.nonFinite);
  }
}

TEST(RealFrames, NotANumberIsWhereItShouldBe) {
  ORB_REQUIRE_SAMPLES();
  host::Frame frame;
  host::ReadFits(SamplePath("starfield/spitzer_glimpse_4.5um.fits"), frame);
  for (auto const& [x, y] : {std::pair(591, 107), std::pair(740, 292), std::pair(741, 292)}) {
    EXPECT_TRUE(std::isnan(frame.image.GetPixelGrayRaw(x, 513 - 1 - y, 0)));  // the table counts from the bottom
  }
}

TEST(RealFrames, CameraLevelsAreTaken) {
  ORB_REQUIRE_SAMPLES();
  host::Frame frame;
  host::ReadFits(SamplePath("series_m13/M13_blue_0001_crop.fits"), frame);
  EXPECT_EQ(506.0, frame.image.GetLevelMin(0));
  EXPECT_EQ(572.0, frame.image.GetLevelMax(0));
}

TEST(RealFrames, ComeBackWithEveryCard) {
  ORB_REQUIRE_SAMPLES();
  ScratchFolder folder;
  for (char const* name :
       {"series_tres1/light_110.fits", "sky_background/t1m_90s_vignetted.fits", "planet/jupiter_rgb_800.fits",
        "mosaic_m17/m17_K_left.fits", "deconvolution/titan_ao.fits"}) {
    SCOPED_TRACE(name);
    host::Frame frame;
    host::ReadFits(SamplePath(name), frame);
    host::WriteFits(folder / "a.fits", frame, host::Existing::kReplace);
    host::Frame back;
    host::ReadFits(folder / "a.fits", back);
    EXPECT_TRUE(SameBits(frame.image, back.image));
    EXPECT_TRUE(SameLevels(frame.image, back.image));
    host::SetLevelCards(frame.header, frame.image);
    EXPECT_EQ(frame.header.cards, back.header.cards);
  }
}

TEST(RealFrames, PngOfTheMoon) {
  ORB_REQUIRE_SAMPLES();
  COrbImage image;
  host::ReadPng(SamplePath("planet/moon_512.png"), image);
  EXPECT_EQ(512, image.GetWidth());
  EXPECT_EQ(512, image.GetHeight());
  EXPECT_EQ(1, image.GetPlanes());
}

}  // namespace
}  // namespace orb::test
