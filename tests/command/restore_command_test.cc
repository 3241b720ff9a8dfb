// orbimg restore: the restorations on files, how they are stopped, and where their blur comes from.
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/operator_job.h>
#include <tests/command/command_support.h>
#include <tests/command/synthetic_stars.h>
#include <tests/command/terminal_input.h>
#include <tests/io/expect_host_error.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using Json = nlohmann::json;

constexpr double kWidthOfSigma = 2.3548200450309493;

// Standard error that does something when a text appears on it.
class Listener : public std::stringbuf {
 public:
  Listener(std::string initAwaited, std::function<void()> initAct)
      : awaited(std::move(initAwaited)), act(std::move(initAct)) {}

 protected:
  int sync() override {
    if (act && str().find(awaited) != std::string::npos) std::exchange(act, nullptr)();
    return 0;
  }

 private:
  std::string awaited;
  std::function<void()> act;
};

class RestoreTest : public testing::Test {
 protected:
  void SetUp() override {
    COrbImage image = SkyImage(96, 80, 200.0, 4.0, 5);
    int i = 0;
    for (host::Position const& p : RandomPositions(9, 12, 70.0, 54.0)) {
      AddGaussian(image, p.x + 13.0, p.y + 13.0, 400.0 + 60.0 * i++, kWidthOfSigma * 1.6);
    }
    WriteFrame(Mono(), image);
    COrbImage colour(-32, 96, 80, 3, 1.0, 0.0, 1, nullptr, nullptr);
    std::vector<float> samples;
    for (int p = 0; p < 3; ++p) {
      std::vector<float> const plane = SamplesOf(image);
      samples.insert(samples.end(), plane.begin(), plane.end());
    }
    SetSamples(colour, samples);
    WriteFrame(Colour(), colour);
  }

  std::string Mono() const { return folder / "mono.fits"; }
  std::string Colour() const { return folder / "colour.fits"; }
  std::string Out() const { return folder / "out.fits"; }

  std::vector<std::string> Call(std::string const& name, std::string const& file, std::vector<std::string> more) const {
    more.insert(more.begin(), {"restore", name, file, "-o", Out()});
    return more;
  }
  CommandResult Restore(std::string const& name, std::string const& file, std::vector<std::string> more) const {
    return RunQuietly(Call(name, file, std::move(more)));
  }
  // Does something when a text stands on standard error.
  CommandResult RunAndAct(std::vector<std::string> const& arguments, std::string const& awaited,
                          std::function<void()> act) const {
    Listener listener(awaited, std::move(act));
    std::ostream err(&listener);
    std::ostringstream out;
    Exit const status = host::RunCommand(arguments, out, err);
    std::string const text = listener.str();
    return {status, out.str(), text.substr(text.find("orbimg:") == std::string::npos ? 0 : text.find("orbimg:"))};
  }
  std::string History() const {
    std::string cards;
    for (std::string const& card : ReadFrame(Out()).header.cards) {
      if (!card.starts_with("HISTORY")) continue;
      std::string const text = card.substr(8);
      cards += text.substr(0, text.find_last_not_of(' ') + 1) + " ";
    }
    return cards;
  }

  ScratchFolder folder;
};

TEST_F(RestoreTest, IsTheOperatorOnTheFile) {
  for (std::string const& file : {Mono(), Colour()}) {
    host::Frame const frame = ReadFrame(file);
    CImgWiener wiener;
    wiener.CopyImage(frame.image, nullptr, nullptr);
    wiener.Do(2.5, 0.02, nullptr, 0);
    ASSERT_TRUE(Succeeds(Restore("wiener", file, {"--radius", "2.5", "--noise", "0.02", "-f"})));
    EXPECT_TRUE(SameBits(wiener, ReadFrame(Out()).image));
    CImgLucy lucy;
    lucy.CopyImage(frame.image, nullptr, nullptr);
    lucy.Do(1.6, 2.0, 5.0, 4, nullptr, 0);
    ASSERT_TRUE(Restore("lucy", file,
                        {"--sigma", "1.6", "--adu", "2", "--noise", "5", "--iterations", "4", "-f", "--threads", "2"})
                    .err.empty());
    EXPECT_TRUE(SameBits(lucy, ReadFrame(Out()).image));
    CImgMem mem;
    mem.CopyImage(frame.image, nullptr, nullptr);
    mem.Do(1.6, 4.0, 3, nullptr, 0);
    ASSERT_TRUE(Restore("mem", file, {"--sigma", "1.6", "--noise", "4", "--iterations", "3", "-f"}).err.empty());
    EXPECT_TRUE(SameBits(mem, ReadFrame(Out()).image));
  }
}

