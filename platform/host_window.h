// The one small interface towards a host: it shows the progress of a run, tells whether ESC was pressed, shows
// messages.
//
// A run sends OnStart once, then any number of OnPosition and OnText, then OnEnd. All calls come on the thread that
// runs the operator. Texts are UTF-8 and may be gone when the call returns: copy them.
#pragma once

#include <platform/export.h>

namespace orb {

class ORB_PLATFORM_API HostWindow {
 public:
  virtual ~HostWindow();

  virtual void OnStart(char const* text);
  virtual void OnPosition(int percent);
  virtual void OnEnd(char const* text);  // text may be null
  virtual void OnText(char const* text);

  // Swallows waiting keys and lets repaints run. True: ESC was pressed.
  virtual bool PollEscape();

  virtual void OnMessageBox(char const* text, unsigned style);
};

// The main window of the calling thread: what a new image reports to. Null until set; the caller keeps ownership.
ORB_PLATFORM_API HostWindow* MainWindow();
ORB_PLATFORM_API void SetMainWindow(HostWindow* window);

}  // namespace orb

using HWND = orb::HostWindow*;
