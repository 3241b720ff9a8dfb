// A folder for the files of one test, removed with all that is in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <stdlib.h>

namespace orb::test {

class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orbimg-test-XXXXXX").string();
    folder = mkdtemp(pattern.data());
  }
  ScratchFolder(ScratchFolder const&) = delete;
  ScratchFolder& operator=(ScratchFolder const&) = delete;
  ~ScratchFolder() {
    std::error_code error;
    std::filesystem::remove_all(folder, error);
  }

  std::string Path() const { return folder; }
  std::string operator/(std::string const& name) const { return folder + "/" + name; }

  // Names of everything in it, hidden files too.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    return names;
  }

 private:
  std::string folder;
};

inline void WriteText(std::string const& path, std::string const& text) {
  std::ofstream(path, std::ios::binary) << text;
}

inline std::string ReadText(std::string const& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace orb::test
