// Filters on the order of samples, contours, backgrounds.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr double kMostRadius = 100.0;  // pixels
constexpr int kMostBlurRadius = 50;
constexpr double kMostWeight = 1e6;

OperatorEntry Filter() {
  OperatorEntry entry;
  entry.changes.samples = true;
  entry.bands = Bands::kRectangle;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  return entry;
}

Parameter DiskRadius(std::string help) { return Real("radius", "pixels", 0.0, kMostRadius, 2.0, std::move(help)); }

OperatorEntry NoiseCut() {
  enum Place : std::size_t { kRadius, kCoolThreshold, kHotThreshold, kCut };
  enum Cut { kBoth, kCool, kHot };
  OperatorEntry entry = Filter();
  entry.name = "noise-cut";
  entry.title = "replaces hot and cool pixels by the median around them";
  entry.parameters = {Real("radius", "pixels", 0.0, kMostRadius, 1.0, "radius of the disk whose median is taken"),
                      Real("cool-threshold", "", 0.0, 1e6, 0.5,
                           "how far above a cool sample the median must lie, as a share of the sample"),
                      Real("hot-threshold", "", 0.0, 1e6, 0.5,
                           "how far below a hot sample the median must lie, as a share of the sample"),
                      Choice("cut", {"both", "cool", "hot"}, "what is replaced")};
  entry.message = 6164;
  entry.marginRows = static_cast<int>(kMostRadius);
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    int const cut = static_cast<int>(v[kCut]);
    AsOperator<CImgFilterMisc> image(call);
    image->NoiseCut(v[kRadius], cut != kHot, v[kCoolThreshold], cut != kCool, v[kHotThreshold], image.Source(),
                    call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry DiskRank() {
  enum Place : std::size_t { kRadius, kRank };
  OperatorEntry entry = Filter();
  entry.name = "disk-rank";
  entry.title = "takes the minimum, the median, the maximum or any rank between of the samples under a disk";
  entry.parameters = {
      DiskRadius("radius of the disk"),
      Real("rank", "", 0.0, 1.0, 0.5, "place among the samples in ascending order: 0 the first, 1 the last")};
  entry.message = 6153;
  entry.marginRows = static_cast<int>(kMostRadius);
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterMisc> image(call);
    int const last = image->GetMinMaxFilterNmax(call.values[kRadius]) - 1;
    image->MinMaxFilter(call.values[kRadius], static_cast<int>(call.values[kRank] * last + 0.5), image.Source(),
                        call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry BackgroundSmooth() {
  enum Place : std::size_t { kLevel, kStrength, kRadius };
  OperatorEntry entry = Filter();
  entry.name = "background-smooth";
  entry.title = "smooths the dark parts of an image, fading out towards a level";
  entry.parameters = {
      Real("level", "raw units", -1e30, 1e30, 1000.0, "samples (of a colour image: brightness) above stay as they are"),
      Real("strength", "", 0.0, 1000.0, 1.0, "weight of the mean well below the level; above 1 the fade gets steeper"),
      Integer("radius", "", 1, kMostBlurRadius, 4, "the mean takes samples whose squared distance is up to this")};
  entry.parameters[kLevel].follows = Parameter::Follows::kMiddleLevel;
  entry.message = 6123;
  entry.units = entry.ticks = Units::kRows;
  entry.levelUse = LevelUse::kAlways;
  entry.marginRows = kMostBlurRadius;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterMisc> image(call);
    image->BkgSmooth(call.values[kLevel], static_cast<int>(call.values[kRadius]), call.values[kStrength],
                     image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Contour() {
  enum Place : std::size_t { kLevels, kUnbounded };
  OperatorEntry entry = Filter();
  entry.name = "contour";
  entry.title = "draws lines of equal brightness";
  entry.parameters = {Integer("levels", "", 2, 10000, 16, "steps of brightness between the levels"),
                      Flag("unbounded", "draws lines beyond the levels too")};
  entry.message = 6171;
  entry.units = entry.ticks = Units::kRows;
  entry.levelUse = LevelUse::kAlways;
  entry.marginRows = 1;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterMisc> image(call);
    image->ContourFilter(static_cast<int>(call.values[kLevels]), call.values[kUnbounded] != 0.0, image.Source(),
                         call.rect, call.progress);
    return 1;
  };
  return entry;
}

// The smallest kernel has names for its weights, as a command can give them.
OperatorEntry Custom() {
  OperatorEntry entry = Filter();
  entry.name = "custom";
  entry.title = "sums the 3 x 3 samples around each one with weights of your own";
  for (char const* row : {"upper", "middle", "lower"}) {
    for (char const* column : {"left", "centre", "right"}) {
      bool const isCentre = entry.parameters.size() == 4;
      entry.parameters.push_back(Real(std::string(row) + "-" + column, "", -kMostWeight, kMostWeight,
                                      isCentre ? 1.0 : 0.0, "weight of that sample"));
    }
  }
  entry.message = 6175;
  entry.marginRows = 1;
  entry.run = [](Invocation const& call) {
    std::vector<double> weights = call.values;
    AsOperator<CImgFilterMisc> image(call);
    image->Custom(1, weights.data(), image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> RankFilterOperators() {
  return {NoiseCut(), DiskRank(), BackgroundSmooth(), Contour(), Custom()};
}

}  // namespace orb::host
