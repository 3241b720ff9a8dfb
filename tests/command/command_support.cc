#include <tests/command/command_support.h>

#include <algorithm>
#include <sstream>

#include <hosts/orbimg/command.h>
#include <tests/support/test_images.h>

namespace orb::test {

CommandResult RunLoudly(std::vector<std::string> const& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  host::Exit const status = host::RunCommand(arguments, out, err);
  return CommandResult{status, out.str(), err.str()};
}

CommandResult RunQuietly(std::vector<std::string> arguments) {
  arguments.push_back("-q");
  return RunLoudly(arguments);
}

testing::AssertionResult Succeeds(CommandResult const& result) {
  if (result.status == host::Exit::kDone && result.err.empty()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "exit status " << static_cast<int>(result.status) << ": " << result.err;
}

testing::AssertionResult FailsInOneLine(CommandResult const& result, host::Exit status,
                                        std::vector<std::string> const& parts) {
  if (result.status != status) {
    return testing::AssertionFailure() << "exit status " << static_cast<int>(result.status) << ": " << result.err;
  }
  if (std::count(result.err.begin(), result.err.end(), '\n') != 1 || !result.err.ends_with('\n')) {
    return testing::AssertionFailure() << "not one line: " << result.err;
  }
  if (!result.out.empty()) return testing::AssertionFailure() << "on standard output: " << result.out;
  for (std::string const& part : parts) {
    if (result.err.find(part) == std::string::npos) {
      return testing::AssertionFailure() << "without \"" << part << "\": " << result.err;
    }
  }
  return testing::AssertionSuccess();
}

void WriteFrame(std::string const& path, COrbImage const& image, host::FitsHeader const& header) {
  host::Shape const shape{image.GetWidth(), image.GetHeight(), image.GetPlanes()};
  host::FitsWriter writer(path, shape, header, host::Existing::kKeep);
  for (int p = 0; p < shape.planes; ++p) writer.WriteRows(p, 0, shape.height, image.GetImageAdr(0, 0, p, 1, nullptr));
  writer.Commit();
}

void WriteConstant(std::string const& path, int width, int height, float value, double exposure) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(width * height), value));
  host::FitsHeader header;
  if (exposure > 0.0) header.SetNumber("EXPTIME", exposure, "[s] exposure");
  WriteFrame(path, image, header);
}

host::Frame ReadFrame(std::string const& path) {
  host::Frame frame;
  host::ReadFits(path, frame);
  return frame;
}

}  // namespace orb::test
