#include <hosts/orbimg/triangle_match.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include <hosts/orbimg/rigid_fit.h>
#include <orbimg/orbimg.h>

namespace orb::host {
namespace {

constexpr double kShortestSide = 10.0;      // pixels: smaller triangles say nothing within the tolerance
constexpr int kAngleClasses = 360;          // of a degree each
constexpr double kAngleWindow = 3.0;        // degrees around the angle that most agree on
constexpr std::size_t kMaxCandidates = 60;  // pairs that give transforms
constexpr int kGrowRounds = 3;
constexpr double kClip = 4.0;                 // times the scatter of one coordinate
constexpr double kLeastClip = 0.25;           // pixels
constexpr double kMedianOfRayleigh = 1.1774;  // median distance over the scatter of one coordinate
constexpr double kMaxChance = 1e-3;
constexpr double kPi = 3.14159265358979323846;

// Corners in the order of the sides opposite to them, longest first.
struct Triangle {
  std::array<int, 3> corners;
  std::array<double, 3> sides;
  bool clockwise;
  double direction;  // radians, of the side from the second corner to the third, which is the longest
};

Triangle MakeTriangle(std::vector<Position> const& stars, int a, int b, int c) {
  auto const side = [&](int i, int j) { return std::sqrt(SquaredDistance(stars[i], stars[j])); };
  std::array<std::pair<double, int>, 3> opposite = {{{side(b, c), a}, {side(a, c), b}, {side(a, b), c}}};
  std::sort(opposite.begin(), opposite.end(), std::greater<>());
  Triangle triangle;
  for (int i = 0; i < 3; ++i) {
    triangle.sides[i] = opposite[i].first;
    triangle.corners[i] = opposite[i].second;
  }
  Position const& p = stars[triangle.corners[0]];
  Position const& q = stars[triangle.corners[1]];
  Position const& r = stars[triangle.corners[2]];
  triangle.clockwise = (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x) > 0.0;
  triangle.direction = std::atan2(q.y - r.y, r.x - q.x);
  return triangle;
}

// Sorted by the longest side.
std::vector<Triangle> MakeTriangles(std::vector<Position> const& stars, int count) {
  std::vector<Triangle> triangles;
  for (int a = 0; a < count; ++a) {
    for (int b = a + 1; b < count; ++b) {
      for (int c = b + 1; c < count; ++c) {
        Triangle const triangle = MakeTriangle(stars, a, b, c);
        if (triangle.sides[2] >= kShortestSide) triangles.push_back(triangle);
      }
    }
  }
  std::sort(triangles.begin(), triangles.end(),
            [](Triangle const& s, Triangle const& t) { return s.sides[0] < t.sides[0]; });
  return triangles;
}

struct TriangleHit {
  std::array<int, 3> reference;
  std::array<int, 3> frame;
  double turn;  // degrees, 0 to 360
};

double TurnBetween(Triangle const& reference, Triangle const& frame) {
  double const degrees = (frame.direction - reference.direction) * kDegreesPerRadian;
  return degrees - 360.0 * std::floor(degrees / 360.0);
}

bool IsAlike(Triangle const& s, Triangle const& t, double tolerance) {
  return s.clockwise == t.clockwise && std::abs(s.sides[1] - t.sides[1]) < tolerance &&
         std::abs(s.sides[2] - t.sides[2]) < tolerance;
}

std::vector<TriangleHit> FindHits(std::vector<Triangle> const& reference, std::vector<Triangle> const& frame,
                                  double tolerance) {
  std::vector<TriangleHit> hits;
  auto first = frame.begin();
  for (Triangle const& triangle : reference) {
    double const longest = triangle.sides[0];
    while (first != frame.end() && first->sides[0] <= longest - tolerance) ++first;
    for (auto other = first; other != frame.end() && other->sides[0] < longest + tolerance; ++other) {
      if (!IsAlike(triangle, *other, tolerance)) continue;
      hits.push_back(TriangleHit{triangle.corners, other->corners, TurnBetween(triangle, *other)});
    }
  }
  return hits;
}

double AngleBetween(double a, double b) {
  double const d = std::abs(a - b);
  return std::min(d, 360.0 - d);
}

// The angle on which most hits agree, to a degree.
double FindCommonTurn(std::vector<TriangleHit> const& hits) {
  std::array<int, kAngleClasses> counts{};
  for (TriangleHit const& hit : hits) ++counts[static_cast<std::size_t>(hit.turn) % kAngleClasses];
  int best = 0;
  int most = -1;
  for (int i = 0; i < kAngleClasses; ++i) {
    int const around = counts[(i + kAngleClasses - 1) % kAngleClasses] + counts[i] + counts[(i + 1) % kAngleClasses];
    if (around > most) {
      most = around;
      best = i;
    }
  }
  return best + 0.5;
}

// The pairs with the most votes, each star in at most one.
std::vector<StarPair> FindCandidates(std::vector<TriangleHit> const& hits, int referenceCount, int frameCount) {
  double const turn = FindCommonTurn(hits);
  std::vector<int> votes(static_cast<std::size_t>(referenceCount) * frameCount);
  for (TriangleHit const& hit : hits) {
    if (AngleBetween(hit.turn, turn) > kAngleWindow) continue;
    for (int i = 0; i < 3; ++i) ++votes[hit.reference[i] * frameCount + hit.frame[i]];
  }
  std::vector<int> order;
  for (int i = 0; i < referenceCount * frameCount; ++i) {
    if (votes[i] > 0) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return votes[a] > votes[b]; });
  std::vector<bool> usedReference(referenceCount, false);
  std::vector<bool> usedFrame(frameCount, false);
  std::vector<StarPair> candidates;
  for (int cell : order) {
    StarPair const pair{cell / frameCount, cell % frameCount};
    if (usedReference[pair.reference] || usedFrame[pair.frame]) continue;
    usedReference[pair.reference] = true;
    usedFrame[pair.frame] = true;
    candidates.push_back(pair);
    if (candidates.size() == kMaxCandidates) break;
  }
  return candidates;
}

// Two star lists with what is asked of them again and again.
class Matcher {
 public:
  Matcher(std::vector<Position> const& initReference, std::vector<Position> const& initFrame, double initTolerance)
      : reference(initReference), frame(initFrame), tolerance(initTolerance), byColumn(initFrame.size()) {
    for (std::size_t i = 0; i < byColumn.size(); ++i) byColumn[i] = static_cast<int>(i);
    std::sort(byColumn.begin(), byColumn.end(), [&](int a, int b) { return frame[a].x < frame[b].x; });
  }

