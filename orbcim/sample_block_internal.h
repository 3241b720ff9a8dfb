// Where the samples of a store lie: memory of our own, a scratch file, or memory of the caller's.
#pragma once

#include <cstddef>
#include <memory>

namespace orb {

class SampleBlock {
 public:
  virtual ~SampleBlock() = default;

  virtual unsigned char* Data() = 0;

  // Whether the store may put other samples here.
  virtual bool IsOwn() const { return true; }

  // Called when the last lock on the store is released; a block may move its samples then.
  virtual void OnLastUnlock() {}
};

// Every block of our own is zero at first, 64-byte aligned, and has a readable pad of zeros behind the last sample.
// Lack of memory or of disk is std::bad_alloc.
std::unique_ptr<SampleBlock> MakeMemoryBlock(std::size_t bytes);
std::unique_ptr<SampleBlock> MakeScratchFileBlock(std::size_t bytes, char const* folder);
std::unique_ptr<SampleBlock> MakeCallersBlock(unsigned char* samples);

}  // namespace orb
