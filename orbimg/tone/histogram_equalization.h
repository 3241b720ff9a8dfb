// CImgHstEql: histogram equalisation by rank. Every sample of a plane gets a place of its own in the plane's order, so
// that the result's histogram is strictly flat.
//
// With the N samples of a plane in ascending order, the k-th from 0 on becomes
//
//   k * range / N + min
//
// in raw units, min and max being the plane's extrema and range = max - min. Among equal samples chance decides: each
// gets a number from the C library's rand, and the smaller number goes first; of equal numbers the pixel that comes
// first in the plane. Intended: the one use of state of the whole process in this library. srand makes runs repeatable,
// and two threads should not run it at once where that matters.
//
// The order is found in 257 classes of value: class b = 0 .. 256 holds edge[b] <= s < edge[b + 1] with
// edge[b] = b * range / 256 + min for b up to 256, and edge[257] = max + 1. rand is called for each sample of a class,
// class after class, and within a class row by row, for each class for which trunc((s - min) / range * 256.0) counts
// any samples. Intended: where the two rules differ by their rounding, a class keeps at most 100 samples more than were
// counted, and a class without a count none at all. Samples that fall out so, and those that are not numbers, get no
// rank: this image keeps what it held there.
//
// Changes the source: it gets its extrema (CalcMinMax), and the levels min and max on each plane. Levels and standard
// points of this image stay. Source and destination have the same shape, of at most three planes; `source` is another
// image. A plane of one value, or with an extremum that is infinite or not a number, is copied as it is.
//
// One run of 258 units for each plane, always reported, with a tick for each class with a count: message 6177. Scratch
// memory: 10 bytes a sample of a plane, 14 where some samples get no rank, and 16 (rarely 32) for each sample of the
// fullest of the buckets into which the classes are divided, where equal samples stay together; lack of it is
// std::bad_alloc. During the run this image holds anything. Draws of many numbers at once spare rand's lock, as
// platform/random_numbers_internal.h tells; the numbers, and those that come after, are those of single calls.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgHstEql : public COrbImage {
 public:
  CImgHstEql() = default;
  CImgHstEql(CImgHstEql const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgHstEql& operator=(CImgHstEql const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // 1 always.
  int Do(COrbImage* source);
};