  std::vector<PositionPair> PositionsOf(std::vector<StarPair> const& pairs) const {
    std::vector<PositionPair> positions;
    for (StarPair const& pair : pairs) positions.push_back({reference[pair.reference], frame[pair.frame]});
    return positions;
  }

  // The largest set of candidates that obey the transform of two of them.
  std::vector<StarPair> FindAgreement(std::vector<StarPair> const& candidates) const {
    std::vector<StarPair> best;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      for (std::size_t j = i + 1; j < candidates.size(); ++j) {
        std::vector<PositionPair> const two = PositionsOf({candidates[i], candidates[j]});
        RigidFit const fit = FitRigid(two, two[0].frame);
        if (fit.rms > tolerance) continue;
        std::vector<StarPair> agreeing = KeepWithin(candidates, fit.transform, tolerance);
        if (agreeing.size() > best.size()) best = std::move(agreeing);
      }
    }
    return best;
  }

  std::vector<StarPair> KeepWithin(std::vector<StarPair> const& pairs, FrameTransform const& transform,
                                   double limit) const {
    std::vector<double> const residuals = FindResiduals(PositionsOf(pairs), transform);
    std::vector<StarPair> kept;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      if (residuals[i] <= limit) kept.push_back(pairs[i]);
    }
    return kept;
  }

  // Each star of the frame goes to the star of the reference whose place lies nearest, within the tolerance.
  std::vector<StarPair> PairNearest(FrameTransform const& transform) const {
    RigidMap const map(transform);
    std::vector<StarPair> owner(frame.size(), StarPair{-1, -1});
    std::vector<double> distance(frame.size(), std::numeric_limits<double>::infinity());
    for (std::size_t i = 0; i < reference.size(); ++i) {
      Position const place = map.ToFrame(reference[i]);
      int const nearest = FindNearest(place);
      if (nearest < 0) continue;
      double const squared = SquaredDistance(place, frame[nearest]);
      if (squared >= distance[nearest]) continue;
      distance[nearest] = squared;
      owner[nearest] = StarPair{static_cast<int>(i), nearest};
    }
    std::erase_if(owner, [](StarPair const& pair) { return pair.reference < 0; });
    std::sort(owner.begin(), owner.end(),
              [](StarPair const& a, StarPair const& b) { return a.reference < b.reference; });
    return owner;
  }

  // Fits and leaves out what lies off until all that is left agrees.
  std::vector<StarPair> RejectOutliers(std::vector<StarPair> pairs) const {
    while (pairs.size() > 2) {
      std::vector<PositionPair> const positions = PositionsOf(pairs);
      RigidFit const fit = FitRigid(positions, positions[0].frame);
      std::vector<double> residuals = FindResiduals(positions, fit.transform);
      auto const middle = residuals.begin() + static_cast<std::ptrdiff_t>(residuals.size() / 2);
      std::nth_element(residuals.begin(), middle, residuals.end());
      double const limit = std::min(tolerance, std::max(kLeastClip, kClip * *middle / kMedianOfRayleigh));
      std::vector<StarPair> kept = KeepWithin(pairs, fit.transform, limit);
      if (kept.size() == pairs.size()) break;
      pairs = std::move(kept);
    }
    return pairs;
  }

  FrameTransform Fit(std::vector<StarPair> const& pairs) const {
    std::vector<PositionPair> const positions = PositionsOf(pairs);
    return FitRigid(positions, positions[0].frame).transform;
  }

  double FrameArea() const {
    auto const byX = [](Position const& a, Position const& b) { return a.x < b.x; };
    auto const byY = [](Position const& a, Position const& b) { return a.y < b.y; };
    auto const [left, right] = std::minmax_element(frame.begin(), frame.end(), byX);
    auto const [top, bottom] = std::minmax_element(frame.begin(), frame.end(), byY);
    return (right->x - left->x) * (bottom->y - top->y);
  }

 private:
  int FindNearest(Position const& place) const {
    auto const before = [&](int i, double x) { return frame[i].x < x; };
    int nearest = -1;
    double least = tolerance * tolerance;
    auto i = std::lower_bound(byColumn.begin(), byColumn.end(), place.x - tolerance, before);
    for (; i != byColumn.end() && frame[*i].x <= place.x + tolerance; ++i) {
      double const squared = SquaredDistance(place, frame[*i]);
      if (squared > least) continue;
      least = squared;
      nearest = *i;
    }
    return nearest;
  }

  std::vector<Position> const& reference;
  std::vector<Position> const& frame;
  double tolerance;
  std::vector<int> byColumn;
};

