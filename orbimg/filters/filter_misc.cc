#include <orbimg/filters/filter_misc.h>

#include <algorithm>

#include <orbimg/filters/convolve_plane_internal.h>
#include <orbimg/filters/row_convolution_internal.h>

namespace {

constexpr int kCustomMessage = 6175;

}  // namespace

void CImgFilterMisc::Custom(int radius, double* weights, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kCustomMessage, run.Rows() * planes);
  CFilterKernel const kernel(radius, weights, 0);
  int const windowRadius = std::max(radius, 0);
  orb::RowConvolution convolution(kernel, windowRadius, src->GetWidth());
  for (int p = 0; p < planes; ++p) orb::ConvolvePlane(run, *this, *src, p, windowRadius, convolution);
  run.End();
}
