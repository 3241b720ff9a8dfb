// The canvas of a mosaic of two images, and how bright the second is where they overlap.
#pragma once

#include <cstdint>
#include <vector>

#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/frame_transform.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// A canvas with room for every pixel of the first image, and for every whole-pixel position that lies in the second
// one; the first lies at (x, y) on it. Without a rotation it is no larger than that.
struct MosaicCanvas {
  std::int64_t width = 0;
  std::int64_t height = 0;
  std::int64_t x = 0;
  std::int64_t y = 0;
};

// `second` says how the second image lies over the first.
MosaicCanvas FindCanvas(COrbImage const& first, COrbImage const& second, FrameTransform const& transform);

// What must be added to a plane of the second image to make it as bright as the first: the median of the differences
// where both have samples, freed of outliers, with its noise and the number of pixels. A mono image stands for its one
// plane. Both are only read, but for the centre of the second, which is set. Scratch memory: a float a pixel of
// overlap.
SampleStatistics CompareOverlap(COrbImage& first, COrbImage& second, FrameTransform const& transform, int plane);

}  // namespace orb::host
