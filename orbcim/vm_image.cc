#include <orbimg/core/vm_image.h>

#include <cstring>
#include <new>

#include <orbcim/lock_table_internal.h>
#include <orbcim/sample_block_internal.h>

namespace {

std::size_t BlockBytes(int bytesPixel, int width, int height, int planes) {
  if (bytesPixel < 0 || width < 0 || height < 0 || planes < 0) throw std::bad_alloc();
  std::size_t bytes = static_cast<std::size_t>(bytesPixel);
  for (int const factor : {width, height, planes}) {
    if (__builtin_mul_overflow(bytes, static_cast<std::size_t>(factor), &bytes)) throw std::bad_alloc();
  }
  return bytes;
}

std::unique_ptr<CVmBlock[]> MakeBlocks(int count) {
  if (count < 0) AfxThrowMemoryException();
  return std::make_unique<CVmBlock[]>(static_cast<std::size_t>(count));
}

std::unique_ptr<orb::SampleBlock> MakeBlock(std::size_t bytes) {
  CVmManager const& manager = CVmManager::OfThread();
  if (bytes > static_cast<std::size_t>(manager.GetBlockSize())) {
    return orb::MakeScratchFileBlock(bytes, manager.GetScratchFolder());
  }
  return orb::MakeMemoryBlock(bytes);
}

}  // namespace

CVmManager& CVmManager::OfThread() {
  thread_local CVmManager manager;
  return manager;
}

CVmHandle::CVmHandle(int n) : blockCount(n), blocks(MakeBlocks(n)) {}

CVmImage::CVmImage(int initBytesPixel, int initWidth, int initHeight, int initPlanes)
    : width(initWidth),
      height(initHeight),
      bytesPixel(initBytesPixel),
      planes(initPlanes),
      block(MakeBlock(BlockBytes(bytesPixel, width, height, planes))),
      locks(std::make_unique<orb::LockTable>()) {
  base = block->Data();
}

CVmImage::CVmImage(unsigned char* samples, int initBytesPixel, int initWidth, int initHeight, int initPlanes)
    : width(initWidth),
      height(initHeight),
      bytesPixel(initBytesPixel),
      planes(initPlanes),
      block(orb::MakeCallersBlock(samples)),
      locks(std::make_unique<orb::LockTable>()) {
  base = block->Data();
}

CVmImage::CVmImage(CVmImage& src, HWND, char const*) : CVmImage(src.bytesPixel, src.width, src.height, src.planes) {
  std::memcpy(base, src.base, BlockBytes(bytesPixel, width, height, planes));
}

CVmImage::~CVmImage() = default;

unsigned char* CVmImage::GetImageAdr(std::ptrdiff_t offset, int /*read*/, int lock, void** handle) const {
  if (lock != 0) {
    void* const token = locks->Take();
    if (handle != nullptr) *handle = token;
  }
  return base.load(std::memory_order_relaxed) + offset;
}

int CVmImage::Unlock(void* handle) {
  int const released = locks->Release(handle);
  AfterUnlock();
  return released;
}

void CVmImage::UnlockAll() {
  locks->ReleaseAll();
  AfterUnlock();
}

int CVmImage::GetLockCount() const { return locks->Count(); }

bool CVmImage::Reshape(int newWidth, int newHeight) {
  if (!block->IsOwn()) return false;
  if (BlockBytes(bytesPixel, newWidth, newHeight, planes) != BlockBytes(bytesPixel, width, height, planes))
    return false;
  width = newWidth;
  height = newHeight;
  return true;
}

// Only a block that did move its samples makes us write the address: a store that is only read may be shared by
// threads.
void CVmImage::AfterUnlock() {
  if (locks->Count() > 0) return;
  block->OnLastUnlock();
  unsigned char* const data = block->Data();
  if (data != base.load(std::memory_order_relaxed)) base.store(data, std::memory_order_relaxed);
}
