#include <hosts/io/atomic_file.h>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <random>

#include <hosts/io/host_error.h>

namespace orb::host {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void Fail(std::string const& path, std::string const& reason) {
  throw HostError(Exit::kOutput, path + ": " + reason);
}

[[noreturn]] void FailExists(std::string const& path) {
  Fail(path, "exists already; use --force to replace it, or another name");
}

std::string FolderOf(std::string const& path) {
  fs::path const folder = fs::path(path).parent_path();
  return folder.empty() ? std::string(".") : folder.string();
}

// Where the path leads if it is a link, so that the link stays and its file is replaced.
std::string FollowLinks(std::string const& path) {
  std::error_code error;
  if (!fs::is_symlink(path, error)) return path;
  fs::path const followed = fs::weakly_canonical(path, error);
  return error ? path : followed.string();
}

void RequireFolder(std::string const& path, std::string const& folder) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) Fail(path, "there is no folder " + folder + "; make it first");
  if (!S_ISDIR(status.st_mode)) Fail(path, folder + " is not a folder");
}

void RequireReplaceable(std::string const& path, std::string const& target, Existing existing) {
  struct stat status {};
  if (stat(target.c_str(), &status) != 0) return;
  if (S_ISDIR(status.st_mode)) Fail(path, "is a directory; give the name of a file");
  if (!S_ISREG(status.st_mode)) Fail(path, "is not a regular file");
  if (existing == Existing::kKeep) FailExists(path);
}

std::string RandomName() {
  static constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
  std::random_device random;
  std::string name = ".orbimg-";
  for (int i = 0; i < 12; ++i) name += kDigits[random() % 36];
  return name + ".part";
}

void FlushToDisk(std::string const& name, int flags) {
  int const file = open(name.c_str(), flags | O_CLOEXEC);
  if (file < 0) throw std::system_error(errno, std::generic_category());
  int const result = fsync(file);
  int const error = errno;
  close(file);
  // Some file systems cannot flush a folder, and say so by EINVAL.
  if (result != 0 && error != EINVAL) throw std::system_error(error, std::generic_category());
}

}  // namespace

AtomicFile::AtomicFile(std::string const& initPath, Existing initExisting)
    : path(initPath), target(FollowLinks(initPath)), existing(initExisting) {
  if (path.empty()) throw HostError(Exit::kOutput, "an empty name was given for the output file");
  if (path.back() == '/') Fail(path, "is a folder's name; give the name of a file");
  std::string const folder = FolderOf(target);
  RequireFolder(path, folder);
  RequireReplaceable(path, target, existing);
  for (;;) {
    temporary = folder + "/" + RandomName();
    int const file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) {
      close(file);
      return;
    }
    if (errno == ENOSPC || errno == EDQUOT) FailWrite(errno);
    if (errno != EEXIST) Fail(path, "cannot write in the folder " + folder + ": " + std::strerror(errno));
  }
}

AtomicFile::~AtomicFile() {
  if (!committed) unlink(temporary.c_str());
}

void AtomicFile::RequireSpace(std::int64_t bytes) const {
  struct statvfs disk {};
  if (statvfs(FolderOf(target).c_str(), &disk) != 0) return;
  double const free = static_cast<double>(disk.f_bavail) * static_cast<double>(disk.f_frsize);
  if (static_cast<double>(bytes) <= free) return;
  auto const megabytes = [](double count) { return std::to_string(static_cast<std::int64_t>(count / 1e6 + 0.5)); };
  throw HostError(Exit::kResources, path + ": needs " + megabytes(static_cast<double>(bytes)) +
                                        " MB, but the disk has " + megabytes(free) + " MB left");
}

void AtomicFile::FailWrite(int error) const {
  if (error == ENOSPC || error == EDQUOT)
    throw HostError(Exit::kResources, path + ": the disk is full; make room on it");
  Fail(path, std::string("cannot be written: ") + (error != 0 ? std::strerror(error) : "the system gave no reason"));
}

void AtomicFile::Commit() {
  struct stat old {};
  if (stat(target.c_str(), &old) == 0) chmod(temporary.c_str(), old.st_mode & 07777);
  try {
    FlushToDisk(temporary, O_RDWR);
  } catch (std::system_error const& error) {
    FailWrite(error.code().value());
  }
  if (existing == Existing::kKeep) {
    // A hard link fails where the name has come into use, which a rename would overwrite.
    if (link(temporary.c_str(), target.c_str()) == 0) {
      unlink(temporary.c_str());
    } else if (errno == EEXIST) {
      FailExists(path);
    } else if (rename(temporary.c_str(), target.c_str()) != 0) {  // a file system without links
      FailWrite(errno);
    }
  } else if (rename(temporary.c_str(), target.c_str()) != 0) {
    FailWrite(errno);
  }
  committed = true;
  try {
    FlushToDisk(FolderOf(target), O_RDONLY | O_DIRECTORY);
  } catch (std::system_error const&) {
    // The file is whole and in its place; only its name may be lost in a crash right now.
  }
}

}  // namespace orb::host
