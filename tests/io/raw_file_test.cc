// Colour out of mosaics, and camera raw files: digital negatives made here by libtiff.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/debayer.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/raw_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>
#include <tests/io/stored_dng.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::ColourPattern;
using host::Exit;
using host::Mosaic;

constexpr int kRggb[2][2] = {{0, 1}, {1, 2}};

Mosaic BayerMosaic(std::vector<std::uint16_t> const& samples, int width) {
  Mosaic mosaic;
  mosaic.samples = samples.data();
  mosaic.width = width;
  mosaic.pitch = width;
  mosaic.height = static_cast<int>(samples.size()) / width;
  for (std::size_t y = 0; y < 48; ++y) {
    for (std::size_t x = 0; x < 48; ++x) mosaic.pattern.planes[y][x] = static_cast<std::uint8_t>(kRggb[y % 2][x % 2]);
  }
  return mosaic;
}

std::vector<float> Row(Mosaic const& mosaic, int plane, int y) {
  std::vector<float> row(static_cast<std::size_t>(mosaic.width), -1.0f);
  host::DebayerRow(mosaic, plane, y, row.data());
  return row;
}

// R G R G
// G B G B
// R G R G
TEST(Debayer, MissingColoursAreMeansOfTheNearest) {
  std::vector<std::uint16_t> const samples{10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 121};
  Mosaic const mosaic = BayerMosaic(samples, 4);
  EXPECT_TRUE(SameBits({10.0f, 20.0f, 30.0f, 30.0f}, Row(mosaic, 0, 0)));
  EXPECT_TRUE(SameBits({50.0f, 60.0f, 70.0f, 70.0f}, Row(mosaic, 0, 1)));
  EXPECT_TRUE(SameBits({35.0f, 20.0f, static_cast<float>((20.0 + 40.0 + 70.0) / 3.0), 40.0f}, Row(mosaic, 1, 0)));
  EXPECT_TRUE(
      SameBits({50.0f, (20.0f + 50.0f + 70.0f + 100.0f) / 4.0f, 70.0f, static_cast<float>((40.0 + 70.0 + 121.0) / 3.0)},
               Row(mosaic, 1, 1)));
  EXPECT_TRUE(SameBits({60.0f, 60.0f, 70.0f, 80.0f}, Row(mosaic, 2, 2)));
}

TEST(Debayer, AConstantColourComesBack) {
  std::vector<std::uint16_t> samples;
  for (int y = 0; y < 7; ++y) {
    for (int x = 0; x < 9; ++x) samples.push_back(static_cast<std::uint16_t>(100 + 1000 * kRggb[y % 2][x % 2]));
  }
  Mosaic const mosaic = BayerMosaic(samples, 9);
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < 7; ++y) {
      EXPECT_TRUE(SameBits(std::vector<float>(9, 100.0f + 1000.0f * static_cast<float>(p)), Row(mosaic, p, y)));
    }
  }
}

TEST(Debayer, APixelWithAnotherBlackIsBroughtToItsPlanes) {
  std::vector<std::uint16_t> const samples(16, 500);
  Mosaic mosaic = BayerMosaic(samples, 4);
  for (std::size_t y = 1; y < 48; y += 2) {
    for (std::size_t x = 0; x < 48; x += 2) mosaic.pattern.excess[y][x] = 6.0f;  // green beside blue
  }
  EXPECT_TRUE(
      SameBits({494.0f, (500.0f * 2 + 494.0f * 2) / 4.0f, 494.0f, (500.0f * 2 + 494.0f) / 3.0f}, Row(mosaic, 1, 1)));
  EXPECT_TRUE(SameBits(std::vector<float>(4, 500.0f), Row(mosaic, 0, 1)));
}

TEST(Debayer, WhereAColourIsFarTheSquareGrows) {
  std::vector<std::uint16_t> samples(7 * 7, 1);
  samples[0] = 40;
  Mosaic mosaic = BayerMosaic(samples, 7);
  for (auto& row : mosaic.pattern.planes) row.fill(1);
  mosaic.pattern.planes[0][0] = 0;
  EXPECT_TRUE(SameBits({40, 40, 40, 40, 0, 0, 0}, Row(mosaic, 0, 3)));
  EXPECT_TRUE(SameBits(std::vector<float>(7, 0.0f), Row(mosaic, 2, 0)));
}

