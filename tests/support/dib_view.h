// A rendered bitmap as tests read it.
#pragma once

#include <cstring>
#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test {

class DibView {
 public:
  explicit DibView(HDIB dib) : block(dib) {}
  DibView(COrbImage const& image, int bitCount) : block(image.GetDib(bitCount)) {}

  bool IsNull() const { return block == nullptr; }

  std::vector<unsigned char> Bytes() const {
    auto const* const data = static_cast<unsigned char const*>(GlobalLock(block.get()));
    std::vector<unsigned char> bytes(data, data + GlobalSize(block.get()));
    GlobalUnlock(block.get());
    return bytes;
  }

  BITMAPINFOHEADER Header() const {
    BITMAPINFOHEADER header;
    std::memcpy(&header, Bytes().data(), sizeof(header));
    return header;
  }

  // Blue, green, red, reserved of an entry of the 8-bit forms.
  std::vector<int> Entry(std::size_t index) const { return Slice(40 + 4 * index, 4); }

  // All bytes of image row y, padding included.
  std::vector<int> Row(int y) const {
    BITMAPINFOHEADER const header = Header();
    std::size_t const stride = (static_cast<std::size_t>(header.biWidth) * header.biBitCount / 8 + 3) / 4 * 4;
    std::size_t const rows = header.biBitCount == 8 ? 1064 : 40;
    return Slice(rows + stride * static_cast<std::size_t>(header.biHeight - 1 - y), stride);
  }

 private:
  std::vector<int> Slice(std::size_t offset, std::size_t count) const {
    std::vector<unsigned char> const bytes = Bytes();
    auto const begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return std::vector<int>(begin, begin + static_cast<std::ptrdiff_t>(count));
  }

  DibPtr block;
};

}  // namespace orb::test
