// ORB_ASSERT(condition): our own invariants and the caller's side of a contract, checked in debug builds only.
#pragma once

#include <platform/export.h>

namespace orb {

#ifdef NDEBUG
inline constexpr bool kDebugBuild = false;
#else
inline constexpr bool kDebugBuild = true;
#endif

// Prints the place and the condition to standard error and aborts.
[[noreturn]] ORB_PLATFORM_API void FailAssertion(char const* file, int line, char const* condition);

}  // namespace orb

#define ORB_ASSERT(condition)                                                                     \
  do {                                                                                            \
    if (::orb::kDebugBuild && !(condition)) ::orb::FailAssertion(__FILE__, __LINE__, #condition); \
  } while (false)
