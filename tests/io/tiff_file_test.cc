// TIFF: every type and layout that is read, what is left out, what is refused; files written and read back.
#include <cmath>
#include <filesystem>
#include <limits>
#include <span>

#include <gtest/gtest.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/tiff_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>
#include <tests/io/stored_tiff.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Compression;
using host::Existing;
using host::Exit;
using host::Frame;
using host::SampleType;
using host::TiffReader;
using host::WriteSettings;

constexpr int kPackings[] = {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                             COMPRESSION_DEFLATE};

class TiffTest : public testing::Test {
 protected:
  // Samples of all bits, in file order.
  template <typename Stored>
  std::vector<Stored> Numbers(std::size_t count) {
    std::vector<Stored> numbers(count);
    for (Stored& number : numbers) {
      std::uint64_t const bits = (std::uint64_t{random()} << 32) | random();
      if constexpr (std::is_integral_v<Stored>) {
        number = static_cast<Stored>(bits);
      } else {
        number = static_cast<Stored>(std::ldexp(static_cast<double>(bits >> 12), -50) - 2.0);
      }
    }
    return numbers;
  }

  // Reads the file in bands, single rows from below, and whole, and expects the planes to be samples 0, 1, 2 of
  // `stored`.
  template <typename Stored>
  void ExpectSamples(StoredTiff const& file, std::vector<Stored> const& stored, int planes) {
    std::string const path = folder / "a.tif";
    file.Write(path, stored);
    TiffReader reader(path);
    int const height = static_cast<int>(stored.size()) / file.width / file.samplesPerPixel;
    ASSERT_EQ((host::Shape{file.width, height, planes}), reader.Shape());
    for (int p = 0; p < planes; ++p) {
      std::vector<float> expected;
      for (std::size_t i = static_cast<std::size_t>(p); i < stored.size();
           i += static_cast<std::size_t>(file.samplesPerPixel)) {
        expected.push_back(static_cast<float>(stored[i]));
      }
      std::vector<float> samples(expected.size(), -7.0f);
      for (int y = height - 1; y >= 0; --y) reader.ReadRows(p, y, 1, samples.data() + y * file.width);
      ASSERT_TRUE(SameBits(expected, samples));
      for (int y = 0; y < height; y += 3) {
        reader.ReadRows(p, y, std::min(3, height - y), samples.data() + y * file.width);
      }
      ASSERT_TRUE(SameBits(expected, samples));
    }
    Frame frame;
    host::ReadFrameFile(reader, frame);
    for (int p = 0; p < planes; ++p) {
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < file.width; ++x) {
          std::size_t const at = static_cast<std::size_t>((y * file.width + x) * file.samplesPerPixel + p);
          ASSERT_EQ(static_cast<float>(stored[at]), frame.image.GetPixelGrayRaw(x, y, p));
        }
      }
    }
  }

  template <typename Stored>
  void ExpectEveryLayout(int bits, int format) {
    for (int samples : {1, 3}) {
      for (int planar : {PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
        for (int tile : {0, 16}) {
          for (int packing : kPackings) {
            for (char const* mode : {"w", "w8", "wb", "wb8"}) {
              if (mode != std::string("w") && packing != COMPRESSION_LZW && packing != COMPRESSION_NONE) continue;
              StoredTiff file;
              file.width = 21;
              file.samplesPerPixel = samples;
              file.bits = bits;
              file.format = format;
              file.photometric = samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
              file.planar = planar;
              file.tile = tile;
              file.compression = packing;
              file.mode = mode;
              bool const predicts = packing == COMPRESSION_LZW || packing == COMPRESSION_ADOBE_DEFLATE;
              // libtiff writes floats with a predictor wrongly in the byte order of other machines.
              bool const isForeign = std::string(mode).starts_with("wb");
              if (predicts && format == SAMPLEFORMAT_IEEEFP && !isForeign) file.predictor = PREDICTOR_FLOATINGPOINT;
              if (predicts && format != SAMPLEFORMAT_IEEEFP) file.predictor = PREDICTOR_HORIZONTAL;
              SCOPED_TRACE(testing::Message() << samples << " samples, planar " << planar << ", tile " << tile
                                              << ", compression " << packing << ", mode " << mode);
              ExpectSamples(file, Numbers<Stored>(static_cast<std::size_t>(21 * 19 * samples)), samples);
              if (HasFatalFailure()) return;
            }
          }
        }
      }
    }
  }

  Random random{5};
  ScratchFolder folder;
};

