// orbimg compose and split.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/composition_header.h>
#include <hosts/orbimg/output_check.h>
#include <tests/command/command_support.h>
#include <tests/command/synthetic_stars.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using host::FrameTransform;
using host::Position;
using host::RigidMap;
using Json = nlohmann::json;

class ComposeTest : public testing::Test {
 protected:
  void SetUp() override {
    for (char const* name : {"r.fits", "g.fits", "b.fits"}) {
      host::FitsHeader header;
      header.SetText("FILTER", name, "");
      header.SetText("OBJECT", "M 31", "");
      header.SetNumber("CBLACK", 10.0, "");
      header.SetNumber("CWHITE", 200.0 + name[0], "");
      WriteFrame(folder / name, RandomImage(random, 33, 21, 1), header);
    }
  }

  CommandResult Rgb(std::vector<std::string> more) {
    more.insert(more.begin(), {"compose", "rgb", "--red", folder / "r.fits", "--green", folder / "g.fits", "--blue",
                               folder / "b.fits", "-o", folder / "c.fits"});
    return RunQuietly(more);
  }

  void WriteAlignment(std::string const& reference) {
    host::AlignmentList list;
    list.reference = folder / reference;
    for (char const* name : {"r.fits", "g.fits"}) {
      host::AlignedFrame frame;
      frame.file = folder / name;
      if (frame.file != list.reference) frame.transform = FrameTransform{1.5, -2.25, 3.0, 16.0, 10.0};
      list.frames.push_back(frame);
    }
    host::WriteTextFile(folder / "a.json", host::FormatAlignment(list, folder / "a.json"), host::Existing::kReplace);
  }

  Random random{3};
  ScratchFolder folder;
};

TEST_F(ComposeTest, RgbIsThreeFramesAsPlanes) {
  ASSERT_TRUE(Succeeds(Rgb({})));
  host::Frame result = ReadFrame(folder / "c.fits");
  ASSERT_EQ(3, result.image.GetPlanes());
  int p = 0;
  for (char const* name : {"r.fits", "g.fits", "b.fits"}) {
    host::Frame frame = ReadFrame(folder / name);
    for (int y = 0; y < 21; ++y) {
      for (int x = 0; x < 33; ++x) {
        ASSERT_EQ(frame.image.GetPixelGrayRaw(x, y, 0), result.image.GetPixelGrayRaw(x, y, p));
      }
    }
    EXPECT_EQ(10.0, result.image.GetLevelMin(p));
    EXPECT_EQ(200.0 + name[0], result.image.GetLevelMax(p));
    ++p;
  }
}

TEST_F(ComposeTest, HeaderKeepsWhatAllShare) {
  ASSERT_TRUE(Succeeds(Rgb({})));
  host::FitsHeader const header = ReadFrame(folder / "c.fits").header;
  EXPECT_EQ("M 31", header.Text("OBJECT"));
  EXPECT_FALSE(header.Has("FILTER"));
  std::string cards;
  for (std::string const& card : header.cards) cards += card;
  EXPECT_NE(std::string::npos, cards.find("orbimg compose-rgb: outside 0")) << cards;
  EXPECT_NE(std::string::npos, cards.find("orbimg compose-rgb: green g.fits dx 0.0000")) << cards;
}

TEST_F(ComposeTest, AlignmentFileMovesTheFrames) {
  WriteAlignment("r.fits");
  ASSERT_TRUE(Succeeds(RunQuietly({"compose", "rgb", "--red", folder / "r.fits", "--green", folder / "g.fits", "--blue",
                                   folder / "r.fits", "--alignment", folder / "a.json", "--outside", "5", "--threads",
                                   "3", "-o", folder / "c.fits"})));
  host::Frame r = ReadFrame(folder / "r.fits");
  host::Frame g = ReadFrame(folder / "g.fits");
  g.image.SetStdCtr(16.0, 10.0);
  CImgRgbCmpst expected;
  COrbImage blank(-32, 33, 21, 3, 1.0, 0.0, 1, nullptr, nullptr);
  expected.Swap(&blank);
  expected.Do(&r.image, 0, 0, 0, &g.image, 1.5, -2.25, 3.0, &r.image, 0, 0, 0, nullptr, 5, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "c.fits").image));
}

TEST_F(ComposeTest, CmyIsTheOperators) {
  ASSERT_TRUE(Succeeds(RunQuietly({"compose", "cmy", "--cyan", folder / "r.fits", "--magenta", folder / "g.fits",
                                   "--yellow", folder / "b.fits", "-o", folder / "c.fits"})));
  host::Frame c = ReadFrame(folder / "r.fits");
  host::Frame m = ReadFrame(folder / "g.fits");
  host::Frame y = ReadFrame(folder / "b.fits");
  CImgCmyComposit expected;
  COrbImage blank(-32, 33, 21, 3, 1.0, 0.0, 1, nullptr, nullptr);
  expected.Swap(&blank);
  expected.Do(&c.image, 0, 0, 0, &m.image, 0, 0, 0, &y.image, 0, 0, 0, nullptr, 0, 0);
  host::Frame const result = ReadFrame(folder / "c.fits");
  EXPECT_TRUE(SameBits(expected, result.image));
  EXPECT_TRUE(SameLevels(expected, result.image));
}

