// A terminal in place of the standard input, for tests of keys.
#pragma once

#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace orb::test {

class TerminalInput {
 public:
  TerminalInput() {
    if (::openpty(&keyboard, &terminal, nullptr, nullptr, nullptr) != 0) throw std::runtime_error("no terminal");
    before = ::dup(STDIN_FILENO);
    ::dup2(terminal, STDIN_FILENO);
  }
  TerminalInput(TerminalInput const&) = delete;
  TerminalInput& operator=(TerminalInput const&) = delete;
  ~TerminalInput() {
    ::dup2(before, STDIN_FILENO);
    for (int const file : {before, terminal, keyboard}) ::close(file);
  }

  void Press(std::string const& keys) const {
    if (::write(keyboard, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
      throw std::runtime_error("the terminal takes no keys");
    }
  }
  // Whether keys come a line at a time and are echoed, as a shell expects it.
  bool IsAsShellsHaveIt() const {
    termios settings{};
    ::tcgetattr(terminal, &settings);
    return (settings.c_lflag & ICANON) != 0 && (settings.c_lflag & ECHO) != 0;
  }

 private:
  int keyboard = -1;
  int terminal = -1;
  int before = -1;
};

}  // namespace orb::test
