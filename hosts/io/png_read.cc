#include <png.h>

#include <csetjmp>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/io/picture_file.h>

namespace orb::host {

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// What libpng works on, and what it said last.
struct PngInput {
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::string error;

  ~PngInput() { png_destroy_read_struct(&png, &info, nullptr); }
};

void OnWarning(png_structp, png_const_charp) {}

[[noreturn]] void OnError(png_structp png, png_const_charp text) {
  static_cast<PngInput*>(png_get_error_ptr(png))->error = text;
  png_longjmp(png, 1);
}

// Everything becomes 8 or 16 bits of gray or of red, green, blue.
bool ReadHeader(PngInput& input, std::FILE* file) {
  if (setjmp(png_jmpbuf(input.png))) return false;
  png_init_io(input.png, file);
  png_set_user_limits(input.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_read_info(input.png, input.info);
  png_set_expand(input.png);
  png_set_strip_alpha(input.png);
  png_set_swap(input.png);  // 16 bits in the byte order of this machine
  png_set_interlace_handling(input.png);
  png_read_update_info(input.png, input.info);
  return true;
}

bool ReadAllRows(PngInput& input, unsigned char** rows) {
  if (setjmp(png_jmpbuf(input.png))) return false;
  png_read_image(input.png, rows);
  png_read_end(input.png, nullptr);
  return true;
}

template <typename Stored>
void ToPlanes(std::vector<unsigned char*> const& rows, COrbImage& image) {
  int const planes = image.GetPlanes();
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      auto const* stored = reinterpret_cast<Stored const*>(rows[static_cast<std::size_t>(y)]) + p;
      float* const row = image.GetImageAdr(0, y, p, 0, nullptr);
      for (std::ptrdiff_t x = 0; x < image.GetWidth(); ++x) row[x] = stored[x * planes];
    }
  }
}

[[noreturn]] void Fail(std::string const& path, PngInput const& input) {
  throw HostError(Exit::kInput, path + ": not a readable PNG file: " + input.error);
}

void ReadImage(PngInput& input, std::string const& path, COrbImage& image) {
  int const width = static_cast<int>(png_get_image_width(input.png, input.info));
  int const height = static_cast<int>(png_get_image_height(input.png, input.info));
  int const planes = png_get_channels(input.png, input.info);
  bool const isDeep = png_get_bit_depth(input.png, input.info) == 16;
  std::size_t const rowBytes = png_get_rowbytes(input.png, input.info);
  constexpr std::size_t kMostBytes = std::numeric_limits<std::ptrdiff_t>::max();
  if (rowBytes > kMostBytes / static_cast<std::size_t>(height)) throw std::bad_alloc();
  std::vector<unsigned char> bytes(rowBytes * static_cast<std::size_t>(height));
  std::vector<unsigned char*> rows;
  for (int y = 0; y < height; ++y) rows.push_back(bytes.data() + rowBytes * static_cast<std::size_t>(y));
  if (!ReadAllRows(input, rows.data())) Fail(path, input);
  COrbImage result(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  if (isDeep) {
    ToPlanes<std::uint16_t>(rows, result);
  } else {
    ToPlanes<std::uint8_t>(rows, result);
  }
  for (int p = 0; p < planes; ++p) result.CImage::SetLevel(p, 0.0, isDeep ? 65535.0 : 255.0);
  result.SetOrgFileName(path.c_str());
  result.SetOrgFileFormat("PNG");
  result.SetOrgBitsPixel(isDeep ? 16 : 8);
  result.SetOrgPlanes(planes);
  image.Swap(&result);
}

}  // namespace

void ReadPng(std::string const& path, COrbImage& image) {
  RequireReadableFile(path);
  std::unique_ptr<std::FILE, FileCloser> const file(std::fopen(path.c_str(), "rb"));
  if (!file) throw HostError(Exit::kInput, path + ": cannot be opened");
  PngInput input;
  input.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &input, OnError, OnWarning);
  if (input.png != nullptr) input.info = png_create_info_struct(input.png);
  try {
    if (input.info == nullptr) throw std::bad_alloc();
    if (!ReadHeader(input, file.get())) Fail(path, input);
    ReadImage(input, path, image);
  } catch (std::bad_alloc const&) {
    throw HostError(Exit::kResources, path + ": not enough memory to read it");
  }
}

}  // namespace orb::host
