// Blocks of memory behind a handle, the way bitmaps travel between the library and its host.
//
// GlobalAlloc gives a null handle when memory is short. A block's address does not change while it lives; GlobalLock
// and GlobalUnlock only count. Whoever receives a handle owns the block and calls GlobalFree, or holds it in an
// orb::DibPtr.
#pragma once

#include <cstddef>
#include <memory>

#include <platform/export.h>

namespace orb {
struct GlobalBlock;
}

using HGLOBAL = orb::GlobalBlock*;
using HDIB = orb::GlobalBlock*;

inline constexpr unsigned GMEM_MOVEABLE = 2;
inline constexpr unsigned GMEM_ZEROINIT = 64;

ORB_PLATFORM_API HGLOBAL GlobalAlloc(unsigned flags, std::size_t size);
ORB_PLATFORM_API void* GlobalLock(HGLOBAL block);
// 1 while locks are left, 0 when this was the last one or the block was not locked.
ORB_PLATFORM_API int GlobalUnlock(HGLOBAL block);
ORB_PLATFORM_API std::size_t GlobalSize(HGLOBAL block);
// Null on success. A null handle is accepted and does nothing.
ORB_PLATFORM_API HGLOBAL GlobalFree(HGLOBAL block);

namespace orb {

struct DibDeleter {
  void operator()(GlobalBlock* block) const { GlobalFree(block); }
};
using DibPtr = std::unique_ptr<GlobalBlock, DibDeleter>;

}  // namespace orb
