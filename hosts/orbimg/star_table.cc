#include <hosts/orbimg/star_table.h>

#include <fstream>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/orbimg/file_list.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::json;

struct StarsOfFrame {
  std::string file;
  std::vector<Star> stars;
};

Star StarOf(Json const& entry) {
  Star star;
  star.x = entry.at("x").get<double>();
  star.y = entry.at("y").get<double>();
  star.peak = entry.value("peak", 0.0);
  star.flux = entry.value("flux", 0.0);
  star.width = entry.value("width", 0.0);
  return star;
}

std::vector<StarsOfFrame> ReadFrames(std::string const& path) {
  std::vector<StarsOfFrame> frames;
  try {
    std::ifstream file(path);
    for (Json const& entry : Json::parse(file)) {
      StarsOfFrame frame;
      frame.file = entry.at("file").get<std::string>();
      for (Json const& star : entry.at("stars")) frame.stars.push_back(StarOf(star));
      frames.push_back(std::move(frame));
    }
  } catch (Json::exception const&) {
    frames.clear();
  }
  return frames;
}

}  // namespace

std::vector<Star> ReadStarTable(std::string const& path, std::string const& image) {
  RequireReadableFile(path);
  std::vector<StarsOfFrame> frames = ReadFrames(path);
  if (frames.empty()) {
    throw HostError(Exit::kInput, fmt::format("{}: not a table of stars; make one with orbimg stars --json", path));
  }
  if (frames.size() == 1) return frames.front().stars;
  for (StarsOfFrame const& frame : frames) {
    if (BareName(frame.file) == BareName(image)) return frame.stars;
  }
  throw HostError(Exit::kUsage,
                  fmt::format("{}: has the stars of {} frames, but none is called {}; give a table of one frame", path,
                              frames.size(), BareName(image)));
}

}  // namespace orb::host
