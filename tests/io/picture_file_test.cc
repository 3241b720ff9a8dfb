// Pictures: what is written comes back, and PNG files of every kind are read.
#include <png.h>

#include <cstring>
#include <functional>

#include <gtest/gtest.h>
#include <hosts/io/picture_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Existing;
using host::Exit;

// A bitmap whose byte at (x, y) of channel c is x * 16 + y * 3 + c * 100; with 8 bits the palette is what `entry`
// gives.
DibPtr MakeDib(int bits, int width, int height, std::function<RGBQUAD(int)> const& entry) {
  std::size_t const stride = (static_cast<std::size_t>(width * bits) + 31) / 32 * 4;
  std::size_t const palette = bits == 8 ? 1024 : 0;
  DibPtr dib(GlobalAlloc(GMEM_ZEROINIT, 40 + palette + stride * static_cast<std::size_t>(height)));
  auto* const bytes = static_cast<unsigned char*>(GlobalLock(dib.get()));
  BITMAPINFOHEADER header{40, width, height, 1, static_cast<std::uint16_t>(bits), 0, 0, 0, 0, 0, 0};
  std::memcpy(bytes, &header, 40);
  for (int i = 0; i < 256 && bits == 8; ++i) {
    RGBQUAD const quad = entry(i);
    std::memcpy(bytes + 40 + 4 * i, &quad, 4);
  }
  int const channels = bits / 8;
  for (int y = 0; y < height; ++y) {
    unsigned char* const row = bytes + 40 + palette + stride * static_cast<std::size_t>(height - 1 - y);
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < channels; ++c) {
        row[x * channels + channels - 1 - c] = static_cast<unsigned char>(x * 16 + y * 3 + c * 100);
      }
    }
  }
  GlobalUnlock(dib.get());
  return dib;
}

RGBQUAD Gray(int i) {
  auto const v = static_cast<std::uint8_t>(i);
  return RGBQUAD{v, v, v, 0};
}

RGBQUAD FalseColour(int i) {
  return RGBQUAD{static_cast<std::uint8_t>(255 - i), static_cast<std::uint8_t>(i / 2), static_cast<std::uint8_t>(i), 0};
}

int ByteAt(int x, int y, int c) { return (x * 16 + y * 3 + c * 100) & 255; }

TEST(Picture, GrayPngComesBackAsOnePlane) {
  ScratchFolder folder;
  DibPtr const dib = MakeDib(8, 5, 4, Gray);
  host::WritePicture(folder / "a.png", dib.get(), Existing::kKeep);
  COrbImage image;
  host::ReadPng(folder / "a.png", image);
  ASSERT_EQ(1, image.GetPlanes());
  ASSERT_EQ(5, image.GetWidth());
  ASSERT_EQ(4, image.GetHeight());
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 5; ++x) EXPECT_EQ(ByteAt(x, y, 0), image.GetPixelGrayRaw(x, y, 0));
  }
  EXPECT_EQ(0.0, image.GetLevelMin(0));
  EXPECT_EQ(255.0, image.GetLevelMax(0));
  EXPECT_STREQ("PNG", image.GetOrgFileFormat());
}

TEST(Picture, PalettePngComesBackInItsColours) {
  ScratchFolder folder;
  DibPtr const dib = MakeDib(8, 5, 4, FalseColour);
  host::WritePicture(folder / "a.PNG", dib.get(), Existing::kKeep);
  COrbImage image;
  host::ReadPng(folder / "a.PNG", image);
  ASSERT_EQ(3, image.GetPlanes());
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 5; ++x) {
      RGBQUAD const quad = FalseColour(ByteAt(x, y, 0));
      EXPECT_EQ(quad.rgbRed, image.GetPixelGrayRaw(x, y, 0));
      EXPECT_EQ(quad.rgbGreen, image.GetPixelGrayRaw(x, y, 1));
      EXPECT_EQ(quad.rgbBlue, image.GetPixelGrayRaw(x, y, 2));
    }
  }
}