TEST_F(TiffTest, UnsignedBytes) { ExpectEveryLayout<std::uint8_t>(8, SAMPLEFORMAT_UINT); }
TEST_F(TiffTest, SignedBytes) { ExpectEveryLayout<std::int8_t>(8, SAMPLEFORMAT_INT); }
TEST_F(TiffTest, UnsignedShorts) { ExpectEveryLayout<std::uint16_t>(16, SAMPLEFORMAT_UINT); }
TEST_F(TiffTest, SignedShorts) { ExpectEveryLayout<std::int16_t>(16, SAMPLEFORMAT_INT); }
TEST_F(TiffTest, UnsignedLongs) { ExpectEveryLayout<std::uint32_t>(32, SAMPLEFORMAT_UINT); }
TEST_F(TiffTest, SignedLongs) { ExpectEveryLayout<std::int32_t>(32, SAMPLEFORMAT_INT); }
TEST_F(TiffTest, Floats) { ExpectEveryLayout<float>(32, SAMPLEFORMAT_IEEEFP); }
TEST_F(TiffTest, Doubles) { ExpectEveryLayout<double>(64, SAMPLEFORMAT_IEEEFP); }

TEST_F(TiffTest, TheTypeIsTold) {
  StoredTiff file;
  file.bits = 16;
  file.format = SAMPLEFORMAT_INT;
  file.Write(folder / "a.tif", std::vector<std::int16_t>(10, -3));
  TiffReader reader(folder / "a.tif");
  EXPECT_EQ("signed 16-bit integer", reader.TypeName());
  EXPECT_EQ("signed 16-bit integer, TIFF", reader.Description());
  EXPECT_EQ(SampleType::kInt16, reader.Facts().type);
  EXPECT_EQ(16, reader.Bitpix());
}

TEST_F(TiffTest, WhiteAtZeroIsTurned) {
  StoredTiff file;
  file.photometric = PHOTOMETRIC_MINISWHITE;
  file.Write(folder / "a.tif", std::vector<std::uint8_t>{0, 1, 2, 254, 255});
  Frame frame;
  host::ReadFrameFile(folder / "a.tif", frame);
  EXPECT_TRUE(SameBits({255.0f, 254.0f, 253.0f, 1.0f, 0.0f}, SamplesOf(frame.image)));
  file.format = SAMPLEFORMAT_INT;
  file.Write(folder / "b.tif", std::vector<std::int8_t>(5));
  EXPECT_TRUE(FailsWith(Exit::kInput, "b.tif: white is 0", [&] { TiffReader(folder / "b.tif"); }));
}

TEST_F(TiffTest, LevelsOfIntegersAreTheirRangeAndOthersAreMeasured) {
  StoredTiff file;
  file.Write(folder / "8.tif", std::vector<std::uint8_t>{3, 4, 5, 6, 7});
  file.bits = 16;
  file.Write(folder / "16.tif", std::vector<std::uint16_t>{3, 4, 5, 6, 7});
  file.bits = 32;
  file.Write(folder / "32.tif", std::vector<std::uint32_t>{3, 4, 5, 6, 7});
  std::pair<double, double> const expected[] = {{0.0, 255.0}, {0.0, 65535.0}, {3.0, 7.0}};
  int i = 0;
  for (char const* name : {"8.tif", "16.tif", "32.tif"}) {
    Frame frame;
    host::ReadFrameFile(folder / name, frame);
    EXPECT_EQ(expected[i].first, frame.image.GetLevelMin(0));
    EXPECT_EQ(expected[i].second, frame.image.GetLevelMax(0));
    ++i;
  }
}

