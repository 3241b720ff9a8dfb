#include <hosts/orbimg/rigid_fit.h>

#include <cmath>
#include <cstddef>

#include <orbimg/orbimg.h>

namespace orb::host {
namespace {

struct Centroids {
  Position reference;
  Position frame;
};

Centroids FindCentroids(std::vector<PositionPair> const& pairs) {
  Centroids sum;
  for (PositionPair const& pair : pairs) {
    sum.reference.x += pair.reference.x;
    sum.reference.y += pair.reference.y;
    sum.frame.x += pair.frame.x;
    sum.frame.y += pair.frame.y;
  }
  double const n = static_cast<double>(pairs.empty() ? 1 : pairs.size());
  return Centroids{{sum.reference.x / n, sum.reference.y / n}, {sum.frame.x / n, sum.frame.y / n}};
}

// The transform with this angle that puts one centroid on the other.
FrameTransform LayCentroids(Centroids const& centroids, double angle, Position const& centre) {
  FrameTransform const unshifted{0.0, 0.0, angle, centre.x, centre.y};
  Position const back = RigidMap(unshifted).ToReference(centroids.frame);
  return FrameTransform{centroids.reference.x - back.x, centroids.reference.y - back.y, angle, centre.x, centre.y};
}

}  // namespace

// With r and f measured from their centroids, y downward, the sum of |f - R r|^2 is least where
// tan(angle) = sum(fx ry - fy rx) / sum(fx rx + fy ry). Its standard error is the scatter of one coordinate,
// sqrt(sum of squares / (2 n - 3)), over the root of sum |r|^2.
RigidFit FitRigid(std::vector<PositionPair> const& pairs, Position const& centre) {
  Centroids const centroids = FindCentroids(pairs);
  double cross = 0.0;
  double dot = 0.0;
  double lever = 0.0;
  for (PositionPair const& pair : pairs) {
    double const rx = pair.reference.x - centroids.reference.x;
    double const ry = pair.reference.y - centroids.reference.y;
    double const fx = pair.frame.x - centroids.frame.x;
    double const fy = pair.frame.y - centroids.frame.y;
    cross += fx * ry - fy * rx;
    dot += fx * rx + fy * ry;
    lever += rx * rx + ry * ry;
  }
  RigidFit fit;
  fit.transform = LayCentroids(centroids, std::atan2(cross, dot) * kDegreesPerRadian, centre);
  fit.rms = RootMeanSquare(FindResiduals(pairs, fit.transform));
  double const n = static_cast<double>(pairs.size());
  if (n > 2.0 && lever > 0.0) {
    fit.angleError = std::sqrt(fit.rms * fit.rms * n / (2.0 * n - 3.0) / lever) * kDegreesPerRadian;
  }
  return fit;
}

RigidFit FitShift(std::vector<PositionPair> const& pairs, Position const& centre) {
  RigidFit fit;
  fit.transform = LayCentroids(FindCentroids(pairs), 0.0, centre);
  fit.rms = RootMeanSquare(FindResiduals(pairs, fit.transform));
  return fit;
}

std::vector<double> FindResiduals(std::vector<PositionPair> const& pairs, FrameTransform const& transform) {
  RigidMap const map(transform);
  std::vector<double> residuals;
  residuals.reserve(pairs.size());
  for (PositionPair const& pair : pairs) {
    residuals.push_back(std::sqrt(SquaredDistance(map.ToFrame(pair.reference), pair.frame)));
  }
  return residuals;
}

double RootMeanSquare(std::vector<double> const& values) {
  if (values.empty()) return 0.0;
  double sum = 0.0;
  for (double value : values) sum += value * value;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

}  // namespace orb::host
