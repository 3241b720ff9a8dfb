// CImgFilterSharp: filters that sharpen, each plane with a kernel of its own.
//
// The object is the destination and `src`, another object of the same shape, the source. The forms with arrays take one
// entry for each plane; the others repeat their values for all planes. c is the source's sample, and convolutions run
// on CFilterRows. A range is compared with dx^2 + dy^2 itself; a range or sigma of exactly -1.0 stands for the kernel's
// radius. Results are not clamped, levels and standard points stay. Progress counts one unit for each row of each
// plane. Lack of memory is std::bad_alloc.
//
//   operation        radius                  destination                                          message
//   SharpFilter      trunc(max(range, 1))    convolution with MakeSharp(max(range, 1), weight)    6121
//   SharpEdgeFilter  trunc(max(range, 1))    (1 - a) * c + a * the same of MakeSharp(range, ...)  6121
//   UnSharpMask      max(1, 2 trunc(sigma))  (c - b) * strength + c where |b / c - 1| >= threshold, otherwise c;
//                                            b the convolution with MakeGaussian(sigma)           6122
//
// The edge-guided filter sharpens edges and keeps flat parts: with e the convolution with MakeEdge(range) and t = e /
// levelRange of the destination's plane, held at 1.0 from above only, a = t * t. A ratio that is not a number (0 / 0)
// is below every threshold, an infinite one above.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

class ORBIMG_API CImgFilterSharp : public COrbImage {
 public:
  CImgFilterSharp() = default;
  CImgFilterSharp(CImgFilterSharp const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFilterSharp& operator=(CImgFilterSharp const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // range in squared pixels; weight of the neighbours, the centre's being 2. A weight of 2 sums to 0.
  void SharpFilter(double range, double weight, COrbImage* src, CRect* rect, int progress);
  void SharpFilter(double* const range, double* const weight, COrbImage* src, CRect* rect, int progress);

  void SharpEdgeFilter(double range, double weight, COrbImage* src, CRect* rect, int progress);
  void SharpEdgeFilter(double* const range, double* const weight, COrbImage* src, CRect* rect, int progress);

  // sigma in pixels, not 0; strength 1 adds the whole difference; threshold as a fraction of the sample.
  void UnSharpMask(double sigma, double strength, double threshold, COrbImage* src, CRect* rect, int progress);
  void UnSharpMask(double* const sigma, double* const strength, double* const threshold, COrbImage* src, CRect* rect,
                   int progress);
};
