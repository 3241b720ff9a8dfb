#include <png.h>

#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/io/one_line.h>
#include <hosts/io/plain_image_internal.h>
#include <hosts/io/png_file.h>

namespace orb::host {

namespace {

// Deflate makes at most 1032 bytes of one: more cannot be in a file of its size.
constexpr double kMostUnpacked = 1040.0;

// What libpng works on, and what it said last.
struct PngInput {
  FilePtr file;
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::string error;
  bool hasAlpha = false;
  int nextRow = 0;

  ~PngInput() { png_destroy_read_struct(&png, &info, nullptr); }
};

void OnWarning(png_structp, png_const_charp) {}

[[noreturn]] void OnError(png_structp png, png_const_charp text) {
  static_cast<PngInput*>(png_get_error_ptr(png))->error = text;
  png_longjmp(png, 1);
}

bool ReadInfo(PngInput& input) {
  if (setjmp(png_jmpbuf(input.png))) return false;
  png_init_io(input.png, input.file.get());
  png_set_user_limits(input.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_read_info(input.png, input.info);
  return true;
}

// Everything becomes 8 or 16 bits of gray or of red, green, blue.
bool Start(PngInput& input) {
  if (setjmp(png_jmpbuf(input.png))) return false;
  input.hasAlpha = (png_get_color_type(input.png, input.info) & PNG_COLOR_MASK_ALPHA) != 0 ||
                   png_get_valid(input.png, input.info, PNG_INFO_tRNS) != 0;
  png_set_expand(input.png);
  png_set_strip_alpha(input.png);
  png_set_swap(input.png);  // 16 bits in the byte order of this machine
  png_set_interlace_handling(input.png);
  png_read_update_info(input.png, input.info);
  return true;
}

bool ReadRow(PngInput& input, unsigned char* row) {
  if (setjmp(png_jmpbuf(input.png))) return false;
  png_read_row(input.png, row, nullptr);
  return true;
}

bool ReadAllRows(PngInput& input, unsigned char** rows) {
  if (setjmp(png_jmpbuf(input.png))) return false;
  png_read_image(input.png, rows);
  return true;
}

// Whether the chunks of the file reach the last one; what they hold is not looked at.
bool IsWhole(std::FILE* file) {
  constexpr long kSignature = 8;
  constexpr std::uint32_t kMostInChunk = 0x7fffffff;
  if (std::fseek(file, kSignature, SEEK_SET) != 0) return false;
  for (;;) {
    unsigned char head[8];
    if (std::fread(head, sizeof head, 1, file) != 1) return false;
    std::uint32_t const length = std::uint32_t{head[0]} << 24 | std::uint32_t{head[1]} << 16 |
                                 std::uint32_t{head[2]} << 8 | std::uint32_t{head[3]};
    if (length > kMostInChunk) return false;
    unsigned char check[4];
    if (std::fseek(file, static_cast<long>(length), SEEK_CUR) != 0) return false;
    if (std::fread(check, sizeof check, 1, file) != 1) return false;
    if (std::memcmp(head + 4, "IEND", 4) == 0) return true;
  }
}

}  // namespace

struct PngReader::Impl {
  FrameFacts& facts;
  std::unique_ptr<PngInput> input;
  std::size_t rowBytes = 0;
  bool isInterlaced = false;
  std::vector<unsigned char> bytes;  // a row, or all rows of an interlaced file
  std::mutex turn;

  explicit Impl(FrameFacts& initFacts) : facts(initFacts) {}

  [[noreturn]] void Fail() const {
    throw HostError(Exit::kInput, facts.path + ": not a readable PNG file: " + OneLine(input->error));
  }

