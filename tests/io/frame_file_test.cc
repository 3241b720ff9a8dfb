// Frames in files of every kind: endings, types, what is lost and how it is said, round trips.
#include <filesystem>
#include <limits>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/frame_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Existing;
using host::Exit;
using host::FileFormat;
using host::Frame;
using host::SampleType;
using host::WriteReport;
using host::WriteSettings;

class FrameFileTest : public testing::Test {
 protected:
  // Samples that every integer type from 8 bits on holds.
  Frame SmallNumbers(int width, int height, int planes, double black = 0.0, double white = 255.0) {
    Frame frame;
    COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
    std::vector<float> samples(static_cast<std::size_t>(width * height * planes));
    for (float& v : samples) v = static_cast<float>(random() % 128);
    SetSamples(image, samples);
    for (int p = 0; p < planes; ++p) image.CImage::SetLevel(p, black, white);
    frame.image.Swap(&image);
    return frame;
  }

  Frame Back(std::string const& name) {
    Frame back;
    host::ReadFrameFile(folder / name, back);
    return back;
  }

  Random random{6};
  ScratchFolder folder;
};

TEST_F(FrameFileTest, EndingsNameFormats) {
  for (char const* name : {"a.fits", "a.FIT", "a.fts", "a.fits.gz", "a.fit.fz", "a.Fts.Gz"}) {
    EXPECT_EQ(FileFormat::kFits, host::FormatOf(name)) << name;
  }
  EXPECT_EQ(FileFormat::kTiff, host::FormatOf("x.y/a.tif"));
  EXPECT_EQ(FileFormat::kTiff, host::FormatOf("a.TIFF"));
  EXPECT_EQ(FileFormat::kPng, host::FormatOf("a.Png"));
  EXPECT_EQ(FileFormat::kBmp, host::FormatOf("a.bmp"));
  for (char const* name : {"a", "a.jpg", "a.gz", "tif", "a.fits.bz2", "", "a.tif.gz"}) {
    EXPECT_TRUE(FailsWith(Exit::kUsage, "its ending names no format", [&] { host::FormatOf(name); })) << name;
  }
}

TEST_F(FrameFileTest, TypesThatAFormatHasNot) {
  auto const choose = [](FileFormat format, SampleType type) {
    return [=] { host::ChooseType(format, {.type = type}, -32, "a.x"); };
  };
  EXPECT_TRUE(FailsWith(Exit::kUsage, "a.x: PNG holds no samples of the type 32-bit float",
                        choose(FileFormat::kPng, SampleType::kFloat)));
  EXPECT_TRUE(FailsWith(Exit::kUsage, "8 and 16 bits, unsigned", choose(FileFormat::kPng, SampleType::kInt8)));
  EXPECT_TRUE(FailsWith(Exit::kUsage, "BMP holds", choose(FileFormat::kBmp, SampleType::kUint16)));
  EXPECT_TRUE(FailsWith(Exit::kUsage, "TIFF holds", choose(FileFormat::kTiff, SampleType::kDouble)));
  EXPECT_EQ(SampleType::kFloat, host::ChooseType(FileFormat::kFits, {}, 8, ""));
  EXPECT_EQ(SampleType::kFloat, host::ChooseType(FileFormat::kTiff, {}, 16, ""));
  EXPECT_EQ(SampleType::kUint16, host::ChooseType(FileFormat::kPng, {}, -32, ""));
  EXPECT_EQ(SampleType::kUint8, host::ChooseType(FileFormat::kPng, {}, 8, ""));
  EXPECT_EQ(SampleType::kUint8, host::ChooseType(FileFormat::kBmp, {}, 16, ""));
}

