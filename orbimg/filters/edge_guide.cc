#include <algorithm>

#include <orbimg/core/row_kernel.h>
#include <orbimg/filters/edge_guide_internal.h>

namespace orb {

namespace {

// Intended: held from above only.
[[gnu::always_inline]] inline double EdgeShare(double e, double levelRange) {
  double const t = e / levelRange;
  double const held = t > 1.0 ? 1.0 : t;
  return held * held;
}

ORB_ROW_KERNEL void MixOffEdgesRow(double const* edge, double const* mixed, float const* centre, double levelRange,
                                   std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const a = EdgeShare(edge[x], levelRange);
    out[x] = static_cast<float>((1 - a) * mixed[x] + a * centre[x]);
  }
}

ORB_ROW_KERNEL void MixAtEdgesRow(double const* edge, double const* mixed, float const* centre, double levelRange,
                                  std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const a = EdgeShare(edge[x], levelRange);
    out[x] = static_cast<float>((1 - a) * centre[x] + a * mixed[x]);
  }
}

RowConvolution EdgeConvolution(int radius, double range, int width) {
  CFilterKernel edge;
  edge.MakeEdge(radius, range);
  return RowConvolution(edge, radius, width);
}

}  // namespace

EdgeGuide::EdgeGuide(CFilterKernel const& kernel, int radius, double range, int width, double initLevelRange)
    : mixed(kernel, radius, width), edge(EdgeConvolution(radius, range, width)), levelRange(initLevelRange) {}

void EdgeGuide::Convolve(WindowRow const& row) {
  auto const count = static_cast<std::size_t>(std::max<std::ptrdiff_t>(row.Count(), 0));
  mixedRow.resize(count);
  edgeRow.resize(count);
  float* const* const rows = row.window.rows.get();
  mixed.Compute(rows, row.left, row.right, mixedRow.data());
  edge.Compute(rows, row.left, row.right, edgeRow.data());
}

void EdgeGuide::MixOffEdges(WindowRow const& row) {
  Convolve(row);
  MixOffEdgesRow(edgeRow.data(), mixedRow.data(), row.Centre(), levelRange, row.Count(), row.dst);
}

void EdgeGuide::MixAtEdges(WindowRow const& row) {
  Convolve(row);
  MixAtEdgesRow(edgeRow.data(), mixedRow.data(), row.Centre(), levelRange, row.Count(), row.dst);
}

}  // namespace orb
