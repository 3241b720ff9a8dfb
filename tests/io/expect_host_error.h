// Expects a call to fail with one line that names what it should, and with the right exit status.
#pragma once

#include <string>

#include <gtest/gtest.h>
#include <hosts/io/host_error.h>

namespace orb::test {

template <typename Call>
testing::AssertionResult FailsWith(host::Exit status, std::string const& part, Call call) {
  try {
    call();
  } catch (host::HostError const& error) {
    std::string const line = error.what();
    if (error.Status() != status) {
      return testing::AssertionFailure() << "exit status " << static_cast<int>(error.Status()) << ": " << line;
    }
    if (line.find(part) == std::string::npos) return testing::AssertionFailure() << "the line is: " << line;
    if (line.find('\n') != std::string::npos) return testing::AssertionFailure() << "more than one line: " << line;
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "nothing failed";
}

}  // namespace orb::test
