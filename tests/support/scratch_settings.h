// Where new stores of this thread put their samples. A folder that does not exist makes every store above the size fail
// as lack of memory does.
#pragma once

#include <cstdint>

#include <orbimg/orbimg.h>

namespace orb::test {

// Sets what new stores of this thread do, and puts it back.
class ScratchSettings {
 public:
  ScratchSettings(std::int64_t size, char const* folder)
      : oldSize(CVmManager::OfThread().GetBlockSize()), oldFolder(CVmManager::OfThread().GetScratchFolder()) {
    CVmManager::OfThread().SetBlockSize(size);
    CVmManager::OfThread().SetScratchFolder(folder);
  }
  ScratchSettings(ScratchSettings const&) = delete;
  ScratchSettings& operator=(ScratchSettings const&) = delete;
  ~ScratchSettings() {
    CVmManager::OfThread().SetBlockSize(oldSize);
    CVmManager::OfThread().SetScratchFolder(oldFolder);
  }

 private:
  std::int64_t oldSize;
  char const* oldFolder;
};

}  // namespace orb::test
