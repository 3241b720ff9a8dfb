// Counts the locks of a store. A debug build also remembers each token, so that a wrong release is caught at once.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include <platform/assert.h>

namespace orb {

class LockTable {
 public:
  LockTable() = default;
  LockTable(LockTable const&) = delete;
  LockTable& operator=(LockTable const&) = delete;
  ~LockTable();  // reports locks that are left

  void* Take();
  // 1 if the token was held.
  int Release(void* token);
  void ReleaseAll();
  int Count() const { return count.load(std::memory_order_relaxed); }

 private:
  std::atomic<int> count{0};
  std::atomic<std::uintptr_t> lastToken{0};
  std::mutex mutex;  // debug builds only, as are the tokens
  std::vector<void*> held;
};

}  // namespace orb
