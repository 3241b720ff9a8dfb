// What goes wrong outside the program: one line that names the cause and the remedy, the right exit status, and nothing
// half-written.
#include <sys/mount.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/interrupt.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Exit;
namespace fs = std::filesystem;

class BadInputTest : public testing::Test {
 protected:
  void SetUp() override {
    WriteConstant(folder / "a.fits", 20, 10, 100.0f);
    WriteConstant(folder / "b.fits", 20, 10, 110.0f);
    WriteConstant(folder / "small.fits", 10, 10, 5.0f);
  }

  // The commands that read `bad` in every role that a file can have.
  std::vector<std::vector<std::string>> EveryReaderOf(std::string const& bad) const {
    std::string const good = folder / "a.fits";
    return {{"info", bad},
            {"stars", bad},
            {"calibrate", bad, "--dark", good, "-o", folder / "out"},
            {"calibrate", good, "--dark", bad, "-o", folder / "out"},
            {"calibrate", good, "--flat", bad, "-o", folder / "out"},
            {"calibrate", good, "--flat", good, "--flat-dark", bad, "-o", folder / "out"},
            {"align", good, bad, "-o", folder / "out.json"},
            {"stack", good, bad, "-o", folder / "out.fits"},
            {"level", bad, "--set", "1", "2", "-o", folder / "out.fits"},
            {"apply", "invert", bad, "-o", folder / "out.fits"},
            {"compose", "rgb", "--red", good, "--green", bad, "--blue", good, "-o", folder / "out.fits"},
            {"mosaic", good, bad, "-o", folder / "out.fits"},
            {"split", bad, "-o", folder / "out"},
            {"render", bad, "-o", folder / "out.png"},
            {"convert", bad, "-o", folder / "out.tif"},
            {"annotate", bad, "--line", "0", "0", "5", "5", "-o", folder / "out.fits"}};
  }

  void ExpectRefused(std::string const& bad, std::vector<std::string> const& parts) {
    std::vector<std::string> const before = folder.Names();
    for (std::vector<std::string> const& arguments : EveryReaderOf(bad)) {
      EXPECT_TRUE(FailsInOneLine(RunLoudly(arguments), Exit::kInput, parts)) << arguments[0];
    }
    EXPECT_EQ(folder.Names().size(), before.size());
  }

  ScratchFolder folder;
};

// One bad frame does not cost a night: it is named and left out, where the others are enough.
TEST_F(BadInputTest, ABrokenFrameAmongManyIsLeftOut) {
  std::string const broken = folder / "aa.fits";
  std::ofstream(broken) << "SIMPLE  = no such thing";
  struct Case {
    std::vector<std::string> arguments;
    std::string output;
  };
  std::string const a = folder / "a.fits";
  std::string const b = folder / "b.fits";
  for (Case const& c :
       {Case{{"stack", broken, a, b, "-o", folder / "s.out.fits"}, folder / "s.out.fits"},
        Case{{"calibrate", a, broken, "--dark", broken, b, "-o", folder / "out"}, folder / "out/a.fits"}}) {
    CommandResult const result = RunQuietly(c.arguments);
    EXPECT_EQ(Exit::kDone, result.status) << result.err;
    EXPECT_NE(std::string::npos, result.err.find("warning: " + broken)) << result.err;
    EXPECT_NE(std::string::npos, result.err.find("; left out\n")) << result.err;
    EXPECT_TRUE(std::filesystem::exists(c.output));
  }
  EXPECT_EQ(2.0, ReadFrame(folder / "s.out.fits").header.Number("STACKCNT"));
}

TEST_F(BadInputTest, MissingFile) { ExpectRefused(folder / "none.fits", {"none.fits"}); }

TEST_F(BadInputTest, Folder) {
  fs::create_directory(folder / "dir.fits");
  ExpectRefused(folder / "dir.fits", {"dir.fits"});
}

TEST_F(BadInputTest, TextThatIsNamedFits) {
  WriteText(folder / "text.fits", "This is no image.\n");
  ExpectRefused(folder / "text.fits", {"text.fits"});
}

TEST_F(BadInputTest, TruncatedFits) {
  WriteConstant(folder / "cut.fits", 300, 200, 5.0f);
  fs::resize_file(folder / "cut.fits", 100000);
  ExpectRefused(folder / "cut.fits", {"cut.fits"});
}