TEST_F(FrameFileTest, FitsOfEveryTypePackedAndPlain) {
  for (SampleType const type : {SampleType::kUint8, SampleType::kInt8, SampleType::kUint16, SampleType::kInt16,
                                SampleType::kUint32, SampleType::kInt32, SampleType::kFloat}) {
    for (char const* name : {"a.fits", "a.fits.gz", "a.fit.fz"}) {
      for (int planes : {1, 3}) {
        Frame frame = SmallNumbers(13, 9, planes, -3.0, 100.0);
        if (host::IsSigned(type)) frame.image.SetPixelGrayRaw(2, 3, -100.0f, planes - 1);
        if (type == SampleType::kFloat) {
          frame.image.SetPixelGrayRaw(1, 1, std::numeric_limits<float>::quiet_NaN(), 0);
          frame.image.SetPixelGrayRaw(1, 2, 0.1f, 0);
        }
        frame.header.SetText("OBJECT", "M 1", "");
        WriteReport const report = host::WriteFrameFile(folder / name, frame, {.type = type}, Existing::kReplace);
        EXPECT_EQ("", report.Text());
        Frame const back = Back(name);
        ASSERT_TRUE(SameBits(frame.image, back.image)) << host::NameOf(type) << " " << name;
        EXPECT_TRUE(SameLevels(frame.image, back.image));
        EXPECT_EQ("M 1", back.header.Text("OBJECT"));
        EXPECT_EQ(host::NameOf(type), host::OpenFrame(folder / name)->Description());
      }
    }
  }
  EXPECT_EQ("\x1f\x8b", ReadText(folder / "a.fits.gz").substr(0, 2));
  EXPECT_EQ(3u, folder.Names().size());
}

TEST_F(FrameFileTest, NothingIsLeftOfAPackedFileThatIsNotCommitted) {
  for (char const* name : {"a.fits.gz", "a.fits.fz"}) {
    host::FitsWriter writer(folder / name, {3, 2, 1}, {}, Existing::kKeep);
    std::vector<float> const samples(6);
    writer.WriteRows(0, 0, 2, samples.data());
  }
  EXPECT_TRUE(folder.Names().empty());
}

TEST_F(FrameFileTest, PicturesOf8And16Bits) {
  for (int planes : {1, 3}) {
    for (SampleType const type : {SampleType::kUint8, SampleType::kUint16}) {
      Frame frame = SmallNumbers(11, 6, planes, 0.0, host::HighestOf(type));
      frame.image.SetPixelGrayRaw(3, 2, static_cast<float>(host::HighestOf(type)), planes - 1);
      EXPECT_EQ("", host::WriteFrameFile(folder / "a.png", frame, {.type = type}, Existing::kReplace).Text());
      Frame const back = Back("a.png");
      EXPECT_TRUE(SameBits(frame.image, back.image));
      EXPECT_TRUE(SameLevels(frame.image, back.image));
      EXPECT_EQ(host::NameOf(type) + ", PNG", host::OpenFrame(folder / "a.png")->Description());
    }
    Frame const frame = SmallNumbers(11, 6, planes);
    EXPECT_EQ("", host::WriteFrameFile(folder / "a.bmp", frame, {}, Existing::kReplace).Text());
    Frame const back = Back("a.bmp");
    EXPECT_TRUE(SameBits(frame.image, back.image));
    EXPECT_TRUE(SameLevels(frame.image, back.image));
  }
}

TEST_F(FrameFileTest, WhatIsLostIsCounted) {
  Frame frame = SmallNumbers(2, 2, 1, -1.0, 5.0);
  SetSamples(frame.image, {-2.0f, 300.0f, 1.25f, std::numeric_limits<float>::quiet_NaN()});
  frame.header.SetText("OBJECT", "M 1", "");
  frame.header.AddHistory("a step");
  WriteReport const report =
      host::WriteFrameFile(folder / "a.png", frame, {.type = SampleType::kUint8}, Existing::kKeep);
  EXPECT_EQ(
      "1 sample below 0 became 0, 1 sample above 255 became 255, 1 sample without a value became 0, 1 sample "
      "rounded to whole numbers; 2 header cards are not kept; the levels are not kept",
      report.Text());
  EXPECT_TRUE(SameBits({0.0f, 255.0f, 1.0f, 0.0f}, SamplesOf(Back("a.png").image)));
  WriteReport const fits =
      host::WriteFrameFile(folder / "a.fits", frame, {.type = SampleType::kInt16}, Existing::kKeep);
  EXPECT_EQ("1 sample without a value became 0, 1 sample rounded to whole numbers", fits.Text());
}