TEST_F(RestoreTest, ARectangleLimitsWhatChanges) {
  for (char const* name : {"wiener", "lucy", "mem"}) {
    CommandResult const result = Restore(name, Mono(), {"--rect", "20", "10", "84", "74", "-f"});
    ASSERT_EQ(Exit::kDone, result.status) << result.err;
    COrbImage before = ReadFrame(Mono()).image;
    COrbImage after = ReadFrame(Out()).image;
    int changed = 0;
    for (int y = 0; y < 80; ++y) {
      for (int x = 0; x < 96; ++x) {
        bool const isSame = before.GetPixelGrayRaw(x, y, 0) == after.GetPixelGrayRaw(x, y, 0);
        bool const isInside = x >= 20 && x < 84 && y >= 10 && y < 74;
        ASSERT_TRUE(isSame || isInside) << name << ' ' << x << ' ' << y;
        changed += isSame ? 0 : 1;
      }
    }
    EXPECT_GT(changed, 3000) << name;
  }
}

TEST_F(RestoreTest, TellsHowManyIterationsItTook) {
  CommandResult const result = Restore("lucy", Colour(), {"--iterations", "2", "--adu", "1000", "--noise", "1"});
  EXPECT_EQ("iterations 2 2 2\n", result.out);
  EXPECT_NE(std::string::npos, History().find("iterations 2, iterations made 2 2 2")) << History();
  EXPECT_EQ("", Restore("wiener", Mono(), {"-f"}).out);
}

TEST_F(RestoreTest, WarnsWhereLucyIsOverAtOnce) {
  CommandResult const early = Restore("lucy", Mono(), {"--noise", "1000", "--json"});
  EXPECT_EQ(std::vector<int>{1}, Json::parse(early.out)["iterations"].get<std::vector<int>>());
  EXPECT_TRUE(early.err.starts_with("orbimg: warning: ")) << early.err;
  for (char const* part : {"mono.fits", "after 1 iteration,", "--adu", "--noise"}) {
    EXPECT_NE(std::string::npos, early.err.find(part)) << early.err;
  }
  EXPECT_EQ("", Restore("lucy", Mono(), {"--noise", "1", "--adu", "1000", "--iterations", "2", "-f"}).err);
  EXPECT_EQ("", Restore("lucy", Mono(), {"--noise", "1000", "--iterations", "1", "-f"}).err);
}

TEST_F(RestoreTest, ShowsAllIterationsAsOneRun) {
  std::vector<std::string> const call = Call("lucy", Mono(), {"--iterations", "3", "--adu", "1000", "--noise", "1"});
  EXPECT_EQ(
      "Lucy (preparing) 0 %\nLucy (preparing) 25 %\nLucy (iteration 1) 50 %\nLucy (iteration 2) 75 %\n"
      "Lucy (iteration 3) 100 %\n",
      RunLoudly(call).err);
}

TEST_F(RestoreTest, NoiseOfMaximumEntropyIsThatOfTheImageByDefault) {
  double const noise = host::MeasureSky(ReadFrame(Mono()).image, 0, nullptr).noise;
  EXPECT_NEAR(4.0, noise, 0.5);
  Json const printed = Json::parse(Restore("mem", Mono(), {"--iterations", "1", "--json"}).out);
  EXPECT_EQ(noise, printed["parameters"]["noise"]);
  WriteConstant(folder / "even.fits", 64, 64, 5.0f);
  Json const even = Json::parse(Restore("mem", folder / "even.fits", {"--iterations", "1", "--json", "-f"}).out);
  EXPECT_EQ(10.0, even["parameters"]["noise"]);
}

TEST_F(RestoreTest, BlurComesFromStars) {
  struct Case {
    char const* name;
    char const* parameter;
    double ofSigma;
  };
  for (Case const& c :
       {Case{"wiener", "radius", 1.0 / 0.707106781373095}, Case{"lucy", "sigma", 1.0}, Case{"mem", "sigma", 1.0}}) {
    Json const printed = Json::parse(Restore(c.name, Mono(), {"--psf-from", Mono(), "--json", "-f"}).out);
    double const sigma = printed["blur"]["sigma"];
    EXPECT_NEAR(1.6, sigma, 0.1) << c.name;
    EXPECT_DOUBLE_EQ(sigma * c.ofSigma, printed["parameters"][c.parameter]) << c.name;
    EXPECT_NE(std::string::npos, History().find("stars of mono.fits")) << History();
  }
  CommandResult const printed = Restore("wiener", Mono(), {"--psf-from", Mono(), "-f"});
  EXPECT_TRUE(printed.out.starts_with("blur sigma 1.")) << printed.out;
}

