// Joining images into colour, mosaics, and taking colour apart.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr int kMostOffset = 1000000;
constexpr int kMostOutside = 1000000000;
constexpr double kMostRaw = 1e30;

OperatorEntry Mosaic() {
  enum Place : std::size_t { kX, kY, kDx, kDy, kAngle, kMode, kKey, kOutside = kKey + 3, kLevels, kAverage };
  OperatorEntry entry;
  entry.name = "mosaic";
  entry.title = "pastes two images into one larger canvas";
  entry.sourceShape = SourceShape::kAny;
  entry.sourceName = "first image";
  entry.needsSecond = true;
  entry.levelUse = LevelUse::kIfAsked;
  entry.changes.samples = true;
  entry.message = 6135;
  entry.units = entry.ticks = Units::kRows;
  entry.bands = Bands::kRectangle;
  entry.parameters = {
      Integer("x", "pixels", -kMostOffset, kMostOffset, 0, "column of the canvas where the first image begins"),
      Integer("y", "pixels", -kMostOffset, kMostOffset, 0, "row of the canvas where the first image begins"),
  };
  for (Parameter& each : Placement("second image against the first", 360.0)) entry.parameters.push_back(each);
  for (Parameter const& each :
       {Choice("mode", {"overwrite", "key", "lighter", "darker", "first"},
               "which image shows where both cover a pixel"),
        Real("key-red", "raw units", -kMostRaw, kMostRaw, 0.0,
             "mode key: the background of the second image that lets the first show; of a mono canvas its only value"),
        Real("key-green", "raw units", -kMostRaw, kMostRaw, 0.0, "mode key: the same for the second plane"),
        Real("key-blue", "raw units", -kMostRaw, kMostRaw, 0.0, "mode key: the same for the third plane"),
        Real("outside", "", -kMostRaw, kMostRaw, 0.0,
             "with levels: the value off an image on the 256-scale; off the first one on a colour canvas it is 0"),
        Flag("levels", "work on the 256-scale of each image's levels, not on raw samples"),
        Flag("average", "take the mean of both images everywhere, whatever the mode")}) {
    entry.parameters.push_back(each);
  }
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    float key[3];
    for (std::size_t p = 0; p < 3; ++p) key[p] = static_cast<float>(v[kKey + p]);
    float outside = static_cast<float>(v[kOutside]);
    AsOperator<CImgMosic> image(call);
    image->Do(image.Source(), static_cast<int>(v[kX]), static_cast<int>(v[kY]), call.second, v[kDx], v[kDy], v[kAngle],
              static_cast<int>(v[kMode]), key, &outside, v[kLevels] != 0.0, v[kAverage] != 0.0, call.rect,
              call.progress);
    return 1;
  };
  return entry;
}

// The values of a frame's parameters.
enum FramePlace : std::size_t { kFrameDx, kFrameDy, kFrameAngle };

OperatorEntry OfThreeFrames(std::vector<std::string> const& names) {
  OperatorEntry entry;
  entry.imagePlanes = 3;
  entry.sourceShape = SourceShape::kNone;
  entry.frameNames = names;
  entry.frameParameters = Placement("frame", 360.0);
  entry.parameters = {Integer("outside", "raw units", -kMostOutside, kMostOutside, 0, "the value off a frame")};
  entry.changes.samples = true;
  entry.changes.levels = true;
  entry.units = entry.ticks = Units::kRows;
  entry.bands = Bands::kRectangle;
  return entry;
}

// Of the planes that a call of compose-rgb may be limited to, the bits of green and blue.
constexpr int kGreenBit = 1;
constexpr int kBlueBit = 2;
constexpr std::size_t kPlanesPlace = 1;

