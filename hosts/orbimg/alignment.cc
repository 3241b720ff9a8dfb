#include <hosts/orbimg/alignment.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include <hosts/orbimg/rigid_fit.h>

namespace orb::host {
namespace {

constexpr std::size_t kLeastStars = 3;
constexpr std::size_t kMaxStandardStars = 200;  // of the matched pairs, from which the two are picked
constexpr double kSureAngle = 3.0;              // times its standard error

AlignmentOutcome Refuse(std::string reason) { return AlignmentOutcome{std::nullopt, std::move(reason)}; }

std::string CountStars(std::size_t count) { return std::to_string(count) + (count == 1 ? " star" : " stars"); }

std::string WhyTooFew(std::size_t count, char const* where) {
  return (count == 0 ? std::string("no stars") : "only " + CountStars(count)) + " found in the " + where +
         "; at least " + std::to_string(kLeastStars) + " are needed";
}

std::vector<PositionPair> PairPositions(std::vector<Star> const& reference, std::vector<Star> const& frame,
                                        std::vector<StarPair> const& pairs) {
  std::vector<PositionPair> positions;
  positions.reserve(pairs.size());
  for (StarPair const& pair : pairs) {
    Star const& r = reference[pair.reference];
    Star const& f = frame[pair.frame];
    positions.push_back(PositionPair{{r.x, r.y}, {f.x, f.y}});
  }
  return positions;
}

// The two pairs that lie farthest apart: the longest line gives the truest direction.
std::pair<std::size_t, std::size_t> FindFarthest(std::vector<PositionPair> const& pairs) {
  std::size_t const count = std::min(pairs.size(), kMaxStandardStars);
  std::pair<std::size_t, std::size_t> best{0, 0};
  double most = -1.0;
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = i + 1; j < count; ++j) {
      double const squared = SquaredDistance(pairs[i].reference, pairs[j].reference);
      if (squared <= most) continue;
      most = squared;
      best = {i, j};
    }
  }
  return best;
}

void SetStandardPoints(COrbImage& image, Position const& first, Position const& second) {
  image.SetStdPt(0, CfPoint(first.x, first.y));
  image.SetStdPt(1, CfPoint(second.x, second.y));
}

FrameTransform FitTwoStars(COrbImage& reference, COrbImage& frame, std::vector<PositionPair> const& pairs) {
  auto const [i, j] = FindFarthest(pairs);
  SetStandardPoints(reference, pairs[i].reference, pairs[j].reference);
  SetStandardPoints(frame, pairs[i].frame, pairs[j].frame);
  FrameTransform transform;
  reference.GetFitPrm(&frame, transform.dx, transform.dy, transform.angle);
  CfPoint const centre = frame.GetStdCtr();
  transform.cx = centre.fx;
  transform.cy = centre.fy;
  return transform;
}

FrameTransform FitAllStars(COrbImage& frame, std::vector<PositionPair> const& pairs) {
  Position const centre{(frame.GetWidth() - 1) / 2.0, (frame.GetHeight() - 1) / 2.0};
  frame.SetStdCtr(centre.x, centre.y);
  RigidFit const fit = FitRigid(pairs, centre);
  bool const sure = std::abs(fit.transform.angle) > kSureAngle * fit.angleError;
  return sure ? fit.transform : FitShift(pairs, centre).transform;
}

}  // namespace

char const* NameOf(AlignmentMethod method) {
  switch (method) {
    case AlignmentMethod::kTwoStars:
      return "two stars";
    case AlignmentMethod::kAllStars:
      return "all stars";
    case AlignmentMethod::kMatch:
      return "match";
  }
  return "";
}

AlignmentOutcome AlignByStars(COrbImage& reference, std::vector<Star> const& referenceStars, COrbImage& frame,
                              std::vector<Star> const& frameStars, StarAlignmentSettings const& settings) {
  if (referenceStars.size() < kLeastStars) return Refuse(WhyTooFew(referenceStars.size(), "reference"));
  if (frameStars.size() < kLeastStars) return Refuse(WhyTooFew(frameStars.size(), "frame"));
  std::vector<StarPair> const pairs = MatchStars(PositionsOf(referenceStars), PositionsOf(frameStars), settings.match);
  if (pairs.empty()) {
    return Refuse("its " + CountStars(frameStars.size()) + " form no pattern that the reference's " +
                  CountStars(referenceStars.size()) + " show too");
  }
  std::vector<PositionPair> const positions = PairPositions(referenceStars, frameStars, pairs);
  Alignment alignment;
  alignment.transform = FitTwoStars(reference, frame, positions);
  alignment.method = AlignmentMethod::kTwoStars;
  if (settings.refine) {
    alignment.transform = FitAllStars(frame, positions);
    alignment.method = AlignmentMethod::kAllStars;
  }
  alignment.starsMatched = static_cast<int>(pairs.size());
  alignment.rms = RootMeanSquare(FindResiduals(positions, alignment.transform));
  return AlignmentOutcome{alignment, ""};
}

}  // namespace orb::host