TEST_F(BadInputTest, TruncatedPictures) {
  host::Frame const frame = ReadFrame(folder / "a.fits");
  for (char const* name : {"cut.tif", "cut.png", "cut.bmp"}) {
    host::WriteFrameFile(folder / name, frame, {}, host::Existing::kKeep);
    fs::resize_file(folder / name, fs::file_size(folder / name) - 40);
    ExpectRefused(folder / name, {name});
  }
}

TEST_F(BadInputTest, TextThatIsNamedAsAPicture) {
  for (char const* name : {"text.tif", "text.png", "text.bmp", "text.cr2"}) {
    WriteText(folder / name, "This is no image.\n");
    ExpectRefused(folder / name, {name});
  }
}

// Before any work, for most commands before the input is looked at.
TEST_F(BadInputTest, OutputsOfNoFormat) {
  std::string const none = folder / "none.fits";
  std::string const out = folder / "out.jpg";
  for (std::vector<std::string> const& arguments :
       {std::vector<std::string>{"level", none, "--set", "1", "2", "-o", out},
        std::vector<std::string>{"apply", "invert", none, "-o", out},
        std::vector<std::string>{"compose", "rgb", "--red", none, "--green", none, "--blue", none, "-o", out},
        std::vector<std::string>{"mosaic", none, none, "-o", out}, std::vector<std::string>{"convert", none, "-o", out},
        std::vector<std::string>{"stack", none, none, "-o", out},
        std::vector<std::string>{"calibrate", folder / "a.fits", "--dark", folder / "a.fits", "--save-dark", out, "-o",
                                 folder / "x"}}) {
    EXPECT_TRUE(FailsInOneLine(RunQuietly(arguments), Exit::kUsage, {"out.jpg", ".tif", ".png"})) << arguments[0];
  }
}

TEST_F(BadInputTest, FitsWithoutAnImage) {
  std::string text = "SIMPLE  =                    T";
  text.resize(80, ' ');
  text += "BITPIX  =                    8";
  text.resize(160, ' ');
  text += "NAXIS   =                    0";
  text.resize(240, ' ');
  text += "END";
  text.resize(2880, ' ');
  WriteText(folder / "empty.fits", text);
  ExpectRefused(folder / "empty.fits", {"empty.fits"});
}

TEST_F(BadInputTest, FramesOfDifferentShapes) {
  for (std::vector<std::string> const& arguments :
       {std::vector<std::string>{"stack", folder / "a.fits", folder / "small.fits", "-o", folder / "out.fits"},
        std::vector<std::string>{"align", folder / "a.fits", folder / "small.fits", "-o", folder / "out.json"},
        std::vector<std::string>{"calibrate", folder / "a.fits", folder / "small.fits", "--sky-flat", folder / "b.fits",
                                 "-o", folder / "out"}}) {
    EXPECT_TRUE(FailsInOneLine(RunQuietly(arguments), Exit::kUsage, {"small.fits", "10 x 10", "20 x 10", "one shape"}));
  }
  EXPECT_EQ(folder.Names().size(), 3u);
}

TEST_F(BadInputTest, ADarkOfAnotherSize) {
  EXPECT_TRUE(FailsInOneLine(
      RunQuietly({"calibrate", folder / "a.fits", "--dark", folder / "small.fits", "-o", folder / "out"}), Exit::kUsage,
      {"small.fits", "10 x 10", "a.fits", "20 x 10", "dark of the same camera"}));
  EXPECT_EQ(folder.Names().size(), 3u);
}

TEST_F(BadInputTest, AFrameWithoutStars) {
  WriteConstant(folder / "even.fits", 200, 200, 100.0f);
  EXPECT_TRUE(FailsInOneLine(RunLoudly({"stars", folder / "even.fits"}), Exit::kFailed,
                             {"even.fits", "no stars", "--threshold"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"align", folder / "even.fits", folder / "even.fits", "-o", folder / "o.json"}),
                             Exit::kFailed, {"even.fits", "stars", "--reference"}));
  EXPECT_FALSE(fs::exists(folder / "o.json"));
}

