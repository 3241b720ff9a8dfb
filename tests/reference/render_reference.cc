#include <tests/reference/render_reference.h>

#include <tests/reference/color_quantizer_reference.h>

#include <cstddef>

namespace orb::test::reference {

namespace {

void Put(std::vector<unsigned char>& block, std::size_t offset, unsigned long value, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    block[offset + static_cast<std::size_t>(i)] = static_cast<unsigned char>(value >> (8 * i) & 0xff);
  }
}

unsigned char ByteAt(COrbImage& image, int x, int y, int plane) {
  return ByteOf(image.GetPixelGrayRaw(x, y, plane), image.GetLevelMin(plane), image.GetLevelMax(plane),
                image.GetLevelRange(plane));
}

}  // namespace

std::vector<unsigned char> GetDib(COrbImage& image, int bitCount) {
  if (bitCount != 8 && bitCount != 24) return {};
  std::size_t const width = static_cast<std::size_t>(image.GetWidth());
  std::size_t const height = static_cast<std::size_t>(image.GetHeight());
  std::size_t stride = static_cast<std::size_t>(bitCount) / 8 * width;
  while (stride % 4 != 0) ++stride;
  std::size_t const rows = bitCount == 8 ? 1064 : 40;
  std::vector<unsigned char> block(rows + stride * height, 0);
  Put(block, 0, 40, 4);
  Put(block, 4, width, 4);
  Put(block, 8, height, 4);
  Put(block, 12, 1, 2);
  Put(block, 14, static_cast<unsigned long>(bitCount), 2);
  Put(block, 20, stride * height, 4);

  bool const mono = image.GetPlanes() == 1;
  if (bitCount == 8 && !mono) {
    QuantizeColors(image, block.data() + rows, stride, block.data() + 40);
    return block;
  }
  if (bitCount == 8) {
    for (std::size_t i = 0; i < 256; ++i) {
      for (std::size_t c = 0; c < 3; ++c) block[40 + 4 * i + c] = static_cast<unsigned char>(i);
    }
  }
  for (std::size_t y = 0; y < height; ++y) {
    unsigned char* const row = block.data() + rows + (height - 1 - y) * stride;
    for (std::size_t x = 0; x < width; ++x) {
      int const column = static_cast<int>(x);
      int const line = static_cast<int>(y);
      if (bitCount == 8) {
        row[x] = ByteAt(image, column, line, 0);
        continue;
      }
      row[3 * x] = ByteAt(image, column, line, mono ? 0 : 2);
      row[3 * x + 1] = ByteAt(image, column, line, mono ? 0 : 1);
      row[3 * x + 2] = ByteAt(image, column, line, 0);
    }
  }
  return block;
}

}  // namespace orb::test::reference
