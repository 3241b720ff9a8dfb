// CImgFilterSpecial: filters made for the sky. Star sharpening, star enhancing, nebula smoothing, digital development.
//
// The object is the destination and `src`, another object of the same shape, the source. A rectangle limits what is
// written, never what is read; null is the whole image. Rows outside the image are mirrored: -1 reads row 1, and the
// row after the last reads the last. Columns outside read the nearest one. c is the source's sample. Results are not
// clamped, levels and standard points stay. Progress counts one unit for each row of each plane. Lack of memory, and a
// radius whose square of cells an int does not count, are std::bad_alloc.
//
// A threshold of StarEnhanceFilter and NebularSmootherFilter is a fraction of the level range of the source's plane:
// T = levelRange * threshold * 256 / 255. Their edge strength is e = |8 c - the sum of the 8 samples around it|.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

class ORBIMG_API CImgFilterSpecial : public COrbImage {
 public:
  CImgFilterSpecial() = default;
  CImgFilterSpecial(CImgFilterSpecial const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFilterSpecial& operator=(CImgFilterSpecial const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // How many samples n the disk of StarSharpFilter has: those with dx^2 + dy^2 <= radius^2 (pixels), dx and dy up to
  // the radius rounded up, 1 at least. A radius of -1.0 stands for 1.
  int GetStarSharpFilterNum(double radius);

  // Shrinks stars: takes the value of a given rank among the samples s under the disk, in ascending order. `position`
  // is an index into them, with linear interpolation between i = floor(position) and i + 1: 0 is the least sample, n -
  // 1 the largest. It is not limited; an index that the disk does not have reads 0.0. With `keepPeak`, a sample equal
  // to the largest of its disk stays. A `threshold` (fraction) other than 0.0 keeps c where |v / s[n - 1] - 1|, v being
  // the value found, is below it; a ratio that is not a number is below. -0.0 comes before 0.0, what is not a number at
  // the ends by its sign. Scratch memory: for each of up to three ranks up to 128 rows and a tile
  // (disk_rank_internal.h says more). Message 6165.
  void StarSharpFilter(double radius, double position, double threshold, int keepPeak, COrbImage* src, CRect* rect,
                       int progress);

  // Lets faint stars stand out: c + strength * g, where g is the Gaussian of radius 1 and sigma 1.0 of e, e being 0
  // below T and taken from |blur|, and blur the Gaussian of `sigma` (pixels) of the samples held within the levels of
  // their plane. Intended: the blur takes the central 5 x 5 weights at most and is not normalized again, so that a
  // large sigma gives a flat, weak blur. `strength` is narrowed to float, and the product rounded to float before the
  // sum. Scratch memory: some ten rows. Message 6173.
  void StarEnhanceFilter(double sigma, double strength, double threshold, COrbImage* src, CRect* rect, int progress);

  // Smooths what lies far from any edge. A sample with e >= T is an edge sample. c stays where one lies within
  // `clearRadius` (pixels, as the disk above) of it; elsewhere the result is the Gaussian of `sigma` (pixels) and
  // radius R = trunc(sigma) + 1 over the samples that are none, or c where their weights sum to 0. Sums are floats
  // after each term. Edge samples count up to R rows above and below a sample, and up to R columns outside the
  // rectangle, whatever `clearRadius` is. Intended: in an image of fewer than 2 R + 1 rows `clearRadius` reaches no
  // more than height - 1 - R rows down. Samples that are the largest float count as edge samples. A negative R copies
  // the source. Scratch memory: 4 R + 2 rows. Message 6174.
  void NebularSmootherFilter(double sigma, double threshold, double clearRadius, COrbImage* src, CRect* rect,
                             int progress);

  // Compresses the tones as a photographic print does. On the 256-scale, with s the sample by the source's levels, as a
  // float: s / (v + a) * (mean + a), brought back by the destination's levels. v is the source, blurred by a cross of
  // weight 1.0 and four neighbours `weight`, normalized; a is `pivot` (raw units) and mean the source's
  // GetAvrGrayRaw(0), both on the 256-scale of the destination's plane 0, for all planes. A sample with s <= 0 is
  // brought back as it is. A v of -a gives an infinity.
  //
  // `blurPlane` chooses for each plane of the destination where v comes from: 0, 1 or 2 is that plane of the source by
  // its own levels, 3 and more the plain mean of the three, each by its own levels. A plane that is not there, as of a
  // mono image, is 0.0 on the 256-scale. Scratch memory: a few rows. Message 6116.
  void DigitalDvlp(double pivot, double weight, COrbImage* src, int* const blurPlane, CRect* rect, int progress);
};
