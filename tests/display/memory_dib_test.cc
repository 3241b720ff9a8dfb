// CMemoryDIB: shape, addresses, the bytes of a pixel, and the block handed out.
#include <climits>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <tests/support/dib_view.h>
#include <tests/support/orb_test_access.h>

namespace orb::test {
namespace {

std::vector<int> RowsOf(CMemoryDIB& dib) {
  std::vector<unsigned char> const bytes = DibView(dib.CreateHDIB()).Bytes();
  return {bytes.begin() + 40, bytes.end()};
}

TEST(MemoryDib, IsEmptyAtFirst) {
  CMemoryDIB dib;
  EXPECT_EQ(dib.GetWidth(), 0);
  EXPECT_EQ(dib.GetHeight(), 0);
  EXPECT_EQ(dib.CreateHDIB(), nullptr);
  dib.SetPixel(0, 0, 1);  // nothing to write into
  dib.SetPixel32(0, 0, 1);
  dib.Empty();
}

TEST(MemoryDib, StrideIsAMultipleOfFour) {
  struct Case {
    int bitCount, width, stride;
  };
  for (Case const c : {Case{8, 1, 4}, Case{8, 4, 4}, Case{8, 5, 8}, Case{16, 3, 8}, Case{24, 1, 4}, Case{24, 5, 16},
                       Case{32, 3, 12}, Case{4, 8, 4}, Case{1, 32, 4}}) {
    CMemoryDIB dib;
    ASSERT_EQ(dib.Create(c.bitCount, c.width, 2), 1);
    EXPECT_EQ(OrbTestAccess::StrideOf(dib), c.stride) << c.bitCount << ' ' << c.width;
    EXPECT_EQ(dib.GetBitCount(), c.bitCount);
    EXPECT_EQ(dib.GetWidth(), c.width);
    EXPECT_EQ(dib.GetHeight(), 2);
  }
}

// An incomplete byte at the end of a row has no place.
TEST(MemoryDib, IncompleteBytesAreCutOffTheStride) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(1, 33, 1), 1);
  EXPECT_EQ(OrbTestAccess::StrideOf(dib), 4);
  ASSERT_EQ(dib.Create(4, 9, 1), 1);
  EXPECT_EQ(OrbTestAccess::StrideOf(dib), 4);
  ASSERT_EQ(dib.Create(1, 7, 3), 1);
  EXPECT_EQ(OrbTestAccess::StrideOf(dib), 0);
  EXPECT_EQ(RowsOf(dib).size(), 0u);
}

TEST(MemoryDib, HeaderTellsTheShape) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(8, 5, 3), 1);
  BITMAPINFOHEADER const header = DibView(dib.CreateHDIB()).Header();
  EXPECT_EQ(header.biSize, 40u);
  EXPECT_EQ(header.biWidth, 5);
  EXPECT_EQ(header.biHeight, 3);
  EXPECT_EQ(header.biPlanes, 1);
  EXPECT_EQ(header.biBitCount, 8);
  EXPECT_EQ(header.biCompression, 0u);
  EXPECT_EQ(header.biSizeImage, 24u);
  EXPECT_EQ(header.biXPelsPerMeter, 0);
  EXPECT_EQ(header.biYPelsPerMeter, 0);
  EXPECT_EQ(header.biClrUsed, 256u);
  EXPECT_EQ(header.biClrImportant, 0u);
}

TEST(MemoryDib, ColourTableByDepth) {
  struct Case {
    int bitCount, colours, use;
  };
  for (Case const c :
       {Case{1, 2, 1}, Case{4, 16, 1}, Case{8, 256, 1}, Case{16, 0, 0}, Case{24, 0, 0}, Case{32, 0, 0}}) {
    CMemoryDIB dib;
    ASSERT_EQ(dib.Create(c.bitCount, 8, 1), 1);
    EXPECT_EQ(OrbTestAccess::ColoursOf(dib).size(), static_cast<std::size_t>(c.colours));
    EXPECT_EQ(OrbTestAccess::ColorUseOf(dib), c.use);
  }
}

