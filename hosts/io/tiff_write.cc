#include <algorithm>
#include <cerrno>
#include <cstdint>

#include <hosts/io/host_error.h>
#include <hosts/io/plain_image_internal.h>
#include <hosts/io/tiff_description_internal.h>
#include <hosts/io/tiff_internal.h>

namespace orb::host {

namespace {

constexpr std::int64_t kStripBytes = 256 * 1024;
constexpr std::int64_t kMostForClassic = 0xf0000000;  // of samples; offsets have 32 bits

class TiffOutput {
 public:
  TiffOutput(AtomicFile& initOutput, EncodedRows& initRows, WriteSettings const& initSettings)
      : output(initOutput),
        rows(initRows),
        settings(initSettings),
        isPlanar(settings.planar && rows.Planes() > 1),
        handle(output.TemporaryPath(), NeedsBigTiff() ? "w8" : "w") {
    if (!handle.IsOpen()) Fail();
  }

  void Write(FitsHeader const& header) {
    SetShape();
    SetCompression();
    Set(TIFFTAG_SOFTWARE, "orbimg");
    Set(TIFFTAG_IMAGEDESCRIPTION, DescriptionOf(header).c_str());
    WriteRows();
    if (TIFFFlush(handle.Get()) != 1) Fail();
    handle.Close();
    if (!handle.Error().empty()) Fail();
  }

 private:
  bool NeedsBigTiff() const {
    std::int64_t const bytes = std::int64_t{rows.Width()} * rows.Height() * rows.Planes() * BytesOf(rows.Type());
    return settings.bigTiff || bytes > kMostForClassic;
  }

  [[noreturn]] void Fail() const {
    int const error = errno;
    if (error == ENOSPC || error == EDQUOT || error == EFBIG || error == EIO) output.FailWrite(error);
    throw HostError(Exit::kOutput, output.Path() + ": cannot be written: " + handle.Error());
  }

  template <typename Value>
  void Set(std::uint32_t tag, Value value) {
    if (TIFFSetField(handle.Get(), tag, value) != 1) Fail();
  }

  void SetShape() {
    SampleType const type = rows.Type();
    Set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(rows.Width()));
    Set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(rows.Height()));
    Set(TIFFTAG_SAMPLESPERPIXEL, rows.Planes());
    Set(TIFFTAG_BITSPERSAMPLE, 8 * BytesOf(type));
    Set(TIFFTAG_SAMPLEFORMAT, !IsInteger(type) ? SAMPLEFORMAT_IEEEFP
                              : IsSigned(type) ? SAMPLEFORMAT_INT
                                               : SAMPLEFORMAT_UINT);
    Set(TIFFTAG_PHOTOMETRIC, rows.Planes() == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    Set(TIFFTAG_PLANARCONFIG, isPlanar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    Set(TIFFTAG_ORIENTATION, static_cast<int>(ORIENTATION_TOPLEFT));
    std::int64_t const rowBytes = std::int64_t{rows.Width()} * (isPlanar ? 1 : rows.Planes()) * BytesOf(type);
    Set(TIFFTAG_ROWSPERSTRIP,
        static_cast<std::uint32_t>(std::clamp<std::int64_t>(kStripBytes / rowBytes, 1, rows.Height())));
  }

  void SetCompression() {
    if (settings.compression == Compression::kNone) return;
    Set(TIFFTAG_COMPRESSION, settings.compression == Compression::kLzw ? COMPRESSION_LZW : COMPRESSION_ADOBE_DEFLATE);
    Set(TIFFTAG_PREDICTOR, IsInteger(rows.Type()) ? PREDICTOR_HORIZONTAL : PREDICTOR_FLOATINGPOINT);
  }

  void WriteRow(unsigned char* row, int y, int plane) {
    errno = 0;
    if (TIFFWriteScanline(handle.Get(), row, static_cast<std::uint32_t>(y), static_cast<std::uint16_t>(plane)) != 1) {
      Fail();
    }
  }

  void WriteRows() {
    if (!isPlanar) {
      for (int y = 0; y < rows.Height(); ++y) WriteRow(rows.PixelRow(y), y, 0);
      return;
    }
    for (int p = 0; p < rows.Planes(); ++p) {
      for (int y = 0; y < rows.Height(); ++y) WriteRow(rows.PlaneRow(y, p), y, p);
    }
  }

  AtomicFile& output;
  EncodedRows& rows;
  WriteSettings const& settings;
  bool isPlanar;
  TiffHandle handle;
};

}  // namespace

void WriteTiffRows(AtomicFile& output, EncodedRows& rows, FitsHeader const& header, WriteSettings const& settings) {
  TiffOutput(output, rows, settings).Write(header);
}

}  // namespace orb::host
