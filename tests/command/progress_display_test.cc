#include <hosts/orbimg/progress_display.h>

#include <sstream>

#include <gtest/gtest.h>

namespace orb::test {
namespace {

using host::ProgressDisplay;
using host::ProgressStep;

std::string ShowSteps(ProgressDisplay::Style style) {
  std::ostringstream err;
  ProgressDisplay display(err, style);
  {
    ProgressStep const step(display, "Stacking", 8);
    for (int i = 0; i < 8; ++i) display.Advance(1);
  }
  return err.str();
}

TEST(ProgressDisplay, LogGetsPlainLines) {
  EXPECT_EQ(ShowSteps(ProgressDisplay::Style::kLines),
            "Stacking 0 %\nStacking 25 %\nStacking 50 %\nStacking 75 %\nStacking 100 %\n");
}

TEST(ProgressDisplay, TerminalGetsABarThatIsGoneAtTheEnd) {
  std::string const text = ShowSteps(ProgressDisplay::Style::kBar);
  EXPECT_NE(text.find("\r\033[KStacking [##############################] 100 %"), std::string::npos);
  EXPECT_TRUE(text.ends_with("\r\033[K"));
  EXPECT_EQ(text.find('\n'), std::string::npos);
}

TEST(ProgressDisplay, QuietShowsNothing) { EXPECT_EQ(ShowSteps(ProgressDisplay::Style::kNone), ""); }

TEST(ProgressDisplay, WarningsShowEvenWhenQuiet) {
  std::ostringstream err;
  ProgressDisplay display(err, ProgressDisplay::Style::kNone);
  display.PrintLine("warning");
  EXPECT_EQ(err.str(), "warning\n");
}

TEST(ProgressDisplay, AWarningDoesNotRunIntoTheBar) {
  std::ostringstream err;
  ProgressDisplay display(err, ProgressDisplay::Style::kBar);
  ProgressStep const step(display, "Stacking", 2);
  display.Advance(1);
  display.PrintLine("warning");
  EXPECT_NE(err.str().find("\r\033[Kwarning\n\r\033[KStacking"), std::string::npos);
}

TEST(ProgressDisplay, NoUnitsIsDoneAtOnce) {
  std::ostringstream err;
  ProgressDisplay display(err, ProgressDisplay::Style::kLines);
  ProgressStep const step(display, "Nothing", 0);
  EXPECT_EQ(err.str(), "Nothing 100 %\n");
}

TEST(ProgressDisplay, TheTimeLeftFollowsFromTheTimeSpent) {
  EXPECT_EQ(host::FormatTimeLeft(30.0, 25), ", 1:30 left");
  EXPECT_EQ(host::FormatTimeLeft(2.1, 99), ", 0:01 left");
  EXPECT_EQ(host::FormatTimeLeft(1.9, 50), "");
  EXPECT_EQ(host::FormatTimeLeft(30.0, 0), "");
  EXPECT_EQ(host::FormatTimeLeft(30.0, 100), "");
}

}  // namespace
}  // namespace orb::test
