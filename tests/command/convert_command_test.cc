// orbimg convert, and every other command with files that are not FITS.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/raw_file.h>
#include <tests/command/command_support.h>
#include <tests/io/stored_dng.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using host::Frame;
using host::SampleType;
using Json = nlohmann::json;

class ConvertTest : public testing::Test {
 protected:
  // Whole numbers of 16 bits, seen over their range.
  Frame WriteNumbers(std::string const& name, int width, int height, int planes, SampleType type) {
    Frame frame;
    COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
    std::vector<float> samples(static_cast<std::size_t>(width * height * planes));
    for (float& v : samples) v = static_cast<float>(random() % 60000);
    SetSamples(image, samples);
    for (int p = 0; p < planes; ++p) image.CImage::SetLevel(p, 0.0, 65535.0);
    frame.image.Swap(&image);
    frame.header.SetText("OBJECT", "M 33", "");
    Write(name, frame, type);
    return frame;
  }

  void Write(std::string const& name, Frame const& frame, SampleType type) {
    host::WriteSettings settings;
    settings.type = type;
    host::WriteFrameFile(folder / name, frame, settings, host::Existing::kReplace);
  }

  Frame Back(std::string const& name) {
    Frame frame;
    host::ReadFrameFile(folder / name, frame);
    return frame;
  }

  std::string TypeOf(std::string const& name) { return host::OpenFrame(folder / name)->Description(); }

  CommandResult Convert(std::string const& from, std::string const& to, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"convert", folder / from, "-o", folder / to, "-f"});
    return RunQuietly(more);
  }

  Random random{9};
  ScratchFolder folder;
};

TEST_F(ConvertTest, KeepsTheTypeAndEverySample) {
  for (int planes : {1, 3}) {
    Frame const frame = WriteNumbers("a.fits", 23, 17, planes, SampleType::kUint16);
    ASSERT_TRUE(Succeeds(Convert("a.fits", "b.tif")));
    ASSERT_TRUE(Succeeds(Convert("b.tif", "c.tiff", {"--planar", "--compress", "deflate", "--bigtiff"})));
    ASSERT_TRUE(Succeeds(Convert("c.tiff", "d.fits.fz")));
    ASSERT_TRUE(Succeeds(Convert("d.fits.fz", "e.fit.gz")));
    for (char const* name : {"b.tif", "c.tiff", "d.fits.fz", "e.fit.gz"}) {
      Frame const back = Back(name);
      EXPECT_TRUE(SameBits(frame.image, back.image)) << name;
      EXPECT_TRUE(SameLevels(frame.image, back.image)) << name;
      EXPECT_EQ("M 33", back.header.Text("OBJECT")) << name;
    }
    EXPECT_EQ("unsigned 16-bit integer, TIFF", TypeOf("c.tiff"));
    EXPECT_EQ("unsigned 16-bit integer", TypeOf("e.fit.gz"));
    auto const& cards = Back("e.fit.gz").header.cards;
    auto const isStep = [](std::string const& card) { return card.starts_with("HISTORY orbimg convert: "); };
    EXPECT_EQ(4, std::count_if(cards.begin(), cards.end(), isStep));
  }
}

TEST_F(ConvertTest, EveryDepthOfTheTarget) {
  Frame frame = WriteNumbers("a.fits", 9, 5, 1, SampleType::kFloat);
  struct {
    std::vector<std::string> more;
    std::string type;
  } const cases[] = {{{"--bits", "16"}, "unsigned 16-bit integer"},
                     {{"--bits", "32"}, "unsigned 32-bit integer"},
                     {{"--bits", "32", "--signed"}, "signed 32-bit integer"},
                     {{"--bits", "float"}, "32-bit float"},
                     {{}, "32-bit float"}};
  for (auto const& one : cases) {
    for (std::string const name : {"b.tif", "b.fits"}) {
      ASSERT_TRUE(Succeeds(Convert("a.fits", name, one.more)));
      EXPECT_EQ(one.type + (name == "b.tif" ? ", TIFF" : ""), TypeOf(name));
      EXPECT_TRUE(SameBits(frame.image, Back(name).image)) << one.type << " " << name;
    }
  }
}

