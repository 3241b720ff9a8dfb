#include <orbimg/geometry/expansion.h>

#include <algorithm>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/geometry/expansion_kernels.h>
#include <orbmath/direction.h>

namespace {

constexpr int kMessage = 6140;
constexpr int kLineStep = 3;  // of 18 tenths of a degree of latitude, and of 36 of longitude: 30 degrees
constexpr double kInverse18 = 0.05555555555555555;
constexpr double kInverse36 = 0.027777777777777776;

// The largest frame of aspect 2 to 1 in the middle of an image.
CRect MapFrame(int width, int height) {
  if (width / 2 > height) {
    int const left = (width - 2 * height) / 2;
    return CRect(left, 0, left + 2 * height, height);
  }
  int const top = (height - width / 2) / 2;
  return CRect(0, top, width, top + width / 2);
}

orb::GlobeView MakeView(double cx, double cy, double radius, double tiltY, double tiltX) {
  orb::GlobeView view{{}, cx, cy, radius};
  double a[3][3];
  double b[3][3];
  RotateY(tiltY, a);
  RotateX(tiltX, b);
  MulMatrix(b, a, view.m);
  return view;
}

double LongitudeOf(int x, int width, CRect const& frame) { return (x - width * 0.5) / frame.Width() * 360.0; }

double LatitudeOf(int y, int height, CRect const& frame) { return (y - height * 0.5) / frame.Height() * -180.0; }

// Samples the rows of a map, from `left` to `right` - 1 of its frame.
class MapRows {
 public:
  MapRows(COrbImage const& map, COrbImage const& initSource, CRect const& frame, int left, int right,
          orb::GlobeView const& initView, double initFlattening);

  void Sample(int y, int plane, float* out);

 private:
  orb::Parallel ParallelOf(int y) const;

  COrbImage const& source;
  orb::GlobeView const view;
  double const flattening;
  CRect const frame;
  int const mapHeight;
  orb::PlaneShape const shape;
  std::ptrdiff_t const count;
  std::vector<double> cosines;  // of the longitude of each column
  std::vector<double> sines;
  std::vector<double> fractionX;
  std::vector<double> fractionY;
  std::vector<std::ptrdiff_t> offsets;
  std::vector<int> isShown;
};

MapRows::MapRows(COrbImage const& map, COrbImage const& initSource, CRect const& initFrame, int left, int right,
                 orb::GlobeView const& initView, double initFlattening)
    : source(initSource),
      view(initView),
      flattening(initFlattening),
      frame(initFrame),
      mapHeight(map.GetHeight()),
      shape{source.GetWidth(), source.GetHeight()},
      count(std::max(right - left, 0)) {
  auto const columns = static_cast<std::size_t>(count);
  for (std::vector<double>* each : {&cosines, &sines, &fractionX, &fractionY}) each->resize(columns);
  offsets.resize(columns);
  isShown.resize(columns);
  for (std::size_t i = 0; i < columns; ++i) {
    // On the equator the direction is no more than the cosine and the sine.
    double const ad[2] = {LongitudeOf(left + static_cast<int>(i), map.GetWidth(), frame), 0.0};
    double dc[3];
    AdToDc(ad, dc);
    cosines[i] = dc[0];
    sines[i] = dc[1];
  }
}

orb::Parallel MapRows::ParallelOf(int y) const {
  double const ad[2] = {0.0, LatitudeOf(y, mapHeight, frame)};
  double dc[3];
  AdToDc(ad, dc);
  return orb::Parallel{dc[0], dc[2] * flattening};
}

void MapRows::Sample(int y, int plane, float* out) {
  orb::LocateParallelRow(view, ParallelOf(y), cosines.data(), sines.data(), shape, count, fractionX.data(),
                         fractionY.data(), offsets.data(), isShown.data());
  float const* const samples = source.GetImageAdr(0, 0, plane, 1, nullptr);
  auto const shownFrom = [&](std::ptrdiff_t column, int shown) {
    return std::find(isShown.begin() + column, isShown.end(), shown) - isShown.begin();
  };
  std::ptrdiff_t end = 0;
  while (end < count) {
    std::ptrdiff_t const begin = shownFrom(end, 1);
    std::fill(out + end, out + begin, 0.0f);
    end = shownFrom(begin, 0);
    orb::CellsOfRow const cells{samples, offsets.data() + begin, shape.NextColumn(), shape.NextRow(), 0};
    orb::InterpolateCellsRow(cells, fractionX.data() + begin, fractionY.data() + begin, end - begin, out + begin);
  }
}

// Draws the lines of the graticule over a map. Lines reach one pixel beyond the rectangle, never beyond the image.
class Graticule {
 public:
  Graticule(COrbImage& initMap, CRect const& initFrame, orb::Bounds const& initArea)
      : map(initMap), frame(initFrame), area(initArea) {}

