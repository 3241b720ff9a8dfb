// Plain transcription of the tone curves, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

double ToneCurveAt(float const* curve, int count, double value);

// Curves of two entries at least.
void ApplyToneCurves(COrbImage& dst, float** curves, int count, COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
