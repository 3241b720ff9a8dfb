// BMP files as frames of 8 bits.
#pragma once

#include <string>

#include <hosts/io/frame_reader.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// Without compression, of 1, 4, 8, 16, 24 or 32 bits, with a header of 40 bytes or more: one plane of gray, or three.
// Levels 0 to 255. Held in memory while it is open.
class BmpReader : public FrameReader {
 public:
  explicit BmpReader(std::string const& path);

 private:
  Converted DoRead(int top, int rows, std::vector<float*> const& planes) override;

  COrbImage image;
};

}  // namespace orb::host
