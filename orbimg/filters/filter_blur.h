// CImgFilterBlur: filters that smooth, each plane with a kernel of its own.
//
// The object is the destination and `src`, another object of the same shape, the source. The forms with arrays take one
// entry for each plane; the others repeat their values for all planes. c is the source's sample, and convolutions run
// on CFilterRows. A range is compared with dx^2 + dy^2 itself but in the median; a range or sigma of exactly -1.0
// stands for the kernel's radius. Results are not clamped, levels and standard points stay. Progress counts one unit
// for each row of each plane. Lack of memory is std::bad_alloc.
//
//   operation              radius                 destination                                     message
//   MeanFilter             max(1, trunc(range))   convolution with MakeMean(range, weight)        6119
//   GaussianFilter         max(1, 2 trunc(sigma)) convolution with MakeGaussian(sigma)            6131
//   MedianFilter           max(1, trunc(range))   order statistic of a disk, see below            6120
//   MeanWithoutEdgeFilter  max(1, trunc(range))   (1 - a) * mean + a * c, see below               6119
//
// The edge-guided mean blurs flat parts and keeps edges: with e the convolution with MakeEdge(range) and t = e /
// levelRange of the destination's plane, held at 1.0 from above only, a = t * t. Intended: a strongly negative t makes
// a exceed 1.
//
// The Gaussian of radius 3 and more sums columns first, then rows. Its weights are floats and no exact products: before
// the result is rounded to float, it differs from the plain sum by less than 1.8 / 2^24 of the sum of weights times
// |samples|. For samples of one sign that is one unit in the last place of a float, or two where nearly all of the sum
// comes from a few samples. Its outermost `radius` columns are plain sums.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

class ORBIMG_API CImgFilterBlur : public COrbImage {
 public:
  CImgFilterBlur() = default;
  CImgFilterBlur(CImgFilterBlur const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFilterBlur& operator=(CImgFilterBlur const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // range in squared pixels; weight of the neighbours, the centre's being 1.
  void MeanFilter(double range, double weight, COrbImage* src, CRect* rect, int progress);
  void MeanFilter(double* const range, double* const weight, COrbImage* src, CRect* rect, int progress);

  // sigma in pixels, not 0. The kernel ends at twice its whole part.
  void GaussianFilter(double sigma, COrbImage* src, CRect* rect, int progress);
  void GaussianFilter(double* const sigma, COrbImage* src, CRect* rect, int progress);

  // Gathers the samples at the offsets with dx^2 + dy^2 <= range^2 that lie inside the image, n of them, and takes the
  // one at index n / 2 in ascending order. range in pixels. Intended: every sample below the centre row counts as 0.0.
  // Scratch memory: 64 rows, and a tile of 64 + 2 range columns and rows.
  void MedianFilter(double range, COrbImage* src, CRect* rect, int progress);
  void MedianFilter(double* const range, COrbImage* src, CRect* rect, int progress);

  void MeanWithoutEdgeFilter(double range, double weight, COrbImage* src, CRect* rect, int progress);
  void MeanWithoutEdgeFilter(double* const range, double* const weight, COrbImage* src, CRect* rect, int progress);
};