TEST(MemoryDib, PaletteBecomesTheColourTable) {
  std::vector<PALETTEENTRY> palette(256);
  for (int i = 0; i < 256; ++i) {
    auto const byte = static_cast<std::uint8_t>(i);
    palette[static_cast<std::size_t>(i)] = {byte, static_cast<std::uint8_t>(255 - i), 7, 99};
  }
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(4, 8, 1, palette.data()), 1);
  std::vector<RGBQUAD> const colours = OrbTestAccess::ColoursOf(dib);
  ASSERT_EQ(colours.size(), 16u);
  EXPECT_EQ(colours[15].rgbRed, 15);
  EXPECT_EQ(colours[15].rgbGreen, 240);
  EXPECT_EQ(colours[15].rgbBlue, 7);
  EXPECT_EQ(colours[15].rgbReserved, 0);
  EXPECT_EQ(OrbTestAccess::ColorUseOf(dib), 0);
  EXPECT_EQ(dib.Create(24, 8, 1, nullptr), 1);
  EXPECT_EQ(dib.Create(8, 8, 1, nullptr), 1);
  EXPECT_EQ(OrbTestAccess::ColorUseOf(dib), 0);
}

TEST(MemoryDib, ASizeOfZeroLeavesEverythingAsItWas) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(24, 2, 2), 1);
  dib.SetPixel(1, 1, RGB(1, 2, 3));
  std::vector<int> const before = RowsOf(dib);
  EXPECT_EQ(dib.Create(24, 0, 10), 0);
  EXPECT_EQ(dib.Create(8, 10, 0), 0);
  EXPECT_EQ(dib.Create(99, 0, 0, nullptr), 0);
  EXPECT_EQ(dib.GetWidth(), 2);
  EXPECT_EQ(dib.GetHeight(), 2);
  EXPECT_EQ(dib.GetBitCount(), 24);
  EXPECT_EQ(RowsOf(dib), before);
}

TEST(MemoryDib, WhatCannotBeMadeLeavesItEmpty) {
  struct Case {
    int bitCount, width, height;
  };
  for (Case const c : {Case{0, 2, 2}, Case{2, 2, 2}, Case{15, 2, 2}, Case{-8, 2, 2}, Case{64, 2, 2}, Case{8, -2, 2},
                       Case{8, 2, -2}, Case{32, INT_MAX, 1}, Case{24, INT_MIN, INT_MIN}}) {
    CMemoryDIB dib;
    ASSERT_EQ(dib.Create(8, 2, 2), 1);
    EXPECT_EQ(dib.Create(c.bitCount, c.width, c.height), 0) << c.bitCount << ' ' << c.width << ' ' << c.height;
    EXPECT_EQ(dib.CreateHDIB(), nullptr);
    dib.SetPixel(0, 0, 1);
    dib.SetPixel8(0, 0, 1);
    EXPECT_EQ(dib.Create(8, 2, 2), 1);
  }
}

TEST(MemoryDib, CreatingAnewStartsBlack) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(8, 4, 1), 1);
  dib.SetPixel(2, 0, 5);
  ASSERT_EQ(dib.Create(8, 4, 1), 1);
  EXPECT_EQ(RowsOf(dib), (std::vector<int>{0, 0, 0, 0}));
}

TEST(MemoryDib, RowsLieBottomUp) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(8, 3, 2), 1);
  dib.SetPixel(0, 0, 1);
  dib.SetPixel(2, 1, 2);
  EXPECT_EQ(RowsOf(dib), (std::vector<int>{0, 0, 2, 0, 1, 0, 0, 0}));
  EXPECT_EQ(dib.GetImageAdr8(0, 0), dib.GetImageAdr8(0, 1) + 4);
  EXPECT_EQ(*dib.GetImageAdr8(0, 0), 1);
}

