// Ctrl-C. The first one stops the work at the next frame or band and leaves nothing half-written; the second one ends
// the program at once.
#pragma once

namespace orb::host {

void WatchForInterrupt();

// HostError with the status of an interrupted program, once Ctrl-C was pressed. Called between pieces of work, from any
// thread.
void StopIfInterrupted();

// Sets or clears what Ctrl-C sets.
void SetInterrupted(bool pressed);

}  // namespace orb::host
