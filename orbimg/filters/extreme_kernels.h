// Minima of rows of keys. The maximum of keys is the minimum of their complements.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orb {

// out[x] = the lesser of a[x] and b[x]; `out` may be `a`.
void LesserKeysRow(std::int32_t const* a, std::int32_t const* b, std::ptrdiff_t count, std::int32_t* out);

void ComplementKeysRow(std::int32_t const* keys, std::ptrdiff_t count, std::int32_t* out);

}  // namespace orb
