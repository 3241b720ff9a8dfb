// Reading a device-independent bitmap into 8-bit samples.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include <orbimg/core/image.h>
#include <platform/bitmap_info.h>

namespace {

struct Color {
  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;
};

// A bitmap laid out over a memory block: where its palette and rows are.
struct Bitmap {
  BITMAPINFOHEADER header;
  std::vector<Color> palette;
  std::uint32_t masks[3];  // red, green, blue of 16 and 32 bits
  unsigned char const* rows;
  std::size_t stride;
  int width;
  int height;
  bool topDown;

  unsigned char const* Row(int y) const {
    int const stored = topDown ? y : height - 1 - y;
    return rows + static_cast<std::size_t>(stored) * stride;
  }
};

bool IsKnownDepth(int bits) { return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32; }

bool HasMasks(BITMAPINFOHEADER const& header) {
  return header.biCompression == BI_BITFIELDS && (header.biBitCount == 16 || header.biBitCount == 32);
}

// Palette entries that stand in the block: as many as the header says, by default all that the depth can index.
std::size_t PaletteEntries(BITMAPINFOHEADER const& header) {
  std::size_t const byDepth = header.biBitCount <= 8 ? std::size_t{1} << header.biBitCount : 0;
  return header.biClrUsed != 0 ? header.biClrUsed : byDepth;
}

void SetDefaultMasks(Bitmap& bitmap) {
  bool const is16 = bitmap.header.biBitCount == 16;
  bitmap.masks[0] = is16 ? 0x7c00 : 0xff0000;
  bitmap.masks[1] = is16 ? 0x03e0 : 0x00ff00;
  bitmap.masks[2] = is16 ? 0x001f : 0x0000ff;
}

bool ReadHeader(Bitmap& bitmap, unsigned char const* data, std::size_t size) {
  BITMAPINFOHEADER& header = bitmap.header;
  if (size < sizeof(header)) return false;
  std::memcpy(&header, data, sizeof(header));
  if (header.biSize < sizeof(header) || !IsKnownDepth(header.biBitCount)) return false;
  if (header.biCompression != BI_RGB && !HasMasks(header)) return false;
  if (header.biWidth < 1 || header.biHeight == 0) return false;
  if (header.biHeight == std::numeric_limits<std::int32_t>::min()) return false;
  bitmap.width = header.biWidth;
  bitmap.topDown = header.biHeight < 0;
  bitmap.height = bitmap.topDown ? -header.biHeight : header.biHeight;
  return true;
}

// Finds masks, palette and rows; false if the block ends before the last row does.
bool ReadLayout(Bitmap& bitmap, unsigned char const* data, std::size_t size) {
  std::size_t offset = bitmap.header.biSize;
  SetDefaultMasks(bitmap);
  if (HasMasks(bitmap.header)) {
    // A header longer than the plain one holds the masks itself, at this same place.
    if (size < sizeof(BITMAPINFOHEADER) + sizeof(bitmap.masks)) return false;
    std::memcpy(bitmap.masks, data + sizeof(BITMAPINFOHEADER), sizeof(bitmap.masks));
    if (offset == sizeof(BITMAPINFOHEADER)) offset += sizeof(bitmap.masks);
  }
  std::size_t const entries = PaletteEntries(bitmap.header);
  if (offset > size || entries > (size - offset) / sizeof(RGBQUAD)) return false;
  if (bitmap.header.biBitCount <= 8) {
    bitmap.palette.resize(std::min(entries, std::size_t{1} << bitmap.header.biBitCount));
    for (std::size_t i = 0; i < bitmap.palette.size(); ++i) {
      unsigned char const* entry = data + offset + i * sizeof(RGBQUAD);
      bitmap.palette[i] = Color{entry[2], entry[1], entry[0]};
    }
  }
  offset += entries * sizeof(RGBQUAD);
  bitmap.stride = (static_cast<std::size_t>(bitmap.width) * bitmap.header.biBitCount + 31) / 32 * 4;
  bitmap.rows = data + offset;
  return static_cast<std::size_t>(bitmap.height) <= (size - offset) / bitmap.stride;
}

// Grays that rise from entry to entry: the bitmap is a mono one.
bool IsGrayRamp(std::vector<Color> const& palette) {
  for (std::size_t i = 0; i < palette.size(); ++i) {
    Color const& c = palette[i];
    if (c.red != c.green || c.green != c.blue) return false;
    if (i > 0 && c.red <= palette[i - 1].red) return false;
  }
  return true;
}

std::size_t PaletteIndex(unsigned char const* row, int x, int bits) {
  int const perByte = 8 / bits;
  int const shift = (perByte - 1 - x % perByte) * bits;
  return (row[x / perByte] >> shift) & ((1u << bits) - 1u);
}

// The bits under a mask, stretched to 0 .. 255.
std::uint8_t MaskedByte(std::uint32_t value, std::uint32_t mask) {
  if (mask == 0) return 0;
  std::uint32_t const largest = mask >> __builtin_ctz(mask);
  std::uint64_t const v = (value & mask) >> __builtin_ctz(mask);
  return static_cast<std::uint8_t>((v * 255 + largest / 2) / largest);
}

Color ReadColor(Bitmap const& bitmap, unsigned char const* row, int x) {
  int const bits = bitmap.header.biBitCount;
  if (bits <= 8) {
    std::size_t const index = PaletteIndex(row, x, bits);
    return index < bitmap.palette.size() ? bitmap.palette[index] : Color{0, 0, 0};
  }
  std::size_t const bytes = static_cast<std::size_t>(bits) / 8;
  unsigned char const* p = row + static_cast<std::size_t>(x) * bytes;
  if (bits == 24) return Color{p[2], p[1], p[0]};
  std::uint32_t value = 0;
  std::memcpy(&value, p, bytes);
  return Color{MaskedByte(value, bitmap.masks[0]), MaskedByte(value, bitmap.masks[1]),
               MaskedByte(value, bitmap.masks[2])};
}

}  // namespace

int CImage::AttachDIB(HDIB dib) {
  if (dib == nullptr) return 0;
  struct Lock {
    HDIB block;
    unsigned char const* data;
    explicit Lock(HDIB b) : block(b), data(static_cast<unsigned char const*>(GlobalLock(b))) {}
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;
    ~Lock() { GlobalUnlock(block); }
  } const lock(dib);
  try {
    Bitmap bitmap;
    std::size_t const size = GlobalSize(dib);
    if (!ReadHeader(bitmap, lock.data, size) || !ReadLayout(bitmap, lock.data, size)) return 0;
    int const newPlanes = !bitmap.palette.empty() && IsGrayRamp(bitmap.palette) ? 1 : 3;
    auto store = std::make_unique<CVmImage>(1, bitmap.width, bitmap.height, newPlanes);
    for (int y = 0; y < bitmap.height; ++y) {
      unsigned char const* row = bitmap.Row(y);
      unsigned char* out[3];
      for (int p = 0; p < newPlanes; ++p) out[p] = store->GetImageAdr(0, y, p, 0, 0, nullptr);
      for (int x = 0; x < bitmap.width; ++x) {
        Color const color = ReadColor(bitmap, row, x);
        out[0][x] = color.red;
        if (newPlanes == 1) continue;
        out[1][x] = color.green;
        out[2][x] = color.blue;
      }
    }
    vmImage = std::move(store);
    bitsPixel = 8;
    isSigned = 0;
    width = bitmap.width;
    height = bitmap.height;
    bscale = 1.0;
    bzero = 0.0;
    SetPlanes(newPlanes);
    ResetLevels();
    return 1;
  } catch (std::bad_alloc const&) {
    return 0;
  }
}