TEST(MemoryDib, AddressesStepByTheNamedDepth) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(32, 4, 3), 1);
  unsigned char* const last = dib.GetImageAdr8(0, 2);
  EXPECT_EQ(dib.GetImageAdr8(3, 1) - last, 16 + 3);
  EXPECT_EQ(reinterpret_cast<unsigned char*>(dib.GetImageAdr16(3, 1)) - last, 16 + 6);
  EXPECT_EQ(dib.GetImageAdr24(3, 1) - last, 16 + 9);
  EXPECT_EQ(dib.GetImageAdr32(3, 1) - last, 16 + 12);
}

TEST(MemoryDib, EightBitsStoreTheLowByte) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(8, 2, 1), 1);
  dib.SetPixel8(0, 0, 0x123456);
  dib.SetPixel8(dib.GetImageAdr8(1, 0), 0x1ff);
  EXPECT_EQ(RowsOf(dib), (std::vector<int>{0x56, 0xff, 0, 0}));
}

TEST(MemoryDib, SixteenBitsPackFiveEach) {
  CMemoryDIB dib;
  unsigned short p = 0;
  dib.SetPixel16(&p, RGB(255, 255, 255));
  EXPECT_EQ(p, 0x7FFF);
  dib.SetPixel16(&p, RGB(255, 0, 0));
  EXPECT_EQ(p, 0x7C00);
  dib.SetPixel16(&p, RGB(0, 255, 0));
  EXPECT_EQ(p, 0x03E0);
  dib.SetPixel16(&p, RGB(0, 0, 255));
  EXPECT_EQ(p, 0x001F);
  dib.SetPixel16(&p, RGB(7, 8, 23));
  EXPECT_EQ(p, 0 << 10 | 1 << 5 | 2);
  dib.SetPixel16(&p, 7, 8, 23);
  EXPECT_EQ(p, 0 << 10 | 1 << 5 | 2);
  ASSERT_EQ(dib.Create(16, 2, 1), 1);
  dib.SetPixel16(1, 0, RGB(255, 255, 0));
  EXPECT_EQ(*dib.GetImageAdr16(1, 0), 0x7FE0);
  EXPECT_EQ(*dib.GetImageAdr16(0, 0), 0);
}

TEST(MemoryDib, DitherRaisesEvenPositions) {
  CMemoryDIB dib;
  auto const dithered = [&](int x, int y, int r, int g, int b) {
    unsigned short p = 0xffff;
    dib.SetPixel16(&p, x, y, r, g, b);
    return static_cast<int>(p);
  };
  EXPECT_EQ(dithered(2, 2, 252, 252, 252), 0x7FFF);
  EXPECT_EQ(dithered(2, 3, 252, 252, 252), 0x7FFF);
  EXPECT_EQ(dithered(2, 2, 255, 252, 251), 0x7FFF);
  EXPECT_EQ(dithered(2, 2, 4, 4, 4), 1 << 10 | 1 << 5 | 1);
  EXPECT_EQ(dithered(2, 3, 4, 4, 4), 0);
  EXPECT_EQ(dithered(2, 2, 4, 3, 12), 1 << 10 | 0 << 5 | 2);
  EXPECT_EQ(dithered(-2, 1, 4, 4, 4), 0);
  EXPECT_EQ(dithered(-3, 1, 4, 4, 4), 1 << 10 | 1 << 5 | 1);
  EXPECT_EQ(dithered(-1, -1, 4, 4, 4), 1 << 10 | 1 << 5 | 1);
  EXPECT_EQ(dithered(INT_MAX, INT_MAX, 4, 4, 4), 1 << 10 | 1 << 5 | 1);
  EXPECT_EQ(dithered(INT_MIN, INT_MAX, INT_MAX, INT_MIN, 0) & 0x8000, 0);
}

TEST(MemoryDib, TwentyFourBitsStoreBlueFirst) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(24, 2, 1), 1);
  dib.SetPixel24(0, 0, RGB(1, 2, 3) | 0xff000000u);
  dib.SetPixel24(dib.GetImageAdr24(1, 0), RGB(4, 5, 6));
  EXPECT_EQ(RowsOf(dib), (std::vector<int>{3, 2, 1, 6, 5, 4, 0, 0}));
}

