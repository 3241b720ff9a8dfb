#include <platform/global_memory.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace orb {

// The samples follow this header in the same allocation, so that one malloc serves a block.
struct alignas(64) GlobalBlock {
  std::size_t size;
  int locks;

  void* Data() { return this + 1; }
};

}  // namespace orb

HGLOBAL GlobalAlloc(unsigned flags, std::size_t size) {
  constexpr std::size_t kHeader = sizeof(orb::GlobalBlock);
  constexpr std::size_t kAlign = alignof(orb::GlobalBlock);
  if (size > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) - 2 * kHeader) return nullptr;
  std::size_t const total = kHeader + (size + kAlign - 1) / kAlign * kAlign;
  void* memory = std::aligned_alloc(kAlign, total);
  if (memory == nullptr) return nullptr;
  auto* block = new (memory) orb::GlobalBlock{size, 0};
  if ((flags & GMEM_ZEROINIT) != 0) std::memset(block->Data(), 0, size);
  return block;
}

void* GlobalLock(HGLOBAL block) {
  if (block == nullptr) return nullptr;
  ++block->locks;
  return block->Data();
}

int GlobalUnlock(HGLOBAL block) {
  if (block == nullptr || block->locks == 0) return 0;
  return --block->locks > 0 ? 1 : 0;
}

std::size_t GlobalSize(HGLOBAL block) { return block == nullptr ? 0 : block->size; }

HGLOBAL GlobalFree(HGLOBAL block) {
  std::free(block);
  return nullptr;
}
