#include <hosts/io/frame_writer.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <mutex>

#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/plain_image_internal.h>

namespace orb::host {

namespace {

bool EndsWith(std::string const& path, std::string const& ending) {
  if (path.size() < ending.size()) return false;
  return std::equal(ending.rbegin(), ending.rend(), path.rbegin(),
                    [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

struct Ending {
  char const* text;
  FileFormat format;
};

constexpr Ending kEndings[] = {
    {".fits", FileFormat::kFits},    {".fit", FileFormat::kFits},    {".fts", FileFormat::kFits},
    {".fits.gz", FileFormat::kFits}, {".fit.gz", FileFormat::kFits}, {".fts.gz", FileFormat::kFits},
    {".fits.fz", FileFormat::kFits}, {".fit.fz", FileFormat::kFits}, {".fts.fz", FileFormat::kFits},
    {".tif", FileFormat::kTiff},     {".tiff", FileFormat::kTiff},   {".png", FileFormat::kPng},
    {".bmp", FileFormat::kBmp},
};

// An image in a file without a name, in the folder of `path`.
COrbImage MakeScratch(std::string const& path, Shape const& shape) {
  std::string const parent = std::filesystem::path(path).parent_path().string();
  std::string const folder = parent.empty() ? "." : parent;
  CVmManager& manager = CVmManager::OfThread();
  struct Restore {
    CVmManager& manager;
    std::int64_t size = manager.GetBlockSize();
    char const* folder = manager.GetScratchFolder();
    ~Restore() {
      manager.SetBlockSize(size);
      manager.SetScratchFolder(folder);
    }
  } const restore{manager};
  manager.SetBlockSize(0);
  manager.SetScratchFolder(folder.c_str());
  return COrbImage(-32, shape.width, shape.height, shape.planes, 1.0, 0.0, 1, nullptr, nullptr);
}

class ScratchWriter : public FrameWriter {
 public:
  ScratchWriter(std::string const& initPath, Shape const& initShape, FitsHeader const& initHeader,
                Existing initExisting)
      : path(initPath), header(initHeader), existing(initExisting), image(MakeScratch(initPath, initShape)) {}

  void WriteRows(int plane, int top, int rows, float const* samples) override {
    std::lock_guard<std::mutex> const guard(turn);
    std::size_t const count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(image.GetWidth());
    std::memcpy(image.GetImageAdr(0, top, plane, 0, nullptr), samples, count * sizeof(float));
  }

  void Commit() override {
    for (int p = 0; p < image.GetPlanes(); ++p) {
      if (!SetLevelsFromCards(header, p, image) && p > 0) {
        image.CImage::SetLevel(p, image.GetLevelMin(0), image.GetLevelMax(0));
      }
    }
    report = WritePlainImage(path, image, header, {}, existing);
  }

 private:
  std::string path;
  FitsHeader header;
  Existing existing;
  COrbImage image;
  std::mutex turn;
};

}  // namespace

FileFormat FormatOf(std::string const& path) {
  for (Ending const& ending : kEndings) {
    if (EndsWith(path, ending.text)) return ending.format;
  }
  throw HostError(Exit::kUsage, path +
                                    ": its ending names no format that is written; give .fits, .fit, .fts (and .gz or "
                                    ".fz behind them), .tif, .tiff, .png or .bmp");
}

std::string NameOf(FileFormat format) {
  switch (format) {
    case FileFormat::kTiff:
      return "TIFF";
    case FileFormat::kPng:
      return "PNG";
    case FileFormat::kBmp:
      return "BMP";
    default:
      return "FITS";
  }
}

SampleType ChooseType(FileFormat format, WriteSettings const& settings, int orgBitsPixel, std::string const& path) {
  bool const isPng = format == FileFormat::kPng;
  bool const isBmp = format == FileFormat::kBmp;
  if (!settings.type) {
    if (isBmp || (isPng && orgBitsPixel == 8)) return SampleType::kUint8;
    return isPng ? SampleType::kUint16 : SampleType::kFloat;
  }
  SampleType const type = *settings.type;
  bool const fits = isBmp   ? type == SampleType::kUint8
                    : isPng ? type == SampleType::kUint8 || type == SampleType::kUint16
                            : BytesOf(type) <= 4;
  if (fits) return type;
  throw HostError(Exit::kUsage, path + ": " + NameOf(format) + " holds no samples of the type " + NameOf(type) +
                                    (isBmp   ? "; it holds 8 bits, unsigned"
                                     : isPng ? "; it holds 8 and 16 bits, unsigned"
                                             : "; it holds 8, 16 and 32 bits") +
                                    (isPng || isBmp ? "; write .tif or .fits for more" : ""));
}

SampleMapping MappingOf(WriteSettings const& settings, SampleType type, COrbImage const& image, int plane) {
  if (!settings.mapsLevels) return {};
  return SampleMapping{image.GetLevelMin(plane), image.GetLevelRange(plane), IsInteger(type) ? HighestOf(type) : 1.0};
}

std::string WriteReport::Text() const {
  std::string text = samples.Text(type);
  auto const add = [&text](std::string const& part) { text += (text.empty() ? "" : "; ") + part; };
  if (cards != 0) add(std::to_string(cards) + (cards == 1 ? " header card is" : " header cards are") + " not kept");
  if (levels) add("the levels are not kept");
  return text;
}

std::unique_ptr<FrameWriter> MakeFrameWriter(std::string const& path, Shape const& shape, FitsHeader const& header,
                                             Existing existing) {
  if (FormatOf(path) == FileFormat::kFits) return std::make_unique<FitsWriter>(path, shape, header, existing);
  AtomicFile(path, existing).RequireSpace(std::int64_t{sizeof(float)} * shape.width * shape.height * shape.planes);
  return std::make_unique<ScratchWriter>(path, shape, header, existing);
}

}  // namespace orb::host
