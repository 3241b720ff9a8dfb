#include <utility>

#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

CRect RectangleOf(Invocation const& call) {
  return call.rect != nullptr ? *call.rect : CRect(0, 0, call.image->GetWidth(), call.image->GetHeight());
}

OperatorEntry Crop() {
  OperatorEntry entry = OfMovedSamples("crop", "cuts a rectangle out of an image");
  entry.cutsToRectangle = true;
  entry.message = 6172;
  entry.units = Units::kCounted;  // twice the rows
  entry.countUnits = [](Invocation const& call) {
    CRect const rect = RectangleOf(call);
    return 2 * (rect.bottom - rect.top) * call.image->GetPlanes();
  };
  entry.sizeOfResult = [](Invocation const& call) {
    CRect const rect = RectangleOf(call);
    return ImageSize{rect.right - rect.left, rect.bottom - rect.top};
  };
  entry.run = [](Invocation const& call) {
    AsOperator<CImgCrop> image(call);
    return image->Do(RectangleOf(call), image.Source(), call.progress);
  };
  return entry;
}

}  // namespace

OperatorEntry OfMovedSamples(std::string name, std::string title) {
  OperatorEntry entry;
  entry.name = std::move(name);
  entry.title = std::move(title);
  entry.takesRectangle = false;
  entry.changes.samples = true;
  entry.changes.geometry = true;
  entry.changes.points = true;
  entry.units = entry.ticks = Units::kResultRowsTimesPlanes;
  return entry;
}

std::vector<OperatorEntry> GeometryOperators() { return {Crop()}; }

}  // namespace orb::host
