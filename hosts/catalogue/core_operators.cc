#include <hosts/catalogue/check.h>
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

OperatorEntry Invert() {
  OperatorEntry entry;
  entry.name = "invert";
  entry.group = "apply";
  entry.title = "turns bright into dark within the levels";
  entry.mayRunInPlace = true;
  entry.levelUse = LevelUse::kAlways;
  entry.changes.samples = true;
  entry.message = 6124;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  entry.bands = Bands::kRectangle;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgInvert> image(call);
    image->Do(image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Dark() {
  OperatorEntry entry;
  entry.name = "dark";
  entry.title = "subtracts a dark frame; what falls below 0 becomes 0";
  entry.sourceShape = SourceShape::kFrame;
  entry.sourceName = "dark";
  entry.takesRectangle = false;
  entry.mayRunInPlace = true;
  entry.changes.samples = true;
  entry.message = 6106;
  entry.units = entry.ticks = Units::kImageRowsTimesPlanes;
  entry.bands = Bands::kStrips;
  entry.run = [](Invocation const& call) {
    call.image->DarkClbrtn(call.source, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Flat() {
  OperatorEntry entry;
  entry.name = "flat";
  entry.title = "divides by a flat frame, scaled by the mean of its first plane";
  entry.sourceShape = SourceShape::kFrame;
  entry.sourceName = "flat";
  entry.takesRectangle = false;
  entry.mayRunInPlace = true;
  entry.changes.samples = true;
  entry.message = 6105;
  entry.units = entry.ticks = Units::kImageRowsTimesPlanes;
  entry.check = [](Invocation const& call) { return CheckMean("flat", *call.source); };
  entry.run = [](Invocation const& call) {
    call.image->FlatClbrtn(call.source, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Clip() {
  OperatorEntry entry;
  entry.name = "clip";
  entry.group = "apply";
  entry.title = "limits every sample to the levels of its plane";
  entry.sourceShape = SourceShape::kNone;
  entry.takesRectangle = false;
  entry.changes.samples = true;
  entry.reports = Reports::kNever;
  entry.bands = Bands::kStrips;
  entry.run = [](Invocation const& call) {
    call.image->CutOutOfLevel();
    return 1;
  };
  return entry;
}

OperatorEntry ToGray() {
  OperatorEntry entry;
  entry.name = "gray";
  entry.group = "apply";
  entry.title = "makes one plane of the brightness of three";
  entry.sourceShape = SourceShape::kColourToMono;
  entry.takesRectangle = false;
  entry.levelUse = LevelUse::kAlways;
  entry.changes.samples = entry.changes.planes = true;
  entry.message = 6129;
  entry.units = entry.ticks = Units::kImageRows;
  entry.run = [](Invocation const& call) { return call.image->ToGray(call.source, call.progress); };
  return entry;
}

OperatorEntry ToColour() {
  OperatorEntry entry;
  entry.name = "colour";
  entry.group = "apply";
  entry.title = "makes three planes: those of a colour source, or three times that of a mono one";
  entry.sourceShape = SourceShape::kAnyToColour;
  entry.takesRectangle = false;
  entry.changes.samples = entry.changes.planes = true;
  entry.message = 6130;
  entry.units = entry.ticks = Units::kImageRows;
  entry.run = [](Invocation const& call) { return call.image->ToColor(call.source, call.progress); };
  return entry;
}

OperatorEntry MinMax() {
  OperatorEntry entry;
  entry.name = "minmax";
  entry.title = "finds the smallest and the largest sample of each plane";
  entry.sourceShape = SourceShape::kNone;
  entry.takesRectangle = false;
  entry.reports = Reports::kNever;
  entry.run = [](Invocation const& call) {
    call.image->CalcMinMax();
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> CoreOperators() {
  return {Invert(), Dark(), Flat(), Clip(), ToGray(), ToColour(), MinMax()};
}

}  // namespace orb::host
