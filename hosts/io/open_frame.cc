#include <algorithm>
#include <cctype>
#include <fstream>

#include <hosts/io/bmp_file.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/input_check.h>
#include <hosts/io/png_file.h>
#include <hosts/io/raw_file.h>
#include <hosts/io/tiff_file.h>

namespace orb::host {

namespace {

bool HasEnding(std::string const& path, std::string const& ending) {
  if (path.size() < ending.size()) return false;
  return std::equal(ending.rbegin(), ending.rend(), path.rbegin(),
                    [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

std::string StartOf(std::string const& path) {
  std::string start(4, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  return start;
}

// Classic and big, in both byte orders.
bool IsTiff(std::string const& start) {
  return start.starts_with(std::string("II\x2a\0", 4)) || start.starts_with(std::string("MM\0\x2a", 4)) ||
         start.starts_with(std::string("II\x2b\0", 4)) || start.starts_with(std::string("MM\0\x2b", 4));
}

}  // namespace

std::unique_ptr<FrameReader> OpenFrame(std::string const& path, ReadOptions const& options) {
  RequireReadableFile(path);
  if (IsRawName(path)) return OpenRaw(path, options.mosaic);
  std::string const start = StartOf(path);
  // A file with an unknown start is left to the reader of its ending, which says what is wrong with it.
  if (IsTiff(start)) return std::make_unique<TiffReader>(path);
  if (start == "\x89PNG") return std::make_unique<PngReader>(path);
  if (start.starts_with("BM") && !HasEnding(path, ".png")) return std::make_unique<BmpReader>(path);
  if (start != "SIMP" && HasEnding(path, ".png")) return std::make_unique<PngReader>(path);
  if (start != "SIMP" && (HasEnding(path, ".tif") || HasEnding(path, ".tiff"))) {
    return std::make_unique<TiffReader>(path);
  }
  if (start != "SIMP" && HasEnding(path, ".bmp")) return std::make_unique<BmpReader>(path);
  return std::make_unique<FitsReader>(path);
}

}  // namespace orb::host
