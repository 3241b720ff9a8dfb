#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <new>
#include <sstream>
#include <vector>

#include <hosts/io/fits_card_internal.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/io/one_line.h>
#include <hosts/io/tiff_description_internal.h>
#include <hosts/io/tiff_file.h>
#include <hosts/io/tiff_layout_internal.h>

namespace orb::host {

namespace {

// No more bytes than this come out of one byte of LZW, the densest of the compressions that are read.
constexpr double kMostUnpacked = 4096.0;

std::string TextOf(TIFF* tiff, std::uint32_t tag) {
  char* text = nullptr;
  return TIFFGetField(tiff, tag, &text) == 1 && text != nullptr ? OneLine(text) : std::string();
}

void ReadHeader(TIFF* tiff, FrameFacts& facts) {
  char* description = nullptr;
  bool const hasText = TIFFGetField(tiff, TIFFTAG_IMAGEDESCRIPTION, &description) == 1 && description != nullptr;
  if (hasText && CarriesCards(description)) {
    facts.header.Carry(CardsOfDescription(description));
    return;
  }
  std::string camera = TextOf(tiff, TIFFTAG_MAKE);
  std::string const model = TextOf(tiff, TIFFTAG_MODEL);
  camera += (camera.empty() || model.empty() ? "" : " ") + model;
  if (!camera.empty()) facts.header.SetText("INSTRUME", camera, "camera");
  if (facts.type == SampleType::kUint8 || facts.type == SampleType::kUint16) {
    SetLevelCards(facts.header, HighestOf(facts.type));
  }
}

}  // namespace

struct TiffReader::Impl {
  FrameFacts& facts;
  TiffHandle handle;
  TiffLayout layout;
  Scaling scaling;
  std::mutex turn;
  std::vector<unsigned char> row;  // the last one of a file in strips
  int rowIndex = -1;
  int rowGroup = 0;
  std::vector<std::vector<unsigned char>> band;  // of a file in tiles: a row of tiles, of each plane of the file
  std::vector<int> bandTop;                      // -1: nothing there
  std::vector<unsigned char> tile;

  Impl(FrameFacts& initFacts, std::string const& path) : facts(initFacts), handle(path, "rm") {}

  [[noreturn]] void Fail(std::string const& reason) const {
    throw HostError(Exit::kInput, facts.path + ": not a readable TIFF file: " + reason);
  }
  [[noreturn]] void FailWithError() const { Fail(handle.Error().empty() ? "there is no image in it" : handle.Error()); }

