// Pictures for looking at: a rendered bitmap as PNG or BMP, and PNG files as images.
#pragma once

#include <string>

#include <hosts/io/atomic_file.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// A HostError if the ending is neither .png nor .bmp, whatever the case: for a check before any work.
void RequirePictureName(std::string const& path);

// The kind is taken from the ending, .png or .bmp. The bitmap has 8 bits with a palette, or 24 bits, bottom-up. A PNG
// of 8 bits whose palette is the gray ramp is written as gray, which is the same picture.
void WritePicture(std::string const& path, HDIB dib, Existing existing);

// The same into a file that is not committed yet.
void WriteBitmap(AtomicFile& output, HDIB dib);

// 8 or 16 bits, gray or colour (alpha is dropped, palettes are resolved, 1, 2 and 4 bits are spread to 8): one or three
// planes, levels 0 to 255 or 65535. The numbers are taken as they stand, without a gamma.
void ReadPng(std::string const& path, COrbImage& image);

}  // namespace orb::host