TEST(Picture, ColourPngComesBack) {
  ScratchFolder folder;
  DibPtr const dib = MakeDib(24, 3, 5, Gray);
  host::WritePicture(folder / "a.png", dib.get(), Existing::kKeep);
  COrbImage image;
  host::ReadPng(folder / "a.png", image);
  ASSERT_EQ(3, image.GetPlanes());
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < 5; ++y) {
      for (int x = 0; x < 3; ++x) EXPECT_EQ(ByteAt(x, y, p), image.GetPixelGrayRaw(x, y, p));
    }
  }
}

TEST(Picture, BmpIsTheBlockBehindAFileHeader) {
  ScratchFolder folder;
  for (int bits : {8, 24}) {
    DibPtr const dib = MakeDib(bits, 3, 2, FalseColour);
    host::WritePicture(folder / "a.bmp", dib.get(), Existing::kReplace);
    std::string const file = ReadText(folder / "a.bmp");
    std::size_t const size = bits == 8 ? 40 + 1024 + 2 * 4 : 40 + 2 * 12;
    ASSERT_EQ(14 + size, file.size());
    EXPECT_EQ("BM", file.substr(0, 2));
    std::uint32_t fields[3];
    std::memcpy(fields, file.data() + 2, 12);
    EXPECT_EQ(14 + size, fields[0]);
    EXPECT_EQ(0u, fields[1]);
    EXPECT_EQ(bits == 8 ? 14u + 40 + 1024 : 14u + 40, fields[2]);
    EXPECT_EQ(0, std::memcmp(file.data() + 14, GlobalLock(dib.get()), size));
    COrbImage image;
    EXPECT_EQ(1, image.AttachDIB(dib.get()));
  }
}

TEST(Picture, RefusesOtherEndings) {
  ScratchFolder folder;
  DibPtr const dib = MakeDib(24, 3, 2, Gray);
  for (std::string const name : {"a.jpg", "a", "png", "a.png.txt"}) {
    EXPECT_TRUE(FailsWith(Exit::kUsage, "give one of these endings",
                          [&] { host::WritePicture(folder / name, dib.get(), Existing::kKeep); }));
  }
  EXPECT_TRUE(folder.Names().empty());
}

TEST(Picture, RefusesOtherBitmaps) {
  ScratchFolder folder;
  auto const write = [&](HDIB dib) {
    return [&folder, dib] { host::WritePicture(folder / "a.png", dib, Existing::kKeep); };
  };
  EXPECT_TRUE(FailsWith(Exit::kResources, "a.png: not enough memory", write(nullptr)));
  DibPtr const tooShort(GlobalAlloc(GMEM_ZEROINIT, 20));
  EXPECT_TRUE(FailsWith(Exit::kFailed, "a.png: the bitmap", write(tooShort.get())));
  for (auto change :
       {+[](BITMAPINFOHEADER* h) { h->biBitCount = 16; }, +[](BITMAPINFOHEADER* h) { h->biHeight = -2; },
        +[](BITMAPINFOHEADER* h) { h->biWidth = 1000; }, +[](BITMAPINFOHEADER* h) { h->biCompression = 3; },
        +[](BITMAPINFOHEADER* h) { h->biClrUsed = 5; }}) {
    DibPtr const dib = MakeDib(24, 3, 2, Gray);
    change(static_cast<BITMAPINFOHEADER*>(GlobalLock(dib.get())));
    EXPECT_TRUE(FailsWith(Exit::kFailed, "a.png: the bitmap", write(dib.get())));
  }
  EXPECT_TRUE(folder.Names().empty());
}

