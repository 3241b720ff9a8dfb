#include <orbimg/filters/filter_sharp.h>

#include <algorithm>
#include <vector>

#include <orbimg/filters/convolve_plane_internal.h>
#include <orbimg/filters/edge_guide_internal.h>
#include <orbimg/filters/filter_radius_internal.h>
#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/filters/unsharp_row_internal.h>
#include <orbimg/filters/window_run_internal.h>

namespace {

constexpr int kSharpMessage = 6121;
constexpr int kUnsharpMessage = 6122;
constexpr double kLeastRange = 1.0;

// The blur is at once what is tested and what sharpens.
ORB_ROW_KERNEL void UnsharpRow(double const* blur, float const* centre, orb::UnsharpFormula formula,
                               std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = formula.Apply(centre[x], blur[x], blur[x]);
}

}  // namespace

void CImgFilterSharp::SharpFilter(double range, double weight, COrbImage* src, CRect* rect, int progress) {
  SharpFilter(orb::ForPlanes(*this, range).data(), orb::ForPlanes(*this, weight).data(), src, rect, progress);
}

void CImgFilterSharp::SharpFilter(double* const range, double* const weight, COrbImage* src, CRect* rect,
                                  int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kSharpMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) {
    double const held = std::max(range[p], kLeastRange);
    CFilterKernel sharp;
    sharp.MakeSharp(held, weight[p]);
    orb::RowConvolution convolution(sharp, sharp.radius, src->GetWidth());
    orb::ConvolvePlane(run, *this, *src, p, sharp.radius, convolution);
  }
  run.End();
}

void CImgFilterSharp::SharpEdgeFilter(double range, double weight, COrbImage* src, CRect* rect, int progress) {
  SharpEdgeFilter(orb::ForPlanes(*this, range).data(), orb::ForPlanes(*this, weight).data(), src, rect, progress);
}

// destination = (1 - a) * c + a * sharpened. Intended: the kernels take the range as it is, only the radius the held
// one.
void CImgFilterSharp::SharpEdgeFilter(double* const range, double* const weight, COrbImage* src, CRect* rect,
                                      int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kSharpMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) {
    int const r = orb::RadiusOfRange(range[p]);
    CFilterKernel sharp;
    sharp.MakeSharp(range[p], weight[p]);
    orb::EdgeGuide guide(sharp, r, range[p], src->GetWidth(), levelRange[static_cast<std::size_t>(p)]);
    orb::EachWindowRow(run, *this, *src, p, r, [&](orb::WindowRow const& row) { guide.MixAtEdges(row); });
  }
  run.End();
}

void CImgFilterSharp::UnSharpMask(double sigma, double strength, double threshold, COrbImage* src, CRect* rect,
                                  int progress) {
  UnSharpMask(orb::ForPlanes(*this, sigma).data(), orb::ForPlanes(*this, strength).data(),
              orb::ForPlanes(*this, threshold).data(), src, rect, progress);
}

void CImgFilterSharp::UnSharpMask(double* const sigma, double* const strength, double* const threshold, COrbImage* src,
                                  CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kUnsharpMessage, run.Rows() * planes);
  std::vector<double> blur(static_cast<std::size_t>(std::max(run.Area().Columns(), 0)));
  for (int p = 0; p < planes; ++p) {
    int const r = orb::RadiusOfSigma(sigma[p]);
    CFilterKernel gaussian;
    gaussian.MakeGaussian(r, sigma[p]);
    orb::RowConvolution convolution(gaussian, r, src->GetWidth());
    orb::EachWindowRow(run, *this, *src, p, r, [&](orb::WindowRow const& row) {
      convolution.Compute(row.window.rows.get(), row.left, row.right, blur.data());
      UnsharpRow(blur.data(), row.Centre(), orb::UnsharpFormula{strength[p], threshold[p]}, row.Count(), row.dst);
    });
  }
  run.End();
}
