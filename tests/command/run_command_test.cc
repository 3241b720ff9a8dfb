// orbimg run: recipes checked before anything starts, run to the bits of the single commands, and not repeated in vain.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/recipe.h>
#include <hosts/orbimg/recipe_plan.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Exit;
namespace fs = std::filesystem;

constexpr char kSteps[] = R"(
    {"name": "calibrated", "output": "cal/",
     "run": ["calibrate", "{lights}", "--dark", "{darks}", ["--flat", "{flats}"], "-o", "{output}"]},
    {"name": "stack", "output": "stack.fits", "run": ["stack", "{calibrated}", "-o", "{output}"]},
    {"name": "inverted", "output": "inverted.fits", "run": ["apply", "invert", "{stack}", "-o", "{output}"]})";

class RunTest : public testing::Test {
 protected:
  void SetUp() override {
    Random random{3};
    for (char const* name : {"l1.fits", "l2.fits", "l3.fits", "d1.fits"}) {
      WriteFrame(folder / name, RandomImage(random, 30, 20, 1));
    }
    Write(kSteps);
  }

  void Write(std::string const& steps) {
    std::string const inputs = "\"lights\": \"" + (folder / "l?.fits") + "\", \"darks\": \"" + (folder / "d*.fits") +
                               "\", \"flats\": {\"files\": \"" + (folder / "f*.fits") + "\", \"optional\": true}";
    std::ofstream(folder / "r.json") << "{\"title\": \"A night\", \"inputs\": {" + inputs + "}, \"steps\": [" + steps +
                                            "]}";
  }

