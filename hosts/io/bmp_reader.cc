#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <hosts/io/bmp_file.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/io/plain_image_internal.h>

namespace orb::host {

namespace {

constexpr std::size_t kFileHeader = 14;  // "BM", sizes, the place of the rows; the block follows

// A file may leave room between palette and rows, which a block has not: the rows are moved up.
void CloseGap(HDIB block, unsigned char const* fileHeader) {
  std::size_t const size = GlobalSize(block);
  BITMAPINFOHEADER header{};
  auto* const bytes = static_cast<unsigned char*>(GlobalLock(block));
  if (size >= sizeof header) std::memcpy(&header, bytes, sizeof header);
  std::uint32_t fileOffset = 0;
  for (int i = 0; i < 4; ++i) fileOffset |= std::uint32_t{fileHeader[10 + i]} << (8 * i);
  bool const hasMasks = header.biSize == sizeof header && header.biCompression == BI_BITFIELDS;
  std::size_t const byDepth = header.biBitCount <= 8 ? std::size_t{1} << header.biBitCount : 0;
  std::size_t const entries = header.biClrUsed != 0 ? header.biClrUsed : byDepth;
  std::size_t const rows = header.biSize + (hasMasks ? 12 : 0) + entries * sizeof(RGBQUAD);
  std::size_t const stored = fileOffset > kFileHeader ? fileOffset - kFileHeader : 0;
  if (stored > rows && stored < size) std::memmove(bytes + rows, bytes + stored, size - stored);
  GlobalUnlock(block);
}

DibPtr ReadBlock(std::string const& path) {
  RequireReadableFile(path);
  std::size_t const size = std::filesystem::file_size(path);
  FilePtr const file(std::fopen(path.c_str(), "rb"));
  if (!file || size <= kFileHeader) throw HostError(Exit::kInput, path + ": not a readable BMP file: it is too short");
  unsigned char header[kFileHeader];
  DibPtr block(GlobalAlloc(GMEM_MOVEABLE, size - kFileHeader));
  if (!block) throw HostError(Exit::kResources, path + ": not enough memory to read it");
  void* const bytes = GlobalLock(block.get());
  bool const isRead = std::fread(header, sizeof header, 1, file.get()) == 1 &&
                      std::fread(bytes, size - kFileHeader, 1, file.get()) == 1;
  GlobalUnlock(block.get());
  if (!isRead) throw HostError(Exit::kInput, path + ": cannot be read");
  CloseGap(block.get(), header);
  return block;
}

}  // namespace

BmpReader::BmpReader(std::string const& path) {
  facts.path = path;
  DibPtr const block = ReadBlock(path);
  if (image.AttachDIB(block.get()) == 0) {
    throw HostError(Exit::kInput, path + ": not a readable BMP file: it is cut off, compressed or of an odd kind");
  }
  facts.format = "BMP";
  facts.shape = orb::host::Shape{image.GetWidth(), image.GetHeight(), image.GetPlanes()};
  facts.type = SampleType::kUint8;
  facts.typeName = NameOf(facts.type);
  facts.bitpix = BitpixOf(facts.type);
  SetLevelCards(facts.header, HighestOf(facts.type));
}

Converted BmpReader::DoRead(int top, int rows, std::vector<float*> const& planes) {
  for (std::size_t p = 0; p < planes.size(); ++p) {
    if (planes[p] == nullptr) continue;
    std::copy_n(image.GetImageAdr(0, top, static_cast<int>(p), 1, nullptr),
                static_cast<std::int64_t>(rows) * facts.shape.width, planes[p]);
  }
  return {};
}

}  // namespace orb::host