TEST(RawNames, AreKnownByTheirEndings) {
  for (char const* name : {"a.cr2", "a.NEF", "x/b.c.dng", "a.Arw"}) EXPECT_TRUE(host::IsRawName(name)) << name;
  for (char const* name : {"a.tif", "cr2", "a.fits", "a.dngx", ""}) EXPECT_FALSE(host::IsRawName(name)) << name;
}

constexpr int kWidth = kDngWidth;
constexpr int kHeight = kDngHeight;

class RawTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!host::CanReadRaw()) GTEST_SKIP() << "this build has no LibRaw";
    WriteDng(folder / "a.dng");
  }

  ScratchFolder folder;
};

TEST_F(RawTest, TheMosaicIsThatOfTheSensor) {
  host::Frame frame;
  host::ReadFrameFile(folder / "a.dng", frame, {.mosaic = true});
  ASSERT_EQ(1, frame.image.GetPlanes());
  ASSERT_EQ(kWidth, frame.image.GetWidth());
  ASSERT_EQ(kHeight, frame.image.GetHeight());
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) ASSERT_EQ(DngSampleAt(x, y), frame.image.GetPixelGrayRaw(x, y, 0));
  }
  EXPECT_EQ(256.0, frame.image.GetLevelMin(0));
  EXPECT_EQ(4000.0, frame.image.GetLevelMax(0));
  EXPECT_EQ("RGGB", frame.header.Text("BAYERPAT"));
  EXPECT_EQ("TOP-DOWN", frame.header.Text("ROWORDER"));
  EXPECT_EQ("Maker Model 1", frame.header.Text("INSTRUME"));
}

TEST_F(RawTest, ColoursAreTheMosaicDebayered) {
  std::vector<std::uint16_t> samples;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) samples.push_back(DngSampleAt(x, y));
  }
  Mosaic const mosaic = BayerMosaic(samples, kWidth);
  auto const reader = host::OpenFrame(folder / "a.dng");
  ASSERT_EQ((host::Shape{kWidth, kHeight, 3}), reader->Shape());
  EXPECT_EQ("unsigned 16-bit integer, camera raw", reader->Description());
  std::vector<float> row(kWidth);
  for (int p = 0; p < 3; ++p) {
    for (int y = kHeight - 1; y >= 0; --y) {
      reader->ReadRows(p, y, 1, row.data());
      ASSERT_TRUE(SameBits(Row(mosaic, p, y), row)) << p << " " << y;
    }
  }
  host::Frame frame;
  host::ReadFrameFile(*reader, frame);
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(256.0, frame.image.GetLevelMin(p));
    EXPECT_EQ(4000.0, frame.image.GetLevelMax(p));
  }
  EXPECT_FALSE(frame.header.Has("BAYERPAT"));
}

TEST_F(RawTest, BrokenFiles) {
  std::string const whole = ReadText(folder / "a.dng");
  for (std::size_t size = 1; size < whole.size(); size += 577) {
    WriteText(folder / "cut.dng", whole.substr(0, size));
    EXPECT_TRUE(FailsWith(Exit::kInput, "cut.dng: ", [&] { host::OpenFrame(folder / "cut.dng"); })) << size;
  }
  WriteText(folder / "text.nef", "This is no picture.");
  EXPECT_TRUE(FailsWith(Exit::kInput, "text.nef: not a readable camera raw file",
                        [&] { host::OpenFrame(folder / "text.nef"); }));
}

TEST(RawWithoutLibRaw, IsRefusedWithTheRemedy) {
  if (host::CanReadRaw()) GTEST_SKIP() << "this build has LibRaw";
  ScratchFolder folder;
  WriteText(folder / "a.cr2", "II");
  EXPECT_TRUE(FailsWith(Exit::kInput, "libraw-dev", [&] { host::OpenFrame(folder / "a.cr2"); }));
}

}  // namespace
}  // namespace orb::test