TEST_F(ConvertTest, PngTakes8BitsOf8AndElse16) {
  Frame small = WriteNumbers("a.fits", 4, 3, 3, SampleType::kUint16);
  CommandResult const png = Convert("a.fits", "b.png");
  EXPECT_EQ(Exit::kDone, png.status);
  EXPECT_EQ("orbimg: warning: " + (folder / "b.png") + ": 1 header card is not kept\n", png.err);
  EXPECT_EQ("unsigned 16-bit integer, PNG", TypeOf("b.png"));
  EXPECT_TRUE(SameBits(small.image, Back("b.png").image));
  SetSamples(small.image, std::vector<float>(36, 200.0f));
  small.header.Remove("OBJECT");
  for (int p = 0; p < 3; ++p) small.image.CImage::SetLevel(p, 0.0, 255.0);
  Write("c.fits", small, SampleType::kUint8);
  ASSERT_TRUE(Succeeds(Convert("c.fits", "d.png")));
  EXPECT_EQ("unsigned 8-bit integer, PNG", TypeOf("d.png"));
  ASSERT_TRUE(Succeeds(Convert("d.png", "e.bmp")));
  ASSERT_TRUE(Succeeds(Convert("e.bmp", "f.tif")));
  EXPECT_EQ("unsigned 8-bit integer, TIFF", TypeOf("f.tif"));
  EXPECT_TRUE(SameBits(small.image, Back("f.tif").image));
}

TEST_F(ConvertTest, WhatIsLostIsSaidInOneLine) {
  Frame frame = WriteNumbers("a.fits", 2, 2, 1, SampleType::kFloat);
  SetSamples(frame.image, {-1.0f, 70000.0f, 0.25f, NAN});
  frame.image.CImage::SetLevel(0, 5.0, 9.0);
  Write("a.fits", frame, SampleType::kFloat);
  CommandResult const result = Convert("a.fits", "b.png");
  EXPECT_EQ(Exit::kDone, result.status);
  EXPECT_EQ("orbimg: warning: " + (folder / "b.png") +
                ": 1 sample below 0 became 0, 1 sample above 65535 became 65535, 1 sample without a value became 0, 1 "
                "sample rounded to whole numbers; 1 header card is not kept; the levels are not kept\n",
            result.err);
}

TEST_F(ConvertTest, NumbersThatAFloatDoesNotHoldAreTold) {
  Frame frame = WriteNumbers("a.fits", 2, 1, 1, SampleType::kFloat);
  std::string bytes = ReadText(folder / "a.fits");
  // The same bytes as integers: BITPIX 32 in place of -32.
  std::size_t const at = bytes.find("BITPIX  =                  -32");
  ASSERT_NE(std::string::npos, at);
  bytes.replace(at, 30, "BITPIX  =                   32");
  bytes.replace(bytes.size() - 2880, 8, std::string("\x01\0\0\x01\0\0\0\x05", 8));  // 16777217 and 5
  WriteText(folder / "b.fits", bytes);
  CommandResult const result = Convert("b.fits", "c.tif");
  EXPECT_EQ("orbimg: warning: " + (folder / "b.fits") + ": 1 of its numbers are rounded to 32-bit floats\n",
            result.err);
  EXPECT_EQ(16777216.0f, Back("c.tif").image.GetPixelGrayRaw(0, 0, 0));
}

TEST_F(ConvertTest, LevelsAreMappedOnlyWhenAskedFor) {
  Frame frame = WriteNumbers("a.fits", 2, 2, 1, SampleType::kFloat);
  SetSamples(frame.image, {100.0f, 200.0f, 150.0f, 125.0f});
  frame.image.CImage::SetLevel(0, 100.0, 200.0);
  Write("a.fits", frame, SampleType::kFloat);
  CommandResult const mapped = Convert("a.fits", "b.png", {"--scale", "levels", "--bits", "8"});
  EXPECT_EQ(Exit::kDone, mapped.status);
  EXPECT_TRUE(SameBits({0.0f, 255.0f, 128.0f, 64.0f}, SamplesOf(Back("b.png").image)));
  Convert("a.fits", "c.png", {"--bits", "8"});
  EXPECT_TRUE(SameBits(frame.image, Back("c.png").image));
  ASSERT_TRUE(Succeeds(Convert("a.fits", "d.tif", {"--scale", "levels"})));
  Frame const floats = Back("d.tif");
  EXPECT_TRUE(SameBits({0.0f, 1.0f, 0.5f, 0.25f}, SamplesOf(floats.image)));
  EXPECT_EQ(0.0, floats.image.GetLevelMin(0));
  EXPECT_EQ(1.0, floats.image.GetLevelMax(0));
}

