// Flat fields that are worked out, empty sky, the model of the background, masks.
#include <algorithm>
#include <cmath>

#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr int kMostTile = 4096;
constexpr int kTile = 64;
constexpr int kMostPixels = 100000;  // of a coordinate or a distance

Parameter TileSize() { return Integer("size", "pixels", 1, kMostTile, kTile, "side of a tile"); }

Parameter Following(Parameter parameter, Parameter::Follows what) {
  parameter.follows = what;
  return parameter;
}

OperatorEntry Sky(std::string name, std::string title, int message) {
  OperatorEntry entry;
  entry.name = std::move(name);
  entry.title = std::move(title);
  entry.message = message;
  return entry;
}

// Within the image, where a tile reaches past it.
int FindSky(Invocation const& call, int size, double share) {
  double median = 0.0;
  CRect found;
  AsOperator<CImgSkySelect> image(call);
  image->CalcStddevMedian(size, call.rect, &median, call.progress);
  if (image->Do(size, call.rect, share * median, &found, call.progress) == 0) return 0;
  Bounds const area = ClampRect(&found, image->GetWidth(), image->GetHeight());
  Spread const spread = CalcSpread(*image.operator->(), found, 0);
  *call.results = {static_cast<double>(area.left),
                   static_cast<double>(area.top),
                   static_cast<double>(area.right),
                   static_cast<double>(area.bottom),
                   spread.median,
                   spread.deviation,
                   median};
  return 1;
}

OperatorEntry Select() {
  enum Place : std::size_t { kSize, kShare };
  OperatorEntry entry = Sky("sky-select", "finds a tile of empty sky, by its small deviation in the first plane", 6182);
  entry.sourceShape = SourceShape::kNone;
  entry.parameters = {TileSize(),
                      Real("share", "", 0.0, 1000.0, 1.0,
                           "of the median deviation of all tiles; the first tile at or below that is taken")};
  entry.results = {{"left", "pixels", "first column of the tile"},
                   {"top", "pixels", "first row"},
                   {"right", "pixels", "one past the last column"},
                   {"bottom", "pixels", "one past the last row"},
                   {"level", "", "median of its samples"},
                   {"deviation", "", "standard deviation of its samples"},
                   {"median-deviation", "", "the median of those of all tiles"}};
  entry.hasOwnRuns = true;
  entry.run = [](Invocation const& call) {
    call.results->clear();
    return FindSky(call, static_cast<int>(call.values[kSize]), call.values[kShare]);
  };
  return entry;
}

OperatorEntry Model() {
  OperatorEntry entry =
      Sky("sky-model",
          "models the background: medians of tiles, those with stars filled from their neighbours, blurred", 6183);
  entry.imagePlanes = 1;  // others would be blurred, and not be modelled
  entry.parameters = {TileSize()};
  entry.takesRectangle = false;
  entry.mayRunInPlace = true;
  entry.changes.samples = true;
  entry.hasOwnRuns = true;
  entry.reports = Reports::kAlways;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgSkyFlat> image(call);
    image->Do(static_cast<int>(call.values[0]), image.Source(), call.progress);
    return 1;
  };
  return entry;
}

// From the centre to that corner's pixel which lies farthest off, squared.
double FarthestCorner(COrbImage const& image, CPoint center) {
  double const dx = std::max(std::abs(center.x), std::abs(image.GetWidth() - 1 - center.x));
  double const dy = std::max(std::abs(center.y), std::abs(image.GetHeight() - 1 - center.y));
  return dx * dx + dy * dy;
}

OperatorEntry Flat() {
  enum Place : std::size_t { kCorner, kX, kY };
  OperatorEntry entry = Sky("sky-flat", "divides by a flat field that falls with the square of the distance", 6139);
  entry.parameters = {Real("corner", "", 0.01, 100.0, 0.8, "light in the farthest corner, that at the centre being 1"),
                      Following(Integer("center-x", "pixels", -kMostPixels, kMostPixels, 0, "column of the centre"),
                                Parameter::Follows::kMiddleColumn),
                      Following(Integer("center-y", "pixels", -kMostPixels, kMostPixels, 0, "row of the centre"),
                                Parameter::Follows::kMiddleRow)};
  entry.mayRunInPlace = true;
  entry.changes.samples = true;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  entry.bands = Bands::kRectangle;
  entry.run = [](Invocation const& call) {
    CPoint const center(static_cast<int>(call.values[kX]), static_cast<int>(call.values[kY]));
    double const squares = FarthestCorner(*call.image, center);
    double const falloff = squares == 0.0 ? 0.0 : (call.values[kCorner] - 1.0) / squares;
    AsOperator<CImgFlat> image(call);
    image->Do(image.Source(), center, falloff, 1.0, call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Ramp() {
  enum Place : std::size_t { kSlope, kX, kY, kColumns, kRows };
  OperatorEntry entry = Sky("sky-ramp", "subtracts a ramp along the line between two points", 6139);
  entry.parameters = {
      Real("slope", "units per pixel", -1e6, 1e6, 1.0, "rise of the ramp along the line"),
      Integer("x", "pixels", -kMostPixels, kMostPixels, 0, "column of the first point"),
      Integer("y", "pixels", -kMostPixels, kMostPixels, 0,
              "row of the first point; the ramp is 0 where its distance along the line, from column and row 0, is the "
              "middle of the rows of both points"),
      Integer("columns", "pixels", 1, kMostPixels, 100, "how far right of it the second point lies"),
      Integer("rows", "pixels", -kMostPixels, kMostPixels, 0, "how far below it the second point lies")};
  entry.mayRunInPlace = true;
  entry.changes.samples = true;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  entry.bands = Bands::kRectangle;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    CPoint const from(static_cast<int>(v[kX]), static_cast<int>(v[kY]));
    CPoint const to(from.x + static_cast<int>(v[kColumns]), from.y + static_cast<int>(v[kRows]));
    AsOperator<CImgFlat> image(call);
    image->Do(image.Source(), from, to, v[kSlope], 0.0, call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Mask() {
  OperatorEntry entry =
      Sky("sky-mask", "makes a mask: 1 at or below a threshold, 0 above it, with levels to match", 6180);
  entry.sourceShape = SourceShape::kNone;
  entry.parameters = {Following(Real("threshold", "", -1e30, 1e30, 0.0, "the brightest sample that is kept"),
                                Parameter::Follows::kMiddleLevel)};
  entry.takesRectangle = false;
  entry.changes.samples = entry.changes.levels = true;
  entry.units = entry.ticks = Units::kImageRowsTimesPlanes;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgMaskPattern> image(call);
    image->Make(call.values[0], call.progress);
    for (int p = 0; p < image->GetPlanes(); ++p) image->CImage::SetLevel(p, 0.0, 1.0);
    return 1;
  };
  return entry;
}

OperatorEntry Blank() {
  enum Place : std::size_t { kDx, kDy, kAngle };
  OperatorEntry entry = Sky("sky-blank", "sets to 0 what a mask blanks, or what lies outside it", 6181);
  entry.sourceShape = SourceShape::kNone;
  entry.needsSecond = true;
  entry.parameters = Placement("mask", 360.0);
  entry.takesRectangle = false;
  entry.changes.samples = true;
  entry.units = entry.ticks = Units::kImageRowsTimesPlanes;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgMaskPattern> image(call);
    image->Do(call.second, v[kDx], v[kDy], v[kAngle], call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> SkyOperators() { return {Select(), Model(), Flat(), Ramp(), Mask(), Blank()}; }

}  // namespace orb::host
