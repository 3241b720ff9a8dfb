#include <hosts/orbimg/operator_progress.h>

#include <algorithm>

#include <fmt/format.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/run_text.h>
#include <hosts/orbimg/texts.h>

namespace orb::host {

void OperatorProgress::OnStart(char const* text) {
  std::optional<RunText> const run = ReadRunText(text);
  std::string label = english;
  if (run) label += fmt::format(" ({})", run->English());
  if (IsJapaneseLocale()) label = text;
  if (!run || iterations.empty()) {
    shown = 0;
    display.Start(label, run ? 100 * plan.planes * RunsOfPlane() : 100);
  } else {
    display.SetLabel(label);
  }
  if (!run) return;
  auto const plane = static_cast<std::size_t>(std::max(run->plane, 1));
  iterations.resize(std::max(iterations.size(), plane));
  iterations[plane - 1] = run->iteration;
  runsBefore = (static_cast<int>(plane) - 1) * RunsOfPlane() + run->iteration;
}

void OperatorProgress::OnPosition(int percent) {
  StopIfInterrupted();
  int const reached = std::max(100 * runsBefore + std::clamp(percent, 0, 100), shown);
  display.Advance(reached - shown);
  shown = reached;
}

// The runs of a restoration go on as one.
void OperatorProgress::OnEnd(char const*) {
  if (iterations.empty()) display.End();
}

void OperatorProgress::OnMessageBox(char const* text, unsigned) { box = BoxText(text); }

}  // namespace orb::host
