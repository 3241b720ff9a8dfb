#include <hosts/orbimg/curve_file.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kMostBytes = 1 << 20;  // far more than any curve needs

[[noreturn]] void Fail(std::string const& path, std::string const& wrong) {
  throw HostError(Exit::kInput, fmt::format("{}: {}", path, wrong));
}

std::string ReadSmallText(std::string const& path) {
  RequireReadableFile(path);
  std::ifstream file(path, std::ios::binary);
  std::string text(kMostBytes + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (text.size() > kMostBytes) Fail(path, "is too large for a curve; give a text file with a point x y a line");
  return text;
}

std::vector<CurvePoint> ParseText(std::string const& path, std::string const& text) {
  std::vector<CurvePoint> points;
  std::istringstream lines(text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    line.resize(std::min(line.size(), line.find('#')));
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream words(line);
    if ((words >> std::ws).eof()) continue;
    CurvePoint point;
    if (!(words >> point.x >> point.y) || !(words >> std::ws).eof()) {
      Fail(path, fmt::format("line {} is no point; give x and y", number));
    }
    points.push_back(point);
  }
  return points;
}

std::vector<CurvePoint> ParseJson(std::string const& path, std::string const& text) {
  std::vector<CurvePoint> points;
  try {
    Json const document = Json::parse(text);
    for (Json const& pair : document.is_object() ? document.at("points") : document) {
      if (pair.size() != 2) Fail(path, fmt::format("point {} is no pair; give [x, y]", points.size() + 1));
      points.push_back({pair.at(0).get<double>(), pair.at(1).get<double>()});
    }
  } catch (Json::exception const&) {
    Fail(path, "is no curve; give [[x, y], ...], or a point x y a line");
  }
  return points;
}

void CheckPoints(std::string const& path, std::vector<CurvePoint> const& points) {
  if (points.size() < 2) Fail(path, fmt::format("{} points are no curve; give two or more", points.size()));
  for (std::size_t i = 0; i < points.size(); ++i) {
    CurvePoint const& p = points[i];
    bool const isInside = p.x >= 0.0 && p.x <= 1.0 && p.y >= 0.0 && p.y <= 1.0;
    if (!isInside) {
      Fail(path, fmt::format("point {}, {} {}, lies outside 0 to 1, black to white", i + 1, p.x, p.y));
    }
    if (i > 0 && !(points[i - 1].x < p.x)) {
      Fail(path, fmt::format("point {}, {} {}, is not to the right of the one before; let x rise", i + 1, p.x, p.y));
    }
  }
}

}  // namespace

std::vector<CurvePoint> ReadCurvePoints(std::string const& path) {
  std::string const text = ReadSmallText(path);
  std::size_t const first = text.find_first_not_of(" \t\r\n");
  bool const isJson = first != std::string::npos && (text[first] == '[' || text[first] == '{');
  std::vector<CurvePoint> const points = isJson ? ParseJson(path, text) : ParseText(path, text);
  CheckPoints(path, points);
  return points;
}

}  // namespace orb::host
