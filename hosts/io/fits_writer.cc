#include <fitsio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <mutex>
#include <vector>

#include <hosts/io/fits_card_internal.h>
#include <hosts/io/fits_failure_internal.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>

namespace orb::host {

namespace {

constexpr std::int64_t kBlockBytes = 2880;
constexpr std::int64_t kMostSamples = 1LL << 40;  // of a plane; beyond any disk, and far from overflow in byte counts
constexpr std::int64_t kChunkSamples = 64 * 1024;

void RequirePlainName(std::string const& path) {
  for (char const* ending : {".gz", ".fz", ".bz2", ".Z"}) {
    if (path.ends_with(ending)) {
      throw HostError(Exit::kOutput, path + ": FITS files are not written compressed; give a name without " + ending);
    }
  }
}

std::int64_t FileBytes(Shape const& shape, FitsHeader const& header) {
  std::int64_t const planeSamples = static_cast<std::int64_t>(shape.width) * shape.height;
  if (planeSamples > kMostSamples) return std::numeric_limits<std::int64_t>::max();
  auto const blocks = [](std::int64_t bytes) { return (bytes + kBlockBytes - 1) / kBlockBytes * kBlockBytes; };
  auto const cards = static_cast<std::int64_t>(header.cards.size()) + 8;  // those of the array
  return blocks(cards * static_cast<std::int64_t>(kCardLength)) + blocks(4 * planeSamples * shape.planes);
}

}  // namespace

struct FitsWriter::Impl {
  AtomicFile output;
  orb::host::Shape shape;
  bool isTopDown = false;
  fitsfile* file = nullptr;
  std::mutex turn;
  std::vector<float> chunk;

  Impl(std::string const& path, Existing existing) : output(path, existing) {}
  ~Impl() {
    // Not committed: closed and removed at once.
    int status = 0;
    if (file != nullptr) fits_delete_file(file, &status);
    fits_clear_errmsg();
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
  void WriteCards(FitsHeader const& header);
  void WriteChunk(int plane, int fileRow, int rows);
};

void FitsWriter::Impl::Create(FitsHeader const& header) {
  unlink(output.TemporaryPath().c_str());  // CFITSIO makes its files itself and refuses one that is there
  LONGLONG sizes[3] = {shape.width, shape.height, shape.planes};
  int status = 0;
  errno = 0;
  fits_create_diskfile(&file, output.TemporaryPath().c_str(), &status);
  fits_create_imgll(file, FLOAT_IMG, shape.planes == 1 ? 2 : 3, sizes, &status);
  // The two comments that come by themselves; a header is carried on as it is.
  fits_delete_key(file, "COMMENT", &status);
  fits_delete_key(file, "COMMENT", &status);
  Check(status);
  WriteCards(header);
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
  fits_write_pixll(file, TFLOAT, first, static_cast<LONGLONG>(rows) * shape.width, chunk.data(), &status);
  Check(status);
}

FitsWriter::FitsWriter(std::string const& path, Shape const& shape, FitsHeader const& header, Existing existing) {
  RequirePlainName(path);
  if (shape.width < 1 || shape.height < 1 || (shape.planes != 1 && shape.planes != 3)) {
    throw HostError(Exit::kFailed, path + ": an image of " + shape.Text() + " cannot be written; it has 1 or 3 planes");
  }
  impl = std::make_unique<Impl>(path, existing);
  impl->shape = shape;
  impl->isTopDown = header.Text("ROWORDER").value_or("BOTTOM-UP") == "TOP-DOWN";
  impl->output.RequireSpace(FileBytes(shape, header));
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
  int const chunkRows = static_cast<int>(std::clamp<std::int64_t>(kChunkSamples / width, 1, std::max(rows, 1)));
  impl->chunk.resize(static_cast<std::size_t>(width * chunkRows));
  int const fileTop = impl->isTopDown ? top : shape.height - top - rows;
  for (int done = 0; done < rows; done += chunkRows) {
    int const count = std::min(chunkRows, rows - done);
    for (int i = 0; i < count; ++i) {
      int const row = impl->isTopDown ? done + i : rows - 1 - (done + i);
      std::copy_n(samples + row * width, width, impl->chunk.data() + i * width);
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
  impl->output.Commit();
}

}  // namespace orb::host
