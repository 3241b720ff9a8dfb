// A file that appears whole or not at all: written beside its place under another name, then renamed.
#pragma once

#include <string>

namespace orb::host {

enum class Existing { kKeep, kReplace };

class AtomicFile {
 public:
  // Checks that the folder is there and writable and, with kKeep, that `path` does not exist yet: HostError otherwise.
  AtomicFile(std::string const& path, Existing existing);
  AtomicFile(AtomicFile const&) = delete;
  AtomicFile& operator=(AtomicFile const&) = delete;
  ~AtomicFile();  // removes what was not committed

  std::string const& TemporaryPath() const { return temporary; }  // write here
  void Commit();                                                  // flushes to disk and renames

 private:
  std::string path;
  std::string temporary;
  Existing existing;
  bool committed = false;
};

}  // namespace orb::host
