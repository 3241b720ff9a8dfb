// Which rows of a frame a band of the result reads.
#pragma once

#include <hosts/io/fits_file.h>
#include <hosts/orbimg/frame_transform.h>

namespace orb::host {

struct RowRange {
  int top = 0;
  int bottom = 0;

  int Count() const { return bottom - top; }
};

// The rows of the frame that the sampler may read for the rows top .. bottom - 1 of a result `width` wide: those at the
// corners of the band, which hold all between them, and a margin for interpolation and rounding. Empty where the band
// lies off the frame.
RowRange FindRowsToRead(FrameTransform const& transform, int frameHeight, int width, RowRange const& band);

}  // namespace orb::host
