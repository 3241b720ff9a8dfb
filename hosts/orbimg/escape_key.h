// The ESC key of the terminal that a command was started from.
#pragma once

#include <termios.h>
#include <unistd.h>

namespace orb::host {

// While it lives, keys come without waiting for a line and are not echoed; Ctrl-C stays what it is. Where the input is
// no terminal, or the program runs in the background, no key is read. One at a time.
class EscapeKey {
 public:
  explicit EscapeKey(int initInput = STDIN_FILENO);
  EscapeKey(EscapeKey const&) = delete;
  EscapeKey& operator=(EscapeKey const&) = delete;
  ~EscapeKey();

  // Swallows the keys that wait. True from the first ESC on; the sequences of arrows and function keys, which begin
  // with that character, do not count.
  bool WasPressed();

 private:
  int input;
  bool isWatching = false;
  bool wasPressed = false;
};

// Gives the terminal back what an EscapeKey took. For a program that is about to leave without unwinding; may be called
// from a signal handler.
void RestoreTerminal();

}  // namespace orb::host