TEST(MemoryDib, TheFourthByteOf32BitsStays) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(32, 2, 1), 1);
  *(dib.GetImageAdr32(0, 0) + 3) = 0xaa;
  dib.SetPixel32(0, 0, RGB(1, 2, 3) | 0xff000000u);
  dib.SetPixel32(dib.GetImageAdr32(1, 0), RGB(4, 5, 6) | 0xff000000u);
  EXPECT_EQ(RowsOf(dib), (std::vector<int>{3, 2, 1, 0xaa, 6, 5, 4, 0}));
}

TEST(MemoryDib, SetPixelFollowsTheDepth) {
  for (int const bitCount : {1, 4, 8, 16, 24, 32}) {
    std::vector<int> expected(16 * 2, 0);
    CMemoryDIB dib;
    ASSERT_EQ(dib.Create(bitCount, 128 / bitCount, 2), 1);
    dib.SetPixel(1, 1, RGB(0x81, 0x92, 0xa3));
    dib.SetPixel(dib.GetImageAdr8(0, 0), RGB(0x81, 0x92, 0xa3));
    std::vector<int> const pixel = [&]() -> std::vector<int> {
      switch (bitCount) {
        case 8:
          return {0x81};
        case 16:
          return {0x54, 0x42};  // 10000 10010 10100
        case 24:
        case 32:
          return {0xa3, 0x92, 0x81};
        default:
          return {};
      }
    }();
    std::copy(pixel.begin(), pixel.end(), expected.begin() + bitCount / 8);
    std::copy(pixel.begin(), pixel.end(), expected.begin() + 16);
    EXPECT_EQ(RowsOf(dib), expected) << bitCount;
  }
}

TEST(MemoryDib, PositionsOutsideWriteNothing) {
  for (int const bitCount : {8, 16, 24, 32}) {
    CMemoryDIB dib;
    ASSERT_EQ(dib.Create(bitCount, 3, 2), 1);
    for (int const x : {INT_MIN, -1, 0, 3, 4, INT_MAX}) {
      for (int const y : {INT_MIN, -1, 0, 2, INT_MAX}) {
        if (x == 0 && y == 0) continue;
        dib.SetPixel(x, y, 0xffffff);
        dib.SetPixel8(x, y, 0xffffff);
        dib.SetPixel16(x, y, 0xffffff);
        dib.SetPixel24(x, y, 0xffffff);
        dib.SetPixel32(x, y, 0xffffff);
      }
    }
    for (int const byte : RowsOf(dib)) EXPECT_EQ(byte, 0);
  }
  // The last pixel of a narrower bitmap has no fourth byte.
  CMemoryDIB narrow;
  ASSERT_EQ(narrow.Create(8, 4, 1), 1);
  narrow.SetPixel32(1, 0, 0xffffff);
  EXPECT_EQ(RowsOf(narrow), (std::vector<int>{0, 0, 0, 0}));
}

TEST(MemoryDib, TheBlockHasNoColourTable) {
  std::vector<PALETTEENTRY> const palette(256, PALETTEENTRY{1, 2, 3, 0});
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(8, 4, 2, const_cast<PALETTEENTRY*>(palette.data())), 1);
  dib.SetPixel(0, 1, 77);
  DibView const view(dib.CreateHDIB());
  EXPECT_EQ(view.Bytes().size(), 40u + 8u);
  EXPECT_EQ(view.Header().biClrUsed, 256u);
  EXPECT_EQ(view.Bytes()[40], 77);
}

TEST(MemoryDib, EmptyKeepsTheNumbers) {
  CMemoryDIB dib;
  ASSERT_EQ(dib.Create(24, 7, 5), 1);
  dib.Empty();
  dib.Empty();
  EXPECT_EQ(dib.CreateHDIB(), nullptr);
  EXPECT_EQ(dib.GetWidth(), 7);
  EXPECT_EQ(dib.GetHeight(), 5);
  dib.SetPixel(0, 0, 1);
}

}  // namespace
}  // namespace orb::test
