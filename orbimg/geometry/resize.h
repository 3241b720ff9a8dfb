// CImgResize: changes the canvas. The picture keeps its scale and is placed at one of nine points; what is new is
// filled.
//
// `anchor` counts a grid of 3 x 3, row by row: anchor % 3 is left, centre, right, anchor / 3 top, middle, bottom; any
// number but 0 to 8 acts as 0. With d the new size less the old one, halved and truncated for the centre and 0 for left
// and top, the picture begins at d where that is not negative; otherwise -d columns or rows of it are cut off in front.
// What reaches beyond the canvas is cut off behind.
//
// The operator object is the canvas and takes its new size here; `src` is another image, with as many planes, and is
// copied raw. Levels stay, standard points and centre are cleared. One unit of progress for each row of each plane that
// is filled and for each that is copied, message 6111.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgResize : public COrbImage {
 public:
  CImgResize() = default;
  CImgResize(CImgResize const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgResize& operator=(CImgResize const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // `newWidth`, `newHeight` in pixels. `fill`: one value a plane on the 0 to 255 scale.
  // Intended: the levels of plane 0 bring the fill of every plane to raw samples, so that a fill of one number means
  // one raw value in all planes.
  // 1; 0 where there is no memory for the new size, with samples and size as they were.
  int Do(int newWidth, int newHeight, int anchor, float* const fill, COrbImage* src, int progress);
};
