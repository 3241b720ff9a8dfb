// The walk of a filter whose result is a convolution and nothing else.
#pragma once

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/row_convolution_internal.h>

namespace orb {

// Every row of one plane becomes the convolution of the source's, on windows of `radius`. Ticks once a row; where rows
// are computed four at a time, after the four.
void ConvolvePlane(Run& run, COrbImage& image, COrbImage& source, int plane, int radius, RowConvolution& convolution);

}  // namespace orb
