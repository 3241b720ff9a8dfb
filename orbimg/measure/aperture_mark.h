// CImgApertureMark: an elliptical aperture with an optional hole, and the sum, variance and standard deviation of the
// counts in it.
//
// The values are whole counts of plane 0: v = sample * bscale + bzero, truncated toward zero before it is summed, with
// samples of any format. A sample that is no number or infinite makes the results so too; samples of an unknown format
// count as 0.
//
//   variance = (sum of (v - mean)^2) / n     deviation = sqrt(variance)     mean = sum / n
//
// Pixels outside the image do not count. Without any pixel the count and the sum are 0, and variance and deviation have
// no meaning.
//
// The ellipse is a midpoint circle of the larger radius whose points are squeezed onto the smaller by integer division,
// so that an aperture is the same on every machine. Nothing is changed in the image.
#pragma once

#include <vector>

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgApertureMark {
 public:
  CImgApertureMark() = default;
  CImgApertureMark(CImgApertureMark const&) = default;
  CImgApertureMark& operator=(CImgApertureMark const&) = default;
  virtual ~CImgApertureMark();

  // Centre and radii in pixels; an inner radius x of -1.0 means no hole. Measures at once.
  //
  // Outer radii end at 302, and a hole shrinks with its ring: a radius of 1000 with a hole of 990 is one of 302 with a
  // hole of 292. Intended: whether there is a hole to shrink is seen from the inner radius x, for y too.
  //
  // The shape has the truncated centre and radii. Intended: pixels beyond the box of the rounded ones are left out
  // nevertheless, so that a fractional centre can cost the shape a column or a row, though PtInRgn has it.
  void Set(COrbImage* image, double cx, double cy, double outerX, double outerY, double innerX, double innerY);

  // 1 where the shape of the latest Set has pixel (x, y), inside an image or not.
  int PtInRgn(int x, int y);

  int GetNum(void) { return num; }
  double GetSum(void) { return sum; }
  double GetVar(void) { return variance; }
  double GetStd(void) { return deviation; }

 protected:
  friend struct OrbTestAccess;

  void MakeCircleMask(void);
  void CalcPixel(COrbImage* image);

  int num = 0;
  double sum = 0.0;
  double variance = 0.0;
  double deviation = 0.0;
  double centreX = 0.0;
  double centreY = 0.0;
  double outerX = -1.0;
  double outerY = -1.0;
  double innerX = -1.0;
  double innerY = -1.0;
  // The outlines: the largest horizontal distance from the centre at each vertical one, and the largest vertical
  // distance at each horizontal one, for those who draw the mark. -1: nothing there.
  std::vector<int> outerRow;
  std::vector<int> innerRow;
  std::vector<int> outerColumn;
  std::vector<int> innerColumn;
};
