// TIFF by libtiff, with errors of one file kept with it.
#pragma once

#include <tiffio.h>

#include <memory>
#include <string>

namespace orb::host {

class TiffHandle {
 public:
  // "r", "w" or "w8" as libtiff has them. Not open if libtiff refuses, with Error() telling why.
  TiffHandle(std::string const& path, char const* mode);
  TiffHandle(TiffHandle const&) = delete;
  TiffHandle& operator=(TiffHandle const&) = delete;
  ~TiffHandle() { Close(); }

  bool IsOpen() const { return tiff != nullptr; }
  TIFF* Get() const { return tiff; }
  // Printable, without line breaks; empty where nothing went wrong.
  std::string const& Error() const { return error; }
  void Close();

 private:
  static int OnError(TIFF* tiff, void* self, char const* module, char const* format, va_list arguments);
  static int OnWarning(TIFF* tiff, void* self, char const* module, char const* format, va_list arguments);

  TIFF* tiff = nullptr;
  std::string error;  // the first
};

}  // namespace orb::host
