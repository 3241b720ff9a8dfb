#include <hosts/orbimg/mosaic_canvas.h>

#include <algorithm>
#include <cmath>

namespace orb::host {
namespace {

struct Extent {
  double left;
  double top;
  double right;
  double bottom;
};

// Where the second image reaches, in positions of the first.
Extent FindExtent(COrbImage const& image, FrameTransform const& transform) {
  RigidMap const map(transform);
  double const w = image.GetWidth();
  double const h = image.GetHeight();
  Position const first = map.ToReference({0.0, 0.0});
  Extent extent{first.x, first.y, first.x, first.y};
  for (Position const corner : {Position{w, 0.0}, Position{0.0, h}, Position{w, h}}) {
    Position const at = map.ToReference(corner);
    extent.left = std::min(extent.left, at.x);
    extent.top = std::min(extent.top, at.y);
    extent.right = std::max(extent.right, at.x);
    extent.bottom = std::max(extent.bottom, at.y);
  }
  return extent;
}

std::int64_t RoundUp(double value) { return static_cast<std::int64_t>(std::ceil(value)); }

}  // namespace

// A whole position x lies in an image that reaches from a to b if a <= x < b.
MosaicCanvas FindCanvas(COrbImage const& first, COrbImage const& second, FrameTransform const& transform) {
  Extent const extent = FindExtent(second, transform);
  std::int64_t const left = std::min<std::int64_t>(RoundUp(extent.left), 0);
  std::int64_t const top = std::min<std::int64_t>(RoundUp(extent.top), 0);
  std::int64_t const right = std::max<std::int64_t>(RoundUp(extent.right), first.GetWidth());
  std::int64_t const bottom = std::max<std::int64_t>(RoundUp(extent.bottom), first.GetHeight());
  return MosaicCanvas{right - left, bottom - top, -left, -top};
}

SampleStatistics CompareOverlap(COrbImage& first, COrbImage& second, FrameTransform const& transform, int plane) {
  double const sinA = std::sin(transform.angle * kRadiansPerDegree);
  double const cosA = std::cos(transform.angle * kRadiansPerDegree);
  int const planeOfFirst = first.IsColor() != 0 ? plane : 0;
  second.SetStdCtr(transform.cx, transform.cy);
  std::vector<float> differences;
  for (int y = 0; y < first.GetHeight(); ++y) {
    for (int x = 0; x < first.GetWidth(); ++x) {
      int isOutside = 0;
      float const sample = second.GetPixelGrayRaw(x, y, transform.dx, transform.dy, sinA, cosA, 1.0, plane, 0.0, 0,
                                                  &isOutside, nullptr, nullptr);
      if (isOutside == 0) differences.push_back(first.GetPixelGrayRaw(x, y, planeOfFirst) - sample);
    }
  }
  return ClipSamples(differences);
}

}  // namespace orb::host
