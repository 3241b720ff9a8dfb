// Deconvolutions.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr double kSigmaOfRadius = 0.707106781373095;  // the digits of CImgWiener

OperatorEntry OnTheImageItself() {
  OperatorEntry entry;
  entry.sourceShape = SourceShape::kNone;
  entry.changes.samples = true;
  entry.hasOwnRuns = true;
  return entry;
}

// The operators take a rectangle as it stands; here it is limited to the image, as it is everywhere else. False: there
// is nothing in it.
bool LimitRectangle(Invocation const& call, CRect& limited) {
  Bounds const bounds = ClampRect(call.rect, call.image->GetWidth(), call.image->GetHeight());
  limited = CRect(bounds.left, bounds.top, bounds.right, bounds.bottom);
  return !bounds.IsEmpty();
}

OperatorEntry Wiener() {
  OperatorEntry entry = OnTheImageItself();
  entry.name = "wiener";
  entry.title = "sharpens in one step; the brightness changes with the blur and the size of the image";
  entry.levelUse = LevelUse::kAlways;
  entry.message = 6104;
  entry.parameters = {
      Real("radius", "pixels", 0.1, 100.0, 2.0, "radius of the blur, 1.41 times the sigma of its gaussian"),
      Real("noise", "", 1e-9, 10.0, 0.01, "share of noise in the light: larger is smoother, smaller sharper"),
  };
  entry.parameters[0].ofBlur = 1.0 / kSigmaOfRadius;
  entry.run = [](Invocation const& call) {
    CRect rect;
    if (!LimitRectangle(call, rect)) return 1;
    AsOperator<CImgWiener> image(call);
    return image->Do(call.values[0], call.values[1], &rect, call.progress);
  };
  return entry;
}

OperatorEntry Lucy() {
  OperatorEntry entry = OnTheImageItself();
  entry.name = "lucy";
  entry.title = "restores step by step, by Richardson and Lucy, until the data are met within their noise";
  entry.stopsAtEscape = true;
  entry.message = 6154;
  entry.messageOfCall = [](Invocation const& call) { return call.image->GetPlanes() == 1 ? 6154 : 6155; };
  entry.parameters = {
      Real("sigma", "pixels", 0.1, 10.0, 1.5, "sigma of the gaussian that a point was blurred to"),
      Real("adu", "electrons", 1e-6, 1e6, 1.0, "electrons in one unit of a sample; more where it stops too early"),
      Real("noise", "electrons", 0.01, 1e6, 10.0, "read noise"),
      Integer("iterations", "", 0, 10000, 20, "at most; fewer where the data are met within their noise"),
  };
  entry.parameters[0].ofBlur = 1.0;
  entry.run = [](Invocation const& call) {
    CRect rect;
    if (!LimitRectangle(call, rect)) return 1;
    AsOperator<CImgLucy> image(call);
    return image->Do(call.values[0], call.values[1], call.values[2], static_cast<int>(call.values[3]), &rect,
                     call.progress);
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> RestorationOperators() { return {Wiener(), Lucy()}; }

}  // namespace orb::host