TEST_F(FrameFileTest, LevelsOverTheRangeOfTheType) {
  for (char const* name : {"a.fits", "a.tif", "a.png"}) {
    Frame frame = SmallNumbers(2, 1, 3);
    SetSamples(frame.image, {100.0f, 200.0f, 0.0f, 1.0f, -4.0f, 12.0f});
    frame.image.CImage::SetLevel(0, 100.0, 200.0);
    frame.image.CImage::SetLevel(1, 0.0, 1.0);
    frame.image.CImage::SetLevel(2, -4.0, 12.0);
    WriteSettings const settings{.type = SampleType::kUint16, .mapsLevels = true};
    EXPECT_EQ("", host::WriteFrameFile(folder / name, frame, settings, Existing::kKeep).Text()) << name;
    Frame const back = Back(name);
    EXPECT_TRUE(SameBits({0.0f, 65535.0f, 0.0f, 65535.0f, 0.0f, 65535.0f}, SamplesOf(back.image))) << name;
    for (int p = 0; p < 3; ++p) {
      EXPECT_EQ(0.0, back.image.GetLevelMin(p));
      EXPECT_EQ(65535.0, back.image.GetLevelMax(p));
    }
  }
}

TEST_F(FrameFileTest, WritersInBandsOfAnyOrderGiveTheSameFile) {
  for (std::string const ending : {".tif", ".png", ".fits", ".bmp"}) {
    Frame frame = SmallNumbers(7, 10, 3);
    host::SetLevelCards(frame.header, frame.image);
    host::Shape const shape{7, 10, 3};
    std::unique_ptr<host::FrameWriter> const writer =
        host::MakeFrameWriter(folder / ("bands" + ending), shape, frame.header, Existing::kKeep);
    for (int p : {2, 0, 1}) {
      for (int top : {6, 0, 3}) {
        int const rows = top == 6 ? 4 : 3;
        writer->WriteRows(p, top, rows, frame.image.GetImageAdr(0, top, p, 1, nullptr));
      }
    }
    EXPECT_FALSE(std::filesystem::exists(folder / ("bands" + ending)));
    writer->Commit();
    host::WriteFrameFile(folder / ("whole" + ending), frame, {}, Existing::kKeep);
    EXPECT_EQ(ReadText(folder / ("whole" + ending)), ReadText(folder / ("bands" + ending))) << ending;
  }
}

// Tiles may come in any order; the file is another one, but not what it holds.
TEST_F(FrameFileTest, PackedTilesInAnyOrder) {
  Frame const frame = SmallNumbers(7, 10, 3);
  for (char const* name : {"a.fits.fz", "a.fits.gz"}) {
    std::unique_ptr<host::FrameWriter> const writer =
        host::MakeFrameWriter(folder / name, {7, 10, 3}, {}, Existing::kKeep);
    for (int p : {2, 0, 1}) {
      for (int y : {4, 9, 0, 1, 8, 2, 3, 7, 5, 6}) {
        writer->WriteRows(p, y, 1, frame.image.GetImageAdr(0, y, p, 1, nullptr));
      }
    }
    writer->Commit();
    EXPECT_TRUE(SameBits(frame.image, Back(name).image)) << name;
  }
}

// What a file is stands in it; its name does not matter.
TEST_F(FrameFileTest, FilesAreKnownByTheirStart) {
  Frame const frame = SmallNumbers(4, 3, 1);
  for (char const* name : {"a.fits", "a.tif", "a.png", "a.bmp"}) {
    host::WriteFrameFile(folder / name, frame, {}, Existing::kKeep);
    std::filesystem::rename(folder / name, folder / "unknown");
    EXPECT_TRUE(SameBits(frame.image, Back("unknown").image)) << name;
  }
}

