// Memory of whole planes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <platform/large_pages_internal.h>

namespace orb {

// `count` times `value`, in large pages where the plane is large: columns then need few pages looked up.
inline void AssignPlane(std::vector<float>& plane, std::size_t count, float value) {
  plane.clear();
  if (plane.capacity() < count) {
    plane.reserve(count);
    AskForLargePages(plane.data(), plane.capacity() * sizeof(float));
  }
  plane.assign(count, value);
}

inline std::vector<float> MakePlane(std::size_t count) {
  std::vector<float> plane;
  AssignPlane(plane, count, 0.0f);
  return plane;
}

// First address from `floats` on that begins a cache line.
inline float* AlignToCacheLine(float* floats) {
  constexpr std::uintptr_t kCacheLine = 64;  // bytes
  std::uintptr_t const over = reinterpret_cast<std::uintptr_t>(floats) % kCacheLine;
  return over == 0 ? floats : floats + (kCacheLine - over) / sizeof(float);
}

// Floats from the beginning of a cache line on: whole vectors of them are then read at once.
class AlignedFloats {
 public:
  // All 0. Lack of memory is std::bad_alloc.
  explicit AlignedFloats(std::size_t count) { AssignPlane(memory, count + kSpare, 0.0f); }

  float* Data() { return AlignToCacheLine(memory.data()); }

 private:
  static constexpr std::size_t kSpare = 15;

  std::vector<float> memory;
};

}  // namespace orb
