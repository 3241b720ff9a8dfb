// What the program says of itself: help, manual page and completions, beside the catalogue and beside one another.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/command_tree.h>
#include <hosts/orbimg/completion.h>
#include <hosts/orbimg/manual_page.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::CommandNode;
using host::OperatorEntry;
using host::OptionNode;

std::vector<CommandNode> Leaves(CommandNode const& program) {
  std::vector<CommandNode> leaves;
  host::EachCommand(program, [&leaves](CommandNode const& command) {
    if (command.subcommands.empty()) leaves.push_back(command);
  });
  return leaves;
}

CommandNode const* Find(std::vector<CommandNode> const& commands, std::string const& path) {
  for (CommandNode const& each : commands) {
    if (each.path == path) return &each;
  }
  return nullptr;
}

OptionNode const* FindOption(CommandNode const& command, std::string const& name) {
  for (OptionNode const& option : command.options) {
    for (std::string const& each : option.names) {
      if (each == name) return &option;
    }
  }
  return nullptr;
}

std::vector<std::string> Words(std::string const& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::string RunShell(std::string const& line) {
  FILE* pipe = ::popen((line + " 2>&1").c_str(), "r");
  std::string text;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text += static_cast<char>(c);
  ::pclose(pipe);
  return text;
}

bool IsInstalled(std::string const& program) { return !RunShell("command -v " + program).empty(); }

class ManualTest : public testing::Test {
 protected:
  std::string Write(std::string const& name, std::string const& text) {
    std::ofstream(folder / name) << text;
    return folder / name;
  }

  // What Bash offers for the last of the words.
  std::vector<std::string> Complete(std::vector<std::string> const& words) {
    std::string script = host::MakeBashCompletion(program) + "\nCOMP_WORDS=(";
    for (std::string const& word : words) script += "'" + word + "' ";
    script += ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) + "\n_orbimg\necho \"${COMPREPLY[@]}\"\n";
    return Words(RunShell("bash " + Write("complete.sh", script)));
  }

  ScratchFolder folder;
  CommandNode const program = host::DescribeProgram();
};

TEST_F(ManualTest, EveryOperatorWithAGroupIsASubcommandWithItsParametersAndChoices) {
  std::vector<CommandNode> const leaves = Leaves(program);
  int operators = 0;
  for (OperatorEntry const& entry : host::Catalogue()) {
    if (entry.group.empty()) continue;
    SCOPED_TRACE(entry.name);
    ++operators;
    CommandNode const* const command = Find(leaves, "orbimg " + entry.group + " " + entry.name);
    ASSERT_NE(nullptr, command);
    for (host::Parameter const& parameter : entry.parameters) {
      OptionNode const* const option = FindOption(*command, "--" + parameter.name);
      ASSERT_NE(nullptr, option) << parameter.name;
      EXPECT_EQ(parameter.choices, option->choices) << parameter.name;
      EXPECT_EQ(parameter.kind == host::Parameter::Kind::kFlag, option->value.empty()) << parameter.name;
    }
  }
  EXPECT_GT(operators, 20);
}

TEST_F(ManualTest, PageAndCompletionsHoldEverySubcommandAndOption) {
  std::string const zsh = host::MakeZshCompletion(program);
  std::string const bash = host::MakeBashCompletion(program);
  std::string page;
  for (char const c : host::MakeManualPage(program, "1.0")) {
    if (c != '\\') page += c;  // as read: dashes are escaped
  }
  for (CommandNode const& command : Leaves(program)) {
    SCOPED_TRACE(command.path);
    EXPECT_NE(std::string::npos, page.find(".SS " + command.path + "\n"));
    EXPECT_NE(std::string::npos, bash.find("\"" + command.path + "\") "));
    for (OptionNode const& option : command.options) {
      for (std::string const& name : option.names) {
        EXPECT_NE(std::string::npos, page.find("fB" + name + "fR")) << name;
        if (option.isPositional) continue;
        EXPECT_NE(std::string::npos, bash.find(name)) << name;
        EXPECT_NE(std::string::npos, zsh.find("'" + name + "[")) << name;
      }
    }
  }
}

TEST_F(ManualTest, EverySubcommandHasAnExampleThatBeginsWithIt) {
  for (CommandNode const& command : Leaves(program)) {
    EXPECT_TRUE(command.example.starts_with("Example: " + command.path)) << command.path << ": " << command.example;
  }
}

// Every file of the example is a small image, mono unless it is called otherwise.
TEST_F(ManualTest, ExamplesOfOperatorsRun) {
  Random random{4};
  for (char const* name : {"image.fits", "source.fits", "second.fits"}) {
    WriteFrame(folder / name, RandomImage(random, 40, 36, 1));
  }
  WriteFrame(folder / "colour.fits", RandomImage(random, 40, 36, 3));
  std::vector<CommandNode> const leaves = Leaves(program);
  for (OperatorEntry const& entry : host::Catalogue()) {
    if (entry.group.empty()) continue;
    CommandNode const* const command = Find(leaves, "orbimg " + entry.group + " " + entry.name);
    ASSERT_NE(nullptr, command);
    std::vector<std::string> words = Words(command->example);
    words.erase(words.begin(), words.begin() + 2);  // "Example: orbimg"
    for (std::string& word : words) {
      if (word.ends_with(".fits") || word.ends_with(".png")) word = folder / word;
    }
    words.push_back("-f");
    EXPECT_TRUE(Succeeds(RunQuietly(words))) << command->example;
  }
}

TEST_F(ManualTest, BashCompletesSubcommandsOptionsAndChoices) {
  EXPECT_EQ((std::vector<std::string>{"stars", "stack"}), Complete({"orbimg", "sta"}));
  EXPECT_EQ((std::vector<std::string>{"rgb"}), Complete({"orbimg", "compose", "rg"}));
  EXPECT_EQ((std::vector<std::string>{"--preset"}),
            Complete({"orbimg", "apply", "curve", "a.fits", "--pre", "--pres"}));
  EXPECT_EQ((std::vector<std::string>{"midtone"}), Complete({"orbimg", "apply", "curve", "--preset", "mid"}));
  EXPECT_TRUE(Complete({"orbimg", "apply", "curve", "--curve", "po"}).empty());  // files: left to the shell
}

TEST_F(ManualTest, ThePageHasNoFaultThatGroffWouldWarnOf) {
  if (!IsInstalled("groff")) GTEST_SKIP() << "groff is not installed";
  EXPECT_EQ("", RunShell("groff -man -Tutf8 -ww -z " + Write("orbimg.1", host::MakeManualPage(program, "1.0"))));
}

TEST_F(ManualTest, ZshReadsItsCompletion) {
  if (!IsInstalled("zsh")) GTEST_SKIP() << "zsh is not installed";
  EXPECT_EQ("", RunShell("zsh -n " + Write("_orbimg", host::MakeZshCompletion(program))));
}

TEST_F(ManualTest, TheCommandPrintsEach) {
  EXPECT_TRUE(RunLoudly({"manual"}).out.starts_with(".TH ORBIMG 1"));
  EXPECT_TRUE(RunLoudly({"manual", "zsh"}).out.starts_with("#compdef orbimg"));
  EXPECT_NE(std::string::npos, RunLoudly({"manual", "bash"}).out.find("complete -o default -F _orbimg orbimg"));
  EXPECT_TRUE(FailsInOneLine(RunLoudly({"manual", "fish"}), host::Exit::kUsage, {"fish"}));
}

}  // namespace
}  // namespace orb::test
