#include <hosts/orbimg/operator_progress.h>

#include <algorithm>

#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/texts.h>

namespace orb::host {

void OperatorProgress::OnStart(char const* text) {
  shown = 0;
  display.Start(IsJapaneseLocale() ? std::string(text) : english, 100);
}

void OperatorProgress::OnPosition(int percent) {
  StopIfInterrupted();
  int const reached = std::clamp(percent, shown, 100);
  display.Advance(reached - shown);
  shown = reached;
}

void OperatorProgress::OnEnd(char const*) { display.End(); }

}  // namespace orb::host
