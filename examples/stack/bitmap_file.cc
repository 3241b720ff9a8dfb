#include "bitmap_file.h"

#include <cstdint>
#include <fstream>

namespace {

void PutLittleEndian(std::ofstream& file, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) file.put(static_cast<char>(value >> (8 * i)));
}

}  // namespace

// The block holds everything but the 14 bytes that a file begins with.
bool WriteBitmap(std::string const& path, HDIB bitmap) {
  constexpr std::uint32_t kFileHeader = 14;
  auto const size = static_cast<std::uint32_t>(GlobalSize(bitmap));
  std::ofstream file(path, std::ios::binary);
  file << "BM";
  PutLittleEndian(file, kFileHeader + size, 4);
  PutLittleEndian(file, 0, 4);
  PutLittleEndian(file, kFileHeader + sizeof(BITMAPINFOHEADER), 4);  // where the rows begin: 24 bits have no palette
  file.write(static_cast<char const*>(GlobalLock(bitmap)), size);
  GlobalUnlock(bitmap);
  return static_cast<bool>(file.flush());
}
