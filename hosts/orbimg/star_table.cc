#include <hosts/orbimg/star_table.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <string_view>

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

constexpr char kBetweenNumbers[] = " \t,;\r";

bool ReadNumber(std::string_view& text, double& number) {
  text.remove_prefix(std::min(text.find_first_not_of(kBetweenNumbers), text.size()));
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || !std::isfinite(number)) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

bool IsPassedOver(std::string_view line) {
  std::size_t const first = line.find_first_not_of(kBetweenNumbers);
  return first == std::string_view::npos || line[first] == '#';
}

}  // namespace

std::vector<Star> ReadStarText(std::string const& path) {
  RequireReadableFile(path);
  std::ifstream file(path);
  std::vector<Star> stars;
  std::string line;
  bool mayBeTitle = true;
  for (int number = 1; std::getline(file, line); ++number) {
    if (IsPassedOver(line)) continue;
    std::string_view rest = line;
    Star star;
    if (ReadNumber(rest, star.x) && ReadNumber(rest, star.y)) {
      stars.push_back(star);
    } else if (!mayBeTitle) {
      throw HostError(Exit::kInput, fmt::format("{}: line {} does not begin with x and y of a star", path, number));
    }
    mayBeTitle = false;
  }
  if (!stars.empty()) return stars;
  throw HostError(Exit::kInput, fmt::format("{}: no line begins with x and y of a star", path));
}

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
