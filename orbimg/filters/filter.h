// CImgFilter: filters over small fixed neighbourhoods, and the frame of all filters.
//
// The object is the destination and `src`, another object of the same shape, the source. A rectangle limits what is
// written, never what is read. Each filter walks planes, rows and columns; progress counts one unit for each row of
// each plane. Levels and standard points stay.
//
// Shape codes choose the neighbourhood:
//
//   code    samples  cells                                        radius
//   0       5        the centre and its four direct neighbours    1
//   1       9        the 3 x 3 square                             1
//   2       21       the 5 x 5 square without its four corners    2
//   other   1        the centre                                   0
//
// Rows outside the image are mirrored: -1 reads row 1, and the row after the last reads the last. Intended: a column
// outside the row is read on the other side of the centre, offset -2 as +2, in the sample functions below. An image too
// narrow for that reads its nearest column.
//
// Sample functions are called on the image that they read. Raw is the stored float; Gray is raw - levelMin of `plane`;
// 256f is (raw - levelMin) / levelRange * 255.0. `rows` holds the addresses, at column x, of 2 radius + 1 rows around
// the sample's own.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

class ORBIMG_API CImgFilter : public COrbImage {
 public:
  CImgFilter() = default;
  CImgFilter(CImgFilter const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFilter& operator=(CImgFilter const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // ---- Work images: a copy of this image in a border of `radius` samples, 0 standing for 2, that mirrors both axes by
  // the row rule. The caller deletes it. Null for lack of memory and for a negative radius.

  // Planes and levels of this image. Progress 6126, one unit for each row copied and each row bordered, of twice the
  // work image's rows times planes.
  COrbImage* MakeFilterWork(int radius, int progress);
  // One plane for a mono image, four for a colour one: plane 3, with the levels of plane 0, is the mean of the three on
  // the 256-scale. Intended: all three by the levels of plane 0, with equal weights. Progress 6125, the same units and
  // one more for each row of the mean.
  COrbImage* MakeDDWork(int radius, int progress);

  // ---- The radius of a shape, and the samples of one position
  int GetMeanR(int shape);
  int GetMedianR(int shape);
  int GetMinMaxR(int shape);

  // With c the centre and S the sum of the shape's N other samples: (S * weight + c) / (weight * N + 1). `mean`, where
  // not null, gets the plain mean (S + c) / (N + 1). A code that is no shape gives the centre, and leaves `mean`.
  float GetMeanRaw(float** const rows, int x, int shape, double weight, double* mean);
  float GetMeanRaw(int x, int y, int shape, double weight, int plane);
  float GetMeanGray(float** const rows, int x, int shape, double weight, int plane);
  float GetMean256f(float** const rows, int x, int shape, double weight, int plane);

  // The sample at index n / 2 of n in ascending order.
  float GetMedianRaw(float** const rows, int x, int shape);
  float GetMedianRaw(int x, int y, int shape, int plane);
  float GetMedianGray(float** const rows, int x, int shape, int plane);
  float GetMedian256f(float** const rows, int x, int shape, int plane);

  // The sample at `index` in ascending order: 0 the minimum, n - 1 the maximum. An index outside is held at these.
  float GetMinMaxRaw(float** const rows, int x, int shape, int index);

  // |8 c - the sum of the 8 cells around it|, coordinates held inside the image.
  float HighPassRaw(int x, int y, int plane);

  // |v| + levelMin of `plane`, by three rows whatever the shape, rows[1] being the sample's own: v = 4 c - (the direct
  // neighbours) for shape 0, 8 c - (all neighbours) for 1, 4 c - 2 (the direct ones) + (the corners) for 2. Intended:
  // for any other code v is the sample above.
  float GetLaplacianRaw(float** const rows, int x, int shape, int plane);
  float GetLaplacianGray(float** const rows, int x, int shape, int plane);
  float GetLaplacian256f(float** const rows, int x, int shape, int plane);

  // ---- Filters

  // (c - b) * strength + c where |m / c - 1.0| >= threshold, otherwise c; b is the mean with `weight`, m the plain one.
  // A ratio that is not a number (0 / 0) is below every threshold, an infinite one above. Message 6122.
  void UnSharpMask(double strength, int shape, double weight, double threshold, COrbImage* src, CRect* rect,
                   int progress);
  // One plane alone. Intended: the units announced are those of all planes.
  void UnSharpMask(double strength, int shape, double weight, double threshold, COrbImage* src, int plane, CRect* rect,
                   int progress);
  // GetMedianRaw. Message 6120.
  void MedianFilter(int shape, COrbImage* src, CRect* rect, int progress);
  // GetMinMaxRaw. Message 6153.
  void MinMaxFilter(int shape, int index, COrbImage* src, CRect* rect, int progress);
  // GetLaplacianRaw. Intended: with levelMin of plane 0 of the source for every plane. Message 6143.
  void LaplacianFilter(int shape, COrbImage* src, CRect* rect, int progress);

 protected:
  friend struct OrbTestAccess;

  void CalcRect(int& left, int& top, int& right, int& bottom, CRect* rect);
  // How far `image`, a work image around this one, sits from it. Both stay where this image is at least as wide and as
  // high. `radius` is not used.
  void CalcShift(int& dx, int& dy, int radius, COrbImage* image);
  // Called on the source: rows[0 .. 2 radius] become the addresses, at column x, of rows y - radius .. y + radius.
  // `flags` 2 locks them until UnlockAll.
  void SetFilterAdr(int x, int y, int plane, int radius, float** const rows, unsigned int flags);
};
