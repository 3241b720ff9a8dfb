// Pictures for looking at: a rendered bitmap as PNG or BMP, and PNG files as images.
#pragma once

#include <string>

#include <hosts/io/atomic_file.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// The kind is taken from the ending, .png or .bmp; HostError for another one. The bitmap has 8 (palette) or 24 bits.
void WritePicture(std::string const& path, HDIB dib, Existing existing);

// 8 or 16 bits, gray or colour (alpha is dropped, palettes are resolved): one or three planes, levels 0 to 255 or 65535.
void ReadPng(std::string const& path, COrbImage& image);

}  // namespace orb::host