TEST_F(RestoreTest, RefusesABlurThatIsGivenTwiceOrFromNoStars) {
  EXPECT_TRUE(FailsInOneLine(Restore("lucy", Mono(), {"--psf-from", Mono(), "--sigma", "2"}), Exit::kUsage,
                             {"--psf-from", "--sigma"}));
  WriteConstant(folder / "even.fits", 64, 64, 5.0f);
  EXPECT_TRUE(FailsInOneLine(Restore("mem", Mono(), {"--psf-from", folder / "even.fits"}), Exit::kFailed,
                             {"--psf-from", "even.fits"}));
  EXPECT_TRUE(
      FailsInOneLine(Restore("mem", Mono(), {"--psf-from", folder / "none.json"}), Exit::kInput, {"none.json"}));
  EXPECT_TRUE(
      FailsInOneLine(Restore("mem", Mono(), {"--rect", "0", "0", "20", "20"}), Exit::kUsage, {"20 x 20", "33"}));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

// What a stopped run must leave: the file that was there, nothing beside it.
class StoppedRestoreTest : public RestoreTest {
 protected:
  void SetUp() override {
    RestoreTest::SetUp();
    WriteText(Out(), "kept");
  }
  void ExpectUntouched() const {
    EXPECT_EQ(3u, folder.Names().size());
    EXPECT_TRUE(ReadText(Out()) == "kept");
  }
  std::vector<std::string> LongCall(std::string const& name, std::string const& file) const {
    std::vector<std::string> more{"--iterations", "40", "-f"};
    if (name == "lucy") more.insert(more.end(), {"--adu", "1000", "--noise", "1"});
    if (name == "mem") more.insert(more.end(), {"--noise", "0.01"});
    return Call(name, file, more);
  }
};

TEST_F(StoppedRestoreTest, CtrlCLeavesTheOutputAsItWas) {
  for (char const* name : {"lucy", "mem"}) {
    CommandResult const result = RunAndAct(LongCall(name, Colour()), " 25 %", [] { host::SetInterrupted(true); });
    host::SetInterrupted(false);
    EXPECT_TRUE(FailsInOneLine(result, Exit::kInterrupted, {"interrupted"}));
    ExpectUntouched();
  }
  host::SetInterrupted(true);
  CommandResult const wiener = Restore("wiener", Mono(), {"-f"});
  host::SetInterrupted(false);
  EXPECT_TRUE(FailsInOneLine(wiener, Exit::kInterrupted, {"interrupted"}));
  ExpectUntouched();
}

TEST_F(StoppedRestoreTest, EscapeLeavesTheOutputAsItWas) {
  for (char const* name : {"lucy", "mem"}) {
    for (std::string const& file : {Mono(), Colour()}) {
      TerminalInput const terminal;
      CommandResult const result = RunAndAct(LongCall(name, file), " 25 %", [&] { terminal.Press("\033"); });
      EXPECT_TRUE(FailsInOneLine(result, Exit::kInterrupted, {"stopped by ESC", name, "nothing is written"}));
      ExpectUntouched();
      EXPECT_TRUE(terminal.IsAsShellsHaveIt());
    }
  }
}

TEST_F(StoppedRestoreTest, EscapeIsSeenFromTheFirstMomentOn) {
  TerminalInput const terminal;
  for (char const* name : {"lucy", "mem"}) {
    terminal.Press("\033\n");
    EXPECT_TRUE(FailsInOneLine(RunQuietly(LongCall(name, Mono())), Exit::kInterrupted, {"stopped by ESC"}));
  }
  ExpectUntouched();
}

// The operator does not look at it.
TEST_F(RestoreTest, EscapeDoesNotStopWiener) {
  TerminalInput const terminal;
  terminal.Press("\033\n");
  EXPECT_TRUE(Succeeds(Restore("wiener", Mono(), {})));
  EXPECT_TRUE(std::filesystem::exists(Out()));
}

TEST(MessageBoxes, BecomeTheLineThatTellsWhyAnOperatorFailed) {
  host::OperatorEntry entry;
  entry.name = "trial";
  entry.sourceShape = host::SourceShape::kNone;
  entry.run = [](host::Invocation const& call) {
    CImgMem image;  // refuses a noise of 0 with the box of lack of memory
    image.Swap(call.image);
    int const result = image.Do(1.5, 0.0, 1, nullptr, call.progress);
    image.Swap(call.image);
    return result;
  };
  COrbImage image(-32, 64, 64, 1, 1.0, 0.0, 1, nullptr, nullptr);
  host::Invocation call;
  call.image = &image;
  call.progress = 1;
  std::ostringstream out;
  std::ostringstream err;
  host::CommonOptions options;
  options.quiet = true;
  host::Environment environment(out, err, options);
  EXPECT_TRUE(FailsWith(Exit::kResources, "a.fits: trial: not enough memory; close other programs and try again",
                        [&] { host::RunChecked(entry, call, "a.fits", environment); }));
  EXPECT_EQ("", err.str());
}

}  // namespace
}  // namespace orb::test
