#include <platform/global_memory.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace orb {

// The samples follow this header in the same allocation, so that one malloc serves a block.
struct alignas(std::max_align_t) GlobalBlock {
  std::size_t size;
  int locks;

  void* Data() { return this + 1; }
};

}  // namespace orb

HGLOBAL GlobalAlloc(unsigned flags, std::size_t size) {
  constexpr std::size_t kHeader = sizeof(orb::GlobalBlock);
  if (size > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) - kHeader) return nullptr;
  // Not aligned further: blocks of one size that come and go would then not be given the same pages again.
  void* memory = std::malloc(kHeader + size);
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
