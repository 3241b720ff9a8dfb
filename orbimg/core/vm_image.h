// The sample store under an image, and its records.
//
// Samples are planar and row-major without padding: the byte offset of sample (x, y, plane) is
// ((height * plane + y) * width + x) * bytes a sample. All planes lie in one block, 64-byte aligned, with at least one
// readable sample (0.0) behind the last, unless the block is memory of the caller's. Row 0 is the top row.
//
// Addresses are direct. An address asked for without a lock stays valid until a lock on the same store is released; a
// locked address stays valid until its own lock is released. Reading may go on from several threads at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <platform/export.h>
#include <platform/host_window.h>
#include <platform/object.h>

struct OrbTestAccess;

namespace orb {
class SampleBlock;
class LockTable;
}  // namespace orb

// One slot of a handle.
class ORBIMG_API CVmBlock : public CObject {
 public:
  int type = 0;
  int slotIndex = -1;
};

// A counted array of blocks. No index is checked.
class ORBIMG_API CVmHandle : public CObject {
 public:
  ORBCIM_API explicit CVmHandle(int n);  // lack of memory: std::bad_alloc
  CVmHandle(CVmHandle const&) = delete;
  CVmHandle& operator=(CVmHandle const&) = delete;

  int GetBlockCount() const { return blockCount; }
  void Set(int index, int type, int slotIndex) {
    blocks[index].type = type;
    blocks[index].slotIndex = slotIndex;
  }
  int GetType(int index) const { return blocks[index].type; }
  int GetSlotIndex(int index) const { return blocks[index].slotIndex; }

 private:
  int blockCount;
  std::unique_ptr<CVmBlock[]> blocks;
};

// Record of one memory area of a paging store. This store keeps everything addressable and fills none.
class ORBIMG_API CVmMemory : public CObject {
 public:
  int fields[8] = {0, -1, -1, 0, -1, -1, 0, 0};
};

// What the host settles for new stores of the calling thread.
class ORBIMG_API CVmManager {
 public:
  virtual ~CVmManager() = default;

  // Stores larger than this many bytes are memory-mapped scratch files, unlinked at once. Default: never.
  std::int64_t GetBlockSize() const { return blockSize; }
  void SetBlockSize(std::int64_t bytes) { blockSize = bytes; }

  // Folder of the scratch files; null (the default) means /tmp. Not copied.
  char const* GetScratchFolder() const { return scratchFolder; }
  void SetScratchFolder(char const* folder) { scratchFolder = folder; }

  ORBCIM_API static CVmManager& OfThread();

 private:
  std::int64_t blockSize = INT64_MAX;
  char const* scratchFolder = nullptr;
};

class ORBCIM_API CVmImage {
 public:
  // A store of zeros. Lack of memory or of room for a scratch file is std::bad_alloc.
  CVmImage(int bytesPixel, int width, int height, int planes);
  // A store over samples of the caller's, which are never freed or moved.
  CVmImage(unsigned char* samples, int bytesPixel, int width, int height, int planes);
  CVmImage(CVmImage& src, HWND, char const*);
  ~CVmImage();
  CVmImage& operator=(CVmImage const&) = delete;

  // `read` non-zero promises only to read through the address. `lock` non-zero pins it: with a `handle` a token is
  // written there for Unlock, without one the lock lasts until UnlockAll.
  unsigned char* GetImageAdr(std::ptrdiff_t offset, int read, int lock, void** handle) const;
  unsigned char* GetImageAdr(int x, int y, int plane, int read, int lock, void** handle) const {
    std::ptrdiff_t const row = static_cast<std::ptrdiff_t>(height) * plane + y;
    return GetImageAdr((row * width + x) * bytesPixel, read, lock, handle);
  }

  // 1, or 0 if no lock was held. A debug build knows its tokens and aborts on one that is not held; otherwise locks are
  // only counted.
  int Unlock(void* handle);
  void UnlockAll();
  int GetLockCount() const;

  // Takes another size of as many bytes in the memory that is there, whatever it holds. False where the size has
  // another number of bytes and where the memory is the caller's.
  bool Reshape(int newWidth, int newHeight);

 private:
  friend struct OrbTestAccess;

  void AfterUnlock();

  int width;
  int height;
  int bytesPixel;
  int planes;
  std::atomic<unsigned char*> base;  // where the block lies now
  std::unique_ptr<orb::SampleBlock> block;
  std::unique_ptr<orb::LockTable> locks;
};
