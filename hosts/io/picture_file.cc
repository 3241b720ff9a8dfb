#include <hosts/io/picture_file.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>

#include <hosts/io/dib_view_internal.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/plain_image_internal.h>
#include <hosts/io/png_file.h>
#include <hosts/io/png_internal.h>

namespace orb::host {

namespace {

bool HasEnding(std::string const& path, std::string const& ending) {
  if (path.size() < ending.size()) return false;
  return std::equal(ending.rbegin(), ending.rend(), path.rbegin(),
                    [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

void StoreLittleEndian(std::uint32_t value, unsigned char* bytes) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

// The 14 bytes that a file has before the block: "BM", its size, two zeros, the place of the rows.
bool WriteBmp(std::FILE* file, DibView const& dib, std::string const& path) {
  constexpr std::size_t kFileHeader = 14;
  std::size_t const size = kFileHeader + dib.Size();
  if (size > std::numeric_limits<std::uint32_t>::max()) {
    throw HostError(Exit::kOutput, path + ": too large for BMP; write a .png");
  }
  unsigned char header[kFileHeader] = {'B', 'M'};
  StoreLittleEndian(static_cast<std::uint32_t>(size), header + 2);
  StoreLittleEndian(static_cast<std::uint32_t>(kFileHeader + dib.RowsOffset()), header + 10);
  return std::fwrite(header, kFileHeader, 1, file) == 1 && std::fwrite(dib.Bytes(), dib.Size(), 1, file) == 1;
}

}  // namespace

void RequirePictureName(std::string const& path) {
  if (HasEnding(path, ".png") || HasEnding(path, ".bmp")) return;
  throw HostError(Exit::kUsage, path + ": pictures are written as .png or .bmp; give one of these endings");
}

void WriteBitmap(AtomicFile& output, HDIB dib) {
  DibView const view(dib, output.Path());
  FilePtr file(std::fopen(output.TemporaryPath().c_str(), "wb"));
  if (!file) output.FailWrite(errno);
  errno = 0;
  bool isWritten =
      HasEnding(output.Path(), ".png") ? WritePng(file.get(), view) : WriteBmp(file.get(), view, output.Path());
  isWritten = isWritten && std::fflush(file.get()) == 0;
  if (!isWritten) output.FailWrite(errno);
  if (std::fclose(file.release()) != 0) output.FailWrite(errno);
}

void WritePicture(std::string const& path, HDIB dib, Existing existing) {
  RequirePictureName(path);
  { DibView const probe(dib, path); }  // before a file appears
  AtomicFile output(path, existing);
  WriteBitmap(output, dib);
  output.Commit();
}

void ReadPng(std::string const& path, COrbImage& image) {
  try {
    PngReader reader(path);
    Frame frame;
    ReadFrameFile(reader, frame);
    image.Swap(&frame.image);
  } catch (std::bad_alloc const&) {
    throw HostError(Exit::kResources, path + ": not enough memory to read it");
  }
}

}  // namespace orb::host
