#include <platform/assert.h>

#include <cstdio>
#include <cstdlib>

namespace orb {

void FailAssertion(char const* file, int line, char const* condition) {
  std::fprintf(stderr, "%s:%d: assertion failed: %s\n", file, line, condition);
  std::abort();
}

}  // namespace orb
