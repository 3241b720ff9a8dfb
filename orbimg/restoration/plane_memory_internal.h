// Memory of whole planes.
#pragma once

#include <cstddef>
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

}  // namespace orb