TEST_F(ConvertTest, RefusesWhatTheTargetHasNot) {
  WriteNumbers("a.fits", 2, 2, 1, SampleType::kUint16);
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.png", {"--bits", "float"}), Exit::kUsage, {"b.png", "16 bits"}));
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.png", {"--bits", "8", "--signed"}), Exit::kUsage, {"b.png"}));
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.bmp", {"--bits", "16"}), Exit::kUsage, {"b.bmp", "8 bits"}));
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.png", {"--planar"}), Exit::kUsage, {"--planar", "TIFF"}));
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.fits", {"--compress", "lzw"}), Exit::kUsage, {"--compress", ".fz"}));
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.png", {"--bigtiff"}), Exit::kUsage, {"--bigtiff"}));
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.tif", {"--signed"}), Exit::kUsage, {"--signed", "--bits"}));
  EXPECT_TRUE(FailsInOneLine(Convert("a.fits", "b.tif", {"--bits", "12"}), Exit::kUsage, {"--bits"}));
  EXPECT_EQ(1u, folder.Names().size());
  WriteText(folder / "b.tif", "kept");
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"convert", folder / "a.fits", "-o", folder / "b.tif"}), Exit::kOutput,
                             {"b.tif", "--force"}));
  EXPECT_EQ("kept", ReadText(folder / "b.tif"));
}

// The same frames as FITS and as another format give the same results, whatever reads them.
TEST_F(ConvertTest, EveryCommandReadsEveryFormat) {
  for (std::string const ending : {".fits", ".tif", ".png", ".fits.fz"}) {
    Random same(4);
    random = same;
    for (char const* stem : {"a", "b", "dark"}) {
      Frame frame = WriteNumbers("x.fits", 40, 30, 1, SampleType::kUint16);
      frame.header.Remove("OBJECT");
      Write(stem + ending, frame, SampleType::kUint16);
    }
    Frame colour = WriteNumbers("x.fits", 40, 30, 3, SampleType::kUint16);
    colour.header.Remove("OBJECT");
    Write("c" + ending, colour, SampleType::kUint16);
  }
  auto const at = [&](std::string const& stem, std::string const& ending) { return folder / (stem + ending); };
  for (std::string const ending : {".fits", ".tif", ".png", ".fits.fz"}) {
    std::string const a = at("a", ending);
    std::string const b = at("b", ending);
    std::string const c = at("c", ending);
    std::string const to = folder / ("out" + ending);
    std::filesystem::create_directory(to);
    for (std::vector<std::string> const& arguments :
         {std::vector<std::string>{"calibrate", a, b, "--dark", at("dark", ending), "-o", to},
          std::vector<std::string>{"stack", a, b, "--mode", "average", "-o", to + "/stack.fits"},
          std::vector<std::string>{"stack", a, b, "--mode", "median", "--memory", "60k", "-o", to + "/median.fits"},
          std::vector<std::string>{"stack", a, b, "--mode", "add", "--scale", "256", "-o", to + "/sum256.fits"},
          std::vector<std::string>{"level", a, "--median", "1", "2", "-o", to + "/level.fits"},
          std::vector<std::string>{"apply", "invert", c, "-o", to + "/invert.fits"},
          std::vector<std::string>{"compose", "rgb", "--red", a, "--green", b, "--blue", a, "-o", to + "/rgb.fits"},
          std::vector<std::string>{"mosaic", a, b, "--dx", "7", "-o", to + "/mosaic.fits"},
          std::vector<std::string>{"split", c, "-o", to},
          std::vector<std::string>{"annotate", c, "--line", "0", "0", "9", "9", "-o", to + "/annotate.fits"},
          std::vector<std::string>{"convert", c, "-o", to + "/convert.fits"}}) {
      CommandResult const result = RunQuietly(arguments);
      EXPECT_EQ(Exit::kDone, result.status) << arguments[0] << " " << ending << " " << result.err;
    }
    for (char const* name : {"a", "b", "stack", "median", "sum256", "level", "invert", "rgb", "mosaic", "c_red",
                             "c_green", "c_blue", "annotate", "convert"}) {
      Frame expected;
      Frame found;
      host::ReadFrameFile(folder / ("out.fits/" + std::string(name) + ".fits"), expected);
      host::ReadFrameFile(to + "/" + name + ".fits", found);
      EXPECT_TRUE(SameBits(expected.image, found.image)) << name << " " << ending;
      EXPECT_TRUE(SameLevels(expected.image, found.image)) << name << " " << ending;
    }
    Json const info = Json::parse(RunLoudly({"info", "--json", c}).out)[0];
    EXPECT_EQ(3u, info["planes"].size());
    EXPECT_EQ(40, info["width"]);
  }
}

