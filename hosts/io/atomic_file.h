// A file that appears whole or not at all: written beside its place under another name, then renamed.
#pragma once

#include <cstdint>
#include <string>

namespace orb::host {

enum class Existing { kKeep, kReplace };

class AtomicFile {
 public:
  // Checks that the folder is there and writable and, with kKeep, that `path` does not exist yet: HostError otherwise.
  // An empty file stands at TemporaryPath() afterwards. A link is followed, so that it stays one.
  AtomicFile(std::string const& path, Existing existing);
  AtomicFile(AtomicFile const&) = delete;
  AtomicFile& operator=(AtomicFile const&) = delete;
  ~AtomicFile();  // removes what was not committed

  std::string const& Path() const { return path; }                // as given
  std::string const& TemporaryPath() const { return temporary; }  // write here

  // HostError if the disk has not `bytes` left.
  void RequireSpace(std::int64_t bytes) const;
  // Throws the HostError of a write that failed with `error` (an errno value, 0 if unknown). A full disk is told apart.
  [[noreturn]] void FailWrite(int error) const;

  // Flushes to disk and renames. With kKeep a file that has come up meanwhile is kept, and this is a HostError.
  void Commit();

 private:
  std::string path;
  std::string target;  // where `path` leads
  std::string temporary;
  Existing existing;
  bool committed = false;
};

}  // namespace orb::host
