#include <cstring>

#include <hosts/io/dib_view_internal.h>
#include <hosts/io/host_error.h>
#include <hosts/io/picture_file.h>
#include <hosts/io/plain_image_internal.h>

namespace orb::host {

namespace {

constexpr std::size_t kPaletteBytes = 256 * sizeof(RGBQUAD);

// A block of 8 bits with the gray ramp, or of 24 bits, its rows not yet set.
DibPtr MakeBlock(int width, int height, bool isColour) {
  std::size_t const stride = (static_cast<std::size_t>(width) * (isColour ? 24 : 8) + 31) / 32 * 4;
  std::size_t const palette = isColour ? 0 : kPaletteBytes;
  DibPtr block(
      GlobalAlloc(GMEM_ZEROINIT, sizeof(BITMAPINFOHEADER) + palette + stride * static_cast<std::size_t>(height)));
  if (!block) return block;
  auto* const bytes = static_cast<unsigned char*>(GlobalLock(block.get()));
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = isColour ? 24 : 8;
  std::memcpy(bytes, &header, sizeof header);
  for (int i = 0; i < 256 && !isColour; ++i) {
    auto const gray = static_cast<std::uint8_t>(i);
    RGBQUAD const entry{gray, gray, gray, 0};
    std::memcpy(bytes + sizeof header + static_cast<std::size_t>(i) * sizeof entry, &entry, sizeof entry);
  }
  GlobalUnlock(block.get());
  return block;
}

}  // namespace

void WriteBmpRows(AtomicFile& output, EncodedRows& rows) {
  bool const isColour = rows.Planes() == 3;
  std::size_t const channels = isColour ? 3 : 1;
  DibPtr const block = MakeBlock(rows.Width(), rows.Height(), isColour);
  {
    DibView const view(block.get(), output.Path());
    for (int y = 0; y < rows.Height(); ++y) {
      auto* const row = const_cast<unsigned char*>(view.Row(y));  // the block is ours
      unsigned char const* const pixels = rows.PixelRow(y);
      for (std::size_t i = 0; i < channels * static_cast<std::size_t>(rows.Width()); ++i) {
        row[i] = isColour ? pixels[i / 3 * 3 + 2 - i % 3] : pixels[i];  // blue comes first
      }
    }
  }
  WriteBitmap(output, block.get());
}

}  // namespace orb::host
