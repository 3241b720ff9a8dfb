#include <hosts/orbimg/alignment_file.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr char kKind[] = "orbimg alignment";
constexpr double kFarthestShift = 1e6;  // pixels; farther ones are slips of the pen

fs::path FolderOf(std::string const& path) { return fs::absolute(path).parent_path(); }

std::string RelativeTo(fs::path const& folder, std::string const& file) {
  return fs::absolute(file).lexically_normal().lexically_proximate(folder.lexically_normal()).string();
}

std::string Resolve(fs::path const& folder, std::string const& file) {
  fs::path const found = (folder / file).lexically_normal();
  return found.lexically_proximate(fs::current_path()).string();
}

Json ToJson(AlignedFrame const& frame, fs::path const& folder) {
  FrameTransform const& t = frame.transform;
  return Json{{"file", RelativeTo(folder, frame.file)},
              {"dx", t.dx},
              {"dy", t.dy},
              {"angle", t.angle},
              {"centre", {t.cx, t.cy}},
              {"method", frame.method},
              {"stars", frame.stars},
              {"residual", frame.residual.has_value() ? Json(*frame.residual) : Json()}};
}

AlignedFrame FromJson(Json const& entry, fs::path const& folder) {
  AlignedFrame frame;
  frame.file = Resolve(folder, entry.at("file").get<std::string>());
  frame.transform.dx = entry.at("dx").get<double>();
  frame.transform.dy = entry.at("dy").get<double>();
  frame.transform.angle = entry.value("angle", 0.0);
  frame.transform.cx = entry.contains("centre") ? entry["centre"].at(0).get<double>() : 0.0;
  frame.transform.cy = entry.contains("centre") ? entry["centre"].at(1).get<double>() : 0.0;
  frame.method = entry.value("method", std::string());
  frame.stars = entry.value("stars", 0);
  if (entry.contains("residual") && !entry["residual"].is_null()) frame.residual = entry["residual"].get<double>();
  return frame;
}

void CheckTransform(std::string const& path, AlignedFrame const& frame) {
  FrameTransform const& t = frame.transform;
  for (double const value : {t.dx, t.dy, t.angle, t.cx, t.cy}) {
    if (std::abs(value) <= kFarthestShift) continue;
    throw HostError(Exit::kInput, fmt::format("{}: {}: a shift, angle or centre of {} is out of range; align again",
                                              path, frame.file, value));
  }
}

}  // namespace

std::string FormatAlignment(AlignmentList const& list, std::string const& path) {
  fs::path const folder = FolderOf(path);
  Json frames = Json::array();
  for (AlignedFrame const& frame : list.frames) frames.push_back(ToJson(frame, folder));
  Json leftOut = Json::array();
  for (LeftOutFrame const& frame : list.leftOut) {
    leftOut.push_back(Json{{"file", RelativeTo(folder, frame.file)}, {"reason", frame.reason}});
  }
  Json const document{{"kind", kKind},
                      {"version", 1},
                      {"reference", RelativeTo(folder, list.reference)},
                      {"frames", frames},
                      {"left_out", leftOut}};
  return document.dump(2) + "\n";
}

AlignmentList ReadAlignment(std::string const& path) {
  RequireReadableFile(path);
  AlignmentList list;
  try {
    std::ifstream file(path);
    Json const document = Json::parse(file);
    fs::path const folder = FolderOf(path);
    if (document.at("kind") != kKind) throw std::runtime_error("of another kind");
    list.reference = Resolve(folder, document.at("reference").get<std::string>());
    for (Json const& entry : document.at("frames")) list.frames.push_back(FromJson(entry, folder));
  } catch (HostError const&) {
    throw;
  } catch (std::exception const&) {
    throw HostError(Exit::kInput, fmt::format("{}: not an alignment file; make one with orbimg align", path));
  }
  for (AlignedFrame const& frame : list.frames) CheckTransform(path, frame);
  return list;
}

}  // namespace orb::host
