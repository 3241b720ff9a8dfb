// The light in a disk around a position, less the sky in a ring around it.
//
// Disk and ring are those of CImgApertureMark: of whole pixels, around the pixel that the position lies in. Its counts
// are whole numbers, so samples are scaled by a power of two before, to billionths of the frame's largest sample: sums
// of fractional samples are sums, whatever their unit.
#pragma once

#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/frame_transform.h>
#include <orbimg/orbimg.h>

namespace orb::host {

enum class RingSky {
  kClipped,  // median of the ring, without what lies more than 3 deviations off: stars in the ring do not count
  kMean,     // plain mean of the ring
};

struct ApertureRadii {
  double disk = 6.0;    // pixels
  double inner = 10.0;  // the ring's hole
  double outer = 15.0;
};

// Raw units. What a sample that is no number spoils is not-a-number.
struct ApertureCount {
  int pixels = 0;
  double sum = 0.0;
  int skyPixels = 0;
  double sky = 0.0;       // of one pixel
  double skyNoise = 0.0;  // of one pixel
  double net = 0.0;       // sum - sky * pixels
  double error = 0.0;     // of the net count, from the noise of the sky alone
};

// Plane 0 of a frame, shared, not copied.
class ApertureCounter {
 public:
  explicit ApertureCounter(COrbImage const& frame);

  ApertureCount Count(Position const& at, ApertureRadii const& radii, RingSky ringSky);

 private:
  SampleStatistics ClipRing(CImgApertureMark& ring, CPoint centre, double outer);

  COrbImage view;
  double scale;
};

// The pixel that a position lies in.
CPoint PixelOf(Position const& at);

}  // namespace orb::host
