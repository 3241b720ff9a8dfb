// COrbImage::GetDib: the image through its levels, as a bitmap block.
//
// The block holds a BITMAPINFOHEADER, at 8 bits 256 palette entries, and the rows from the bottom of the image to the
// top, each padded with zeros to a multiple of four bytes. A pixel of 24 bits is blue, green, red.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include <orbimg/core/orb_image.h>
#include <orbimg/display/bitmap_layout_internal.h>
#include <orbimg/display/byte_row_kernels.h>
#include <orbimg/display/color_quantizer_internal.h>
#include <platform/bitmap_info.h>

namespace {

constexpr std::ptrdiff_t kPiece = 1024;  // columns whose bytes wait to be put together to pixels

// A new block, locked while this lives; empty if memory is short.
class Bitmap {
 public:
  // Sets the header's biSizeImage.
  explicit Bitmap(BITMAPINFOHEADER* header)
      : layout(header->biWidth, header->biHeight, header->biBitCount),
        block(GlobalAlloc(GMEM_MOVEABLE, layout.BlockSize())) {
    header->biSizeImage = layout.SizeField();
    if (block == nullptr) return;
    data = static_cast<unsigned char*>(GlobalLock(block.get()));
    std::memcpy(data, header, sizeof(*header));
  }
  Bitmap(Bitmap const&) = delete;
  Bitmap& operator=(Bitmap const&) = delete;
  ~Bitmap() { GlobalUnlock(block.get()); }

  bool IsEmpty() const { return block == nullptr; }
  RGBQUAD* Palette() const { return reinterpret_cast<RGBQUAD*>(data + sizeof(BITMAPINFOHEADER)); }
  unsigned char* Rows() const { return data + layout.rowsOffset; }
  std::size_t Stride() const { return layout.stride; }

  // The place of image row y, its padding cleared.
  unsigned char* StartRow(int y) const {
    unsigned char* const row = data + layout.RowOffset(y);
    std::memset(row + layout.usedBytes, 0, layout.stride - layout.usedBytes);
    return row;
  }

  HDIB Release() {
    GlobalUnlock(block.get());
    return block.release();
  }

 private:
  orb::BitmapLayout layout;
  orb::DibPtr block;
  unsigned char* data = nullptr;
};

bool HasPixels(COrbImage const& image) { return image.GetWidth() > 0 && image.GetHeight() > 0; }

void WriteGrayRamp(RGBQUAD* palette) {
  for (std::size_t i = 0; i < orb::kPaletteEntries; ++i) {
    auto const gray = static_cast<std::uint8_t>(i);
    palette[i] = RGBQUAD{gray, gray, gray, 0};
  }
}

// Pixels of 24 bits from three planes, each by its own levels, or from one plane three times.
void WritePixels(COrbImage const& image, Bitmap const& bitmap, int planes) {
  if (!HasPixels(image)) return;
  auto const ruleOf = [&](int plane) { return orb::ByteRule(orb::ByteLevelOf(image, plane)); };
  bool const mono = planes == 1;
  orb::ByteRule const first = ruleOf(0);
  orb::ByteRule const rules[3] = {first, mono ? first : ruleOf(1), mono ? first : ruleOf(2)};
  unsigned char bytes[3][kPiece];
  for (int y = 0; y < image.GetHeight(); ++y) {
    float const* src[3];
    for (int p = 0; p < planes; ++p) src[p] = image.GetImageAdr(0, y, p, 1, nullptr);
    unsigned char* const row = bitmap.StartRow(y);
    for (std::ptrdiff_t x = 0; x < image.GetWidth(); x += kPiece) {
      std::ptrdiff_t const count = std::min(kPiece, image.GetWidth() - x);
      for (int p = 0; p < planes; ++p) rules[p].ConvertRow(src[p] + x, bytes[p], count);
      orb::InterleaveRow(bytes[0], bytes[mono ? 0 : 1], bytes[mono ? 0 : 2], row + 3 * x, count);
    }
  }
}

}  // namespace

HDIB COrbImage::GetDib(int bitCount) const {
  // Two planes are no colour: there is no blue to read.
  if (planes != 1 && planes < 3 && HasPixels(*this)) return nullptr;
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof(header);
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<std::uint16_t>(bitCount);
  if (bitCount == 8) return planes == 1 ? GetDib8Mono(&header) : GetDib8Color(&header);
  if (bitCount == 24) return planes == 1 ? GetDib24Mono(&header) : GetDib24Color(&header);
  return nullptr;
}

HDIB COrbImage::GetDib8Mono(BITMAPINFOHEADER* header) const {
  Bitmap bitmap(header);
  if (bitmap.IsEmpty()) return nullptr;
  WriteGrayRamp(bitmap.Palette());
  orb::ByteRule const rule(orb::ByteLevelOf(*this, 0));
  for (int y = 0; y < height; ++y) {
    rule.ConvertRow(GetImageAdr(0, y, 0, 1, nullptr), bitmap.StartRow(y), width);
  }
  return bitmap.Release();
}

HDIB COrbImage::GetDib8Color(BITMAPINFOHEADER* header) const {
  Bitmap bitmap(header);
  if (bitmap.IsEmpty()) return nullptr;
  for (int y = 0; y < height; ++y) bitmap.StartRow(y);
  orb::QuantizeColors(*this, bitmap.Rows(), bitmap.Stride(), bitmap.Palette());
  return bitmap.Release();
}

HDIB COrbImage::GetDib24Mono(BITMAPINFOHEADER* header) const {
  Bitmap bitmap(header);
  if (bitmap.IsEmpty()) return nullptr;
  WritePixels(*this, bitmap, 1);
  return bitmap.Release();
}

HDIB COrbImage::GetDib24Color(BITMAPINFOHEADER* header) const {
  Bitmap bitmap(header);
  if (bitmap.IsEmpty()) return nullptr;
  WritePixels(*this, bitmap, 3);
  return bitmap.Release();
}
