#include <hosts/orbimg/escape_key.h>

#include <gtest/gtest.h>
#include <tests/command/terminal_input.h>

namespace orb::test {
namespace {

using host::EscapeKey;

TEST(EscapeKey, IsSeenOnceItWasPressedAndFromThenOn) {
  TerminalInput const terminal;
  EscapeKey key;
  EXPECT_FALSE(key.WasPressed());
  terminal.Press("abc");
  EXPECT_FALSE(key.WasPressed());
  terminal.Press("a\033");
  EXPECT_TRUE(key.WasPressed());
  EXPECT_TRUE(key.WasPressed());
}

TEST(EscapeKey, ArrowsAndFunctionKeysAreNone) {
  TerminalInput const terminal;
  EscapeKey key;
  terminal.Press("\033[A\033OP");
  EXPECT_FALSE(key.WasPressed());
}

TEST(EscapeKey, GivesTheTerminalBackAsItWas) {
  TerminalInput const terminal;
  {
    EscapeKey const key;
    EXPECT_FALSE(terminal.IsAsShellsHaveIt());
  }
  EXPECT_TRUE(terminal.IsAsShellsHaveIt());
  EscapeKey const key;
  host::RestoreTerminal();
  EXPECT_TRUE(terminal.IsAsShellsHaveIt());
}

TEST(EscapeKey, TakesNothingFromAnInputThatIsNoTerminal) {
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  ASSERT_EQ(1, ::write(ends[1], "\033", 1));
  EscapeKey key(ends[0]);
  EXPECT_FALSE(key.WasPressed());
  char left = 'x';
  EXPECT_EQ(1, ::read(ends[0], &left, 1));
  EXPECT_EQ('\033', left);
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
}  // namespace orb::test
