// The progress of an operator, on the display of the command.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <hosts/orbimg/escape_key.h>
#include <hosts/orbimg/progress_display.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// The runs of an operator that works in many: in each plane a preparation and `iterations` at most.
struct RunPlan {
  int planes = 1;
  int iterations = 0;
};

// Shows every run of an operator under its own text in a Japanese locale, under `initText` elsewhere; those of a
// restoration as one run. Ctrl-C comes out of the run as a HostError at the next position. ESC stops the operators that
// look at it. A message box is kept for the line that tells why the operator failed.
class OperatorProgress : public HostWindow {
 public:
  OperatorProgress(ProgressDisplay& initDisplay, std::string const& initText, RunPlan const& initPlan,
                   bool watchesEscape)
      : display(initDisplay), english(initText), plan(initPlan) {
    if (watchesEscape) escape.emplace();
  }
  OperatorProgress(OperatorProgress const&) = delete;
  OperatorProgress& operator=(OperatorProgress const&) = delete;
  ~OperatorProgress() override { display.End(); }

  void OnStart(char const* text) override;
  void OnPosition(int percent) override;
  void OnEnd(char const* text) override;
  bool PollEscape() override { return escape && escape->WasPressed(); }
  void OnMessageBox(char const* text, unsigned style) override;

  // Whether ESC was pressed, whatever the operator made of it.
  bool WasEscaped() { return PollEscape(); }
  // What the last message box said; empty without one.
  std::string const& Box() const { return box; }
  // How many iterations each plane took; empty for operators without.
  std::vector<int> const& Iterations() const { return iterations; }

 private:
  int RunsOfPlane() const { return 1 + plan.iterations; }

  ProgressDisplay& display;
  std::string english;
  RunPlan plan;
  std::optional<EscapeKey> escape;
  std::string box;
  std::vector<int> iterations;
  int runsBefore = 0;  // of the restoration, before the one that runs
  int shown = 0;       // percent of a run, over all runs of a restoration
};

}  // namespace orb::host