// A PNG file written by libpng itself: `rows` as libpng takes them.
void WriteRawPng(std::string const& path, int width, int height, int depth, int kind, std::vector<unsigned char> bytes,
                 bool isInterlaced = false) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), depth, kind,
               isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  std::vector<png_bytep> rows;
  std::size_t const rowBytes = bytes.size() / static_cast<std::size_t>(height);
  for (int y = 0; y < height; ++y) rows.push_back(bytes.data() + rowBytes * static_cast<std::size_t>(y));
  png_write_image(png, rows.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

TEST(ReadPng, SixteenBits) {
  ScratchFolder folder;
  WriteRawPng(folder / "gray.png", 2, 1, 16, PNG_COLOR_TYPE_GRAY, {0x12, 0x34, 0xff, 0xff});
  COrbImage gray;
  host::ReadPng(folder / "gray.png", gray);
  EXPECT_TRUE(SameBits({0x1234 * 1.0f, 65535.0f}, SamplesOf(gray)));
  EXPECT_EQ(65535.0, gray.GetLevelMax(0));
  WriteRawPng(folder / "colour.png", 1, 1, 16, PNG_COLOR_TYPE_RGB, {0, 1, 1, 0, 2, 2});
  COrbImage colour;
  host::ReadPng(folder / "colour.png", colour);
  EXPECT_TRUE(SameBits({1.0f, 256.0f, 514.0f}, SamplesOf(colour)));
}

TEST(ReadPng, FewBitsAreSpread) {
  ScratchFolder folder;
  WriteRawPng(folder / "a.png", 4, 1, 2, PNG_COLOR_TYPE_GRAY, {0x1b});
  COrbImage image;
  host::ReadPng(folder / "a.png", image);
  EXPECT_TRUE(SameBits({0.0f, 85.0f, 170.0f, 255.0f}, SamplesOf(image)));
}

TEST(ReadPng, AlphaIsDropped) {
  ScratchFolder folder;
  WriteRawPng(folder / "gray.png", 2, 1, 8, PNG_COLOR_TYPE_GRAY_ALPHA, {10, 0, 20, 255});
  COrbImage gray;
  host::ReadPng(folder / "gray.png", gray);
  EXPECT_TRUE(SameBits({10.0f, 20.0f}, SamplesOf(gray)));
  WriteRawPng(folder / "colour.png", 1, 1, 8, PNG_COLOR_TYPE_RGB_ALPHA, {1, 2, 3, 0});
  COrbImage colour;
  host::ReadPng(folder / "colour.png", colour);
  EXPECT_TRUE(SameBits({1.0f, 2.0f, 3.0f}, SamplesOf(colour)));
}

TEST(ReadPng, InterlacedFilesAreTheSamePicture) {
  ScratchFolder folder;
  std::vector<unsigned char> bytes(19 * 13);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i);
  WriteRawPng(folder / "a.png", 19, 13, 8, PNG_COLOR_TYPE_GRAY, bytes, true);
  COrbImage image;
  host::ReadPng(folder / "a.png", image);
  EXPECT_TRUE(SameBits(std::vector<float>(bytes.begin(), bytes.end()), SamplesOf(image)));
}

TEST(ReadPng, BadFiles) {
  ScratchFolder folder;
  COrbImage image;
  auto const read = [&](std::string const& name) { return [&, name] { host::ReadPng(folder / name, image); }; };
  EXPECT_TRUE(FailsWith(Exit::kInput, "none.png: no such file", read("none.png")));
  WriteText(folder / "text.png", "not a picture");
  EXPECT_TRUE(FailsWith(Exit::kInput, "text.png: not a readable PNG file", read("text.png")));
  WriteRawPng(folder / "cut.png", 64, 64, 8, PNG_COLOR_TYPE_GRAY, std::vector<unsigned char>(64 * 64, 7));
  std::filesystem::resize_file(folder / "cut.png", 50);
  EXPECT_TRUE(FailsWith(Exit::kInput, "cut.png: not a readable PNG file", read("cut.png")));
  EXPECT_EQ(0, image.GetWidth());
}

}  // namespace
}  // namespace orb::test
