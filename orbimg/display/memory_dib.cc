#include <orbimg/display/memory_dib.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include <platform/colorref.h>

namespace {

constexpr std::size_t kHeaderBytes = sizeof(BITMAPINFOHEADER);

// 5 of 8 bits a channel.
unsigned short Pack555(int r, int g, int b) {
  return static_cast<unsigned short>((r & 0xF8) << 7 | (g & 0xF8) << 2 | (b & 0xF8) >> 3);
}

int Raised(int component) { return std::min(component, 251) + 4; }

int ColorCountOf(int bitCount) {
  switch (bitCount) {
    case 1:
      return 2;
    case 4:
      return 16;
    case 8:
      return 256;
    default:
      return 0;
  }
}

bool IsDepth(int bitCount) { return ColorCountOf(bitCount) != 0 || bitCount == 16 || bitCount == 24 || bitCount == 32; }

std::int64_t StrideOf(int bitCount, int width) {
  return (static_cast<std::int64_t>(width) * bitCount / 8 + 3) & ~std::int64_t{3};
}

COLORREF AsColor(unsigned long colour) { return static_cast<COLORREF>(colour); }

}  // namespace

CMemoryDIB::~CMemoryDIB() = default;

void CMemoryDIB::Empty() {
  colours = {};
  bits.reset();
}

int CMemoryDIB::Create(int newBitCount, int newWidth, int newHeight) {
  if (CreateEmpty(newBitCount, newWidth, newHeight) == 0) return 0;
  colorUse = colorCount != 0 ? 1 : 0;
  return 1;
}

int CMemoryDIB::Create(int newBitCount, int newWidth, int newHeight, PALETTEENTRY* const palette) {
  if (CreateEmpty(newBitCount, newWidth, newHeight) == 0) return 0;
  colorUse = 0;
  for (std::size_t i = 0; palette != nullptr && i < colours.size(); ++i) {
    colours[i] = RGBQUAD{palette[i].peBlue, palette[i].peGreen, palette[i].peRed, 0};
  }
  return 1;
}

int CMemoryDIB::CreateEmpty(int newBitCount, int newWidth, int newHeight) {
  if (newWidth == 0 || newHeight == 0) return 0;
  Empty();
  bitCount = newBitCount;
  width = newWidth;
  height = newHeight;
  if (!IsDepth(bitCount) || width < 0 || height < 0) return 0;
  if (StrideOf(bitCount, width) > std::numeric_limits<int>::max()) return 0;
  stride = static_cast<int>(StrideOf(bitCount, width));
  colorCount = ColorCountOf(bitCount);
  colours.resize(static_cast<std::size_t>(colorCount));
  if (MakeBits()) return 1;
  Empty();
  return 0;
}

bool CMemoryDIB::MakeBits() {
  std::size_t const size = ImageSize();
  header = BITMAPINFOHEADER{};
  header.biSize = kHeaderBytes;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<std::uint16_t>(bitCount);
  header.biSizeImage =
      size <= std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(size) : std::uint32_t{0};
  header.biClrUsed = static_cast<std::uint32_t>(colorCount);
  bits.reset(new (std::nothrow) unsigned char[size]());
  return bits != nullptr;
}

HDIB CMemoryDIB::CreateHDIB() {
  if (!bits) return nullptr;
  HDIB const dib = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, kHeaderBytes + ImageSize());
  if (dib == nullptr) return nullptr;
  auto* const bytes = static_cast<unsigned char*>(GlobalLock(dib));
  std::memcpy(bytes, &header, kHeaderBytes);
  std::memcpy(bytes + kHeaderBytes, bits.get(), ImageSize());
  GlobalUnlock(dib);
  return dib;
}

bool CMemoryDIB::HasPixel(int x, int y, int bytesPixel) const {
  return bits && x >= 0 && x < width && y >= 0 && y < height &&
         (static_cast<std::int64_t>(x) + 1) * bytesPixel <= stride;
}

void CMemoryDIB::SetPixel8(int x, int y, unsigned long colour) {
  if (HasPixel(x, y, 1)) SetPixel8(GetImageAdr8(x, y), colour);
}

void CMemoryDIB::SetPixel16(unsigned short* p, unsigned long colour) {
  SetPixel16(p, GetRValue(AsColor(colour)), GetGValue(AsColor(colour)), GetBValue(AsColor(colour)));
}

void CMemoryDIB::SetPixel16(int x, int y, unsigned long colour) {
  if (HasPixel(x, y, 2)) SetPixel16(GetImageAdr16(x, y), colour);
}

void CMemoryDIB::SetPixel16(unsigned short* p, int r, int g, int b) { *p = Pack555(r, g, b); }

void CMemoryDIB::SetPixel16(unsigned short* p, int x, int y, int r, int g, int b) {
  bool const isEven = ((x ^ y) & 1) == 0;
  *p = isEven ? Pack555(Raised(r), Raised(g), Raised(b)) : Pack555(r, g, b);
}

void CMemoryDIB::SetPixel24(unsigned char* p, unsigned long colour) {
  p[0] = GetBValue(AsColor(colour));
  p[1] = GetGValue(AsColor(colour));
  p[2] = GetRValue(AsColor(colour));
}

void CMemoryDIB::SetPixel24(int x, int y, unsigned long colour) {
  if (HasPixel(x, y, 3)) SetPixel24(GetImageAdr24(x, y), colour);
}

// The fourth byte is the caller's.
void CMemoryDIB::SetPixel32(unsigned char* p, unsigned long colour) { SetPixel24(p, colour); }

void CMemoryDIB::SetPixel32(int x, int y, unsigned long colour) {
  if (HasPixel(x, y, 4)) SetPixel32(GetImageAdr32(x, y), colour);
}

void CMemoryDIB::SetPixel(int x, int y, unsigned long colour) {
  switch (bitCount) {
    case 8:
      return SetPixel8(x, y, colour);
    case 16:
      return SetPixel16(x, y, colour);
    case 24:
      return SetPixel24(x, y, colour);
    case 32:
      return SetPixel32(x, y, colour);
    default:
      return;
  }
}

void CMemoryDIB::SetPixel(void* p, unsigned long colour) {
  switch (bitCount) {
    case 8:
      return SetPixel8(static_cast<unsigned char*>(p), colour);
    case 16:
      return SetPixel16(static_cast<unsigned short*>(p), colour);
    case 24:
      return SetPixel24(static_cast<unsigned char*>(p), colour);
    case 32:
      return SetPixel32(static_cast<unsigned char*>(p), colour);
    default:
      return;
  }
}
