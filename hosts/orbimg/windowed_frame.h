// A frame of which only some rows are in memory, while every row keeps the address that it has in the whole frame.
//
// The frame takes address space for all its rows and memory for the rows that are open. An image over it has its full
// size, so operators compute with the coordinates of the whole frame, and the result has the same bits however the
// frame is cut into bands. Touching a row that is not open ends the program.
#pragma once

#include <cstddef>
#include <vector>

#include <hosts/io/shape.h>
#include <orbimg/orbimg.h>

namespace orb::host {

class WindowedFrame {
 public:
  explicit WindowedFrame(Shape const& initShape);  // no rows are open; std::bad_alloc
  WindowedFrame(WindowedFrame const&) = delete;
  WindowedFrame& operator=(WindowedFrame const&) = delete;
  ~WindowedFrame();

  // Opens the rows top .. bottom - 1 of every plane with zeros in them, and gives up what was open before.
  void Open(int top, int bottom);
  int Top() const { return openTop; }
  int Bottom() const { return openBottom; }

  Shape const& GetShape() const { return shape; }
  float* Row(int plane, int y) const;
  std::vector<float*> Rows(int y) const;  // row y of each plane
  // Makes an image show the frame, with levels 0 to 255. It does not own the samples: it must not outlive this frame.
  void ShowIn(COrbImage& image) const;

 private:
  std::size_t bytes;
  Shape shape;
  float* samples;
  int openTop = 0;
  int openBottom = 0;
};

}  // namespace orb::host
