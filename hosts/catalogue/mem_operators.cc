// Restoration by maximum entropy.
#include <fmt/format.h>

#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr int kLeastSide = 33;  // is worked on as 64, which holds the array of the point-spread function

// The width and height of the window that a call restores; a rectangle is limited to the image.
Bounds WindowOf(Invocation const& call) {
  return ClampRect(call.rect, call.image->GetWidth(), call.image->GetHeight());
}

std::string CheckWindow(Invocation const& call) {
  Bounds const window = WindowOf(call);
  if (window.Columns() >= kLeastSide && window.Rows() >= kLeastSide) return "";
  return fmt::format("the area is {} x {}; it must be {} x {} at least", window.Columns(), window.Rows(), kLeastSide,
                     kLeastSide);
}

std::string CheckSamples(Invocation const& call) {
  Bounds const window = WindowOf(call);
  for (int p = 0; p < call.image->GetPlanes(); ++p) {
    double sum = 0.0;
    for (int y = window.top; y < window.bottom; ++y) {
      float const* const row = call.image->GetImageAdr(window.left, y, p, 1, nullptr);
      for (int x = 0; x < window.Columns(); ++x) sum += row[x];
    }
    if (sum > 0.0 && sum <= 1e300) continue;
    return fmt::format("plane {} sums to {}; it must have a mean above 0, and numbers only", p + 1, sum);
  }
  return "";
}

std::string CheckCall(Invocation const& call) {
  std::string const wrong = CheckWindow(call);
  return wrong.empty() ? CheckSamples(call) : wrong;
}

}  // namespace

std::vector<OperatorEntry> MemOperators() {
  enum Place : std::size_t { kSigma, kNoise, kIterations };
  OperatorEntry entry;
  entry.name = "mem";
  entry.title = "restores by maximum entropy: the smoothest positive image that fits the data to within the noise";
  entry.sourceShape = SourceShape::kNone;
  entry.parameters = {
      Real("sigma", "pixels", 0.5, 10.0, 1.5, "sigma of the gaussian that a point was blurred to"),
      Real("noise", "raw units", 1e-6, 1e9, 10.0, "standard deviation of the noise; smaller is sharper and grainier"),
      Integer("iterations", "", 1, 10000, 50, "at most; fewer where the steps become small"),
  };
  entry.parameters[kSigma].ofBlur = 1.0;
  entry.parameters[kNoise].follows = Parameter::Follows::kNoise;
  entry.changes.samples = true;
  entry.hasOwnRuns = true;
  entry.stopsAtEscape = true;
  entry.message = 6158;
  entry.check = CheckCall;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    Bounds const window = WindowOf(call);
    CRect rect(window.left, window.top, window.right, window.bottom);
    AsOperator<CImgMem> image(call);
    return image->Do(v[kSigma], v[kNoise], static_cast<int>(v[kIterations]), &rect, call.progress);
  };
  return {entry};
}

}  // namespace orb::host