TEST_F(ComposeTest, LrgbIsTheOperatorsAndLabNearlyTheSame) {
  WriteFrame(folder / "colour.fits", RandomImage(random, 33, 21, 3));
  for (char const* kind : {"lrgb", "lrgb-mean", "lab"}) {
    ASSERT_TRUE(Succeeds(RunQuietly({"compose", kind, "--luminance", folder / "r.fits", "--colour",
                                     folder / "colour.fits", "-f", "-o", folder / (kind + std::string(".fits"))})));
  }
  host::Frame l = ReadFrame(folder / "r.fits");
  host::Frame c = ReadFrame(folder / "colour.fits");
  CImgLrgbCmpst expected;
  COrbImage blank(-32, 33, 21, 3, 1.0, 0.0, 1, nullptr, nullptr);
  expected.Swap(&blank);
  expected.DoLrgb(&l.image, 0, 0, 0, &c.image, 0, 0, 0, 1.0, nullptr, 0, 0);
  EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "lrgb.fits").image));
  std::vector<float> const lrgb = SamplesOf(expected);
  std::vector<float> const lab = SamplesOf(ReadFrame(folder / "lab.fits").image);
  for (std::size_t i = 0; i < lrgb.size(); ++i) ASSERT_NEAR(lrgb[i], lab[i], 1e-2) << i;
  expected.DoLrgb(&l.image, 0, 0, 0, &c.image, 0, 0, 0, 1.0, nullptr, 1, 0);
  EXPECT_TRUE(SameBits(expected, ReadFrame(folder / "lrgb-mean.fits").image));
}

// Frames of one field, shifted and turned against each other, of different planes.
TEST_F(ComposeTest, AlignsByStars) {
  FrameTransform const transform{4.5, -7.25, 0.8, 99.5, 79.5};
  RigidMap const map(transform);
  COrbImage luminance = SkyImage(200, 160, 500.0, 2.0, 1);
  COrbImage plane = SkyImage(200, 160, 500.0, 2.0, 2);
  std::uniform_real_distribution<double> bright(200.0, 2000.0);
  for (Position const& p : RandomPositions(3, 60, 200.0, 160.0)) {
    double const peak = bright(random);
    Position const at = map.ToFrame(p);
    AddGaussian(luminance, p.x, p.y, peak, 3.0);
    AddGaussian(plane, at.x, at.y, peak, 3.0);
  }
  COrbImage colour(-32, 200, 160, 3, 1.0, 0.0, 1, nullptr, nullptr);
  ASSERT_EQ(1, COrbImage(plane).ToColor(&plane, 0));
  std::vector<float> samples = SamplesOf(plane);
  std::vector<float> three;
  for (int p = 0; p < 3; ++p) three.insert(three.end(), samples.begin(), samples.end());
  SetSamples(colour, three);
  WriteFrame(folder / "l.fits", luminance);
  WriteFrame(folder / "colour.fits", colour);
  std::vector<std::string> const arguments{
      "compose", "lrgb",   "--luminance", folder / "l.fits", "--colour", folder / "colour.fits",
      "--align", "--json", "-o",          folder / "c.fits"};
  CommandResult const run = RunQuietly(arguments);
  ASSERT_TRUE(Succeeds(run));
  Json const placed = Json::parse(run.out)["images"][1]["placement"];
  EXPECT_NEAR(4.5, placed["dx"].get<double>(), 0.1);
  EXPECT_NEAR(-7.25, placed["dy"].get<double>(), 0.1);
  EXPECT_NEAR(0.8, placed["angle"].get<double>(), 0.05);
}

TEST_F(ComposeTest, RefusesWhatDoesNotFit) {
  EXPECT_TRUE(FailsInOneLine(Rgb({"--align"}), Exit::kFailed, {"fits", "stars", "--method match"}));
  WriteAlignment("g.fits");
  EXPECT_TRUE(
      FailsInOneLine(Rgb({"--alignment", folder / "a.json"}), Exit::kUsage, {"a.json", "--reference", "r.fits"}));
  WriteAlignment("r.fits");
  EXPECT_TRUE(FailsInOneLine(Rgb({"--alignment", folder / "a.json"}), Exit::kUsage, {"a.json", "b.fits"}));
  EXPECT_TRUE(FailsInOneLine(Rgb({"--alignment", folder / "a.json", "--align"}), Exit::kUsage, {"--align"}));
  EXPECT_TRUE(FailsInOneLine(Rgb({"--outside", "1.5"}), Exit::kUsage, {"--outside", "whole number"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"compose", "rgb", "--red", folder / "r.fits", "-o", folder / "c.fits"}),
                             Exit::kUsage, {"compose rgb", "--green"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"compose", "hsl"}), Exit::kUsage, {"compose hsl", "compose --help"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"compose", "lrgb", "--luminance", folder / "r.fits", "--colour",
                                         folder / "g.fits", "--align", "--scale", "2", "-o", folder / "c.fits"}),
                             Exit::kUsage, {"--align", "--scale"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "c.fits"));
}

