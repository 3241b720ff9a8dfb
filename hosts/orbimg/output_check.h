// Places where a command is going to write, looked at before any work.
#pragma once

#include <cstdint>
#include <string>

#include <hosts/io/atomic_file.h>

namespace orb::host {

// HostError where a file cannot be written at `path`: no folder, no right to write, or there already.
void CheckOutputFile(std::string const& path, Existing existing);
// The same for a picture; and the ending must be .png or .bmp.
void CheckPictureFile(std::string const& path, Existing existing);

// Makes the folder if its parent is there. HostError where it cannot be, or is a file.
void MakeOutputFolder(std::string const& folder);

// HostError where the disk of the folder has not `bytes` left.
void CheckFreeSpace(std::string const& folder, std::int64_t bytes);

// Writes a text so that it appears whole or not at all.
void WriteTextFile(std::string const& path, std::string const& text, Existing existing);

}  // namespace orb::host
