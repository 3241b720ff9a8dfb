// Progress of a run, and the ESC key.
//
// A counted run of `total` units sends about 50 positions: one when the count first exceeds progressNext, which then
// grows by one step. The queue of keys is polled at every call, so ESC is seen within one row.
#include <orbimg/core/orb_image.h>
#include <orbimg/core/truncate.h>
#include <orbimg/resources/message_table.h>

namespace {

constexpr int kMessagesPerRun = 50;

// The sum, exact in a double, held at the range of int: counters stop there instead of wrapping.
int AddHeld(int a, int b) { return orb::TruncateToInt(static_cast<double>(a) + b); }

}  // namespace

void COrbImage::ShowProgressInit(int on, char const* text, int total) {
  progressTotal = total;
  progressStep = total / kMessagesPerRun;
  if (progressStep < 1) progressStep = 1;
  progressCount = 0;
  progressNext = 0;
  progressOn = on;
  progressPercent = 0;
  if (on != 0 && progressWnd != nullptr) progressWnd->OnStart(text);
}

void COrbImage::ShowProgressInit(int on, int id, int total) { ShowProgressInit(on, LoadString(id), total); }

void COrbImage::ShowProgressInit(char const* text) {
  progressOn = 1;
  progressPercent = 1;
  progressTotal = 0;
  progressStep = 0;
  progressCount = 0;
  progressNext = 0;
  if (progressWnd != nullptr) progressWnd->OnStart(text);
}

void COrbImage::ShowProgressInit(int id) { ShowProgressInit(LoadString(id)); }

int COrbImage::ShowProgress(int n) {
  if (progressOn == 0) return 1;
  if (progressPercent == 1) {
    if (progressWnd != nullptr) progressWnd->OnPosition(n);
    return ShowProgressContinue();
  }
  progressCount = AddHeld(progressCount, n);
  if (progressCount > progressNext) {
    // A total of 0 has no percentage; the position is 0 then, as the conversion must not meet an infinity.
    double const percent =
        progressTotal != 0 ? static_cast<double>(progressCount) / static_cast<double>(progressTotal) * 100.0 : 0.0;
    if (progressWnd != nullptr) progressWnd->OnPosition(orb::TruncateToInt(percent));
    // Intended: one step only, however large n was.
    progressNext = AddHeld(progressNext, progressStep);
  }
  return ShowProgressContinue();
}

int COrbImage::ShowProgressContinue() { return progressWnd != nullptr && progressWnd->PollEscape() ? 0 : 1; }

void COrbImage::ShowProgressMsg(char const* text) {
  if (progressWnd != nullptr) progressWnd->OnText(text);
}

void COrbImage::ShowProgressMsg(int id) { ShowProgressMsg(LoadString(id)); }

void COrbImage::ShowProgressEnd(char const* text) {
  if (progressOn != 0 && progressWnd != nullptr) progressWnd->OnEnd(text);
  progressOn = 0;
}

void COrbImage::ShowProgressEnd(int id) { ShowProgressEnd(LoadString(id)); }

void COrbImage::ShowMessageBox(int id, unsigned style) {
  HWND const window = progressWnd != nullptr ? progressWnd : orb::MainWindow();
  if (window != nullptr) window->OnMessageBox(LoadString(id), style);
}