  void Open();
  void Describe();
  void RequirePlausibleSize() const;
  void RequireWhole() const;
  void ReadInterlaced();
  unsigned char const* Row(int y);
};

void PngReader::Impl::Open() {
  input = std::make_unique<PngInput>();
  input->file.reset(std::fopen(facts.path.c_str(), "rb"));
  if (!input->file) throw HostError(Exit::kInput, facts.path + ": cannot be opened");
  input->png = png_create_read_struct(PNG_LIBPNG_VER_STRING, input.get(), OnError, OnWarning);
  if (input->png != nullptr) input->info = png_create_info_struct(input->png);
  if (input->info == nullptr) throw std::bad_alloc();
  if (!ReadInfo(*input)) Fail();
  RequirePlausibleSize();
  if (!Start(*input)) Fail();
}

void PngReader::Impl::Describe() {
  png_structp const png = input->png;
  png_infop const info = input->info;
  facts.format = "PNG";
  facts.shape = orb::host::Shape{static_cast<int>(png_get_image_width(png, info)),
                                 static_cast<int>(png_get_image_height(png, info)), png_get_channels(png, info)};
  facts.type = png_get_bit_depth(png, info) == 16 ? SampleType::kUint16 : SampleType::kUint8;
  facts.typeName = NameOf(facts.type);
  facts.bitpix = BitpixOf(facts.type);
  if (input->hasAlpha) facts.notes.emplace_back("its alpha channel is left out");
  SetLevelCards(facts.header, HighestOf(facts.type));
  rowBytes = png_get_rowbytes(png, info);
  isInterlaced = png_get_interlace_type(png, info) != PNG_INTERLACE_NONE;
}

// So that a few bytes cannot ask for all the memory there is; libpng takes memory for rows when it starts.
void PngReader::Impl::RequirePlausibleSize() const {
  auto const width = png_get_image_width(input->png, input->info);
  auto const height = png_get_image_height(input->png, input->info);
  double const bits = png_get_bit_depth(input->png, input->info) * png_get_channels(input->png, input->info);
  double const fileBytes = static_cast<double>(std::filesystem::file_size(facts.path));
  if (bits / 8.0 * width * height <= kMostUnpacked * fileBytes) return;
  throw HostError(Exit::kInput, facts.path + ": not a readable PNG file: it is too short for an image of " +
                                    std::to_string(width) + " x " + std::to_string(height));
}

void PngReader::Impl::RequireWhole() const {
  FilePtr const file(std::fopen(facts.path.c_str(), "rb"));
  if (file && IsWhole(file.get())) return;
  throw HostError(Exit::kInput, facts.path + ": not a readable PNG file: it is truncated: its last chunk is missing");
}

void PngReader::Impl::ReadInterlaced() {
  bytes.resize(rowBytes * static_cast<std::size_t>(facts.shape.height));
  std::vector<unsigned char*> rows;
  for (int y = 0; y < facts.shape.height; ++y) rows.push_back(bytes.data() + rowBytes * static_cast<std::size_t>(y));
  if (!ReadAllRows(*input, rows.data())) Fail();
  input->nextRow = facts.shape.height;
}

unsigned char const* PngReader::Impl::Row(int y) {
  if (isInterlaced) {
    if (bytes.empty()) ReadInterlaced();
    return bytes.data() + rowBytes * static_cast<std::size_t>(y);
  }
  bytes.resize(rowBytes);
  if (y < input->nextRow) Open();
  while (input->nextRow <= y) {
    if (!ReadRow(*input, bytes.data())) Fail();
    ++input->nextRow;
  }
  return bytes.data();
}

PngReader::PngReader(std::string const& path) : impl(std::make_unique<Impl>(facts)) {
  facts.path = path;
  RequireReadableFile(path);
  impl->Open();
  impl->RequireWhole();
  impl->Describe();
}

PngReader::~PngReader() = default;

Converted PngReader::DoRead(int top, int rows, std::vector<float*> const& planes) {
  std::lock_guard<std::mutex> const guard(impl->turn);
  std::int64_t const width = facts.shape.width;
  auto const stride = static_cast<std::int64_t>(planes.size());
  Converted all;
  for (int i = 0; i < rows; ++i) {
    unsigned char const* const row = impl->Row(top + i);
    for (std::size_t p = 0; p < planes.size(); ++p) {
      if (planes[p] == nullptr) continue;
      all += ConvertSamples(facts.type, row + p * static_cast<std::size_t>(BytesOf(facts.type)), width, stride, {},
                            planes[p] + i * width);
    }
  }
  return all;
}

}  // namespace orb::host