TEST_F(FrameFileTest, PngRowsInAnyOrder) {
  Frame const frame = SmallNumbers(9, 12, 3);
  host::WriteFrameFile(folder / "a.png", frame, {}, Existing::kKeep);
  auto const reader = host::OpenFrame(folder / "a.png");
  std::vector<float> row(9);
  for (int y : {11, 0, 5, 5, 4, 11}) {
    for (int p : {1, 0, 2}) {
      reader->ReadRows(p, y, 1, row.data());
      for (int x = 0; x < 9; ++x)
        ASSERT_EQ(row[static_cast<std::size_t>(x)],
                  SamplesOf(frame.image)[static_cast<std::size_t>((p * 12 + y) * 9 + x)]);
    }
  }
  EXPECT_TRUE(FailsWith(Exit::kFailed, "rows 5 to 13 are not in it", [&] { reader->ReadRows(0, 5, 8, row.data()); }));
  EXPECT_TRUE(FailsWith(Exit::kFailed, "has no plane 3", [&] { reader->ReadRows(3, 0, 1, row.data()); }));
}

TEST_F(FrameFileTest, APngCannotAskForMoreThanItCanHold) {
  host::WriteFrameFile(folder / "a.png", SmallNumbers(4, 3, 1), {}, Existing::kKeep);
  std::string bytes = ReadText(folder / "a.png");
  bytes.replace(16, 8, std::string("\x7f\xff\xff\xff\x7f\xff\xff\xff", 8));
  std::uint32_t crc = 0xffffffffu;  // of the header's chunk, which is changed
  for (std::size_t i = 12; i < 29; ++i) {
    crc ^= static_cast<unsigned char>(bytes[i]);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xedb88320u : 0u);
  }
  crc = ~crc;
  for (std::size_t i = 0; i < 4; ++i) bytes[29 + i] = static_cast<char>(crc >> (24 - 8 * i));
  WriteText(folder / "b.png", bytes);
  EXPECT_TRUE(FailsWith(Exit::kInput, "too short for an image of 2147483647 x 2147483647",
                        [&] { host::OpenFrame(folder / "b.png"); }));
}

TEST_F(FrameFileTest, ACutPngIsFoundOnOpening) {
  host::WriteFrameFile(folder / "a.png", SmallNumbers(40, 30, 1), {}, Existing::kKeep);
  std::string const bytes = ReadText(folder / "a.png");
  for (std::size_t size = 8; size < bytes.size(); size += 31) {
    WriteText(folder / "cut.png", bytes.substr(0, size));
    EXPECT_TRUE(FailsWith(Exit::kInput, "cut.png: not a readable PNG file", [&] {
      host::OpenFrame(folder / "cut.png");
    })) << size;
  }
}

TEST_F(FrameFileTest, BmpWithRoomBeforeItsRows) {
  host::WriteFrameFile(folder / "a.bmp", SmallNumbers(5, 4, 3), {}, Existing::kKeep);
  std::string bytes = ReadText(folder / "a.bmp");
  bytes.insert(54, "room before rows");
  bytes[10] = 54 + 16;
  WriteText(folder / "b.bmp", bytes);
  EXPECT_TRUE(SameBits(Back("a.bmp").image, Back("b.bmp").image));
}

TEST_F(FrameFileTest, BrokenBmp) {
  host::WriteFrameFile(folder / "a.bmp", SmallNumbers(5, 4, 3), {}, Existing::kKeep);
  std::string const bytes = ReadText(folder / "a.bmp");
  for (std::size_t size = 2; size < bytes.size(); size += 7) {
    WriteText(folder / "cut.bmp", bytes.substr(0, size));
    EXPECT_TRUE(FailsWith(Exit::kInput, "cut.bmp: not a readable BMP file", [&] {
      host::OpenFrame(folder / "cut.bmp");
    })) << size;
  }
}

}  // namespace
}  // namespace orb::test
