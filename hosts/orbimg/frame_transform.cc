#include <hosts/orbimg/frame_transform.h>

#include <cmath>

#include <fmt/format.h>
#include <orbimg/orbimg.h>

namespace orb::host {

double SquaredDistance(Position const& a, Position const& b) {
  double const x = a.x - b.x;
  double const y = a.y - b.y;
  return x * x + y * y;
}

// R (d' + c') - c' = R (d + c) - c, so d' = d + c - c' + R^-1 (c' - c)
FrameTransform FrameTransform::About(Position const& centre) const {
  RigidMap const map(*this);
  Position const reference = map.ToReference(centre);
  FrameTransform moved;
  moved.dx = reference.x - centre.x;
  moved.dy = reference.y - centre.y;
  moved.angle = angle;
  moved.cx = centre.x;
  moved.cy = centre.y;
  return moved;
}

std::string FrameTransform::Text() const {
  return fmt::format("dx {:.4f} dy {:.4f} angle {:.5f} about {:.2f} {:.2f}", dx, dy, angle, cx, cy);
}

RigidMap::RigidMap(FrameTransform const& transform)
    : RigidMap(transform, std::sin(transform.angle * kRadiansPerDegree),
               std::cos(transform.angle * kRadiansPerDegree)) {}

RigidMap::RigidMap(FrameTransform const& transform, double initSinA, double initCosA)
    : t(transform), sinA(initSinA), cosA(initCosA) {}

// p = x - cx - dx, q = cy - y + dy (upward): sx = p cos - q sin + cx, sy = cy - (p sin + q cos)
Position RigidMap::ToFrame(Position const& reference) const {
  if (cosA == 1.0 && sinA == 0.0) return Position{reference.x - t.dx, reference.y - t.dy};
  double const p = reference.x - t.cx - t.dx;
  double const q = t.cy - reference.y + t.dy;
  return Position{(p * cosA - q * sinA) + t.cx, t.cy - (p * sinA + q * cosA)};
}

Position RigidMap::ToReference(Position const& frame) const {
  if (cosA == 1.0 && sinA == 0.0) return Position{frame.x + t.dx, frame.y + t.dy};
  double const p = frame.x - t.cx;
  double const q = t.cy - frame.y;
  return Position{(p * cosA + q * sinA) + t.cx + t.dx, t.cy + t.dy - (q * cosA - p * sinA)};
}

}  // namespace orb::host
