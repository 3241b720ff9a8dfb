// CFilterRows: a window on one plane of an image, the rows around a centre row.
//
// Rows outside the plane are mirrored: -1 reads row 1, and the row after the last reads the last. Columns outside the
// row read the nearest one in Convolve, ConvolveClip and Collect. Where the image has fewer rows than the mirror needs,
// its nearest row is read.
//
// The rows stay locked from Set to the destructor or to an UnlockAll of the image's store. What is asked of a window
// without rows is 0.0.
#pragma once

#include <memory>

#include <orbimg/core/orb_image.h>
#include <orbimg/filters/filter_kernel.h>
#include <platform/export.h>

class ORBIMG_API CFilterRows {
 public:
  CFilterRows() = default;
  CFilterRows(COrbImage* image, int radius, int x0, int y0, int plane, int flags);
  CFilterRows(CFilterRows const&) = delete;
  CFilterRows& operator=(CFilterRows const&) = delete;
  virtual ~CFilterRows();  // releases all locks of the image's store, if there are rows

  // The window of 2 radius + 1 rows around row y0 of a plane, its addresses at column x0. `flags` 2 locks the rows. 0,
  // and the rows stay as they were, if there is no such plane or the radius is negative.
  int Set(COrbImage* image, int radius, int x0, int y0, int plane, int flags);

  // The sum of weights times samples around column x. A kernel smaller than the window is used whole; of a larger one
  // only the central part that fits the window, not normalized again. Where radii are equal and the kernel lies inside
  // the row, the sum is one double in table order. Intended: elsewhere it is a float after each term, and 0.0 where
  // window or kernel has radius 0.
  double Convolve(CFilterKernel const& kernel, int x) const;
  // The same with each sample held in lo .. hi, always by the sum that is a float after each term.
  float ConvolveClip(CFilterKernel const& kernel, int x, float lo, float hi) const;

  // The sample at column x of row y. Intended: every row below the centre row reads 0.0, as do columns outside the row.
  float Pixel(int x, int y) const;

  // The samples under the cells of a mask that are exactly 1.0, ascending, sortedCount of them. With a mask or a window
  // of radius 0 the list stays as it was.
  float* Collect(CFilterKernel const& mask, int x);
  // The one at `index` of Collect; 0.0 outside the list.
  float Rank(CFilterKernel const& mask, int x, int index);

  std::unique_ptr<float*[]> rows;
  int radius = 0;
  int x0 = 0;
  int y0 = 0;
  COrbImage* image = nullptr;
  std::unique_ptr<float[]> sorted;
  int sortedCount = 0;
  int sortedSize = 0;

 private:
  float Sample(int dy, std::int64_t x) const;
  bool HasSamples() const { return rows != nullptr && image != nullptr && image->GetWidth() > 0; }
};
