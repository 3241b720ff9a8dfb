// PNG files as frames: gray or colour of 8 or 16 bits.
#pragma once

#include <memory>
#include <string>

#include <hosts/io/frame_reader.h>

namespace orb::host {

// Alpha is dropped and noted, palettes are resolved, 1, 2 and 4 bits are spread to 8. The numbers are taken as they
// stand, without a gamma; levels 0 to 255 or 65535. Rows are unpacked as they are asked for, from the top: going back
// starts anew. An interlaced file is held in memory while it is open.
class PngReader : public FrameReader {
 public:
  explicit PngReader(std::string const& path);
  ~PngReader() override;

 private:
  Converted DoRead(int top, int rows, std::vector<float*> const& planes) override;

  struct Impl;
  std::unique_ptr<Impl> impl;
};

}  // namespace orb::host