TEST_F(ConvertTest, EveryCommandWritesEveryFormat) {
  WriteNumbers("a.fits", 12, 9, 1, SampleType::kFloat);
  WriteNumbers("b.fits", 12, 9, 1, SampleType::kFloat);
  std::string const a = folder / "a.fits";
  std::string const b = folder / "b.fits";
  std::vector<std::vector<std::string>> const commands{{"stack", a, b, "--mode", "median"},
                                                       {"level", a, "--set", "0", "65535"},
                                                       {"apply", "invert", a},
                                                       {"mosaic", a, b}};
  for (std::vector<std::string> const& command : commands) {
    for (char const* name : {"out.fits", "out.tif", "out.png", "out.fits.gz"}) {
      std::vector<std::string> arguments = command;
      arguments.insert(arguments.end(), {"-o", folder / name, "-f"});
      EXPECT_EQ(Exit::kDone, RunQuietly(arguments).status) << command[0] << " " << name;
    }
    Frame const fits = Back("out.fits");
    EXPECT_TRUE(SameBits(fits.image, Back("out.tif").image)) << command[0];
    EXPECT_TRUE(SameLevels(fits.image, Back("out.tif").image)) << command[0];
    EXPECT_TRUE(SameBits(fits.image, Back("out.fits.gz").image)) << command[0];
    Frame const png = Back("out.png");
    for (int y = 0; y < fits.image.GetHeight(); ++y) {
      for (int x = 0; x < fits.image.GetWidth(); ++x) {
        float const* const sample = fits.image.GetImageAdr(x, y, 0, 1, nullptr);
        double const kept = std::clamp(std::nearbyint(static_cast<double>(*sample)), 0.0, 65535.0);
        ASSERT_EQ(kept, *png.image.GetImageAdr(x, y, 0, 1, nullptr)) << command[0];
      }
    }
  }
}

TEST_F(ConvertTest, AnAlphaChannelIsLeftOutAndSaid) {
  TIFF* const tiff = TIFFOpen((folder / "a.tif").c_str(), "w");
  std::uint16_t const alpha[] = {EXTRASAMPLE_UNASSALPHA};
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 1);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, alpha);
  unsigned char row[] = {1, 2, 3, 77};
  TIFFWriteScanline(tiff, row, 0);
  TIFFClose(tiff);
  CommandResult const result = Convert("a.tif", "b.fits");
  EXPECT_EQ(Exit::kDone, result.status);
  EXPECT_EQ("orbimg: warning: " + (folder / "a.tif") + ": its alpha channel is left out\n", result.err);
  EXPECT_TRUE(SameBits({1.0f, 2.0f, 3.0f}, SamplesOf(Back("b.fits").image)));
  EXPECT_EQ("its alpha channel is left out",
            Json::parse(RunLoudly({"info", "--json", folder / "a.tif"}).out)[0]["notes"][0]);
}

TEST_F(ConvertTest, CameraRawAsColourAndAsMosaic) {
  if (!host::CanReadRaw()) GTEST_SKIP() << "this build has no LibRaw";
  WriteDng(folder / "a.dng");
  ASSERT_TRUE(Succeeds(Convert("a.dng", "colour.fits")));
  ASSERT_TRUE(Succeeds(Convert("a.dng", "mosaic.fits", {"--mosaic"})));
  EXPECT_EQ(3, Back("colour.fits").image.GetPlanes());
  Frame const mosaic = Back("mosaic.fits");
  EXPECT_EQ(1, mosaic.image.GetPlanes());
  for (int y = 0; y < kDngHeight; ++y) {
    for (int x = 0; x < kDngWidth; ++x) ASSERT_EQ(DngSampleAt(x, y), *mosaic.image.GetImageAdr(x, y, 0, 1, nullptr));
  }
  EXPECT_EQ("RGGB", mosaic.header.Text("BAYERPAT"));
  EXPECT_EQ("unsigned 16-bit integer", TypeOf("mosaic.fits"));
  ASSERT_TRUE(Succeeds(
      RunQuietly({"calibrate", folder / "a.dng", "--dark", folder / "a.dng", "--mosaic", "-o", folder / "out"})));
  EXPECT_EQ(1, Back("out/a.fits").image.GetPlanes());
}

}  // namespace
}  // namespace orb::test