  CommandResult Run(std::vector<std::string> const& more = {}) {
    std::vector<std::string> arguments{"run", folder / "r.json", "-o", folder / "out"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunQuietly(arguments);
  }

  // The steps that were run, not kept.
  static std::vector<std::string> Worked(CommandResult const& result) {
    std::vector<std::string> names;
    for (char const* name : {"calibrated", "stack", "inverted"}) {
      if (result.out.find(std::string(name) + ": orbimg ") != std::string::npos) names.emplace_back(name);
    }
    return names;
  }

  using Names = std::vector<std::string>;
  ScratchFolder folder;
};

TEST_F(RunTest, GivesTheBitsOfTheSingleCommands) {
  ASSERT_TRUE(Succeeds(Run()));
  ASSERT_TRUE(
      Succeeds(RunQuietly({"calibrate", folder / "l?.fits", "--dark", folder / "d1.fits", "-o", folder / "c"})));
  ASSERT_TRUE(Succeeds(RunQuietly({"stack", folder / "c/*.fits", "-o", folder / "s.fits"})));
  ASSERT_TRUE(Succeeds(RunQuietly({"apply", "invert", folder / "s.fits", "-o", folder / "i.fits"})));
  EXPECT_TRUE(SameBits(ReadFrame(folder / "i.fits").image, ReadFrame(folder / "out/inverted.fits").image));
}

TEST_F(RunTest, AFinishedStepIsNotRepeated) {
  EXPECT_EQ((Names{"calibrated", "stack", "inverted"}), Worked(Run()));
  std::string const log = ReadText(folder / "out/orbimg-run.log");
  EXPECT_EQ(Names{}, Worked(Run()));
  EXPECT_EQ(log, ReadText(folder / "out/orbimg-run.log"));
}

TEST_F(RunTest, WhatHangsOnAChangeIsRepeated) {
  Run();
  Write(std::string(kSteps).replace(std::string(kSteps).find("[\"stack\""), 8, "[\"stack\", \"--mode\", \"average\""));
  EXPECT_EQ((Names{"stack", "inverted"}), Worked(Run()));
  Random random{9};
  fs::remove(folder / "d1.fits");
  WriteFrame(folder / "d1.fits", RandomImage(random, 30, 20, 1));
  EXPECT_EQ((Names{"calibrated", "stack", "inverted"}), Worked(Run()));
  fs::remove(folder / "out/inverted.fits");
  EXPECT_EQ((Names{"inverted"}), Worked(Run()));
  std::ofstream(folder / "out/stack.fits", std::ios::app) << std::string(2880, ' ');
  EXPECT_EQ((Names{"stack", "inverted"}), Worked(Run()));
}

TEST_F(RunTest, AFailedStepKeepsWhatWasFinished) {
  WriteConstant(folder / "f1.fits", 30, 20, 0.0f);  // a flat without light
  EXPECT_TRUE(
      FailsInOneLine(RunQuietly({"run", folder / "r.json", "-o", folder / "none/out"}), Exit::kOutput, {"none"}));
  CommandResult const failed = Run();
  EXPECT_EQ(Exit::kFailed, failed.status);
  EXPECT_NE(std::string::npos, failed.err.find("step calibrated failed")) << failed.err;
  fs::remove(folder / "f1.fits");
  EXPECT_EQ((Names{"calibrated", "stack", "inverted"}), Worked(Run()));
}

TEST_F(RunTest, ADryRunChecksPrintsAndDoesNothing) {
  CommandResult const result = Run({"--dry-run"});
  ASSERT_TRUE(Succeeds(result));
  for (char const* part : {"A night", "input lights: 3 files of 30 x 20", "input flats: none", "3 of 30 x 20",
                           "disk: about", "orbimg stack "}) {
    EXPECT_NE(std::string::npos, result.out.find(part)) << part << '\n' << result.out;
  }
  EXPECT_FALSE(fs::exists(folder / "out"));
}

TEST_F(RunTest, OptionalWordsGoWithTheirInput) {
  EXPECT_EQ(std::string::npos, Run({"--dry-run"}).out.find("--flat"));
  WriteConstant(folder / "f1.fits", 30, 20, 100.0f);
  EXPECT_NE(std::string::npos, Run({"--dry-run"}).out.find("--flat " + (folder / "f1.fits")));
}

TEST_F(RunTest, InputsCanBeGivenOnTheCommandLine) {
  CommandResult const result = Run({"--dry-run", "--input", "lights=" + (folder / "l1.fits")});
  EXPECT_NE(std::string::npos, result.out.find("input lights: 1 files")) << result.out << result.err;
  EXPECT_TRUE(FailsInOneLine(Run({"--input", "stars=x.fits"}), Exit::kUsage, {"--input", "stars"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--input", "lights"}), Exit::kUsage, {"--input", "NAME=FILES"}));
}

// Each is refused in one line before anything is made.
TEST_F(RunTest, WhatIsWrongIsSaidBeforeAnythingStarts) {
  struct Case {
    char const* steps;
    std::vector<std::string> parts;
  };
  for (Case const& c : {
           Case{R"({"name": "a", "output": "a.fits", "run": ["stack", "{light}", "-o", "{output}"]})",
                {"step a", "{light}", "no input"}},
           Case{
               R"({"name": "a", "output": "a.fits", "run": ["stack", "{lights}", "--mode", "best", "-o", "{output}"]})",
               {"step a", "--mode", "best"}},
           Case{R"({"name": "a", "output": "a.fits", "run": ["stakc", "{lights}", "-o", "{output}"]})",
                {"step a", "stakc"}},
           Case{R"({"name": "a", "output": "../a.fits", "run": ["stack", "{lights}", "-o", "{output}"]})",
                {"step a", "../a.fits", "inside the folder"}},
           Case{R"({"name": "lights", "output": "a.fits", "run": ["stack", "{lights}", "-o", "{output}"]})",
                {"step lights", "taken"}},
           Case{R"({"name": "a", "output": "a.fits", "run": ["stack", "{flats}", "-o", "{output}"]})",
                {"step a", "{flats}", "no files"}},
           Case{R"({"name": "a", "output": "a.fits"})", {"step 1", "run"}},
           Case{R"({"name": "a", "output": "a.fits", "run": ["stack", 5]})", {"step 1", "text"}},
           Case{R"({"name": "a", "outputs": "a.fits", "run": []})", {"step 1", "outputs"}},
           Case{"", {"steps", "one step or more"}},
           Case{"{", {"r.json", "no JSON"}},
       }) {
    Write(c.steps);
    CommandResult const result = Run();
    EXPECT_NE(Exit::kDone, result.status);
    EXPECT_TRUE(FailsInOneLine(result, result.status, c.parts)) << c.steps;
    EXPECT_FALSE(fs::exists(folder / "out"));
  }
  Write(kSteps);
  fs::remove(folder / "d1.fits");
  EXPECT_TRUE(FailsInOneLine(Run(), Exit::kInput, {"input darks", "d*.fits", "--input darks="}));
}

TEST_F(RunTest, TheRecipesThatComeAlongPlanWell) {
  int recipes = 0;
  for (auto const& entry : fs::directory_iterator(ORBIMG_RECIPES)) {
    SCOPED_TRACE(entry.path());
    host::Recipe const recipe = host::ReadRecipe(entry.path());
    host::RecipeSettings settings;
    settings.folder = folder / "out";
    settings.common.threads = 2;
    settings.common.memory = 1 << 30;
    for (host::RecipeInput const& input : recipe.inputs) settings.overrides[input.name] = {folder / "l?.fits"};
    EXPECT_EQ(recipe.steps.size(), host::MakePlan(recipe, settings).steps.size());
    ++recipes;
  }
  EXPECT_EQ(4, recipes);
}

}  // namespace
}  // namespace orb::test
