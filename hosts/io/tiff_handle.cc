#include <cstdarg>
#include <cstdio>

#include <hosts/io/one_line.h>
#include <hosts/io/tiff_internal.h>

namespace orb::host {

namespace {
constexpr tmsize_t kMostAtOnce = tmsize_t{1} << 31;  // bytes of one piece of memory that libtiff takes for itself
}

TiffHandle::TiffHandle(std::string const& path, char const* mode) {
  std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> const options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  if (!options) return;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMostAtOnce);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnWarning, this);
  tiff = TIFFOpenExt(path.c_str(), mode, options.get());
}

void TiffHandle::Close() {
  if (tiff != nullptr) TIFFClose(tiff);
  tiff = nullptr;
}

int TiffHandle::OnError(TIFF*, void* self, char const*, char const* format, va_list arguments) {
  char text[400] = "";
  std::vsnprintf(text, sizeof text, format, arguments);
  std::string& error = static_cast<TiffHandle*>(self)->error;
  if (error.empty()) error = OneLine(text);
  return 1;  // handled: nothing goes to standard error
}

// Unknown tags and the like do no harm. What lies beyond the end of the file is an error, though libtiff goes on.
int TiffHandle::OnWarning(TIFF* tiff, void* self, char const* module, char const* format, va_list arguments) {
  return std::string(format).starts_with("IO error") ? OnError(tiff, self, module, format, arguments) : 1;
}

}  // namespace orb::host
