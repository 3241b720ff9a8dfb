// The Gaussian filter of an image of any class.
#pragma once

#include <orbimg/core/orb_image.h>

namespace orb {

// CImgFilterBlur::GaussianFilter on `image`; one sigma a plane. The sky flat blurs itself by it.
void FilterByGaussian(COrbImage& image, double const* sigma, COrbImage& src, CRect* rect, int progress);

}  // namespace orb
