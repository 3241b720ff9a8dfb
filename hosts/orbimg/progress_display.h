// Progress on standard error: a bar on a terminal, plain lines in a log, or nothing.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>

namespace orb::host {

// ", 1:20 left" of a step that took `spent` seconds up to `percent`; empty in the first two seconds and at both ends.
std::string FormatTimeLeft(double spent, int percent);

class ProgressDisplay {
 public:
  enum class Style { kNone, kLines, kBar };

  ProgressDisplay(std::ostream& initErr, Style initStyle) : err(initErr), style(initStyle) {}

  void Start(std::string const& text, std::int64_t units);
  // Another text for the step that runs.
  void SetLabel(std::string const& text);
  void Advance(std::int64_t n);  // from any thread
  void End();
  // A line of its own that does not run into the bar, in every style. From any thread.
  void PrintLine(std::string const& line);

 private:
  void Show();
  void ClearBar();

  std::ostream& err;
  Style style;
  std::mutex mutex;
  std::string label;
  std::int64_t total = 0;
  std::int64_t done = 0;
  std::chrono::steady_clock::time_point start;
  int shown = -1;  // what stands on the screen, in steps of the style; -1 nothing
};

// One step of a program, from here to the end of the block.
class ProgressStep {
 public:
  ProgressStep(ProgressDisplay& initDisplay, std::string const& text, std::int64_t units) : display(initDisplay) {
    display.Start(text, units);
  }
  ProgressStep(ProgressStep const&) = delete;
  ProgressStep& operator=(ProgressStep const&) = delete;
  ~ProgressStep() { display.End(); }

 private:
  ProgressDisplay& display;
};

}  // namespace orb::host
