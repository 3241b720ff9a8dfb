// Large pages for large blocks of memory.
#pragma once

#include <cstddef>

#include <platform/export.h>

namespace orb {

// Asks the system to back a fresh block with large pages: then it takes fewer faults to fill, and blocks that are read
// or written in many places side by side do not need a page looked up at each step. The system may still say no, and
// small blocks are not worth a large page. Contents and addresses stay.
ORB_PLATFORM_API void AskForLargePages(void* memory, std::size_t bytes);

}  // namespace orb
