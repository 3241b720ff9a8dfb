// A picture to look at, of an image whose own levels may show nothing.
#pragma once

#include <string>

#include <hosts/io/atomic_file.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// Levels from a little below the sky to far above its noise, for each plane: what a faint field needs to be seen.
void SetViewLevels(COrbImage& image);

// Renders the image through its levels into a PNG or BMP file of 24 or 8 bits.
void WriteRendering(std::string const& path, COrbImage const& image, int bits, Existing existing);

// Reads a file and renders it through view levels into `picture`. Holds one whole frame.
void WritePreview(std::string const& file, std::string const& picture, Existing existing);

}  // namespace orb::host
