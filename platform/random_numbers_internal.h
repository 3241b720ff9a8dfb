// The numbers of the C library's rand, many at once.
#pragma once

#include <cstddef>

#include <platform/export.h>

namespace orb {

// to[i] = std::rand(), `count` times, each as a float. The numbers, and those that rand gives afterwards, are those of
// as many calls. Where the C library keeps the state of rand in a form that it lets programs exchange (glibc), long
// draws do not pay for its lock at each number: while one lasts, which is for milliseconds, other threads that call
// rand get numbers of another sequence, and what they do to its seed is lost.
ORB_PLATFORM_API void DrawRandom(std::size_t count, float* to);

// Draws as many numbers in vain.
ORB_PLATFORM_API void SkipRandom(std::size_t count);

}  // namespace orb
