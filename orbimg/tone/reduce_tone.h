// CImgReduceTone: posterises, that is, leaves a given number of tones.
//
// With n = `levels`, held between 1 and 256, and v the sample on the 256-scale, limited to 0 to 255,
//
//   w = floor(n * v / 256) / n * 255.0
//
// The lowest tone is black, the highest lies at (n - 1) / n of the range: with 2 levels white becomes 127.5. With 1
// level everything becomes levelMin. A sample that is not a number stays one.
//
// The source is read and the result stored by the levels of this image, each plane by its own; those of the source
// count for nothing. Source and destination have the same shape; `source` may be this image. Levels and standard points
// stay. One unit of progress for each row of each plane, message 6144.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgReduceTone : public COrbImage {
 public:
  CImgReduceTone() = default;
  CImgReduceTone(CImgReduceTone const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgReduceTone& operator=(CImgReduceTone const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(int levels, COrbImage* source, CRect* rect, int progress);
};
