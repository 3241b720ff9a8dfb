// CImgExpansion: unrolls the disk of a planet into a rectangular map of longitude and latitude.
//
// The operator object is the map, of any size; `src` is the photograph, with as many planes. The map frame is the
// largest one of aspect 2 to 1 in the middle of the image: with W / 2 > H (sizes halved and truncated) it is 2 H wide
// and H high, otherwise W wide and W / 2 high. A pixel (x, y) in it is the point of the globe with
//
//   longitude = (x - W * 0.5) / frame width * 360.0      latitude = (y - H * 0.5) / frame height * -180.0   (degrees)
//   dc = AdToDc(longitude, latitude), dc.z *= flattening
//   v = RotateX(tiltX) RotateY(tiltY) dc
//   px = v.y * radius + cx, py = cy - v.z * radius       (pixels of the source)
//
// in the frame of orbmath/direction.h: x points at the viewer, z along the polar axis. The pixel takes the bilinear
// sample of the source at (px, py), 0.0 where v.x < 0, which is the far side, and 0.0 where that position lies off the
// source or is not a number. Beside the map frame it takes the levelMin of plane 0.
// Intended: levelMin of plane 0 for every plane, but 0.0 for what the photograph does not show.
// Intended: a point turned to exactly the pole, v.z 1 or -1, has v.x = v.y = 0 and so is read on the rim, at
// (cx, cy -+ radius), whatever rounding left in v.x.
//
// The graticule has a line every 30 degrees: 7 parallels, across the whole rectangle, in the maximum of plane 0's
// levels for every plane, and 13 meridians, over the height of the map, each plane in its own maximum. Intended: both
// take the rectangle's right and bottom as part of it, so a line may lie one pixel outside; and the two differ in their
// levels.
//
// The levels of `src` become those of the map; standard points and centre stay. One unit of progress for each row of
// each plane, the graticule none, message 6140. Scratch memory: six numbers a column.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgExpansion : public COrbImage {
 public:
  CImgExpansion() = default;
  CImgExpansion(CImgExpansion const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgExpansion& operator=(CImgExpansion const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // `cx`, `cy`, `radius`: of the disk, in pixels of the source. `tiltY`, `tiltX`: degrees. A positive tiltY tips the
  // north pole towards the viewer, a positive tiltX then turns the globe anticlockwise as it is seen. `flattening`: of
  // the polar axis, 1.0 for a sphere; 0 reads the whole map along the equator. `grid` non-zero draws the graticule.
  // `rect` limits what is computed; null is the whole image.
  void Do(COrbImage* src, double cx, double cy, double radius, double tiltY, double tiltX, double flattening, int grid,
          CRect* rect, int progress);
};
