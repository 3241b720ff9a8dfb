#include <hosts/catalogue/check.h>
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
  entry.parameters = Placement("second image", mostAngle);
  entry.parameters.push_back(Flag("levels", "work on the 256-scale of each image's levels, not on raw samples"));
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

OperatorEntry Median() {
  OperatorEntry entry;
  entry.name = "median";
  entry.title = "stacks any number of registered frames by the median of what they have at a pixel";
  entry.sourceShape = SourceShape::kNone;
  entry.frameParameters = Placement("frame", 360.0);
  entry.takesRectangle = false;
  entry.changes.samples = true;
  entry.message = 6141;
  entry.reports = Reports::kAlways;
  entry.units = entry.ticks = Units::kImageRows;
  entry.bands = Bands::kRectangle;
  entry.run = [](Invocation const& call) {
    Bounds const rows = ClampRect(call.rect, call.image->GetWidth(), call.image->GetHeight());
    CImgMedianComposit median(call.image);
    for (int y = rows.top; y < rows.bottom; ++y) {
      for (PlacedFrame const& frame : call.frames) {
        median.Store(frame.image, y, frame.values[kDx], frame.values[kDy], frame.values[kAngle]);
      }
      median.Calc();
    }
    return 1;
  };
  return entry;
}

OperatorEntry Match() {
  enum MatchPlace : std::size_t { kX, kY, kRange, kFine };
  OperatorEntry entry;
  entry.name = "match";
  entry.title = "finds the shift that lays another image over this one";
  entry.sourceShape = SourceShape::kAny;
  entry.sourceName = "other image";
  entry.mayRunInPlace = true;
  entry.takesRectangle = false;
  entry.parameters = {
      Real("dx", "pixels", -kMostShift, kMostShift, 0.0, "about how far the other image goes to the right"),
      Real("dy", "pixels", -kMostShift, kMostShift, 0.0, "about how far the other image goes downwards"),
      Integer("range", "pixels", 0, 1000, 32, "full width of the search around that shift, in both directions"),
      Flag("fine", "go on to tenths of a pixel"),
  };
  entry.results = {
      Result{"dx", "pixels", "shift of the other image to the right"},
      Result{"dy", "pixels", "shift of the other image downwards"},
  };
  entry.message = 6152;
  entry.units = Units::kSearch;
  entry.check = [](Invocation const& call) {
    std::string const wrong = CheckMean("image", *call.image);
    return wrong.empty() ? CheckMean("other image", *call.source) : wrong;
  };
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    double x = v[kX];
    double y = v[kY];
    call.results->clear();
    AsOperator<CImgMatching> image(call);
    if (image->Do(image.Source(), &x, &y, static_cast<int>(v[kRange]), v[kFine] != 0.0, call.progress) == 0) return 0;
    *call.results = {x, y};
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> StackingOperators() { return {Composite(), Rejection(), Median(), Match()}; }

}  // namespace orb::host
