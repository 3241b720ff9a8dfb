#include <platform/host_window.h>

namespace orb {

namespace {
thread_local HostWindow* mainWindow = nullptr;
}

HostWindow::~HostWindow() = default;
void HostWindow::OnStart(char const*) {}
void HostWindow::OnPosition(int) {}
void HostWindow::OnEnd(char const*) {}
void HostWindow::OnText(char const*) {}
bool HostWindow::PollEscape() { return false; }
void HostWindow::OnMessageBox(char const*, unsigned) {}

HostWindow* MainWindow() { return mainWindow; }
void SetMainWindow(HostWindow* window) { mainWindow = window; }

}  // namespace orb
