// TIFF files as frames.
#pragma once

#include <memory>
#include <string>

#include <hosts/io/frame_reader.h>

namespace orb::host {

// The first image of a TIFF or BigTIFF file: integers of 8, 16 and 32 bits, floats of 32 and 64; gray (white or black
// at 0) or red, green, blue; strips or tiles; pixel after pixel or plane after plane; not compressed, PackBits, LZW or
// deflate. Alpha and further samples are left out and noted, as are further images. Mirrored files are turned upright,
// those on their side refused. Cards that the writer below put into the description are the header; without them
// CBLACK and CWHITE are the range of unsigned integers of 8 and 16 bits. Scratch memory: a row of the file, or a row
// of its tiles.
class TiffReader : public FrameReader {
 public:
  explicit TiffReader(std::string const& path);
  ~TiffReader() override;

 private:
  Converted DoRead(int top, int rows, std::vector<float*> const& planes) override;

  struct Impl;
  std::unique_ptr<Impl> impl;
};

}  // namespace orb::host
