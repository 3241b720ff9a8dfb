#include <fitsio.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <mutex>
#include <vector>

#include <hosts/io/fits_card_internal.h>
#include <hosts/io/fits_failure_internal.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/io/sample_conversion.h>

namespace orb::host {

namespace {

constexpr std::int64_t kChunkBytes = 256 * 1024;  // stays in the second-level cache between reading and converting
constexpr int kMaxAxes = 9;
constexpr LONGLONG kMostSamples = 1LL << 40;  // of a plane; beyond any memory, and far from overflow in byte counts

// A first look, so that a text file is called what it is and never parsed. Compressed files begin otherwise.
void RequireFitsStart(std::string const& path) {
  std::string start(9, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  bool const isGzip = start.starts_with("\x1f\x8b");
  bool const isBzip2 = start.starts_with("BZh");
  if (start == "SIMPLE  =" || isGzip || isBzip2) return;
  throw HostError(Exit::kInput, path + ": not a FITS file: it does not begin with SIMPLE");
}

// CFITSIO drops leading blanks and expands a leading tilde.
std::string LiteralPath(std::string const& path) {
  return !path.empty() && (path[0] == ' ' || path[0] == '~') ? "./" + path : path;
}

std::vector<std::string> ReadCards(fitsfile* file, std::string const& path) {
  char* text = nullptr;
  int count = 0;
  int status = 0;
  // Of a compressed image this gives the cards that it had before.
  fits_convert_hdr2str(file, 0, nullptr, 0, &text, &count, &status);
  std::vector<std::string> cards;
  if (status == 0) {
    for (std::string const all(text); cards.size() * kCardLength < all.size();) {
      cards.push_back(PadCard(all.substr(cards.size() * kCardLength, kCardLength)));
    }
  }
  int freeStatus = 0;
  if (text != nullptr) fits_free_memory(text, &freeStatus);
  CheckFitsRead(path, status);
  return cards;
}

struct Array {
  int bitpix = 0;
  int axes = 0;
  LONGLONG sizes[kMaxAxes] = {};

  bool IsEmpty() const {
    return axes == 0 || std::any_of(sizes, sizes + std::min(axes, kMaxAxes), [](LONGLONG n) { return n == 0; });
  }
};

Array ArrayOf(fitsfile* file, std::string const& path) {
  Array array;
  int status = 0;
  fits_get_img_type(file, &array.bitpix, &status);
  fits_get_img_dim(file, &array.axes, &status);
  if (status == 0 && array.axes > kMaxAxes) {
    throw HostError(Exit::kInput,
                    path + ": its array has " + std::to_string(array.axes) + " axes; an image has 2 or 3");
  }
  fits_get_img_sizell(file, kMaxAxes, array.sizes, &status);
  CheckFitsRead(path, status);
  return array;
}

// Goes to the first unit with an array that is not empty.
Array MoveToImage(fitsfile* file, std::string const& path) {
  int units = 0;
  int status = 0;
  fits_get_num_hdus(file, &units, &status);
  CheckFitsRead(path, status);
  for (int unit = 1; unit <= units; ++unit) {
    int type = 0;
    fits_movabs_hdu(file, unit, &type, &status);
    CheckFitsRead(path, status);
    if (type != IMAGE_HDU) continue;
    Array const array = ArrayOf(file, path);
    if (!array.IsEmpty()) return array;
  }
  throw HostError(Exit::kInput, path + ": there is no image in it");
}

Shape ShapeOf(Array array, std::string const& path) {
  while (array.axes > 2 && array.sizes[array.axes - 1] == 1) --array.axes;  // axes of one entry add nothing
  auto fail = [&path](std::string const& reason) { throw HostError(Exit::kInput, path + ": " + reason); };
  if (array.axes < 2) fail("there is no image in it: its array has one axis; an image has 2 or 3");
  if (array.axes > 3) fail("its array has " + std::to_string(array.axes) + " axes; an image has 2 or 3");
  LONGLONG const planes = array.axes == 3 ? array.sizes[2] : 1;
  if (planes != 1 && planes != 3) fail("it has " + std::to_string(planes) + " planes; an image has 1 or 3");
  if (std::max(array.sizes[0], array.sizes[1]) > std::numeric_limits<int>::max() ||
      array.sizes[0] > kMostSamples / array.sizes[1]) {
    fail("the image is too large");
  }
  return Shape{static_cast<int>(array.sizes[0]), static_cast<int>(array.sizes[1]), static_cast<int>(planes)};
}

template <typename Value>
std::optional<Value> ReadKey(fitsfile* file, int type, char const* keyword, std::string const& path) {
  Value value{};
  int status = 0;
  fits_read_key(file, type, keyword, &value, nullptr, &status);
  if (status == KEY_NO_EXIST || status == VALUE_UNDEFINED) {
    fits_clear_errmsg();
    return std::nullopt;
  }
  if (status != 0) {
    fits_clear_errmsg();
    throw HostError(Exit::kInput, path + ": its card " + keyword + " is not a number");
  }
  return value;
}

Scaling ScalingOf(fitsfile* file, int bitpix, std::string const& path) {
  Scaling scaling;
  scaling.scale = ReadKey<double>(file, TDOUBLE, "BSCALE", path).value_or(1.0);
  scaling.zero = ReadKey<double>(file, TDOUBLE, "BZERO", path).value_or(0.0);
  if (scaling.scale == 0.0)
    throw HostError(Exit::kInput, path + ": its BSCALE is 0, so every sample would be the same");
  if (bitpix > 0) {
    if (auto const blank = ReadKey<LONGLONG>(file, TLONGLONG, "BLANK", path)) scaling.blank = *blank;
  }
  return scaling;
}

int MemoryTypeOf(int bitpix) {
  switch (bitpix) {
    case 8:
      return TBYTE;
    case 16:
      return TSHORT;
    case 32:
      return TINT;
    case 64:
      return TLONGLONG;
    case -32:
      return TFLOAT;
    default:
      return TDOUBLE;
  }
}

SampleType StoredType(int bitpix) {
  switch (bitpix) {
    case 8:
      return SampleType::kUint8;
    case 16:
      return SampleType::kInt16;
    case 32:
      return SampleType::kInt32;
    case 64:
      return SampleType::kInt64;
    case -32:
      return SampleType::kFloat;
    default:
      return SampleType::kDouble;
  }
}

// The zero that stands for the other kind of integer, signed or not: the middle of its range.
double OtherKindsZero(int bitpix) { return bitpix == 8 ? -128.0 : std::ldexp(1.0, bitpix - 1); }

bool HasOtherKindsZero(int bitpix, Scaling const& scaling) {
  return bitpix > 0 && scaling.scale == 1.0 && scaling.zero == OtherKindsZero(bitpix);
}

bool IsUnscaled(int bitpix, Scaling const& scaling) {
  return scaling.IsIdentity() || HasOtherKindsZero(bitpix, scaling);
}

SampleType MeantType(int bitpix, Scaling const& scaling) {
  if (!HasOtherKindsZero(bitpix, scaling)) return StoredType(bitpix);
  if (bitpix == 8) return SampleType::kInt8;
  return bitpix == 16 ? SampleType::kUint16 : bitpix == 32 ? SampleType::kUint32 : SampleType::kUint64;
}

std::string NumberName(int bitpix) {
  return bitpix > 0 ? std::to_string(bitpix) + "-bit integer" : std::to_string(-bitpix) + "-bit float";
}

}  // namespace

struct FitsReader::Impl {
  FrameFacts& facts;
  std::string const& path;
  fitsfile* file = nullptr;
  std::mutex turn;
  orb::host::Shape shape;
  int bitpix = 0;
  Scaling scaling;
  bool isTopDown = false;
  bool isCompressed = false;

