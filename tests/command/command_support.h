// What the tests of the command share: running it in this process, and making and reading frames.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>
#include <orbimg/orbimg.h>
#include <tests/io/scratch_folder.h>

namespace orb::test {

struct CommandResult {
  host::Exit status;
  std::string out;
  std::string err;
};

CommandResult RunQuietly(std::vector<std::string> arguments);  // -q is added
CommandResult RunLoudly(std::vector<std::string> const& arguments);

testing::AssertionResult Succeeds(CommandResult const& result);
// One line on standard error with all of `parts` in it, nothing on standard output, and this exit status.
testing::AssertionResult FailsInOneLine(CommandResult const& result, host::Exit status,
                                        std::vector<std::string> const& parts);

// Writes an image with cards as a FITS file.
void WriteFrame(std::string const& path, COrbImage const& image, host::FitsHeader const& header = {});
// A frame whose samples are all `value`.
void WriteConstant(std::string const& path, int width, int height, float value, double exposure = 0.0);

host::Frame ReadFrame(std::string const& path);

}  // namespace orb::test
