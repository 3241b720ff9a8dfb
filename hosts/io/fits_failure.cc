#include <fitsio.h>

#include <hosts/io/fits_failure_internal.h>
#include <hosts/io/host_error.h>

namespace orb::host {

std::string FitsStatusText(int status) {
  char text[FLEN_STATUS] = "";
  fits_get_errstatus(status, text);
  fits_clear_errmsg();
  return std::string(text) + " (CFITSIO status " + std::to_string(status) + ")";
}

void CheckFitsRead(std::string const& path, int status) {
  if (status == 0) return;
  std::string const text = FitsStatusText(status);
  switch (status) {
    case END_OF_FILE:
    case READ_ERROR:
    case SEEK_ERROR:
      throw HostError(Exit::kInput, path + ": the file is truncated: it ends before its last block is complete");
    case NO_END:
      throw HostError(Exit::kInput, path + ": the file is truncated: its header has no END");
    case MEMORY_ALLOCATION:
      throw HostError(Exit::kResources, path + ": not enough memory to read it");
    default:
      throw HostError(Exit::kInput, path + ": not a readable FITS file: " + text);
  }
}

}  // namespace orb::host
