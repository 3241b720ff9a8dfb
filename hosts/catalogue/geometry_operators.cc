#include <utility>

#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

OperatorEntry Flip() {
  constexpr int kUpsideDownMessage = 6127;
  constexpr int kLeftToRightMessage = 6128;
  OperatorEntry entry = OfMovedSamples("flip", "mirrors an image");
  entry.parameters = {Choice("direction", {"vertical", "horizontal"}, "upside down, or left to right")};
  entry.changes.points = false;
  entry.message = kUpsideDownMessage;
  entry.messageOfCall = [](Invocation const& call) {
    return call.values[0] == 0.0 ? kUpsideDownMessage : kLeftToRightMessage;
  };
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFlip> image(call);
    image->Do(static_cast<int>(call.values[0]), image.Source(), call.progress);
    return 1;
  };
  return entry;
}

constexpr int kRotateMessage = 6112;

enum TurnBy { kLeft, kHalf, kRight };

TurnBy WayOf(Invocation const& call) { return static_cast<TurnBy>(static_cast<int>(call.values[0])); }

OperatorEntry Turn() {
  OperatorEntry entry = OfMovedSamples("turn", "turns an image by quarters, exactly");
  entry.parameters = {Choice("by", {"quarter-left", "half", "quarter-right"}, "how far and which way")};
  entry.message = kRotateMessage;
  entry.changesLevels = [](Invocation const& call) { return WayOf(call) != kHalf; };
  entry.sizeOfResult = [](Invocation const& call) {
    ImageSize const size{call.image->GetWidth(), call.image->GetHeight()};
    return WayOf(call) == kHalf ? size : ImageSize{size.height, size.width};
  };
  entry.run = [](Invocation const& call) {
    AsOperator<CImgRotate> image(call);
    if (WayOf(call) != kHalf) return image->Do90(WayOf(call) == kLeft ? 0 : 1, image.Source(), call.progress);
    image->Do180(image.Source(), call.progress);
    return 1;
  };
  return entry;
}

// What a value from black 0 to white 255 is in each plane of the source.
std::vector<double> RawFill(Invocation const& call, double fill) {
  std::vector<double> raw;
  for (int p = 0; p < call.image->GetPlanes(); ++p) raw.push_back(call.source->ToRaw(fill, p));
  return raw;
}

OperatorEntry Rotate() {
  enum Place : std::size_t { kAngle, kFill, kGrow };
  OperatorEntry entry = OfMovedSamples("rotate", "turns an image by any angle");
  entry.parameters = {
      Real("angle", "degrees", -360.0, 360.0, 45.0, "how far clockwise"),
      Real("fill", "", -1e6, 1e6, 0.0, "what lies off the source, on the scale from black 0 to white 255"),
      Flag("grow", "make room for the whole image instead of cutting its corners"),
  };
  entry.message = kRotateMessage;
  entry.sizeOfResult = [](Invocation const& call) {
    ImageSize const size{call.image->GetWidth(), call.image->GetHeight()};
    if (call.values[kGrow] == 0.0) return size;
    CSize const grown = FindTurnedSize(call.image->GetWidth(), call.image->GetHeight(), call.values[kAngle]);
    return ImageSize{grown.cx, grown.cy};
  };
  entry.check = [](Invocation const& call) -> std::string {
    return call.values[kAngle] != 0.0 ? "" : "angle is 0, which turns nothing";
  };
  entry.run = [](Invocation const& call) {
    std::vector<double> fill = RawFill(call, call.values[kFill]);
    AsOperator<CImgRotate> image(call);
    return image->Do(call.values[kAngle], fill.data(), image.Source(), call.values[kGrow] != 0.0, call.progress);
  };
  return entry;
}

OperatorEntry Scroll() {
  enum Direction { kUpwards, kDownwards, kRightwards, kLeftwards };
  OperatorEntry entry = OfMovedSamples("scroll", "shifts an image round its edges");
  entry.parameters = {
      Integer("amount", "pixels", 0, 1'000'000, 1, "how far"),
      Choice("direction", {"up", "down", "right", "left"}, "which way"),
  };
  entry.message = 6146;
  entry.run = [](Invocation const& call) {
    auto const direction = static_cast<Direction>(static_cast<int>(call.values[1]));
    bool const isBack = direction == kDownwards || direction == kLeftwards;
    int const amount = static_cast<int>(call.values[0]) * (isBack ? -1 : 1);
    AsOperator<CImgScroll> image(call);
    image->Do(amount, direction == kRightwards || direction == kLeftwards, image.Source(), call.progress);
    return 1;
  };
  return entry;
}

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

OperatorEntry Bin() {
  enum Place : std::size_t { kX, kY, kKeepPartial, kScaleLevels };
  constexpr int kMost = 10'000;
  OperatorEntry entry = OfMovedSamples("bin", "sums blocks of pixels into one");
  entry.parameters = {
      Integer("x", "pixels", 1, kMost, 2, "width of a block"),
      Integer("y", "pixels", 1, kMost, 2, "height of a block"),
      Flag("keep-partial", "keep the blocks that the right and lower edge cut, which come out dimmer"),
      Flag("scale-levels", "multiply the levels like the samples, so that the image looks as before"),
  };
  entry.message = 6132;
  entry.changesLevels = [](Invocation const& call) { return call.values[kScaleLevels] != 0.0; };
  entry.sizeOfResult = [](Invocation const& call) {
    auto const bins = [&](int size, Place place) {
      int const bin = static_cast<int>(call.values[place]);
      return (size + (call.values[kKeepPartial] != 0.0 ? bin - 1 : 0)) / bin;
    };
    return ImageSize{bins(call.image->GetWidth(), kX), bins(call.image->GetHeight(), kY)};
  };
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgSoftBinning> image(call);
    return image->Do(static_cast<int>(v[kX]), static_cast<int>(v[kY]), v[kKeepPartial] != 0.0, v[kScaleLevels] != 0.0,
                     image.Source(), call.progress);
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

std::vector<OperatorEntry> GeometryOperators() { return {Flip(), Turn(), Rotate(), Scroll(), Crop(), Bin()}; }

}  // namespace orb::host
