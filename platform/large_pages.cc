#include <platform/large_pages_internal.h>

#include <sys/mman.h>

#include <cstdint>

namespace orb {

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;    // bytes
constexpr std::size_t kLargeBlock = std::size_t{16} << 20;  // bytes

}  // namespace

void AskForLargePages(void* memory, std::size_t bytes) {
  if (bytes < kLargeBlock) return;
  auto const begin = (reinterpret_cast<std::uintptr_t>(memory) + kLargePage - 1) / kLargePage * kLargePage;
  auto const end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) / kLargePage * kLargePage;
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

}  // namespace orb
