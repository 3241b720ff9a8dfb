#include <hosts/orbimg/recipe_record.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <hosts/io/host_error.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/output_check.h>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr char kName[] = "orbimg-run.json";

std::vector<std::string> FilesIn(fs::path const& folder) {
  std::vector<std::string> files;
  for (auto const& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// Name, size and time of every file; null where one is missing.
Json Stamp(std::vector<std::string> const& files) {
  Json stamps = Json::array();
  for (std::string const& file : files) {
    std::error_code error;
    auto const size = fs::file_size(file, error);
    auto const time = fs::last_write_time(file, error);
    if (error) return Json();
    stamps.push_back(Json{{"file", file}, {"size", size}, {"time", time.time_since_epoch().count()}});
  }
  return stamps;
}

Json StampReads(PlannedStep const& step) {
  try {
    return Stamp(ExpandFiles(step.reads, FileOrder::kNatural));
  } catch (HostError const&) {  // a pattern that names nothing
    return Json();
  }
}

Json StampWrites(PlannedStep const& step) {
  if (step.output.back() != '/') return Stamp({step.output});
  return fs::is_directory(step.output) ? Stamp(FilesIn(step.output)) : Json();
}

}  // namespace

RecipeRecord::RecipeRecord(std::string const& folder) : path((fs::path(folder) / kName).string()) {
  std::ifstream stream(path);
  document = Json::parse(stream, nullptr, false);
  if (!document.is_object() || !document.contains("steps") || !document["steps"].is_object()) {
    document = Json{{"kind", "orbimg run"}, {"version", 1}, {"steps", Json::object()}};
  }
}

bool RecipeRecord::IsFinished(PlannedStep const& step) const {
  Json const& steps = document["steps"];
  if (!steps.contains(step.name)) return false;
  Json const& known = steps[step.name];
  if (known.value("program", "") != ORBIMG_VERSION || known.value("arguments", Json()) != Json(step.arguments))
    return false;
  Json const reads = StampReads(step);
  Json const writes = StampWrites(step);
  return !reads.is_null() && !writes.is_null() && known.value("reads", Json()) == reads &&
         known.value("writes", Json()) == writes;
}

void RecipeRecord::Finish(PlannedStep const& step, std::string const& said) {
  document["steps"][step.name] = Json{{"program", ORBIMG_VERSION},
                                      {"arguments", step.arguments},
                                      {"said", said},
                                      {"reads", StampReads(step)},
                                      {"writes", StampWrites(step)}};
  WriteTextFile(path, document.dump(2) + "\n", Existing::kReplace);
}

std::string RecipeRecord::Said(PlannedStep const& step) const {
  return document["steps"].at(step.name).value("said", std::string());
}

}  // namespace orb::host
