// The progress of an operator, on the display of the command.
#pragma once

#include <string>

#include <hosts/orbimg/progress_display.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// Shows every run of an operator under its own text in a Japanese locale, under `initText` elsewhere. Ctrl-C comes out
// of the run as a HostError at the next position.
class OperatorProgress : public HostWindow {
 public:
  OperatorProgress(ProgressDisplay& initDisplay, std::string const& initText)
      : display(initDisplay), english(initText) {}

  void OnStart(char const* text) override;
  void OnPosition(int percent) override;
  void OnEnd(char const* text) override;

 private:
  ProgressDisplay& display;
  std::string english;
  int shown = 0;  // percent
};

}  // namespace orb::host
