// Hands a fuzzer's bytes to a reader that wants a path.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace orb::fuzz {

// Writes the bytes over one file of this process in shared memory and returns its path.
inline std::string PathOf(std::uint8_t const* data, std::size_t size, char const* ending) {
  std::string const path = "/dev/shm/orbimg-fuzz-" + std::to_string(getpid()) + ending;
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return path;
  std::fwrite(data, 1, size, file);
  std::fclose(file);
  return path;
}

}  // namespace orb::fuzz