  explicit Impl(FrameFacts& initFacts) : facts(initFacts), path(facts.path) {}

  ~Impl() {
    int status = 0;
    if (file != nullptr) fits_close_file(file, &status);
    if (status != 0) fits_clear_errmsg();
  }

  void Open();
  void ReadHeader();
  void RequireLastSample();
  void Describe();
  void ReadStored(int plane, int fileRow, std::int64_t count, void* stored);
  Converted ReadPlane(int plane, int top, int rows, float* samples);
};

void FitsReader::Impl::Open() {
  RequireReadableFile(path);
  RequireFitsStart(path);
  int status = 0;
  fits_open_diskfile(&file, LiteralPath(path).c_str(), READONLY, &status);
  CheckFitsRead(path, status);
}

void FitsReader::Impl::ReadHeader() {
  FitsHeader& header = facts.header;
  std::vector<std::string> const primary = ReadCards(file, path);
  Array const array = MoveToImage(file, path);
  shape = ShapeOf(array, path);
  bitpix = array.bitpix;
  int status = 0;
  isCompressed = fits_is_compressed_image(file, &status) != 0;
  int unit = 1;
  fits_get_hdu_num(file, &unit);
  if (unit == 1) {
    header.Carry(primary);
  } else {
    FitsHeader own;
    own.Carry(ReadCards(file, path));
    header.Carry(primary);
    for (std::string const& card : own.cards) {
      if (ValueOf(card)) header.Remove(KeywordOf(card));
    }
    header.cards.insert(header.cards.end(), own.cards.begin(), own.cards.end());
  }
  isTopDown = header.Text("ROWORDER").value_or("BOTTOM-UP") == "TOP-DOWN";
  scaling = ScalingOf(file, bitpix, path);
  // Samples are taken as they are stored, and scaled here: exactly, and fast.
  fits_set_bscale(file, 1.0, 0.0, &status);
  CheckFitsRead(path, status);
}

void FitsReader::Impl::ReadStored(int plane, int fileRow, std::int64_t count, void* stored) {
  LONGLONG first[kMaxAxes] = {1, fileRow + 1, plane + 1, 1, 1, 1, 1, 1, 1};
  float floatBlank = std::numeric_limits<float>::quiet_NaN();
  double doubleBlank = std::numeric_limits<double>::quiet_NaN();
  // Compressed floats hold integers inside, with a mark for "no value". Elsewhere nothing may be replaced.
  void* blank = nullptr;
  if (isCompressed && bitpix == -32) blank = &floatBlank;
  if (isCompressed && bitpix == -64) blank = &doubleBlank;
  int status = 0;
  fits_read_pixll(file, MemoryTypeOf(bitpix), first, count, blank, stored, nullptr, &status);
  CheckFitsRead(path, status);
}

void FitsReader::Impl::RequireLastSample() {
  LONGLONG first[kMaxAxes] = {shape.width, shape.height, shape.planes, 1, 1, 1, 1, 1, 1};
  std::int64_t stored = 0;
  int status = 0;
  fits_read_pixll(file, MemoryTypeOf(bitpix), first, 1, nullptr, &stored, nullptr, &status);
  CheckFitsRead(path, status);
}

// One plane, whose rows follow each other in the file.
Converted FitsReader::Impl::ReadPlane(int plane, int top, int rows, float* samples) {
  std::int64_t const width = shape.width;
  std::int64_t const rowBytes = width * (std::abs(bitpix) / 8);
  int const chunkRows = static_cast<int>(std::clamp<std::int64_t>(kChunkBytes / rowBytes, 1, std::max(rows, 1)));
  std::vector<unsigned char> stored(static_cast<std::size_t>(rowBytes * chunkRows));
  int const fileTop = isTopDown ? top : shape.height - top - rows;
  Converted all;
  for (int done = 0; done < rows; done += chunkRows) {
    int const count = std::min(chunkRows, rows - done);
    {
      std::lock_guard<std::mutex> const guard(turn);
      ReadStored(plane, fileTop + done, width * count, stored.data());
    }
    for (int i = 0; i < count; ++i) {
      int const row = isTopDown ? done + i : rows - 1 - (done + i);
      all += ConvertSamples(StoredType(bitpix), stored.data() + i * rowBytes, width, 1, scaling, samples + row * width);
    }
  }
  return all;
}

void FitsReader::Impl::Describe() {
  facts.format = "FITS";
  facts.shape = shape;
  facts.bitpix = bitpix;
  facts.type = MeantType(bitpix, scaling);
  facts.isScaled = !IsUnscaled(bitpix, scaling);
  facts.typeName = facts.isScaled ? "scaled " + NumberName(bitpix) : NameOf(facts.type);
}

FitsReader::FitsReader(std::string const& path) : impl(std::make_unique<Impl>(facts)) {
  facts.path = path;
  impl->Open();
  impl->ReadHeader();
  impl->RequireLastSample();
  impl->Describe();
}

FitsReader::~FitsReader() = default;

Converted FitsReader::DoRead(int top, int rows, std::vector<float*> const& planes) {
  Converted all;
  for (std::size_t p = 0; p < planes.size(); ++p) {
    if (planes[p] != nullptr) all += impl->ReadPlane(static_cast<int>(p), top, rows, planes[p]);
  }
  return all;
}

}  // namespace orb::host
