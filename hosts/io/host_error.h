// What a program says when it cannot go on: one line that names the file or argument, what is wrong and what would be
// right, and the exit status that goes with it.
#pragma once

#include <stdexcept>
#include <string>

namespace orb::host {

enum class Exit {
  kDone = 0,
  kFailed = 1,
  kUsage = 2,      // wrong arguments
  kInput = 3,      // unreadable input
  kOutput = 4,     // unwritable output
  kResources = 5,  // no memory or disk
  kInterrupted = 130,
};

class HostError : public std::runtime_error {
 public:
  HostError(Exit initStatus, std::string const& line) : std::runtime_error(line), status(initStatus) {}
  Exit Status() const { return status; }

 private:
  Exit status;
};

}  // namespace orb::host
