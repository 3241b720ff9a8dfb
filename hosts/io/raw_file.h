// Camera raw files as frames, where the build has LibRaw.
#pragma once

#include <memory>
#include <string>

#include <hosts/io/frame_reader.h>

namespace orb::host {

// By the ending: .cr2, .nef, .dng ...
bool IsRawName(std::string const& path);
// Whether this build reads them.
bool CanReadRaw();

// The numbers of the sensor, without white balance, gamma or any other scale: three planes by DebayerRow, or the mosaic
// as one plane. The levels are black and white of the sensor. Rows lie as on the sensor, however the camera was held.
// Without LibRaw, a HostError. Unpacked on the first reading and held in memory, two bytes a pixel, while it is open.
std::unique_ptr<FrameReader> OpenRaw(std::string const& path, bool asMosaic);

}  // namespace orb::host