TEST_F(TiffTest, MirroredFilesAreTurnedUpright) {
  std::vector<float> const upright{1, 2, 3, 4, 5, 6};  // 3 x 2
  struct {
    int orientation;
    std::vector<std::uint8_t> stored;
  } const cases[] = {{ORIENTATION_TOPLEFT, {1, 2, 3, 4, 5, 6}},
                     {ORIENTATION_TOPRIGHT, {3, 2, 1, 6, 5, 4}},
                     {ORIENTATION_BOTRIGHT, {6, 5, 4, 3, 2, 1}},
                     {ORIENTATION_BOTLEFT, {4, 5, 6, 1, 2, 3}}};
  StoredTiff file;
  file.width = 3;
  for (auto const& one : cases) {
    file.orientation = one.orientation;
    file.Write(folder / "a.tif", one.stored);
    TiffReader reader(folder / "a.tif");
    std::vector<float> samples(6);
    reader.ReadRows(0, 0, 2, samples.data());
    EXPECT_TRUE(SameBits(upright, samples)) << one.orientation;
    std::vector<float> row(3);
    reader.ReadRows(0, 1, 1, row.data());
    EXPECT_TRUE(SameBits({4, 5, 6}, row)) << one.orientation;
  }
  file.orientation = ORIENTATION_LEFTTOP;
  file.Write(folder / "a.tif", cases[0].stored);
  EXPECT_TRUE(FailsWith(Exit::kInput, "a.tif: it lies on its side", [&] { TiffReader(folder / "a.tif"); }));
}

TEST_F(TiffTest, WhatIsLeftOutIsNoted) {
  StoredTiff file;
  file.width = 2;
  file.samplesPerPixel = 2;
  file.extras = {EXTRASAMPLE_UNASSALPHA};
  file.Write(folder / "a.tif", std::vector<std::uint8_t>{1, 9, 2, 9});
  TiffReader gray(folder / "a.tif");
  EXPECT_EQ(std::vector<std::string>{"its alpha channel is left out"}, gray.Facts().notes);
  EXPECT_EQ(1, gray.Shape().planes);
  file.samplesPerPixel = 5;
  file.photometric = PHOTOMETRIC_RGB;
  file.extras = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNSPECIFIED};
  file.images = 2;
  file.Write(folder / "b.tif", std::vector<std::uint8_t>{1, 2, 3, 8, 9, 4, 5, 6, 8, 9});
  TiffReader colour(folder / "b.tif");
  EXPECT_EQ((std::vector<std::string>{"2 further samples of each pixel are left out",
                                      "only the first of several images in it is read"}),
            colour.Facts().notes);
  std::vector<float> samples(2);
  colour.ReadRows(2, 0, 1, samples.data());
  EXPECT_TRUE(SameBits({3, 6}, samples));
}

TEST_F(TiffTest, ThreeSamplesWithoutAMeaningArePlanes) {
  StoredTiff file;
  file.samplesPerPixel = 3;
  file.planar = PLANARCONFIG_SEPARATE;
  file.extras = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNSPECIFIED};
  ExpectSamples(file, Numbers<std::uint8_t>(15), 3);
}

TEST_F(TiffTest, WideIntegersAreRoundedAndCounted) {
  StoredTiff file;
  file.width = 4;
  file.bits = 32;
  file.Write(folder / "a.tif", std::vector<std::uint32_t>{16777216, 16777217, 4294967295u, 4294967040u});
  Frame frame;
  host::ReadFrameFile(folder / "a.tif", frame);
  EXPECT_TRUE(SameBits({16777216.0f, 16777216.0f, 4294967296.0f, 4294967040.0f}, SamplesOf(frame.image)));
  EXPECT_EQ(2, frame.inexact);
}

