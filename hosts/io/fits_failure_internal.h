// CFITSIO's status codes as errors of ours.
#pragma once

#include <string>

namespace orb::host {

// Throws what went wrong while `path` was read, if `status` is not 0: one line, without CFITSIO's own message stack.
void CheckFitsRead(std::string const& path, int status);

// "status 107: tried to move past end of file", and clears the message stack of the thread.
std::string FitsStatusText(int status);

}  // namespace orb::host
