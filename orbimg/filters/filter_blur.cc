#include <orbimg/filters/filter_blur.h>

#include <algorithm>
#include <vector>

#include <orbimg/filters/convolve_plane_internal.h>
#include <orbimg/filters/edge_guide_internal.h>
#include <orbimg/filters/filter_radius_internal.h>
#include <orbimg/filters/gaussian_internal.h>
#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/filters/window_run_internal.h>

namespace {

constexpr int kMeanMessage = 6119;
constexpr int kGaussianMessage = 6131;

}  // namespace

void CImgFilterBlur::MeanFilter(double range, double weight, COrbImage* src, CRect* rect, int progress) {
  MeanFilter(orb::ForPlanes(*this, range).data(), orb::ForPlanes(*this, weight).data(), src, rect, progress);
}

void CImgFilterBlur::MeanFilter(double* const range, double* const weight, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMeanMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) {
    int const r = orb::RadiusOfRange(range[p]);
    CFilterKernel mean;
    mean.MakeMean(r, range[p], weight[p]);
    orb::RowConvolution convolution(mean, r, src->GetWidth());
    orb::ConvolvePlane(run, *this, *src, p, r, convolution);
  }
  run.End();
}

void CImgFilterBlur::GaussianFilter(double sigma, COrbImage* src, CRect* rect, int progress) {
  GaussianFilter(orb::ForPlanes(*this, sigma).data(), src, rect, progress);
}

void CImgFilterBlur::GaussianFilter(double* const sigma, COrbImage* src, CRect* rect, int progress) {
  orb::FilterByGaussian(*this, sigma, *src, rect, progress);
}

void orb::FilterByGaussian(COrbImage& image, double const* sigma, COrbImage& src, CRect* rect, int progress) {
  Run run(image, rect);
  run.Start(progress, kGaussianMessage, run.Rows() * image.GetPlanes());
  for (int p = 0; p < image.GetPlanes(); ++p) {
    int const r = RadiusOfSigma(sigma[p]);
    CFilterKernel gaussian;
    gaussian.MakeGaussian(r, sigma[p]);
    RowConvolution convolution(gaussian, r, src.GetWidth(), RowConvolution::Sums::kFactored);
    ConvolvePlane(run, image, src, p, r, convolution);
  }
  run.End();
}

void CImgFilterBlur::MeanWithoutEdgeFilter(double range, double weight, COrbImage* src, CRect* rect, int progress) {
  MeanWithoutEdgeFilter(orb::ForPlanes(*this, range).data(), orb::ForPlanes(*this, weight).data(), src, rect, progress);
}

// destination = (1 - a) * mean + a * c
void CImgFilterBlur::MeanWithoutEdgeFilter(double* const range, double* const weight, COrbImage* src, CRect* rect,
                                           int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMeanMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) {
    int const r = orb::RadiusOfRange(range[p]);
    CFilterKernel mean;
    mean.MakeMean(r, range[p], weight[p]);
    orb::EdgeGuide guide(mean, r, range[p], src->GetWidth(), levelRange[static_cast<std::size_t>(p)]);
    orb::EachWindowRow(run, *this, *src, p, r, [&](orb::WindowRow const& row) { guide.MixOffEdges(row); });
  }
  run.End();
}