TEST(CompositionHeader, CardsOfOneExposureStayWhereAllAgree) {
  host::FitsHeader first;
  first.SetText("FILTER", "R", "");
  first.SetNumber("EXPTIME", 30.0, "");
  first.SetText("TELESCOP", "A", "");
  host::FitsHeader second = first;
  second.SetText("FILTER", "V", "");
  second.SetText("TELESCOP", "B", "");
  host::FitsHeader const joined = host::JoinHeaders({&first, &second});
  EXPECT_FALSE(joined.Has("FILTER"));
  EXPECT_EQ(30.0, joined.Number("EXPTIME"));
  EXPECT_EQ("A", joined.Text("TELESCOP"));
}

class SplitTest : public testing::Test {
 protected:
  void SetUp() override { WriteFrame(folder / "c.fits", RandomImage(random, 19, 14, 3)); }

  template <typename Separation>
  void ExpectChannel(std::string const& name, int channel) {
    host::Frame source = ReadFrame(folder / "c.fits");
    Separation expected;
    COrbImage blank(-32, 19, 14, 1, 1.0, 0.0, 1, nullptr, nullptr);
    expected.Swap(&blank);
    expected.Do(&source.image, channel, 0);
    host::Frame const result = ReadFrame(folder / ("out/c_" + name + ".fits"));
    EXPECT_TRUE(SameBits(expected, result.image)) << name;
    EXPECT_TRUE(SameLevels(expected, result.image)) << name;
    EXPECT_FALSE(result.header.Has("CBLACK2"));
  }

  Random random{4};
  ScratchFolder folder;
};

TEST_F(SplitTest, EveryChannelIsTheOperators) {
  ASSERT_TRUE(Succeeds(RunQuietly({"split", folder / "c.fits", "-o", folder / "out"})));
  ExpectChannel<CImgSeparation>("red", 0);
  ExpectChannel<CImgSeparation>("green", 1);
  ExpectChannel<CImgSeparation>("blue", 2);
  std::vector<std::string> const complements{
      "split", folder / "c.fits", "--channels", "cyan", "magenta", "yellow", "-f", "-o", folder / "out"};
  ASSERT_TRUE(Succeeds(RunQuietly(complements)));
  ExpectChannel<CImgSeparation>("cyan", 3);
  ExpectChannel<CImgSeparation>("magenta", 4);
  ExpectChannel<CImgSeparation>("yellow", 5);
  std::vector<std::string> sums = complements;
  sums.emplace_back("--sum");
  ASSERT_TRUE(Succeeds(RunQuietly(sums)));
  ExpectChannel<CImgSepatation>("cyan", 3);
  ExpectChannel<CImgSepatation>("magenta", 4);
  ExpectChannel<CImgSepatation>("yellow", 5);
}

TEST_F(SplitTest, ComposedAgainItIsTheSame) {
  ASSERT_TRUE(Succeeds(RunQuietly({"split", folder / "c.fits", "-o", folder / "out"})));
  ASSERT_TRUE(
      Succeeds(RunQuietly({"compose", "rgb", "--red", folder / "out/c_red.fits", "--green", folder / "out/c_green.fits",
                           "--blue", folder / "out/c_blue.fits", "-o", folder / "again.fits"})));
  host::Frame const before = ReadFrame(folder / "c.fits");
  host::Frame const after = ReadFrame(folder / "again.fits");
  EXPECT_TRUE(SameBits(before.image, after.image));
  EXPECT_TRUE(SameLevels(before.image, after.image));
}

TEST_F(SplitTest, RefusesMonoAndKeepsWhatIsThere) {
  WriteConstant(folder / "mono.fits", 5, 5, 1.0f);
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"split", folder / "mono.fits", "-o", folder / "out"}), Exit::kUsage,
                             {"mono.fits", "one plane"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "out"));
  std::filesystem::create_directory(folder / "out");
  WriteText(folder / "out/c_blue.fits", "mine");
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"split", folder / "c.fits", "-o", folder / "out"}), Exit::kOutput,
                             {"c_blue.fits", "--force"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "out/c_red.fits"));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"split", folder / "c.fits", "--channels", "violet", "-o", folder / "out"}),
                             Exit::kUsage, {"--channels", "violet"}));
}

}  // namespace
}  // namespace orb::test
