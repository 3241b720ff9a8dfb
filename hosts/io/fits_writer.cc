#include <fitsio.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <mutex>
#include <vector>

#include <hosts/io/fits_card_internal.h>
#include <hosts/io/fits_failure_internal.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/plain_image_internal.h>
#include <hosts/io/sample_encoding.h>

namespace orb::host {

namespace {

constexpr std::int64_t kBlockBytes = 2880;
constexpr std::int64_t kMostSamples = 1LL << 40;  // of a plane; beyond any disk, and far from overflow in byte counts
constexpr std::int64_t kChunkSamples = 64 * 1024;

enum class Packing { kNone, kGzip, kTiles };

Packing PackingOf(std::string const& path) {
  auto const endsWith = [&path](std::string const& ending) {
    if (path.size() < ending.size()) return false;
    return std::equal(ending.rbegin(), ending.rend(), path.rbegin(),
                      [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
  };
  for (std::string const ending : {".bz2", ".z"}) {
    if (endsWith(ending)) {
      throw HostError(Exit::kOutput, path +
                                         ": FITS files are not written so; give a name that ends with .fits, "
                                         ".fits.gz or .fits.fz");
    }
  }
  return endsWith(".gz") ? Packing::kGzip : endsWith(".fz") ? Packing::kTiles : Packing::kNone;
}

int ImageTypeOf(SampleType type) {
  switch (type) {
    case SampleType::kUint8:
      return BYTE_IMG;
    case SampleType::kInt8:
      return SBYTE_IMG;
    case SampleType::kUint16:
      return USHORT_IMG;
    case SampleType::kInt16:
      return SHORT_IMG;
    case SampleType::kUint32:
      return ULONG_IMG;
    case SampleType::kInt32:
      return LONG_IMG;
    default:
      return FLOAT_IMG;
  }
}

int MemoryTypeOf(SampleType type) {
  switch (type) {
    case SampleType::kUint8:
      return TBYTE;
    case SampleType::kInt8:
      return TSBYTE;
    case SampleType::kUint16:
      return TUSHORT;
    case SampleType::kInt16:
      return TSHORT;
    case SampleType::kUint32:
      return TUINT;
    case SampleType::kInt32:
      return TINT;
    default:
      return TFLOAT;
  }
}

std::int64_t FileBytes(Shape const& shape, FitsHeader const& header, SampleType type) {
  std::int64_t const planeSamples = static_cast<std::int64_t>(shape.width) * shape.height;
  if (planeSamples > kMostSamples) return std::numeric_limits<std::int64_t>::max();
  auto const blocks = [](std::int64_t bytes) { return (bytes + kBlockBytes - 1) / kBlockBytes * kBlockBytes; };
  auto const cards = static_cast<std::int64_t>(header.cards.size()) + 8;  // those of the array
  return blocks(cards * static_cast<std::int64_t>(kCardLength)) + blocks(BytesOf(type) * planeSamples * shape.planes);
}

// Writes the file `plain`, packed by gzip, to the place of `output`.
void CompressFile(std::string const& plain, AtomicFile const& output) {
  FilePtr const from(std::fopen(plain.c_str(), "rb"));
  if (!from) output.FailWrite(errno);
  gzFile const to = gzopen(output.TemporaryPath().c_str(), "wb4");
  if (to == nullptr) output.FailWrite(errno);
  std::vector<unsigned char> bytes(256 * 1024);
  bool isWritten = true;
  while (isWritten) {
    std::size_t const count = std::fread(bytes.data(), 1, bytes.size(), from.get());
    if (count == 0) break;
    errno = 0;
    isWritten = gzwrite(to, bytes.data(), static_cast<unsigned>(count)) == static_cast<int>(count);
  }
  int error = errno;
  bool const isRead = std::ferror(from.get()) == 0;
  if (gzclose(to) != Z_OK && isWritten) {
    isWritten = false;
    error = errno;
  }
  if (!isWritten || !isRead) output.FailWrite(error);
}

}  // namespace

struct FitsWriter::Impl {
  AtomicFile output;
  orb::host::Shape shape;
  bool isTopDown = false;
  SampleType type = SampleType::kFloat;
  std::vector<SampleMapping> mappings;
  SampleLosses losses;
  Packing packing = Packing::kNone;
  std::string plain;  // where CFITSIO writes
  fitsfile* file = nullptr;
  std::mutex turn;
  std::vector<unsigned char> chunk;

  Impl(std::string const& path, Existing existing) : output(path, existing), packing(PackingOf(path)) {
    plain = output.TemporaryPath() + (packing == Packing::kGzip ? ".fits" : "");
  }
  ~Impl() {
    // Not committed: closed and removed at once.
    int status = 0;
    if (file != nullptr) fits_delete_file(file, &status);
    fits_clear_errmsg();
    if (packing == Packing::kGzip) unlink(plain.c_str());
  }

  void Check(int status) {
    if (status == 0) return;
    int const error = errno;
    std::string const text = FitsStatusText(status);
    // Other values may be left over from a call that did not fail.
    if (error == ENOSPC || error == EDQUOT || error == EFBIG || error == EIO) output.FailWrite(error);
    throw HostError(Exit::kOutput, output.Path() + ": cannot be written: " + text);
  }

  void Create(FitsHeader const& header);
  void AskForTiles(int& status);
  void WriteCards(FitsHeader const& header);
  void WriteChunk(int plane, int fileRow, int rows);
};

void FitsWriter::Impl::Create(FitsHeader const& header) {
  unlink(plain.c_str());  // CFITSIO makes its files itself and refuses one that is there
  LONGLONG sizes[3] = {shape.width, shape.height, shape.planes};
  int status = 0;
  errno = 0;
  fits_create_diskfile(&file, plain.c_str(), &status);
  if (packing == Packing::kTiles) AskForTiles(status);
  fits_create_imgll(file, ImageTypeOf(type), shape.planes == 1 ? 2 : 3, sizes, &status);
  Check(status);
  // The two comments that come by themselves; a header is carried on as it is.
  while (fits_delete_key(file, "COMMENT", &status) == 0) continue;
  fits_clear_errmsg();
  WriteCards(header);
}

// Without a loss: integers by the method that FITS has for them, floats as their bytes.
void FitsWriter::Impl::AskForTiles(int& status) {
  fits_set_compression_type(file, IsInteger(type) ? RICE_1 : GZIP_2, &status);
  fits_set_quantize_level(file, 0.0f, &status);  // 0: none
}

void FitsWriter::Impl::WriteCards(FitsHeader const& header) {
  for (std::string const& card : header.cards) {
    if (FitsHeader::IsStructural(KeywordOf(card))) continue;
    int status = 0;
    errno = 0;
    fits_write_record(file, card.c_str(), &status);
    if (status == BAD_KEYCHAR) {  // a keyword that no reader need accept: kept as a comment
      status = 0;
      fits_clear_errmsg();
      fits_write_record(file, PadCard("COMMENT " + card).c_str(), &status);
    }
    Check(status);
  }
}

void FitsWriter::Impl::WriteChunk(int plane, int fileRow, int rows) {
  LONGLONG first[3] = {1, fileRow + 1, plane + 1};
  int status = 0;
  errno = 0;
  fits_write_pixll(file, MemoryTypeOf(type), first, static_cast<LONGLONG>(rows) * shape.width, chunk.data(), &status);
  Check(status);
}

FitsWriter::FitsWriter(std::string const& path, Shape const& shape, FitsHeader const& header, Existing existing,
                       SampleType type, std::vector<SampleMapping> const& mappings) {
  if (shape.width < 1 || shape.height < 1 || (shape.planes != 1 && shape.planes != 3)) {
    throw HostError(Exit::kFailed, path + ": an image of " + shape.Text() + " cannot be written; it has 1 or 3 planes");
  }
  impl = std::make_unique<Impl>(path, existing);
  impl->shape = shape;
  impl->type = type;
  impl->mappings = mappings;
  impl->mappings.resize(static_cast<std::size_t>(shape.planes));
  impl->isTopDown = header.Text("ROWORDER").value_or("BOTTOM-UP") == "TOP-DOWN";
  if (impl->packing != Packing::kTiles) impl->output.RequireSpace(FileBytes(shape, header, type));
  impl->Create(header);
}

FitsWriter::~FitsWriter() = default;

void FitsWriter::WriteRows(int plane, int top, int rows, float const* samples) {
  orb::host::Shape const& shape = impl->shape;
  if (plane < 0 || plane >= shape.planes || top < 0 || rows < 0 || rows > shape.height - top) {
    throw HostError(Exit::kFailed, impl->output.Path() + ": rows " + std::to_string(top) + " to " +
                                       std::to_string(top + rows) + " of plane " + std::to_string(plane) +
                                       " are not in it");
  }
  std::lock_guard<std::mutex> const guard(impl->turn);
  std::int64_t const width = shape.width;
  std::int64_t const rowBytes = width * BytesOf(impl->type);
  int const chunkRows = static_cast<int>(std::clamp<std::int64_t>(kChunkSamples / width, 1, std::max(rows, 1)));
  impl->chunk.resize(static_cast<std::size_t>(rowBytes * chunkRows));
  int const fileTop = impl->isTopDown ? top : shape.height - top - rows;
  for (int done = 0; done < rows; done += chunkRows) {
    int const count = std::min(chunkRows, rows - done);
    for (int i = 0; i < count; ++i) {
      int const row = impl->isTopDown ? done + i : rows - 1 - (done + i);
      impl->losses += EncodeSamples(samples + row * width, width, impl->mappings[static_cast<std::size_t>(plane)],
                                    impl->type, impl->chunk.data() + i * rowBytes, 1);
    }
    impl->WriteChunk(plane, fileTop + done, count);
  }
}

void FitsWriter::Commit() {
  int status = 0;
  errno = 0;
  fitsfile* const file = impl->file;
  impl->file = nullptr;
  fits_close_file(file, &status);
  impl->Check(status);
  if (impl->packing == Packing::kGzip) CompressFile(impl->plain, impl->output);
  impl->output.Commit();
  report.type = impl->type;
  report.samples = impl->losses;
}

}  // namespace orb::host
