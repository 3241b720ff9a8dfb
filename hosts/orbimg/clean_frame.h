// Copies of a frame for finding what moves with the sky: one plane, the sky's level taken away, spikes mended,
// smoothed.
#pragma once

#include <hosts/orbimg/sky_map.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// The mean of all planes less the sky, a mesh of clipped medians in cells of about `cellSide` pixels. Samples that are
// not finite become sky. A sample that stands up without the neighbours that any lens gives a star (hot pixels, hot
// columns, single hits of cosmic rays) becomes the median of its neighbours; a star must be about 1.5 pixels wide to
// stay. The levels are 0 to 255, so that the 256-scale is the sample itself.
COrbImage CleanFrame(COrbImage const& image, int cellSide);

// Weights 1 4 6 4 1 on both axes, edges held, `passes` times over: like a Gaussian with a variance of one pixel a pass.
// The image has one plane; the levels of the result are 0 to 255.
COrbImage SmoothFrame(COrbImage const& image, int passes);

// The sky of an image of one plane.
SkyMap MapSky(COrbImage const& image, int cellSide);

}  // namespace orb::host