TEST_F(TiffTest, KindsThatAreNotReadAreNamed) {
  auto const refuses = [&](StoredTiff const& file, std::vector<std::uint8_t> const& stored, std::string const& part) {
    file.Write(folder / "a.tif", stored);
    EXPECT_TRUE(FailsWith(Exit::kInput, part, [&] { TiffReader(folder / "a.tif"); }));
  };
  StoredTiff file;
  std::vector<std::uint8_t> const bytes(60, 1);
  file.photometric = PHOTOMETRIC_SEPARATED;
  file.samplesPerPixel = 4;
  refuses(file, bytes, "a.tif: its colours are CMYK");
  file.samplesPerPixel = 3;
  file.photometric = PHOTOMETRIC_CIELAB;
  refuses(file, bytes, "a.tif: its colours are Lab");
  file.samplesPerPixel = 1;
  file.photometric = PHOTOMETRIC_CFA;
  refuses(file, bytes, "the mosaic of a camera");
  file = {};
  file.samplesPerPixel = 4;
  refuses(file, bytes, "4 samples a pixel");
  file = {};
  file.width = 16;
  file.compression = COMPRESSION_JPEG;
  file.rowsPerStrip = 16;
  refuses(file, std::vector<std::uint8_t>(256, 1), "its compression is JPEG");
  StoredTiff half;
  half.bits = 16;
  half.format = SAMPLEFORMAT_IEEEFP;
  half.Write(folder / "h.tif", std::vector<std::uint16_t>(5));
  EXPECT_TRUE(FailsWith(Exit::kInput, "16-bit float", [&] { TiffReader(folder / "h.tif"); }));
}

TEST_F(TiffTest, BrokenFiles) {
  auto const open = [&](std::string const& name) { return [&, name] { host::OpenFrame(folder / name); }; };
  EXPECT_TRUE(FailsWith(Exit::kInput, "none.tif: no such file", open("none.tif")));
  WriteText(folder / "text.tif", "not a picture");
  EXPECT_TRUE(FailsWith(Exit::kInput, "text.tif: not a readable TIFF file", open("text.tif")));
  WriteText(folder / "short.tif", std::string("II\x2a\0", 4));
  EXPECT_TRUE(FailsWith(Exit::kInput, "short.tif: not a readable TIFF file", open("short.tif")));
  StoredTiff file;
  file.width = 100;
  file.Write(folder / "whole.tif", std::vector<std::uint8_t>(100 * 100, 7));
  std::string const whole = ReadText(folder / "whole.tif");
  // The directory is behind the samples: put it nowhere, then cut samples off behind it.
  for (std::size_t size = 8; size < whole.size(); size += 97) {
    WriteText(folder / "cut.tif", whole.substr(0, size));
    EXPECT_TRUE(FailsWith(Exit::kInput, "cut.tif: ", open("cut.tif"))) << size;
  }
}

TEST_F(TiffTest, AFileCannotAskForMoreThanItCanHold) {
  StoredTiff file;
  file.compression = COMPRESSION_ADOBE_DEFLATE;
  file.Write(folder / "a.tif", std::vector<std::uint8_t>(50, 7));
  TIFF* const tiff = TIFFOpen((folder / "a.tif").c_str(), "r+");
  for (int tag : {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH, TIFFTAG_ROWSPERSTRIP}) {
    TIFFSetField(tiff, static_cast<std::uint32_t>(tag), 100000);
  }
  TIFFRewriteDirectory(tiff);
  TIFFClose(tiff);
  EXPECT_TRUE(
      FailsWith(Exit::kInput, "too short for an image of 100000 x 100000", [&] { TiffReader(folder / "a.tif"); }));
}

TEST_F(TiffTest, DamagedSamplesAreFoundOnReading) {
  StoredTiff file;
  file.width = 64;
  file.compression = COMPRESSION_ADOBE_DEFLATE;
  file.rowsPerStrip = 64;
  file.Write(folder / "a.tif", Numbers<std::uint8_t>(64 * 64));
  std::string bytes = ReadText(folder / "a.tif");
  for (std::size_t i = 200; i < 2000; ++i) bytes[i] = 'x';
  WriteText(folder / "a.tif", bytes);
  Frame frame;
  EXPECT_TRUE(FailsWith(Exit::kInput, "a.tif: not a readable TIFF file",
                        [&] { host::ReadFrameFile(folder / "a.tif", frame); }));
  EXPECT_EQ(0, frame.image.GetWidth());
}

