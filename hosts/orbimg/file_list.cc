#include <hosts/orbimg/file_list.h>

#include <glob.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/io/raw_file.h>
#include <hosts/orbimg/natural_order.h>

namespace orb::host {
namespace {

bool IsPattern(std::string const& name) {
  std::error_code ignored;
  return name.find_first_of("*?[") != std::string::npos && !std::filesystem::exists(name, ignored);
}

std::vector<std::string> ExpandPattern(std::string const& pattern) {
  glob_t found{};
  int const status = ::glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found);
  std::vector<std::string> files(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  ::globfree(&found);
  if (status != 0 || files.empty()) {
    throw HostError(Exit::kInput,
                    fmt::format("{}: no file has such a name; check the folder and the pattern", pattern));
  }
  std::sort(files.begin(), files.end(), ComesNaturallyBefore);
  return files;
}

bool RemoveEnding(std::string& name, std::string const& ending) {
  if (EndingOf(name) != ending) return false;
  name.resize(name.size() - ending.size());
  return true;
}

}  // namespace

std::vector<std::string> ExpandFiles(std::vector<std::string> const& names, FileOrder order) {
  std::vector<std::string> files;
  for (std::string const& name : names) {
    if (IsPattern(name)) {
      std::vector<std::string> const found = ExpandPattern(name);
      files.insert(files.end(), found.begin(), found.end());
    } else {
      files.push_back(name);
    }
  }
  if (order == FileOrder::kNatural) std::stable_sort(files.begin(), files.end(), ComesNaturallyBefore);
  return files;
}

std::string BareName(std::string const& path) { return std::filesystem::path(path).filename().string(); }

std::string EndingOf(std::string const& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  return ending;
}

std::string StemOf(std::string const& path) {
  std::string name = BareName(path);
  for (char const* ending : {".tif", ".tiff", ".png", ".bmp"}) {
    if (RemoveEnding(name, ending)) return name;
  }
  if (IsRawName(name)) return name.substr(0, name.find_last_of('.'));
  if (!RemoveEnding(name, ".gz")) RemoveEnding(name, ".fz");
  if (!RemoveEnding(name, ".fits") && !RemoveEnding(name, ".fit")) RemoveEnding(name, ".fts");
  return name;
}

}  // namespace orb::host
