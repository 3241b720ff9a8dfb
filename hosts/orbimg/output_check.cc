#include <hosts/orbimg/output_check.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/file_list.h>

namespace orb::host {
namespace fs = std::filesystem;

void CheckOutputFile(std::string const& path, Existing existing) { AtomicFile const probe(path, existing); }

void CheckPictureFile(std::string const& path, Existing existing) {
  std::string const ending = EndingOf(path);
  if (ending != ".png" && ending != ".bmp") {
    throw HostError(Exit::kUsage,
                    fmt::format("{}: pictures are written as PNG or BMP; end the name with .png or .bmp", path));
  }
  CheckOutputFile(path, existing);
}

void MakeOutputFolder(std::string const& folder) {
  std::error_code error;
  if (fs::is_directory(folder, error)) return;
  if (fs::exists(folder, error)) {
    throw HostError(Exit::kOutput, fmt::format("{}: is a file; give a folder to write into", folder));
  }
  fs::path const parent = fs::absolute(fs::path(folder) / "").parent_path().parent_path();
  if (!fs::is_directory(parent, error)) {
    throw HostError(Exit::kOutput, fmt::format("{}: there is no folder {}; make it first", folder, parent.string()));
  }
  if (!fs::create_directory(folder, error)) {
    throw HostError(Exit::kOutput, fmt::format("{}: cannot be made ({}); give a folder that can be written to", folder,
                                               error.message()));
  }
}

void CheckFreeSpace(std::string const& folder, std::int64_t bytes) {
  std::error_code error;
  fs::space_info const space = fs::space(folder, error);
  if (error || space.available >= static_cast<std::uintmax_t>(bytes)) return;
  throw HostError(Exit::kResources,
                  fmt::format("{}: the disk has {} left, {} are needed; make room or write elsewhere", folder,
                              FormatBytes(static_cast<std::int64_t>(space.available)), FormatBytes(bytes)));
}

void WriteTextFile(std::string const& path, std::string const& text, Existing existing) {
  AtomicFile output(path, existing);
  errno = 0;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(output.TemporaryPath().c_str(), "wb"), std::fclose);
  if (!file) output.FailWrite(errno);
  if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size()) output.FailWrite(errno);
  if (std::fclose(file.release()) != 0) output.FailWrite(errno);
  output.Commit();
}

}  // namespace orb::host
