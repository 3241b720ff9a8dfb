#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr double kMostShift = 1e6;
constexpr int kRejection = 9;
constexpr int kOwnMessage = -1;

// What both kinds of composite begin with.
enum Place : std::size_t { kDx, kDy, kAngle, kLevels, kRatio, kMode, kClamp, kThreshold = kMode, kRadius };

OperatorEntry OfTwoFrames(double mostAngle) {
  OperatorEntry entry;
  entry.sourceName = "first image";
  entry.needsSecond = true;
  entry.levelUse = LevelUse::kIfAsked;
  entry.changes.samples = true;
  entry.message = 6107;
  entry.units = Units::kRows;
  entry.parameters = {
      Real("dx", "pixels", -kMostShift, kMostShift, 0.0, "shift of the second image to the right"),
      Real("dy", "pixels", -kMostShift, kMostShift, 0.0, "shift of the second image downwards"),
      Real("angle", "degrees", -mostAngle, mostAngle, 0.0, "rotation of the second image about its standard centre"),
      Flag("levels", "work on the 256-scale of each image's levels, not on raw samples"),
  };
  return entry;
}

OperatorEntry Composite() {
  OperatorEntry entry = OfTwoFrames(360.0);
  entry.name = "composite";
  entry.title = "joins two registered images pixel by pixel";
  entry.parameters.push_back(Real("ratio", "", -1e6, 1e6, 0.5, "mode weighted: the weight of the second image"));
  entry.parameters.push_back(Choice(
      "mode", {"average", "add", "weighted", "subtract", "multiply", "divide", "difference", "maximum", "minimum"},
      "how the two samples are joined"));
  entry.parameters.push_back(Flag("clamp", "mode subtract: what falls below 0 becomes 0"));
  entry.mayRunInPlace = true;
  entry.ticks = Units::kRows;
  entry.bands = Bands::kRectangle;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgComposit> image(call);
    image->Do(image.Source(), call.second, v[kDx], v[kDy], v[kAngle], static_cast<int>(v[kMode]), v[kRatio],
              v[kLevels] != 0.0, v[kClamp] != 0.0, 0.0, 0, call.rect, call.progress, kOwnMessage);
    return 1;
  };
  return entry;
}

// Each pixel is one of the two samples; which one may hang on the pixels already joined, so there are no bands.
OperatorEntry Rejection() {
  OperatorEntry entry = OfTwoFrames(90.0);
  entry.name = "rejection";
  entry.title = "keeps out of the result what is bright in only one of two frames";
  entry.parameters.push_back(
      Real("ratio", "", 0.0, 1e6, 1.0, "factor that makes the second image as bright as the first"));
  entry.parameters.push_back(
      Real("threshold", "", 0.0, 1.0, 0.95, "fraction of full scale above which a pixel counts as bright"));
  entry.parameters.push_back(Integer("radius", "pixels", 0, 2, 0, "half size of the window that decides; 0: none"));
  entry.ticks = Units::kRowsTimesPlanes;
  entry.marginRows = 2;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    bool const isRaw = v[kLevels] == 0.0;
    if (isRaw) {  // bright is then a fraction of each frame's own maximum
      call.source->CalcMinMax();
      call.second->CalcMinMax();
    }
    AsOperator<CImgComposit> image(call);
    image->Do(image.Source(), call.second, v[kDx], v[kDy], v[kAngle], kRejection, v[kRatio], !isRaw, 0, v[kThreshold],
              static_cast<int>(v[kRadius]), call.rect, call.progress, kOwnMessage);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> StackingOperators() { return {Composite(), Rejection()}; }

}  // namespace orb::host
