#include <orbcim/sample_block_internal.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>

#include <platform/large_pages_internal.h>

namespace orb {

namespace {

constexpr std::size_t kAlignment = 64;
constexpr char const* kDefaultFolder = "/tmp";
constexpr std::size_t kPad = 64;  // readable zeros behind the last sample

std::size_t WithPad(std::size_t bytes) {
  if (bytes > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) - kPad - kAlignment) {
    throw std::bad_alloc();
  }
  return bytes + kPad;
}

class MemoryBlock : public SampleBlock {
 public:
  // calloc hands out large blocks as fresh zero pages, so that an untouched image costs nothing.
  explicit MemoryBlock(std::size_t bytes) : memory(std::calloc(1, WithPad(bytes) + kAlignment)) {
    if (memory == nullptr) throw std::bad_alloc();
    // Many rows of many images are read side by side.
    AskForLargePages(memory, bytes);
    auto const address = reinterpret_cast<std::uintptr_t>(memory);
    data = static_cast<unsigned char*>(memory) + (kAlignment - address % kAlignment) % kAlignment;
  }
  MemoryBlock(MemoryBlock const&) = delete;
  MemoryBlock& operator=(MemoryBlock const&) = delete;
  ~MemoryBlock() override { std::free(memory); }

  unsigned char* Data() override { return data; }

 private:
  void* memory;
  unsigned char* data;
};

class ScratchFileBlock : public SampleBlock {
 public:
  ScratchFileBlock(std::size_t bytes, char const* folder) : size(WithPad(bytes)) {
    std::string path = folder != nullptr ? folder : kDefaultFolder;
    path += "/orbimg-XXXXXX";
    int const file = mkostemp(path.data(), O_CLOEXEC);
    if (file < 0) throw std::bad_alloc();
    unlink(path.c_str());
    // Reserving the room now turns a full disk into an error here instead of a bus error in a row loop.
    bool const reserved = posix_fallocate(file, 0, static_cast<off_t>(size)) == 0;
    data = reserved ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0) : MAP_FAILED;
    close(file);
    if (data == MAP_FAILED) throw std::bad_alloc();
  }
  ScratchFileBlock(ScratchFileBlock const&) = delete;
  ScratchFileBlock& operator=(ScratchFileBlock const&) = delete;
  ~ScratchFileBlock() override { munmap(data, size); }

  unsigned char* Data() override { return static_cast<unsigned char*>(data); }

 private:
  std::size_t size;
  void* data;
};

class CallersBlock : public SampleBlock {
 public:
  explicit CallersBlock(unsigned char* samples) : data(samples) {}
  unsigned char* Data() override { return data; }
  bool IsOwn() const override { return false; }

 private:
  unsigned char* data;
};

}  // namespace

std::unique_ptr<SampleBlock> MakeMemoryBlock(std::size_t bytes) { return std::make_unique<MemoryBlock>(bytes); }

std::unique_ptr<SampleBlock> MakeScratchFileBlock(std::size_t bytes, char const* folder) {
  return std::make_unique<ScratchFileBlock>(bytes, folder);
}

std::unique_ptr<SampleBlock> MakeCallersBlock(unsigned char* samples) {
  return std::make_unique<CallersBlock>(samples);
}

}  // namespace orb
