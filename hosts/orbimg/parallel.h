// Work on all cores: pieces that are handed out one after the other to a number of threads.
#pragma once

#include <cstdint>
#include <functional>

namespace orb::host {

// Calls piece(0) .. piece(count - 1), each once, on at most `threads` threads. The first exception ends the handing out
// and is thrown here when all threads have stopped; so does Ctrl-C.
void RunInParallel(std::int64_t count, int threads, std::function<void(std::int64_t)> const& piece);

}  // namespace orb::host
