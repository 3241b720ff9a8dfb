#include <orbcim/lock_table_internal.h>

#include <algorithm>
#include <cstdio>

namespace orb {

LockTable::~LockTable() {
  if (kDebugBuild && Count() > 0) std::fprintf(stderr, "orbcim: a store was destroyed with %d locks left\n", Count());
}

void* LockTable::Take() {
  count.fetch_add(1, std::memory_order_relaxed);
  void* const token = reinterpret_cast<void*>(lastToken.fetch_add(1, std::memory_order_relaxed) + 1);
  if constexpr (kDebugBuild) {
    std::lock_guard const guard(mutex);
    held.push_back(token);
  }
  return token;
}

int LockTable::Release(void* token) {
  if constexpr (kDebugBuild) {
    std::lock_guard const guard(mutex);
    auto const found = std::find(held.begin(), held.end(), token);
    ORB_ASSERT(found != held.end());
    held.erase(found);
  }
  if (token == nullptr || Count() == 0) return 0;
  count.fetch_sub(1, std::memory_order_relaxed);
  return 1;
}

void LockTable::ReleaseAll() {
  if constexpr (kDebugBuild) {
    std::lock_guard const guard(mutex);
    held.clear();
  }
  count.store(0, std::memory_order_relaxed);
}

}  // namespace orb
