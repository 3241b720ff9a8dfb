// Lays frames over a reference without looking for stars: for frames too faint for that, and for anything else that has
// structure. Shifts only.
//
// CImgMatching finds the whole-pixel shift of least mean squared difference, on copies freed of sky and spikes,
// smoothed, and put on one common level. The fraction of a pixel is where a quadratic surface through the metric at 5 x
// 5 whole shifts has its minimum. The fractional stages of the operator are not asked: a value interpolated between
// samples has less noise than a sample, which draws the minimum of a noisy frame towards half pixels.
#pragma once

#include <hosts/orbimg/alignment.h>
#include <orbimg/orbimg.h>

namespace orb::host {

struct MatchAlignmentSettings {
  double startX = 0.0;  // pixels: the shift that the search begins with
  double startY = 0.0;
  int range = 100;    // pixels: full width of the search
  int smoothing = 4;  // passes of 5 x 5 binomial weights
  int cellSide = 64;  // pixels: the mesh of the sky
};

// The copy that frames are matched on.
COrbImage PrepareForMatching(COrbImage const& image, MatchAlignmentSettings const& settings);

// Both are copies by PrepareForMatching with these settings; neither is changed. The centre of the result, which a
// plain shift does not need, is the middle of the frame.
AlignmentOutcome AlignByMatching(COrbImage const& reference, COrbImage const& frame,
                                 MatchAlignmentSettings const& settings);

}  // namespace orb::host
