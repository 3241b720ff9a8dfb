// CImgFilterSpecial::StarEnhanceFilter: three stages, each with a window on the rows of the one before.
#include <algorithm>
#include <cmath>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/filters/filter_special.h>
#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/filters/sliding_rows_internal.h>
#include <orbimg/filters/star_enhance_kernels.h>
#include <orbimg/filters/star_filter_internal.h>
#include <orbimg/filters/window_run_internal.h>

namespace {

constexpr int kMessage = 6173;
// Intended: whatever the sigma. It is the window of the blur that limits it, not the kernel.
constexpr int kBlurRadius = 2;
constexpr double kSmoothSigma = 1.0;

orb::RowConvolution GaussianConvolution(int radius, double sigma, int windowRadius, int width) {
  CFilterKernel kernel;
  kernel.MakeGaussian(radius, sigma);
  return orb::RowConvolution(kernel, windowRadius, width);
}

// blurred = |clipped Gaussian|, edges = |Laplacian of blurred| where it reaches the threshold, smooth = Gaussian of
// edges. The stages compute one and two columns beyond the rectangle for the window of the next.
class EdgePipeline {
 public:
  EdgePipeline(COrbImage& src, double sigma, orb::Bounds const& wantedArea)
      : source(src),
        area(wantedArea),
        width(src.GetWidth()),
        blur(GaussianConvolution(std::max(1, orb::TruncateToInt(std::ceil(sigma))), sigma, kBlurRadius, width)),
        laplacian(orb::EdgeConvolution(1, width)),
        smooth(GaussianConvolution(1, kSmoothSigma, 1, width)),
        blurred(3, static_cast<std::size_t>(width)),
        edges(3, static_cast<std::size_t>(width)),
        scratch(static_cast<std::size_t>(width)) {}

  // Rows area.top, area.top + 1 ... of the plane come next.
  void Begin(int newPlane, double newThreshold) {
    plane = newPlane;
    threshold = newThreshold;
    next = area.top - 2;
    AddBlurredRow();
    AddBlurredRow();
    AddEdgeRow();
    AddEdgeRow();
  }

  // The columns of the rectangle.
  double const* NextRow() {
    AddEdgeRow();
    smooth.Compute(edges.Rows(), area.left, area.right, scratch.data());
    return scratch.data();
  }

 private:
  int Left(int beyond) const { return std::max(area.left - beyond, 0); }
  int Right(int beyond) const { return std::min(area.right + beyond, width); }

  void AddBlurredRow() {
    window.Set(&source, kBlurRadius, 0, next++, plane, static_cast<int>(orb::kLockRow));
    float* const row = blurred.Advance() + Left(2);
    auto const lo = static_cast<float>(source.GetLevelMin(plane));
    auto const hi = static_cast<float>(source.GetLevelMax(plane));
    blur.ComputeClipped(window.rows.get(), Left(2), Right(2), lo, hi, row);
    orb::MakeAbsoluteRow(row, Right(2) - Left(2));
    source.UnlockAll();
  }

  void AddEdgeRow() {
    AddBlurredRow();
    laplacian.Compute(blurred.Rows(), Left(1), Right(1), scratch.data());
    orb::KeepStrongEdgesRow(scratch.data(), Right(1) - Left(1), threshold, edges.Advance() + Left(1));
  }

  COrbImage& source;
  orb::Bounds area;
  int width;
  orb::RowConvolution blur;
  orb::RowConvolution laplacian;
  orb::RowConvolution smooth;
  orb::SlidingRows<float> blurred;
  orb::SlidingRows<float> edges;
  std::vector<double> scratch;
  CFilterRows window;
  int plane = 0;
  double threshold = 0.0;
  int next = 0;  // row that is blurred next
};

}  // namespace

void CImgFilterSpecial::StarEnhanceFilter(double sigma, double strength, double threshold, COrbImage* src, CRect* rect,
                                          int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows() * planes);
  EdgePipeline pipeline(*src, sigma, area);
  bool const isEmpty = area.IsEmpty();
  for (int p = 0; p < planes; ++p) {
    if (!isEmpty) pipeline.Begin(p, orb::EdgeThreshold(*src, p, threshold));
    for (int y = area.top; y < area.bottom; ++y) {
      if (!isEmpty) {
        double const* const edges = pipeline.NextRow();
        orb::AddEdgesRow(src->GetImageAdr(area.left, y, p, 1, nullptr), edges, area.Columns(),
                         static_cast<float>(strength), GetImageAdr(area.left, y, p, 0, nullptr));
      }
      run.Tick();
    }
  }
  run.End();
}
