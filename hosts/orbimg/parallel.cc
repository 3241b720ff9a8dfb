#include <hosts/orbimg/parallel.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <hosts/orbimg/interrupt.h>

namespace orb::host {

void RunInParallel(std::int64_t count, int threads, std::function<void(std::int64_t)> const& piece) {
  std::atomic<std::int64_t> next{0};
  std::mutex mutex;
  std::exception_ptr failure;
  auto const work = [&] {
    try {
      for (std::int64_t i = next++; i < count; i = next++) {
        StopIfInterrupted();
        piece(i);
      }
    } catch (...) {
      next = count;
      std::lock_guard const lock(mutex);
      if (!failure) failure = std::current_exception();
    }
  };
  std::vector<std::thread> workers;
  auto const wanted = static_cast<std::size_t>(std::clamp<std::int64_t>(count, 1, threads) - 1);
  try {
    workers.reserve(wanted);
    while (workers.size() < wanted) workers.emplace_back(work);
  } catch (std::system_error const&) {
    // No further thread is to be had: those that run do the work.
  }
  work();
  for (std::thread& worker : workers) worker.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace orb::host
