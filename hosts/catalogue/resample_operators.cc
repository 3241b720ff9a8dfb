#include <algorithm>
#include <cmath>

#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr int kMostSide = 1'000'000;
constexpr double kMostPlace = 1e6;  // pixels

OperatorEntry OfNewSize(std::string name, std::string title) {
  OperatorEntry entry = OfMovedSamples(std::move(name), std::move(title));
  entry.group = "transform";
  return entry;
}

Parameter Side(std::string name, Parameter::Follows follows, std::string help) {
  Parameter side = Integer(std::move(name), "pixels", 1, kMostSide, 1, std::move(help));
  side.follows = follows;
  return side;
}

OperatorEntry Resize() {
  enum Place : std::size_t { kWidth, kHeight, kAnchor, kFill };
  OperatorEntry entry = OfNewSize("resize", "changes the canvas: cuts off, or adds a margin; the scale stays");
  entry.parameters = {
      Side("width", Parameter::Follows::kWidth, "new width"),
      Side("height", Parameter::Follows::kHeight, "new height"),
      Choice("anchor",
             {"top-left", "top", "top-right", "left", "centre", "right", "bottom-left", "bottom", "bottom-right"},
             "where the picture lies on its new canvas"),
      Real("fill", "", 0.0, 255.0, 0.0, "what is new, in every plane: from black to white of the first plane's levels"),
  };
  entry.parameters[kAnchor].byDefault = 4;
  entry.message = 6111;
  entry.units = entry.ticks = Units::kCounted;  // rows filled and rows copied
  entry.countUnits = [](Invocation const& call) {
    int const height = static_cast<int>(call.values[kHeight]);
    return (height + std::min(height, call.image->GetHeight())) * call.image->GetPlanes();
  };
  entry.sizeOfResult = [](Invocation const& call) {
    return ImageSize{static_cast<std::int64_t>(call.values[kWidth]), static_cast<std::int64_t>(call.values[kHeight])};
  };
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    std::vector<float> fill(static_cast<std::size_t>(call.image->GetPlanes()), static_cast<float>(v[kFill]));
    AsOperator<CImgResize> image(call);
    return image->Do(static_cast<int>(v[kWidth]), static_cast<int>(v[kHeight]), static_cast<int>(v[kAnchor]),
                     fill.data(), image.Source(), call.progress);
  };
  return entry;
}

enum SampledPlace : std::size_t { kMethod, kSampledWidth, kSampledHeight };

// A side that is not given goes along with the other one.
ImageSize SampledSize(Invocation const& call) {
  double const width = call.image->GetWidth();
  double const height = call.image->GetHeight();
  double newWidth = call.values[kSampledWidth];
  double newHeight = call.values[kSampledHeight];
  if (newWidth == 0.0 && newHeight == 0.0) return ImageSize{call.image->GetWidth(), call.image->GetHeight()};
  if (newWidth == 0.0) newWidth = std::max(1.0, std::round(newHeight * width / height));
  if (newHeight == 0.0) newHeight = std::max(1.0, std::round(newWidth * height / width));
  return ImageSize{static_cast<std::int64_t>(newWidth), static_cast<std::int64_t>(newHeight)};
}

OperatorEntry Resample() {
  OperatorEntry entry = OfNewSize("resample", "samples the picture for another number of pixels");
  entry.parameters = {
      Choice("method", {"linear", "cubic"}, "the sum that makes a sample; the two hardly differ"),
      Integer("width", "pixels", 0, kMostSide, 0, "new width; 0: in proportion to the height"),
      Integer("height", "pixels", 0, kMostSide, 0, "new height; 0: in proportion to the width"),
  };
  entry.message = 6110;
  entry.sizeOfResult = SampledSize;
  entry.check = [](Invocation const& call) {
    bool const isEnough = call.image->GetWidth() > 1 && call.image->GetHeight() > 1;
    return std::string(isEnough ? "" : "the image is one pixel wide or high; there must be two to sample between");
  };
  entry.run = [](Invocation const& call) {
    ImageSize const size = SampledSize(call);
    int const width = static_cast<int>(size.width);
    int const height = static_cast<int>(size.height);
    AsOperator<CImgResolution> image(call);
    if (call.values[kMethod] != 0.0) return image->ByCubic(image.Source(), width, height, call.progress);
    return image->ByLinear(image.Source(), width, height, call.progress);
  };
  return entry;
}

OperatorEntry Map() {
  enum Place : std::size_t { kX, kY, kRadius, kTiltY, kTiltX, kFlattening, kGraticule };
  OperatorEntry entry;
  entry.name = "map";
  entry.title = "unrolls the disk of a planet into a map of longitude and latitude";
  entry.sourceShape = SourceShape::kAnySize;
  entry.sourceName = "photograph";
  entry.parameters = {
      Real("x", "pixels", -kMostPlace, kMostPlace, 0.0, "column of the disk's centre"),
      Real("y", "pixels", -kMostPlace, kMostPlace, 0.0, "row of the disk's centre, row 0 on top"),
      Real("radius", "pixels", 0.0, kMostPlace, 100.0, "the disk's radius along its equator"),
      Real("tilt-y", "degrees", -360.0, 360.0, 0.0, "how far the north pole is tipped towards the viewer"),
      Real("tilt-x", "degrees", -360.0, 360.0, 0.0, "how far the globe is then turned anticlockwise, as it is seen"),
      Real("flattening", "", 0.0, 2.0, 1.0, "polar radius over equatorial radius; Jupiter: 0.935, Saturn: 0.902"),
      Flag("graticule", "draw a line every 30 degrees"),
  };
  entry.overdraw = 1;
  entry.changes.samples = true;
  entry.changes.levels = true;
  entry.message = 6140;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgExpansion> image(call);
    image->Do(image.Source(), v[kX], v[kY], v[kRadius], v[kTiltY], v[kTiltX], v[kFlattening], v[kGraticule] != 0.0,
              call.rect, call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> ResampleOperators() { return {Resize(), Resample(), Map()}; }

}  // namespace orb::host
