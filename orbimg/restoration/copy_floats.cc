#include <orbimg/restoration/copy_floats.h>

#include <cstddef>
#include <cstring>

void CopyFloats(float const* from, float* to, int n) {
  if (n > 0) std::memmove(to, from, static_cast<std::size_t>(n) * sizeof(float));
}
