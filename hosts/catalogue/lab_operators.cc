// Operators on lightness and colour.
#include <memory>

#include <hosts/catalogue/rooms_internal.h>
#include <hosts/catalogue/shared_view_internal.h>

namespace orb::host {

namespace {

using Planes = std::unique_ptr<COrbImage>;

// Planes are made without a message: a call reports the run of its operator and nothing else.
template <typename Make>
Planes MakeSilently(COrbImage& image, Make make) {
  COrbImage view;
  ShareWhole(image, view);
  view.SetProgressHandle(nullptr);
  return Planes(make(view));
}

OperatorEntry LabEnhance() {
  constexpr double kMostGain = 1000.0;
  OperatorEntry entry;
  entry.name = "lab-enhance";
  entry.title = "strengthens or weakens colours, leaving the lightness as it is";
  entry.group = "apply";
  entry.imagePlanes = 3;
  entry.mayRunInPlace = true;
  entry.levelUse = LevelUse::kAlways;
  entry.changes.samples = true;
  entry.message = 6134;
  entry.units = Units::kImageRows;
  entry.ticks = Units::kRows;
  entry.parameters = {
      Real("red-gain", "", -kMostGain, kMostGain, 1.5, "factor on a of Lab where it is towards red"),
      Real("green-gain", "", -kMostGain, kMostGain, 1.5, "factor on a of Lab where it is towards green"),
      Real("yellow-gain", "", -kMostGain, kMostGain, 1.5, "factor on b of Lab where it is towards yellow"),
      Real("blue-gain", "", -kMostGain, kMostGain, 1.5, "factor on b of Lab where it is towards blue"),
  };
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgLabColorEnhance> image(call);
    Planes const lab = MakeSilently(*image.Source(), [](COrbImage& source) { return source.MakeLabPlane(); });
    if (lab == nullptr) return 0;
    image->Do(lab.get(), v[0], v[1], v[2], v[3], call.rect, call.progress);
    return 1;
  };
  return entry;
}

enum Frame : std::size_t { kLuminance, kColour };
enum FramePlace : std::size_t { kDx, kDy, kAngle };
constexpr std::size_t kScale = 0;

OperatorEntry OfLuminanceAndColour() {
  OperatorEntry entry;
  entry.imagePlanes = 3;
  entry.sourceShape = SourceShape::kNone;
  entry.frameNames = {"luminance", "colour"};
  entry.frameParameters = Placement("frame", 360.0);
  entry.parameters = {Real("scale", "", 1e-3, 1e3, 1.0,
                           "pixels of the colour frame to a pixel of the result, about its standard centre")};
  entry.levelUse = LevelUse::kAlways;
  entry.changes.samples = true;
  entry.changes.levels = true;
  entry.message = 6103;
  entry.units = entry.ticks = Units::kRows;
  entry.bands = Bands::kRectangle;
  return entry;
}

void RunLrgb(Invocation const& call, bool isAverage) {
  PlacedFrame const& l = call.frames[kLuminance];
  PlacedFrame const& c = call.frames[kColour];
  AsOperator<CImgLrgbCmpst>(call)->DoLrgb(l.image, l.values[kDx], l.values[kDy], l.values[kAngle], c.image,
                                          c.values[kDx], c.values[kDy], c.values[kAngle], call.values[kScale],
                                          call.rect, isAverage ? 1 : 0, call.progress);
}

OperatorEntry ComposeLrgb() {
  OperatorEntry entry = OfLuminanceAndColour();
  entry.name = "compose-lrgb";
  entry.title = "gives a colour image the lightness of a luminance exposure";
  entry.run = [](Invocation const& call) {
    RunLrgb(call, false);
    return 1;
  };
  return entry;
}

OperatorEntry ComposeLrgbMean() {
  OperatorEntry entry = OfLuminanceAndColour();
  entry.name = "compose-lrgb-mean";
  entry.title = "takes the mean of a luminance exposure and a colour image, each by its levels";
  entry.reports = Reports::kNever;
  entry.message = 0;
  entry.units = entry.ticks = Units::kNone;
  entry.run = [](Invocation const& call) {
    RunLrgb(call, true);
    return 1;
  };
  return entry;
}

// No bands: each would make the planes anew.
OperatorEntry ComposeLab() {
  OperatorEntry entry = OfLuminanceAndColour();
  entry.name = "compose-lab";
  entry.title = "gives a colour image the lightness of a luminance exposure, both sampled as planes of Lab";
  entry.parameters.push_back(Flag("clip", "take the colour of overexposed pixels from channels cut at white"));
  entry.bands = Bands::kNone;
  entry.run = [](Invocation const& call) {
    PlacedFrame const& l = call.frames[kLuminance];
    PlacedFrame const& c = call.frames[kColour];
    int const clip = call.values[kScale + 1] != 0.0 ? 1 : 0;
    Planes const lPlane = MakeSilently(*l.image, [](COrbImage& image) { return image.MakeLPlane(); });
    Planes const abPlane = MakeSilently(*c.image, [clip](COrbImage& image) { return image.MakeAbPlane(clip); });
    if (lPlane == nullptr || abPlane == nullptr) return 0;
    AsOperator<CImgLrgbCmpst>(call)->DoLab(lPlane.get(), l.values[kDx], l.values[kDy], l.values[kAngle], abPlane.get(),
                                           c.values[kDx], c.values[kDy], c.values[kAngle], call.values[kScale],
                                           call.rect, call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> LabOperators() { return {LabEnhance(), ComposeLrgb(), ComposeLrgbMean(), ComposeLab()}; }

}  // namespace orb::host