OperatorEntry ComposeRgb() {
  OperatorEntry entry = OfThreeFrames({"red", "green", "blue"});
  entry.name = "compose-rgb";
  entry.title = "joins three exposures through red, green and blue filters into a colour image";
  entry.parameters.push_back(
      Choice("planes", {"all", "green", "blue", "green-blue"}, "the planes that are written; the others stay"));
  entry.message = 6108;
  entry.writesPlane = [](Invocation const& call, int plane) {
    int const chosen = static_cast<int>(call.values[kPlanesPlace]);
    return chosen == 0 || (plane == 1 && (chosen & kGreenBit) != 0) || (plane == 2 && (chosen & kBlueBit) != 0);
  };
  entry.run = [](Invocation const& call) {
    std::vector<PlacedFrame> const& f = call.frames;
    int const chosen = static_cast<int>(call.values[kPlanesPlace]);
    int flags[3] = {chosen == 0, chosen & kGreenBit, chosen & kBlueBit};
    AsOperator<CImgRgbCmpst>(call)->Do(
        f[0].image, f[0].values[kFrameDx], f[0].values[kFrameDy], f[0].values[kFrameAngle],  //
        f[1].image, f[1].values[kFrameDx], f[1].values[kFrameDy], f[1].values[kFrameAngle],  //
        f[2].image, f[2].values[kFrameDx], f[2].values[kFrameDy], f[2].values[kFrameAngle],  //
        call.rect, static_cast<int>(call.values[0]), flags, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry ComposeCmy() {
  OperatorEntry entry = OfThreeFrames({"cyan", "magenta", "yellow"});
  entry.name = "compose-cmy";
  entry.title = "joins three exposures through cyan, magenta and yellow filters into a colour image";
  entry.message = 6136;
  entry.run = [](Invocation const& call) {
    std::vector<PlacedFrame> const& f = call.frames;
    AsOperator<CImgCmyComposit>(call)->Do(
        f[0].image, f[0].values[kFrameDx], f[0].values[kFrameDy], f[0].values[kFrameAngle],  //
        f[1].image, f[1].values[kFrameDx], f[1].values[kFrameDy], f[1].values[kFrameAngle],  //
        f[2].image, f[2].values[kFrameDx], f[2].values[kFrameDy], f[2].values[kFrameAngle],  //
        call.rect, static_cast<int>(call.values[0]), call.progress);
    return 1;
  };
  return entry;
}

constexpr int kPrimariesMessage = 6137;
constexpr int kComplementsMessage = 6138;
constexpr double kLastPrimary = 2.0;

OperatorEntry OfOneChannel() {
  OperatorEntry entry;
  entry.imagePlanes = 1;
  entry.sourceShape = SourceShape::kColour;
  entry.takesRectangle = false;
  entry.parameters = {Choice("channel", {"red", "green", "blue", "cyan", "magenta", "yellow"}, "what is taken out")};
  entry.changes.samples = true;
  entry.changes.levels = true;
  entry.message = kPrimariesMessage;
  entry.units = entry.ticks = Units::kImageRows;
  return entry;
}

OperatorEntry Separate() {
  OperatorEntry entry = OfOneChannel();
  entry.name = "separate";
  entry.title = "takes one channel out of a colour image, a complement as the mean of two planes";
  entry.run = [](Invocation const& call) {
    AsOperator<CImgSeparation> image(call);
    image->Do(image.Source(), static_cast<int>(call.values[0]), call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry SeparateSum() {
  OperatorEntry entry = OfOneChannel();
  entry.name = "separate-sum";
  entry.title = "takes one channel out of a colour image, a complement as the sum of two planes";
  entry.messageOfCall = [](Invocation const& call) {
    return call.values[0] > kLastPrimary ? kComplementsMessage : kPrimariesMessage;
  };
  entry.run = [](Invocation const& call) {
    AsOperator<CImgSepatation> image(call);
    image->Do(image.Source(), static_cast<int>(call.values[0]), call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> ChannelOperators() {
  return {Mosaic(), ComposeRgb(), ComposeCmy(), Separate(), SeparateSum()};
}

}  // namespace orb::host
