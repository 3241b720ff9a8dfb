#include <hosts/orbimg/interrupt.h>

#include <unistd.h>
#include <csignal>

#include <atomic>

#include <hosts/io/host_error.h>
#include <hosts/orbimg/escape_key.h>

namespace orb::host {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void OnInterrupt(int) {
  if (!interrupted.exchange(true)) return;
  RestoreTerminal();
  ::_exit(static_cast<int>(Exit::kInterrupted));
}

}  // namespace

void WatchForInterrupt() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  action.sa_flags = SA_RESTART;  // a read that is going on is no failure
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
}

void StopIfInterrupted() {
  if (interrupted) throw HostError(Exit::kInterrupted, "interrupted; nothing half-written is left");
}

void SetInterrupted(bool pressed) { interrupted = pressed; }

}  // namespace orb::host
