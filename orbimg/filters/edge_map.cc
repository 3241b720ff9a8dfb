#include <orbimg/filters/edge_map_internal.h>

#include <algorithm>

#include <orbimg/filters/star_filter_internal.h>
#include <orbimg/filters/window_rows_internal.h>

namespace orb {

namespace {

std::size_t ColumnsAround(Bounds const& area, int radius) {
  return static_cast<std::size_t>(std::max(area.Columns(), 0)) + 2 * static_cast<std::size_t>(radius);
}

std::size_t Columns(Bounds const& area) { return static_cast<std::size_t>(std::max(area.Columns(), 0)); }

}  // namespace

EdgeMap::EdgeMap(COrbImage& src, int initRadius, Bounds const& wantedArea)
    : source(src),
      radius(initRadius),
      area(wantedArea),
      laplacian(EdgeConvolution(initRadius, src.GetWidth())),
      rows(2 * initRadius + 1, ColumnsAround(wantedArea, initRadius)),
      distances(2 * initRadius + 1, Columns(wantedArea)),
      hasEdge(2 * initRadius + 1, 1),
      laplacianRow(ColumnsAround(wantedArea, initRadius)),
      nearestUnder(Columns(wantedArea)),
      nearestAround(Columns(wantedArea)) {}

void EdgeMap::Begin(int newPlane, double newThreshold) {
  plane = newPlane;
  threshold = newThreshold;
  next = area.top - radius;
  for (int k = 0; k < 2 * radius; ++k) AddRow();
}

void EdgeMap::Advance() { AddRow(); }

void EdgeMap::AddRow() {
  int const width = source.GetWidth();
  int const first = std::max(area.left - radius, 0);
  int const last = std::min(area.right + radius, width);
  int const count = last - first;
  window.Set(&source, radius, 0, next++, plane, static_cast<int>(kLockRow));
  laplacian.Compute(window.rows.get(), first, last, laplacianRow.data());
  float* const row = rows.Advance();
  float* const samples = row + (first - (area.left - radius));
  float const* const centre = window.rows[static_cast<std::size_t>(radius)] + first;
  bool const isMarked = MarkEdgesRow(laplacianRow.data(), centre, count, threshold, samples);
  source.UnlockAll();
  std::fill(row, samples, samples[0]);
  std::fill(samples + count, row + ColumnsAround(area, radius), samples[count - 1]);
  hasEdge.Advance()[0] = isMarked ? 1 : 0;
  MeasureRow(row + radius, isMarked, distances.Advance());
}

// Columns that the image does not have hold the nearest one that it has, and so bring no edge sample nearer than that.
void EdgeMap::MeasureRow(float const* row, bool isMarked, std::int32_t* distance) const {
  if (!isMarked) return;
  int const count = area.Columns();
  std::int32_t since = kFar;
  for (int x = -radius; x < count; ++x) {
    since = row[x] == kEdgeMarker ? 0 : std::min(since + 1, kFar);
    if (x >= 0) distance[x] = since;
  }
  since = kFar;
  for (int x = count - 1 + radius; x >= 0; --x) {
    since = row[x] == kEdgeMarker ? 0 : std::min(since + 1, kFar);
    if (x < count) distance[x] = std::min(distance[x], since);
  }
}

void EdgeMap::Lower(int k, int reach, std::vector<std::int32_t>& nearest) const {
  if (HasEdges(k)) LowerToRow(distances.Row(k), reach, area.Columns(), nearest.data());
}

std::int32_t const* EdgeMap::FindEdgesUnder(Disk const& disk) {
  std::fill(nearestUnder.begin(), nearestUnder.end(), kFar);
  Lower(radius, 0, nearestUnder);
  if (disk.Count() == 0) return nearestUnder.data();
  // Intended: rows of the map are limited by the height of the image, as if the map's first row were the image's.
  int const first = std::max(radius - disk.Above(), 0);
  int const last = std::min({radius + disk.Below(), source.GetHeight() - 1, 2 * radius});
  for (int k = first; k <= last; ++k) Lower(k, disk.HalfWidth(k - radius), nearestUnder);
  return nearestUnder.data();
}

std::int32_t const* EdgeMap::FindEdgesAround() {
  std::fill(nearestAround.begin(), nearestAround.end(), kFar);
  for (int k = 0; k <= 2 * radius; ++k) Lower(k, radius, nearestAround);
  return nearestAround.data();
}

}  // namespace orb
