#include <hosts/orbimg/image_file.h>

#include <fmt/format.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/output_check.h>

namespace orb::host {

void WarnOfNotes(Environment& environment, FrameReader const& reader) {
  for (std::string const& note : reader.Facts().notes) environment.Warn(fmt::format("{}: {}", reader.Path(), note));
}

std::unique_ptr<FrameReader> OpenImage(std::string const& path, Environment& environment) {
  std::unique_ptr<FrameReader> reader = OpenFrame(path, environment.reading);
  WarnOfNotes(environment, *reader);
  return reader;
}

void ReadImage(std::string const& path, Frame& frame, Environment& environment) {
  ReadFrameFile(*OpenImage(path, environment), frame);
}

void ReadForWork(std::string const& path, Frame& frame, Environment& environment) {
  ReadImage(path, frame, environment);
  WarnOfNonFinite(environment, path, frame.nonFinite, kGoIntoResult);
}

void CheckImageFile(std::string const& path, Existing existing) {
  FormatOf(path);
  CheckOutputFile(path, existing);
}

void WriteImage(std::string const& path, Frame const& frame, Environment& environment, WriteSettings const& settings) {
  WarnOfLosses(environment, path, WriteFrameFile(path, frame, settings, environment.existing));
}

void WarnOfLosses(Environment& environment, std::string const& path, WriteReport const& report) {
  std::string const losses = report.Text();
  if (!losses.empty()) environment.Warn(fmt::format("{}: {}", path, losses));
}

}  // namespace orb::host
