// A host window that writes down everything it is told.
#pragma once

#include <string>
#include <vector>

#include <platform/host_window.h>

namespace orb::test {

class RecordingWindow : public HostWindow {
 public:
  std::vector<std::string> starts;
  std::vector<int> positions;
  std::vector<std::string> texts;
  std::vector<std::string> ends;  // "(null)" for a null text
  std::vector<std::string> boxes;
  int polls = 0;
  int escapeAtPoll = 0;  // ESC is pressed at this poll, counted from 1; 0: never

  void OnStart(char const* text) override { starts.emplace_back(text); }
  void OnPosition(int percent) override { positions.push_back(percent); }
  void OnText(char const* text) override { texts.emplace_back(text); }
  void OnEnd(char const* text) override { ends.emplace_back(text != nullptr ? text : "(null)"); }
  bool PollEscape() override { return ++polls == escapeAtPoll; }
  void OnMessageBox(char const* text, unsigned) override { boxes.emplace_back(text); }

  bool IsSilent() const {
    return starts.empty() && positions.empty() && texts.empty() && ends.empty() && boxes.empty() && polls == 0;
  }
};

}  // namespace orb::test