  void Draw(int plane) {
    for (int k = 0; k <= 18; k += kLineStep) DrawParallel(plane, Place(frame.top, frame.bottom, k, kInverse18));
    for (int k = 0; k <= 36; k += kLineStep) DrawMeridian(plane, Place(frame.left, frame.right, k, kInverse36));
  }

 private:
  static int Place(int begin, int end, int k, double inverse) {
    return orb::TruncateToInt((static_cast<double>(end) - begin - 1) * k * inverse + begin);
  }

  // Intended: the white of plane 0 for every plane.
  void DrawParallel(int plane, int row) {
    if (row < area.top || row > area.bottom || row >= map.GetHeight()) return;
    float const white = static_cast<float>(map.GetLevelRange(0) + map.GetLevelMin(0));
    float* const samples = map.GetImageAdr(0, row, plane, 0, nullptr);
    for (int x = area.left; x < area.right; ++x) samples[x] = white;
  }

  void DrawMeridian(int plane, int column) {
    if (column < area.left || column > area.right || column >= map.GetWidth()) return;
    float const white = static_cast<float>(map.GetLevelRange(plane) + map.GetLevelMin(plane));
    int const end = std::min(frame.bottom - 1, area.bottom);
    for (int y = std::max(frame.top, area.top); y <= end; ++y) *map.GetImageAdr(column, y, plane, 0, nullptr) = white;
  }

  COrbImage& map;
  CRect const frame;
  orb::Bounds const area;
};

}  // namespace

void CImgExpansion::Do(COrbImage* src, double cx, double cy, double radius, double tiltY, double tiltX,
                       double flattening, int grid, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows() * planes);
  for (int p = 0; p < planes; ++p) CImage::SetLevel(p, src->GetLevelMin(p), src->GetLevelMax(p));
  CRect const frame = MapFrame(width, height);
  int const left = std::clamp(frame.left, area.left, std::max(area.left, area.right));
  int const right = std::clamp(frame.right, left, std::max(left, area.right));
  MapRows map(*this, *src, frame, left, right, MakeView(cx, cy, radius, tiltY, tiltX), flattening);
  for (int p = 0; p < planes; ++p) {
    float const beside = static_cast<float>(levelMin[0]);  // Intended: plane 0's for every plane
    for (int y = area.top; y < area.bottom; ++y) {
      {
        orb::LockedRow const locked(*this, 0, y, p, false);
        float* const row = locked.Address();
        bool const isMap = y >= frame.top && y < frame.bottom;
        std::fill(row + area.left, row + (isMap ? left : std::max(area.left, area.right)), beside);
        if (isMap) {
          map.Sample(y, p, row + left);
          std::fill(row + right, row + std::max(right, area.right), beside);
        }
      }
      run.Tick();
    }
  }
  Graticule graticule(*this, frame, area);
  for (int p = 0; grid != 0 && p < planes; ++p) graticule.Draw(p);
  run.End();
}