TEST_F(BadInputTest, SamplesThatAreNotFiniteAreReportedAndDoNotStopTheWork) {
  COrbImage image(-32, 20, 10, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(200, 100.0f));
  image.SetPixelGrayRaw(3, 4, NAN, 0);
  image.SetPixelGrayRaw(5, 4, INFINITY, 0);
  WriteFrame(folder / "nan.fits", image);
  CommandResult const stack = RunQuietly({"stack", folder / "a.fits", folder / "nan.fits", "-o", folder / "s.fits"});
  EXPECT_EQ(stack.status, Exit::kDone);
  EXPECT_NE(stack.err.find("nan.fits: 2 samples are not finite"), std::string::npos) << stack.err;
  CommandResult const calibrated =
      RunQuietly({"calibrate", folder / "nan.fits", "--dark", folder / "a.fits", "-o", folder / "out"});
  EXPECT_EQ(calibrated.status, Exit::kDone);
  EXPECT_NE(calibrated.err.find("nan.fits: 2 samples are not finite"), std::string::npos) << calibrated.err;
}

TEST_F(BadInputTest, OutputInAMissingFolder) {
  std::string const a = folder / "a.fits";
  WriteFrame(folder / "colour.fits", COrbImage(-32, 4, 3, 3, 1.0, 0.0, 1, nullptr, nullptr));
  for (std::vector<std::string> const& arguments :
       {std::vector<std::string>{"stack", a, folder / "b.fits", "-o", folder / "none/out.fits"},
        std::vector<std::string>{"align", a, folder / "b.fits", "-o", folder / "none/out.json"},
        std::vector<std::string>{"level", a, "--set", "1", "2", "-o", folder / "none/out.fits"},
        std::vector<std::string>{"render", a, "-o", folder / "none/out.png"},
        std::vector<std::string>{"annotate", a, "--line", "0", "0", "5", "5", "-o", folder / "none/out.png"},
        std::vector<std::string>{"stack", a, folder / "b.fits", "-o", folder / "s.fits", "--preview",
                                 folder / "none/out.png"},
        std::vector<std::string>{"calibrate", a, "--dark", a, "-o", folder / "none/out"},
        std::vector<std::string>{"apply", "invert", a, "-o", folder / "none/out.fits"},
        std::vector<std::string>{"compose", "rgb", "--red", a, "--green", a, "--blue", a, "-o",
                                 folder / "none/out.fits"},
        std::vector<std::string>{"mosaic", a, a, "-o", folder / "none/out.fits"},
        std::vector<std::string>{"split", folder / "colour.fits", "-o", folder / "none/out"},
        std::vector<std::string>{"simulate", "-o", folder / "none/out"},
        std::vector<std::string>{"demo", "-o", folder / "none/out"}}) {
    EXPECT_TRUE(FailsInOneLine(RunQuietly(arguments), Exit::kOutput, {"none"})) << arguments[0];
  }
  EXPECT_EQ(folder.Names().size(), 4u);
}

TEST_F(BadInputTest, AnExistingFileIsKept) {
  std::string const before = ReadText(folder / "b.fits");
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"stack", folder / "a.fits", folder / "a.fits", "-o", folder / "b.fits"}),
                             Exit::kOutput, {"b.fits", "--force"}));
  EXPECT_EQ(ReadText(folder / "b.fits"), before);
}

TEST_F(BadInputTest, AFileInPlaceOfAFolder) {
  EXPECT_TRUE(FailsInOneLine(
      RunQuietly({"calibrate", folder / "a.fits", "--dark", folder / "b.fits", "-o", folder / "small.fits"}),
      Exit::kOutput, {"small.fits", "is a file"}));
}

