// CMemoryDIB: a bitmap in memory with direct access to its bytes, for drawing by a host. No part of the library uses
// it.
//
// Rows lie bottom-up: pixel (x, y), y counted from the top, is at (height - y - 1) * stride + x * bytes a pixel, with
// stride = (width * bitCount / 8 + 3) & ~3. A new bitmap is black. Colours are COLORREFs: red in the low byte, then
// green, then blue.
//
//   bits  a pixel as it lies in memory
//   8     a palette index
//   16    5 bits a channel: bits 10 to 14 red, 5 to 9 green, 0 to 4 blue
//   24    bytes blue, green, red
//   32    bytes blue, green, red, and one that is not touched
//
// Intended: at 1 and 4 bits the stride cuts off the bits of an incomplete byte, so that the last pixels of a row may
// have no place. Nothing is drawn at these depths.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <platform/bitmap_info.h>
#include <platform/export.h>
#include <platform/global_memory.h>
#include <platform/object.h>

class ORBIMG_API CMemoryDIB : public CObject {
 public:
  CMemoryDIB() = default;
  CMemoryDIB(CMemoryDIB const&) = delete;
  CMemoryDIB& operator=(CMemoryDIB const&) = delete;
  ~CMemoryDIB() override;

  // Gives the memory back. The numbers stay as they were, so GetWidth and its like tell of the last bitmap.
  void Empty();

  // 1, or 0: for a width or height of 0, and then the object is as it was; and, the object being empty, for a depth
  // other than 1, 4, 8, 16, 24 and 32 bits, a negative width or height, a row too long for its 32-bit stride, and where
  // there is no memory for the pixels. Lack of memory for the colour table is std::bad_alloc.
  // The first form leaves the colour table unset, and up to 8 bits says that it holds palette indices. The second takes
  // the table from the first 2, 16 or 256 entries of `palette` (1, 4 or 8 bits; null leaves it unset, and counts for
  // nothing at other depths).
  int Create(int bitCount, int width, int height);
  int Create(int bitCount, int width, int height, PALETTEENTRY* const palette);

  // A block of the 40 bytes of the header and the rows right behind them, which the caller owns. Null while empty and
  // for lack of memory. Intended: the colour table is not copied, even where biClrUsed says that there is one, so the
  // block is complete from 16 bits on. biSizeImage is 0 where the size of the rows does not fit its 32 bits.
  HDIB CreateHDIB();

  int GetWidth() const { return width; }
  int GetHeight() const { return height; }
  int GetBitCount() const { return bitCount; }

  // The address of a pixel at the named depth; no coordinate is checked. Take one a row and step on by yourself.
  unsigned char* GetImageAdr8(int x, int y) { return RowAt(y) + x; }
  unsigned short* GetImageAdr16(int x, int y) { return reinterpret_cast<unsigned short*>(RowAt(y)) + x; }
  unsigned char* GetImageAdr24(int x, int y) { return RowAt(y) + std::ptrdiff_t{3} * x; }
  unsigned char* GetImageAdr32(int x, int y) { return RowAt(y) + std::ptrdiff_t{4} * x; }

  // Writers. Those with an address trust it; those with a position alone write nothing outside the bitmap.
  void SetPixel8(unsigned char* p, unsigned long colour) { *p = static_cast<unsigned char>(colour); }
  void SetPixel8(int x, int y, unsigned long colour);
  void SetPixel16(unsigned short* p, unsigned long colour);
  void SetPixel16(int x, int y, unsigned long colour);
  // The low eight bits of each component count.
  void SetPixel16(unsigned short* p, int r, int g, int b);
  // Dithers: where x + y is even, also below 0, each component is raised by 4, to 255 at most.
  void SetPixel16(unsigned short* p, int x, int y, int r, int g, int b);
  void SetPixel24(unsigned char* p, unsigned long colour);
  void SetPixel24(int x, int y, unsigned long colour);
  void SetPixel32(unsigned char* p, unsigned long colour);
  void SetPixel32(int x, int y, unsigned long colour);
  // By the bitmap's own depth; nothing at 1 and 4 bits.
  void SetPixel(int x, int y, unsigned long colour);
  void SetPixel(void* p, unsigned long colour);

 private:
  friend struct OrbTestAccess;

  int CreateEmpty(int newBitCount, int newWidth, int newHeight);
  bool MakeBits();
  std::size_t ImageSize() const { return static_cast<std::size_t>(stride) * static_cast<std::size_t>(height); }
  bool HasPixel(int x, int y, int bytesPixel) const;
  unsigned char* RowAt(int y) {
    return bits.get() + (static_cast<std::ptrdiff_t>(height) - y - 1) * static_cast<std::ptrdiff_t>(stride);
  }

  BITMAPINFOHEADER header{};
  std::vector<RGBQUAD> colours;
  std::unique_ptr<unsigned char[]> bits;
  int bitCount = 0;
  int colorUse = 0;  // 0: the table holds colours; 1: indices of a palette
  int colorCount = 0;
  int stride = 0;
  int width = 0;
  int height = 0;
};