// ln C(n, k) m! / (m - k)! q^(k - 1.5): the first star fixes the shift, the second half of itself the angle.
double LogChanceMatches(int n, int m, int k, double q) {
  double sum = (k - 1.5) * std::log(q);
  for (int i = 0; i < k; ++i) sum += std::log(static_cast<double>(n - i) / (i + 1)) + std::log(m - i);
  return sum;
}

}  // namespace

std::vector<StarPair> MatchStars(std::vector<Position> const& reference, std::vector<Position> const& frame,
                                 TriangleMatchSettings const& settings) {
  int const n = std::min(static_cast<int>(reference.size()), settings.brightest);
  int const m = std::min(static_cast<int>(frame.size()), settings.brightest);
  if (n < 3 || m < 3) return {};
  std::vector<TriangleHit> const hits =
      FindHits(MakeTriangles(reference, n), MakeTriangles(frame, m), settings.tolerance);
  Matcher const matcher(reference, frame, settings.tolerance);
  std::vector<StarPair> pairs = matcher.FindAgreement(FindCandidates(hits, n, m));
  for (int round = 0; round < kGrowRounds && pairs.size() >= 3; ++round) {
    pairs = matcher.RejectOutliers(matcher.PairNearest(matcher.Fit(pairs)));
  }
  int const k = static_cast<int>(
      std::count_if(pairs.begin(), pairs.end(), [&](StarPair const& p) { return p.reference < n && p.frame < m; }));
  double const q = kPi * settings.tolerance * settings.tolerance / std::max(matcher.FrameArea(), 1.0);
  if (k < 3 || LogChanceMatches(n, m, k, q) > std::log(kMaxChance)) return {};
  return pairs;
}

}  // namespace orb::host