TEST_F(BadInputTest, ArgumentsOutOfRange) {
  std::string const a = folder / "a.fits";
  std::vector<std::string> const stack{"stack", a, folder / "b.fits", "-o", folder / "out.fits"};
  auto const with = [&](std::vector<std::string> const& more) {
    std::vector<std::string> arguments = stack;
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunLoudly(arguments);
  };
  EXPECT_TRUE(FailsInOneLine(with({"--threads", "0"}), Exit::kUsage, {"--threads", "1", "256"}));
  EXPECT_TRUE(FailsInOneLine(with({"--threads", "many"}), Exit::kUsage, {"--threads"}));
  EXPECT_TRUE(FailsInOneLine(with({"--mode", "rejection", "--radius", "-1"}), Exit::kUsage, {"--radius", "0", "2"}));
  EXPECT_TRUE(FailsInOneLine(with({"--threshold", "nan"}), Exit::kUsage, {"--threshold"}));
  EXPECT_TRUE(FailsInOneLine(with({"--mode", "modal"}), Exit::kUsage, {"--mode", "median"}));
  EXPECT_TRUE(FailsInOneLine(with({"--memory", "lots"}), Exit::kUsage, {"--memory", "512M"}));
  EXPECT_TRUE(FailsInOneLine(with({"--scale", "256"}), Exit::kUsage, {"--scale", "median"}));
  EXPECT_TRUE(
      FailsInOneLine(with({"--scale", "256", "--mode", "add"}), Exit::kUsage, {"a.fits", "CBLACK", "orbimg level"}));
  EXPECT_TRUE(FailsInOneLine(with({"--unknown"}), Exit::kUsage, {"--unknown", "stack --help"}));
  EXPECT_TRUE(FailsInOneLine(RunLoudly({"stack", a, "-o", folder / "out.fits"}), Exit::kUsage, {"two or more"}));
  EXPECT_TRUE(FailsInOneLine(RunLoudly({"stars", a, "--radius", "-3"}), Exit::kUsage, {"--radius"}));
  EXPECT_TRUE(FailsInOneLine(RunLoudly({"simulate", "-o", folder / "out", "--rotation", "40"}), Exit::kUsage,
                             {"--rotation", "45"}));
  EXPECT_TRUE(FailsInOneLine(RunLoudly({"stretch"}), Exit::kUsage, {"stretch"}));
  EXPECT_TRUE(FailsInOneLine(RunLoudly({}), Exit::kUsage, {"orbimg --help"}));
  EXPECT_EQ(folder.Names().size(), 3u);
}

TEST_F(BadInputTest, CtrlCLeavesNothingHalfWritten) {
  host::SetInterrupted(true);
  CommandResult const stack = RunQuietly({"stack", folder / "a.fits", folder / "b.fits", "-o", folder / "out.fits"});
  CommandResult const calibrate =
      RunQuietly({"calibrate", folder / "a.fits", "--dark", folder / "b.fits", "-o", folder / "out"});
  host::SetInterrupted(false);
  EXPECT_TRUE(FailsInOneLine(stack, Exit::kInterrupted, {"interrupted"}));
  EXPECT_TRUE(FailsInOneLine(calibrate, Exit::kInterrupted, {"interrupted"}));
  EXPECT_FALSE(fs::exists(folder / "out.fits"));
  EXPECT_TRUE(fs::is_empty(folder / "out"));
}

// A small disk of its own, where the system lets us mount one.
class SmallDisk {
 public:
  SmallDisk(std::string const& initPath, char const* size) : path(initPath) {
    fs::create_directory(path);
    mounted = ::mount("tmpfs", path.c_str(), "tmpfs", 0, size) == 0;
  }
  SmallDisk(SmallDisk const&) = delete;
  SmallDisk& operator=(SmallDisk const&) = delete;
  ~SmallDisk() {
    if (mounted) ::umount(path.c_str());
  }
  bool IsMounted() const { return mounted; }

 private:
  std::string path;
  bool mounted = false;
};

TEST_F(BadInputTest, AFullDisk) {
  SmallDisk const disk(folder / "disk", "size=256k");
  if (!disk.IsMounted()) GTEST_SKIP() << "no small disk: mount is not permitted here (" << std::strerror(errno) << ")";
  for (char const* name : {"c.fits", "d.fits"}) WriteConstant(folder / name, 300, 300, 100.0f);
  std::string const c = folder / "c.fits";
  for (std::vector<std::string> const& arguments :
       {std::vector<std::string>{"stack", c, folder / "d.fits", "-o", folder / "disk/out.fits"},
        std::vector<std::string>{"level", c, "--set", "1", "2", "-o", folder / "disk/out.fits"},
        std::vector<std::string>{"convert", c, "-o", folder / "disk/out.tif"},
        std::vector<std::string>{"stack", c, folder / "d.fits", "-o", folder / "disk/out.tif"},
        std::vector<std::string>{"convert", c, "-o", folder / "disk/out.fits.gz"},
        std::vector<std::string>{"calibrate", c, "--dark", folder / "d.fits", "-o", folder / "disk"},
        std::vector<std::string>{"simulate", "--frames", "2", "-o", folder / "disk"}}) {
    EXPECT_TRUE(FailsInOneLine(RunQuietly(arguments), Exit::kResources, {"disk"})) << arguments[0];
    EXPECT_TRUE(fs::is_empty(folder / "disk")) << arguments[0];
  }
}

}  // namespace
}  // namespace orb::test
