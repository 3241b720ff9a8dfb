// How the numbers of a TIFF file lie, and what they mean.
#pragma once

#include <cstdint>
#include <string>

#include <hosts/io/frame_reader.h>
#include <hosts/io/tiff_internal.h>

namespace orb::host {

struct TiffLayout {
  int width = 0;
  int height = 0;
  int samplesPerPixel = 1;
  int planes = 1;  // of the image
  SampleType type = SampleType::kUint8;
  bool isInterleaved = true;
  bool isCompressed = false;
  bool isTiled = false;
  bool whiteIsZero = false;
  bool flipsRows = false;
  bool flipsColumns = false;
  int rowsPerStrip = 1;
  int tileWidth = 0;
  int tileHeight = 0;

  // Bytes of a row of the file: of all samples, or of one plane.
  std::int64_t RowBytes() const { return std::int64_t{width} * SamplesTogether() * BytesOf(type); }
  int SamplesTogether() const { return isInterleaved ? samplesPerPixel : 1; }
};

// A HostError where the file holds what is not read; what is left out is added to the notes of the facts.
TiffLayout ReadTiffLayout(TIFF* tiff, FrameFacts& facts);

}  // namespace orb::host