// Values that the type holds, in the image; written and read back in every way.
TEST_F(TiffTest, WhatIsWrittenComesBack) {
  SampleType const types[] = {SampleType::kUint8,  SampleType::kInt8,  SampleType::kUint16, SampleType::kInt16,
                              SampleType::kUint32, SampleType::kInt32, SampleType::kFloat};
  for (SampleType const type : types) {
    for (int planes : {1, 3}) {
      for (int way = 0; way < 12; ++way) {
        Frame frame;
        COrbImage image = RandomImage(random, 1 + way * 5, 7, planes);
        if (host::IsInteger(type)) {
          double const low = host::LowestOf(type);
          double const high = host::HighestOf(type);
          for (float& v :
               std::span(image.GetImageAdr(0, 0, 0, 0, nullptr), static_cast<std::size_t>(image.GetPixelCount()))) {
            v = 0.0f +
                std::nearbyint(static_cast<float>(low + (high - low) * 0.99 * std::ldexp(random() & 0xffff, -16)));
          }
        } else {
          image.SetPixelGrayRaw(0, 0, std::numeric_limits<float>::quiet_NaN(), 0);
          image.SetPixelGrayRaw(0, 1, -std::numeric_limits<float>::infinity(), 0);
        }
        frame.image.Swap(&image);
        frame.header.SetText("OBJECT", "M 31 'Andromeda'", "what it is");
        frame.header.AddHistory("a step");
        WriteSettings settings;
        settings.type = type;
        settings.planar = way % 2 == 1;
        settings.bigTiff = way / 2 % 2 == 1;
        settings.compression = static_cast<Compression>(way / 4);
        host::WriteReport const report = host::WriteFrameFile(folder / "a.tiff", frame, settings, Existing::kReplace);
        EXPECT_EQ("", report.Text());
        Frame back;
        host::ReadFrameFile(folder / "a.tiff", back);
        ASSERT_TRUE(SameBits(frame.image, back.image)) << host::NameOf(type) << " way " << way;
        EXPECT_TRUE(SameLevels(frame.image, back.image));
        EXPECT_EQ("M 31 'Andromeda'", back.header.Text("OBJECT"));
        EXPECT_EQ(host::NameOf(type) + ", TIFF", host::OpenFrame(folder / "a.tiff")->Description());
        std::string const start = ReadText(folder / "a.tiff").substr(0, 4);
        EXPECT_EQ(settings.bigTiff ? std::string("II\x2b\0", 4) : std::string("II\x2a\0", 4), start);
      }
    }
  }
}

TEST_F(TiffTest, CardsComeBackAsTheyWere) {
  Frame frame;
  COrbImage image = RandomImage(random, 3, 2, 1);
  frame.image.Swap(&image);
  frame.header.SetText("OBJECT", std::string(150, 'x'), "of several cards");
  frame.header.AddHistory("one");
  frame.header.AddHistory("two");
  host::WriteFrameFile(folder / "a.tif", frame, {}, Existing::kKeep);
  Frame back;
  host::ReadFrameFile(folder / "a.tif", back);
  host::SetLevelCards(frame.header, frame.image);
  EXPECT_EQ(frame.header.cards, back.header.cards);
}

// libtiff's own view of a planar file: planes apart.
TEST_F(TiffTest, PlanarFilesAreSo) {
  Frame frame;
  COrbImage image = RandomImage(random, 3, 2, 3);
  frame.image.Swap(&image);
  for (bool planar : {false, true}) {
    WriteSettings settings;
    settings.planar = planar;
    host::WriteFrameFile(folder / "a.tif", frame, settings, Existing::kReplace);
    TIFF* const tiff = TIFFOpen((folder / "a.tif").c_str(), "r");
    std::uint16_t config = 0;
    TIFFGetField(tiff, TIFFTAG_PLANARCONFIG, &config);
    TIFFClose(tiff);
    EXPECT_EQ(planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG, config);
  }
}

TEST_F(TiffTest, NothingIsLeftBehindWhereAFileExists) {
  Frame frame;
  COrbImage image = RandomImage(random, 3, 2, 3);
  frame.image.Swap(&image);
  WriteText(folder / "a.tif", "kept");
  EXPECT_TRUE(FailsWith(Exit::kOutput, "a.tif: exists already",
                        [&] { host::WriteFrameFile(folder / "a.tif", frame, {}, Existing::kKeep); }));
  EXPECT_EQ("kept", ReadText(folder / "a.tif"));
  EXPECT_EQ(1u, folder.Names().size());
}

}  // namespace
}  // namespace orb::test
