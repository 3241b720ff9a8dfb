#include <hosts/orbimg/windowed_frame.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <new>

namespace orb::host {
namespace {

std::size_t PageSize() { return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)); }

std::size_t RoundUpToPage(std::size_t bytes) { return (bytes + PageSize() - 1) / PageSize() * PageSize(); }

// One page more than the samples take: a store keeps one sample readable behind the last.
std::size_t BytesOf(Shape const& shape) {
  std::size_t const count = static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height) *
                            static_cast<std::size_t>(shape.planes);
  return RoundUpToPage(count * sizeof(float)) + PageSize();
}

// Reserves addresses without memory behind them, anew or in place of what is there.
void* Reserve(void* address, std::size_t bytes) {
  int const fixed = address != nullptr ? MAP_FIXED : 0;
  void* const reserved = ::mmap(address, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | fixed, -1, 0);
  if (reserved == MAP_FAILED) throw std::bad_alloc();
  return reserved;
}

}  // namespace

WindowedFrame::WindowedFrame(Shape const& initShape)
    : bytes(BytesOf(initShape)), shape(initShape), samples(static_cast<float*>(Reserve(nullptr, bytes))) {}

WindowedFrame::~WindowedFrame() { ::munmap(samples, bytes); }

float* WindowedFrame::Row(int plane, int y) const {
  std::ptrdiff_t const row = static_cast<std::ptrdiff_t>(shape.height) * plane + y;
  return samples + row * shape.width;
}

std::vector<float*> WindowedFrame::Rows(int y) const {
  std::vector<float*> rows;
  for (int p = 0; p < shape.planes; ++p) rows.push_back(Row(p, y));
  return rows;
}

void WindowedFrame::Open(int top, int bottom) {
  Reserve(samples, bytes);
  openTop = top;
  openBottom = bottom;
  if (top >= bottom) return;
  auto const base = reinterpret_cast<std::uintptr_t>(samples);
  for (int p = 0; p < shape.planes; ++p) {
    std::uintptr_t const first = reinterpret_cast<std::uintptr_t>(Row(p, top)) - base;
    std::uintptr_t const last = reinterpret_cast<std::uintptr_t>(Row(p, bottom)) - base + sizeof(float);
    std::uintptr_t const start = first / PageSize() * PageSize();
    auto* const address = reinterpret_cast<char*>(samples) + start;
    if (::mprotect(address, RoundUpToPage(last - start), PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  }
}

void WindowedFrame::ShowIn(COrbImage& image) const {
  WrapSamples(image, samples, shape.width, shape.height, shape.planes);
}

}  // namespace orb::host
