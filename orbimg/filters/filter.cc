// CImgFilter: the frame, and the filters over small neighbourhoods.
#include <orbimg/filters/filter.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <orbimg/filters/convolution_kernels.h>
#include <orbimg/filters/shape_internal.h>
#include <orbimg/filters/shape_kernels.h>
#include <orbimg/filters/unsharp_row_internal.h>
#include <orbimg/filters/window_run_internal.h>

namespace {

constexpr int kMedianMessage = 6120;
constexpr int kUnsharpMessage = 6122;
constexpr int kLaplacianMessage = 6143;
constexpr int kMinMaxMessage = 6153;
constexpr int kLaplacianRadius = 1;

// The samples that the formulas of one position read: addresses at column x of a window's rows.
class RowsAt {
 public:
  RowsAt(CFilterRows const& window, int x) {
    for (int k = 0; k <= 2 * window.radius; ++k) rows[k] = window.rows[static_cast<std::size_t>(k)] + x;
  }
  float const* const* Get() const { return rows; }

 private:
  float const* rows[5];
};

// Calls inside(rows, count, out) for the columns whose neighbourhood of `radius` lies inside the row, and single(rows,
// column, out) for each of the others.
template <typename Inside, typename Single>
void EachColumn(orb::WindowRow const& row, int width, int radius, Inside inside, Single single) {
  int const first = std::clamp(radius, row.left, std::max(row.left, row.right));
  int const last = std::clamp(width - radius, first, std::max(first, row.right));
  auto const out = [&](int x) { return row.dst + (x - row.left); };
  for (int x = row.left; x < std::min(first, row.right); ++x) single(RowsAt(row.window, x).Get(), x, out(x));
  if (first < last) inside(RowsAt(row.window, first).Get(), last - first, out(first));
  for (int x = last; x < row.right; ++x) single(RowsAt(row.window, x).Get(), x, out(x));
}

void CopyRow(orb::WindowRow const& row) {
  if (row.Count() > 0) std::copy_n(row.Centre(), row.Count(), row.dst);
}

ORB_ROW_KERNEL void UnsharpRow(double const* sums, float const* centre, orb::MeanFormula means,
                               orb::UnsharpFormula formula, std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    // Intended: the weighted mean sharpens, the plain one is tested.
    orb::Means const mean = means.Apply(centre[x], sums[x]);
    out[x] = formula.Apply(centre[x], mean.weighted, mean.plain);
  }
}

// The unsharp mask of rows of one shape.
class Unsharp {
 public:
  Unsharp(int initShape, double weight, orb::UnsharpFormula initFormula, int initWidth)
      : shape(initShape),
        width(initWidth),
        means(static_cast<int>(orb::CellsOf(shape).size()), weight),
        formula(initFormula),
        sums(static_cast<std::size_t>(std::max(width, 0))) {}

  void Compute(orb::WindowRow const& row) {
    int const r = orb::RadiusOf(shape);
    EachColumn(
        row, width, r,
        [&](float const* const* rows, int count, float* out) {
          std::vector<orb::Tap>& others = taps;
          others.clear();
          for (orb::Cell const& cell : orb::CellsOf(shape)) {
            if (cell.dx != 0 || cell.dy != 0) others.push_back(orb::Tap{1.0, rows[r + cell.dy] + cell.dx});
          }
          orb::SumTapsRow(others.data(), others.size(), count, sums.data());
          UnsharpRow(sums.data(), rows[r], means, formula, count, out);
        },
        [&](float const* const* rows, int x, float* out) {
          orb::Neighbourhood const around(rows, x, width, shape);
          orb::Means const mean = means.Apply(around.Centre(), around.SumOfOthers());
          *out = formula.Apply(around.Centre(), mean.weighted, mean.plain);
        });
  }

 private:
  int shape;
  int width;
  orb::MeanFormula means;
  orb::UnsharpFormula formula;
  std::vector<double> sums;
  std::vector<orb::Tap> taps;
};

