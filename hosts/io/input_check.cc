#include <hosts/io/input_check.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <hosts/io/host_error.h>

namespace orb::host {

void RequireReadableFile(std::string const& path) {
  auto fail = [&path](std::string const& reason) { throw HostError(Exit::kInput, path + ": " + reason); };
  if (path.empty()) throw HostError(Exit::kInput, "an empty name was given where a file is needed");
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) fail("no such file");
    fail(std::string("cannot be read: ") + std::strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) fail("is a directory, not a file");
  if (!S_ISREG(status.st_mode)) fail("is not a regular file");
  if (status.st_size == 0) fail("the file is empty");
  if (faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0)
    fail(std::string("cannot be read: ") + std::strerror(errno));
}

}  // namespace orb::host
