// A bitmap block as rows and palette.
#pragma once

#include <cstddef>
#include <string>

#include <orbimg/orbimg.h>

namespace orb::host {

// The parts of a block that is locked while this lives.
class DibView {
 public:
  // A HostError that names `path` if the block is none of 8 bits with a full palette or of 24 bits, bottom-up.
  DibView(HDIB dib, std::string const& path);
  DibView(DibView const&) = delete;
  DibView& operator=(DibView const&) = delete;
  ~DibView();

  int Width() const { return header->biWidth; }
  int Height() const { return header->biHeight; }
  bool HasPalette() const { return header->biBitCount == 8; }
  RGBQUAD const* Palette() const;  // 256 entries
  bool HasGrayRamp() const;
  unsigned char const* Row(int y) const;  // row 0 on top
  // The whole block, without what may lie behind its last row.
  unsigned char const* Bytes() const { return bytes; }
  std::size_t Size() const { return RowsOffset() + Stride() * static_cast<std::size_t>(Height()); }
  std::size_t RowsOffset() const { return sizeof(BITMAPINFOHEADER) + (HasPalette() ? 256 * sizeof(RGBQUAD) : 0); }

 private:
  std::size_t Stride() const;
  bool IsSupported(std::size_t size) const;

  HDIB dib;
  unsigned char const* bytes;
  BITMAPINFOHEADER const* header;
};

}  // namespace orb::host
