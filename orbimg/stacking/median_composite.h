// CImgMedianComposit: stacks any number of registered frames by the median of the values that they have at a pixel.
//
// The object is not the destination but works on one held elsewhere, line by line, so that the frames themselves need
// not be in memory together:
//
//   CImgMedianComposit median(&destination);                            // the progress run starts
//   for each line y: for each frame: median.Store(frame, y, dx, dy, angle);
//                    median.Calc();                                     // writes line y
//                                                                        // the run ends with the object
//
// A pixel is the value at index n / 2 of the n values, in ascending order, of those frames that cover it: for an even n
// the upper of the two middle ones, never a mean. Where no frame covers it, it is 0. Values are raw: no levels are
// matched, and frames and destination may differ in size. All planes of the destination are written.
//
// Order of values: that of numbers, with -0.0 before 0.0 and not-a-number at the ends by its sign.
//
// Memory, with w the destination's width: (4 * planes + about 72) bytes * w for each frame of a line, which keeps
// source positions from one line to the next. Nothing grows with the height.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <orbimg/core/orb_image.h>

// One line of one frame, all planes: entry plane * width + x. For programs that hold lines of their own:
// CImgMedianComposit keeps its lines as the floats that the values come from and an interval of valid columns, a third
// of the memory.
class ORBIMG_API CLineData {
 public:
  // Both arrays have `count` entries, unset. Lack of memory: std::bad_alloc.
  explicit CLineData(int count);
  // Intended: a copy shares the arrays with its origin. Only one of them may be destroyed.
  CLineData(CLineData const& src) = default;
  CLineData& operator=(CLineData const& src) = default;
  virtual ~CLineData();

  double* value;
  int* valid;  // 1 where the sample fell inside the frame, 0 where outside
};

namespace orb {
class FrameLine;
class LineMedian;
}  // namespace orb

class ORBIMG_API CImgMedianComposit : public COrbImage {
 public:
  // Starts progress on the destination: message 6141, one unit for each of its lines. The destination must outlive
  // this.
  explicit CImgMedianComposit(COrbImage* destination);
  CImgMedianComposit(CImgMedianComposit const&) = delete;
  CImgMedianComposit& operator=(CImgMedianComposit const&) = delete;
  // Ends progress on the destination.
  ~CImgMedianComposit() override;

  // Samples line y of the destination out of a frame, shifted by dx, dy [pixels] and rotated by `angle` [degrees] about
  // its stdCtr, bilinear. The frame is not needed after the call. All calls up to the next Calc must name the same y;
  // the last one counts. Lack of memory is std::bad_alloc, and the lines stored so far stay.
  void Store(COrbImage* source, int y, double dx, double dy, double angle);

  // Writes the line from what has been stored, clears the store and ticks. Without anything stored since the last Calc
  // the line becomes 0. ESC does not stop the work.
  void Calc();

 private:
  friend struct OrbTestAccess;

  COrbImage* destination;
  std::vector<std::unique_ptr<orb::FrameLine>> lines;  // grows by 10; kept and used again from line to line
  std::size_t count = 0;                               // of lines stored since the last Calc
  int line = -1;                                       // of the last Store
  std::unique_ptr<orb::LineMedian> median;
};
