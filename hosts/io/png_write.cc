#include <png.h>

#include <bit>
#include <cerrno>
#include <csetjmp>

#include <hosts/io/plain_image_internal.h>
#include <hosts/io/png_internal.h>

namespace orb::host {

namespace {

constexpr int kCompression = 3;  // of zlib: a third of its usual level's time, for files a fifth larger

void OnWarning(png_structp, png_const_charp) {}

[[noreturn]] void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }

void WriteHeader(png_structp png, png_infop info, DibView const& dib) {
  bool const isGray = dib.HasGrayRamp();
  int const kind = isGray ? PNG_COLOR_TYPE_GRAY : dib.HasPalette() ? PNG_COLOR_TYPE_PALETTE : PNG_COLOR_TYPE_RGB;
  png_set_IHDR(png, info, static_cast<png_uint_32>(dib.Width()), static_cast<png_uint_32>(dib.Height()), 8, kind,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (kind == PNG_COLOR_TYPE_PALETTE) {
    png_color colors[256];
    for (int i = 0; i < 256; ++i) {
      RGBQUAD const& entry = dib.Palette()[i];
      colors[i] = png_color{entry.rgbRed, entry.rgbGreen, entry.rgbBlue};
    }
    png_set_PLTE(png, info, colors, 256);
  }
  png_write_info(png, info);
  if (kind == PNG_COLOR_TYPE_RGB) png_set_bgr(png);
}

bool WriteAll(png_structp png, png_infop info, std::FILE* file, DibView const& dib) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_init_io(png, file);
  png_set_compression_level(png, kCompression);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  WriteHeader(png, info, dib);
  for (int y = 0; y < dib.Height(); ++y) png_write_row(png, dib.Row(y));
  png_write_end(png, info);
  return true;
}

// A picture row by row; each step that may jump is a function of its own.
bool Begin(png_structp png, png_infop info, std::FILE* file, EncodedRows const& rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_init_io(png, file);
  png_set_compression_level(png, kCompression);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_IHDR(png, info, static_cast<png_uint_32>(rows.Width()), static_cast<png_uint_32>(rows.Height()),
               8 * BytesOf(rows.Type()), rows.Planes() == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  if (std::endian::native == std::endian::little) png_set_swap(png);
  return true;
}

bool WriteOneRow(png_structp png, unsigned char const* row) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_write_row(png, row);
  return true;
}

bool End(png_structp png, png_infop info) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_write_end(png, info);
  return true;
}

}  // namespace

bool WritePng(std::FILE* file, DibView const& dib) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  bool const isWritten = info != nullptr && WriteAll(png, info, file, dib);
  png_destroy_write_struct(&png, &info);
  return isWritten;
}

void WritePngRows(AtomicFile& output, EncodedRows& rows) {
  FilePtr file(std::fopen(output.TemporaryPath().c_str(), "wb"));
  if (!file) output.FailWrite(errno);
  errno = 0;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  bool isWritten = info != nullptr && Begin(png, info, file.get(), rows);
  for (int y = 0; isWritten && y < rows.Height(); ++y) isWritten = WriteOneRow(png, rows.PixelRow(y));
  isWritten = isWritten && End(png, info);
  int const error = errno;
  png_destroy_write_struct(&png, &info);
  if (!isWritten) output.FailWrite(error);
  if (std::fclose(file.release()) != 0) output.FailWrite(errno);
}

}  // namespace orb::host
