#include <hosts/orbimg/frame_set.h>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/image_file.h>

namespace orb::host {

ReaderList OpenFrames(std::vector<std::string> const& files, std::string const& kind, Environment& environment) {
  ReaderList readers;
  for (std::string const& file : files) {
    readers.push_back(OpenImage(file, environment));
    FrameReader const& first = *readers.front();
    Shape const shape = readers.back()->Shape();
    if (shape == first.Shape()) continue;
    throw HostError(Exit::kUsage, fmt::format("{}: is {}, but {} is {}; give {} of one shape", file, shape.Text(),
                                              first.Path(), first.Shape().Text(), kind));
  }
  return readers;
}

std::vector<std::string> LeaveOutBroken(std::vector<std::string> const& files, std::size_t least,
                                        std::string const& needed, Environment& environment) {
  std::vector<std::string> readable;
  std::vector<HostError> errors;
  for (std::string const& file : files) {
    try {
      OpenFrame(file, environment.reading);
      readable.push_back(file);
    } catch (HostError const& error) {
      if (file == needed) throw;
      errors.push_back(error);
    }
  }
  if (!errors.empty() && readable.size() < least) throw errors.front();
  for (HostError const& error : errors) environment.Warn(fmt::format("{}; left out", error.what()));
  return readable;
}

void CheckFitsLights(FrameReader const& calibration, std::string const& kind, FrameReader const& light) {
  Shape const own = calibration.Shape();
  Shape const wanted = light.Shape();
  bool const fits =
      own.width == wanted.width && own.height == wanted.height && (own.planes == 1 || own.planes == wanted.planes);
  if (fits) return;
  throw HostError(Exit::kUsage,
                  fmt::format("{}: is {}, but the light {} is {}; give a {} of the same camera and window",
                              calibration.Path(), own.Text(), light.Path(), wanted.Text(), kind));
}

void WarnOfNonFinite(Environment& environment, std::string const& path, std::int64_t count,
                     std::string const& consequence) {
  if (count == 0) return;
  environment.Warn(fmt::format("{}: {} samples are not finite {}; repair the frame", path, count, consequence));
}

std::int64_t BytesOf(Shape const& shape) {
  return std::int64_t{sizeof(float)} * shape.width * shape.height * shape.planes;
}

}  // namespace orb::host