  void Describe();
  void RequireWhole();
  unsigned char const* FileRow(int y, int group);
  unsigned char const* RowOfStrips(int y, int group);
  unsigned char const* RowOfTiles(int y, int group);
  void ReadTile(int tileTop, int left, int group);
  Converted ReadRow(int y, int outRow, int group, std::vector<float*> const& planes);
};

void TiffReader::Impl::Describe() {
  layout = ReadTiffLayout(handle.Get(), facts);
  facts.format = "TIFF";
  facts.shape = orb::host::Shape{layout.width, layout.height, layout.planes};
  facts.type = layout.type;
  facts.typeName = NameOf(layout.type);
  facts.bitpix = BitpixOf(layout.type);
  if (layout.whiteIsZero) scaling = Scaling{-1.0, HighestOf(layout.type), std::nullopt};
  ReadHeader(handle.Get(), facts);
  RequireWhole();
  if (TIFFLastDirectory(handle.Get()) == 0) {
    facts.notes.emplace_back("only the first of several images in it is read");
  }
}

// Every piece lies within the file, and the image is not larger than what can come out of a file of this size.
void TiffReader::Impl::RequireWhole() {
  TIFF* const tiff = handle.Get();
  auto const fileBytes = static_cast<std::uint64_t>(std::filesystem::file_size(facts.path));
  double const mostBytes = static_cast<double>(fileBytes) * (layout.isCompressed ? kMostUnpacked : 1.0);
  double const groups = layout.isInterleaved ? 1 : layout.samplesPerPixel;
  double const across = layout.isTiled ? std::ceil(static_cast<double>(layout.width) / layout.tileWidth) : 1.0;
  double const down = layout.isTiled ? std::ceil(static_cast<double>(layout.height) / layout.tileHeight) : 1.0;
  double const samples = layout.isTiled ? across * layout.tileWidth * down * layout.tileHeight
                                        : static_cast<double>(layout.width) * layout.height;
  if (samples * layout.SamplesTogether() * BytesOf(layout.type) * groups > mostBytes) {
    Fail("it is too short for an image of " + facts.shape.Text());
  }
  std::uint32_t const pieces = layout.isTiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  if (pieces == 0 || pieces > fileBytes) Fail("it is too short for its " + std::to_string(pieces) + " pieces");
  for (std::uint32_t i = 0; i < pieces; ++i) {
    int error = 0;
    std::uint64_t const offset = TIFFGetStrileOffsetWithErr(tiff, i, &error);
    std::uint64_t const bytes = TIFFGetStrileByteCountWithErr(tiff, i, &error);
    if (error != 0) FailWithError();
    if (offset == 0 || bytes == 0 || offset > fileBytes || bytes > fileBytes - offset) {
      Fail("it is truncated: the file ends before its last rows");
    }
  }
}

void TiffReader::Impl::ReadTile(int tileTop, int left, int group) {
  TIFF* const tiff = handle.Get();
  std::uint32_t const index =
      TIFFComputeTile(tiff, static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(tileTop), 0,
                      static_cast<std::uint16_t>(group));
  if (TIFFReadEncodedTile(tiff, index, tile.data(), static_cast<tmsize_t>(tile.size())) !=
      static_cast<tmsize_t>(tile.size())) {
    FailWithError();
  }
  std::size_t const pixelBytes = static_cast<std::size_t>(layout.SamplesTogether() * BytesOf(layout.type));
  std::size_t const tileRow = static_cast<std::size_t>(layout.tileWidth) * pixelBytes;
  std::size_t const fileRow = static_cast<std::size_t>(layout.RowBytes());
  std::size_t const start = static_cast<std::size_t>(left) * pixelBytes;
  std::size_t const count = std::min(tileRow, fileRow - start);
  int const rows = std::min(layout.tileHeight, layout.height - tileTop);
  unsigned char* const to = band[static_cast<std::size_t>(group)].data();
  for (std::size_t i = 0; i < static_cast<std::size_t>(rows); ++i) {
    std::memcpy(to + i * fileRow + start, tile.data() + i * tileRow, count);
  }
}

unsigned char const* TiffReader::Impl::RowOfTiles(int y, int group) {
  auto const index = static_cast<std::size_t>(group);
  if (band.empty()) {
    tmsize_t const tileBytes = TIFFTileSize(handle.Get());
    std::int64_t const wanted =
        std::int64_t{layout.tileWidth} * layout.tileHeight * layout.SamplesTogether() * BytesOf(layout.type);
    if (tileBytes != wanted) Fail("its tiles have no possible size");
    tile.resize(static_cast<std::size_t>(wanted));
    band.resize(static_cast<std::size_t>(layout.isInterleaved ? 1 : layout.samplesPerPixel));
    bandTop.assign(band.size(), -1);
  }
  int const tileTop = y / layout.tileHeight * layout.tileHeight;
  if (bandTop[index] != tileTop) {
    bandTop[index] = -1;
    std::int64_t const rows = std::min(layout.tileHeight, layout.height);
    band[index].resize(static_cast<std::size_t>(layout.RowBytes() * rows));
    for (std::int64_t left = 0; left < layout.width; left += layout.tileWidth) {
      ReadTile(tileTop, static_cast<int>(left), group);
    }
    bandTop[index] = tileTop;
  }
  return band[index].data() + (y - tileTop) * layout.RowBytes();
}

unsigned char const* TiffReader::Impl::FileRow(int y, int group) {
  if (layout.isTiled) return RowOfTiles(y, group);
  return RowOfStrips(y, group);
}

// Strips are unpacked from their first row on, so rows are read on to the one that is wanted.
unsigned char const* TiffReader::Impl::RowOfStrips(int y, int group) {
  if (row.empty()) {
    if (TIFFScanlineSize(handle.Get()) != layout.RowBytes()) Fail("its rows have no possible size");
    row.resize(static_cast<std::size_t>(layout.RowBytes()));
  }
  int const start = y / layout.rowsPerStrip * layout.rowsPerStrip;
  bool const goesOn = group == rowGroup && rowIndex >= start && rowIndex <= y;
  int next = goesOn ? rowIndex + 1 : start;
  if (!layout.isCompressed && next < y) next = y;
  for (; next <= y; ++next) {
    rowIndex = -1;
    if (TIFFReadScanline(handle.Get(), row.data(), static_cast<std::uint32_t>(next),
                         static_cast<std::uint16_t>(group)) != 1) {
      FailWithError();
    }
    rowIndex = next;
    rowGroup = group;
  }
  return row.data();
}

Converted TiffReader::Impl::ReadRow(int y, int outRow, int group, std::vector<float*> const& planes) {
  unsigned char const* const stored = FileRow(y, group);
  int const together = layout.isInterleaved ? layout.planes : 1;
  Converted all;
  for (int i = 0; i < together; ++i) {
    float* const buffer = planes[static_cast<std::size_t>(group + i)];
    if (buffer == nullptr) continue;
    float* const samples = buffer + std::int64_t{outRow} * layout.width;
    all += ConvertSamples(layout.type, stored + i * BytesOf(layout.type), layout.width, layout.SamplesTogether(),
                          scaling, samples);
    if (layout.flipsColumns) std::reverse(samples, samples + layout.width);
  }
  return all;
}

TiffReader::TiffReader(std::string const& path) {
  facts.path = path;
  RequireReadableFile(path);
  impl = std::make_unique<Impl>(facts, path);
  if (!impl->handle.IsOpen() || !impl->handle.Error().empty()) impl->FailWithError();
  impl->Describe();
}

TiffReader::~TiffReader() = default;

Converted TiffReader::DoRead(int top, int rows, std::vector<float*> const& planes) {
  std::lock_guard<std::mutex> const guard(impl->turn);
  TiffLayout const& layout = impl->layout;
  // Rows in the order of the file: libtiff unpacks a strip again to go back in it.
  int const fileTop = layout.flipsRows ? layout.height - top - rows : top;
  Converted all;
  for (int group = 0; group < (layout.isInterleaved ? 1 : layout.planes); ++group) {
    if (!layout.isInterleaved && planes[static_cast<std::size_t>(group)] == nullptr) continue;
    for (int i = 0; i < rows; ++i) {
      all += impl->ReadRow(fileTop + i, layout.flipsRows ? rows - 1 - i : i, group, planes);
    }
  }
  return all;
}

}  // namespace orb::host