void UnsharpPlane(orb::Run& run, COrbImage& image, COrbImage& src, int plane, int shape, double weight,
                  orb::UnsharpFormula formula) {
  Unsharp unsharp(shape, weight, formula, src.GetWidth());
  orb::EachWindowRow(run, image, src, plane, orb::RadiusOf(shape), [&](orb::WindowRow const& row) {
    if (orb::IsShape(shape)) {
      unsharp.Compute(row);
    } else {
      CopyRow(row);  // the centre is its own mean
    }
  });
}

void RankFilter(orb::Run& run, COrbImage& image, COrbImage& src, int shape, int index) {
  int const width = src.GetWidth();
  int const rank = std::clamp(index, 0, static_cast<int>(orb::CellsOf(shape).size()) - 1);
  int const r = orb::RadiusOf(shape);
  auto const compute = [&](orb::WindowRow const& row) {
    if (!orb::IsShape(shape)) return CopyRow(row);
    EachColumn(
        row, width, r,
        [&](float const* const* rows, int count, float* out) { orb::RankShapeRow(shape, rank, rows, count, out); },
        [&](float const* const* rows, int x, float* out) {
          *out = orb::Neighbourhood(rows, x, width, shape).AtRank(rank);
        });
  };
  for (int p = 0; p < image.GetPlanes(); ++p) orb::EachWindowRow(run, image, src, p, r, compute);
}

void LaplacianPlane(orb::Run& run, COrbImage& image, COrbImage& src, int plane, orb::Laplacian formula, double floor) {
  int const width = src.GetWidth();
  orb::EachWindowRow(run, image, src, plane, kLaplacianRadius, [&](orb::WindowRow const& row) {
    EachColumn(
        row, width, kLaplacianRadius,
        [&](float const* const* rows, int count, float* out) {
          orb::LaplacianRow(formula.shape, floor, rows, count, out);
        },
        [&](float const* const* rows, int x, float* out) {
          double const v =
              formula.Apply(rows[0], rows[1], rows[2], orb::TurnedOffset(-1, x, width), orb::TurnedOffset(1, x, width));
          *out = static_cast<float>(std::fabs(v) + floor);
        });
  });
}

}  // namespace

void CImgFilter::CalcRect(int& left, int& top, int& right, int& bottom, CRect* rect) {
  NormalizeRect(rect, left, top, right, bottom);
}

void CImgFilter::CalcShift(int& dx, int& dy, int /*radius*/, COrbImage* image) {
  if (width >= image->GetWidth() && height >= image->GetHeight()) return;
  dx = (image->GetWidth() - width) / 2;
  dy = (image->GetHeight() - height) / 2;
}

void CImgFilter::SetFilterAdr(int x, int y, int plane, int radius, float** const rows, unsigned int flags) {
  orb::SetWindowRows(*this, x, y, plane, radius, flags, rows);
}

void CImgFilter::UnSharpMask(double strength, int shape, double weight, double threshold, COrbImage* src, CRect* rect,
                             int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kUnsharpMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) UnsharpPlane(run, *this, *src, p, shape, weight, {strength, threshold});
  run.End();
}

void CImgFilter::UnSharpMask(double strength, int shape, double weight, double threshold, COrbImage* src, int plane,
                             CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kUnsharpMessage, run.Rows() * planes);
  UnsharpPlane(run, *this, *src, plane, shape, weight, {strength, threshold});
  run.End();
}

void CImgFilter::MedianFilter(int shape, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMedianMessage, run.Rows() * planes);
  RankFilter(run, *this, *src, shape, static_cast<int>(orb::CellsOf(shape).size()) / 2);
  run.End();
}

void CImgFilter::MinMaxFilter(int shape, int index, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMinMaxMessage, run.Rows() * planes);
  RankFilter(run, *this, *src, shape, index);
  run.End();
}

void CImgFilter::LaplacianFilter(int shape, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kLaplacianMessage, run.Rows() * planes);
  // Intended: the floor of plane 0 for all planes.
  double const floor = planes > 0 ? src->GetLevelMin(0) : 0.0;
  for (int p = 0; p < planes; ++p) LaplacianPlane(run, *this, *src, p, orb::Laplacian{shape}, floor);
  run.End();
}
