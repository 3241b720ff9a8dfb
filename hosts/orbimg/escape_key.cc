#include <hosts/orbimg/escape_key.h>

#include <atomic>
#include <string_view>

namespace orb::host {
namespace {

constexpr char kEscape = '\033';
constexpr int kNoTerminal = -1;

// What a signal handler needs.
std::atomic<int> changedTerminal{kNoTerminal};
termios settingsBefore{};

// A process in the background that touches its terminal is stopped. A terminal that is not ours has no background.
bool IsInForeground(int terminal) {
  pid_t const group = ::tcgetpgrp(terminal);
  return group == -1 || group == ::getpgrp();
}

bool HasEscape(std::string_view keys) {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i] != kEscape) continue;
    char const next = i + 1 < keys.size() ? keys[i + 1] : '\0';
    if (next != '[' && next != 'O') return true;
  }
  return false;
}

}  // namespace

EscapeKey::EscapeKey(int initInput) : input(initInput) {
  if (::isatty(input) == 0 || !IsInForeground(input) || ::tcgetattr(input, &settingsBefore) != 0) return;
  termios settings = settingsBefore;
  settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  settings.c_cc[VMIN] = 0;
  settings.c_cc[VTIME] = 0;
  isWatching = ::tcsetattr(input, TCSANOW, &settings) == 0;
  if (isWatching) changedTerminal = input;
}

EscapeKey::~EscapeKey() {
  if (isWatching) RestoreTerminal();
}

bool EscapeKey::WasPressed() {
  if (!isWatching || wasPressed || !IsInForeground(input)) return wasPressed;
  char keys[64];
  for (ssize_t count = 1; count > 0;) {
    count = ::read(input, keys, sizeof keys);
    if (count > 0 && HasEscape({keys, static_cast<std::size_t>(count)})) wasPressed = true;
  }
  return wasPressed;
}

void RestoreTerminal() {
  int const terminal = changedTerminal.exchange(kNoTerminal);
  if (terminal != kNoTerminal && IsInForeground(terminal)) ::tcsetattr(terminal, TCSANOW, &settingsBefore);
}

}  // namespace orb::host
