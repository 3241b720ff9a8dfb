// Brightness, arithmetic, balance, curves: samples by themselves.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr char k256Scale[] = "255ths of the levels' range";
constexpr double kMost = 1e6;
constexpr int kMostEntries = 1 << 20;

OperatorEntry PointOperator() {
  OperatorEntry entry;
  entry.mayRunInPlace = true;
  entry.levelUse = LevelUse::kAlways;
  entry.changes.samples = true;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  entry.bands = Bands::kRectangle;
  return entry;
}

OperatorEntry Bright() {
  OperatorEntry entry = PointOperator();
  entry.name = "bright";
  entry.title = "changes brightness and contrast, all planes by the levels of the first";
  entry.parameters = {
      Real("brightness", k256Scale, -kMost, kMost, 0.0, "what is added to every sample"),
      Real("contrast", "256ths", -kMost, kMost, 0.0, "what is added to the slope: 256 doubles it, -256 makes it flat"),
      Real("pivot", k256Scale, -kMost, kMost, 128.0, "the value above the black level that contrast leaves alone"),
  };
  entry.message = 6115;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgBright> image(call);
    image->Do(call.values[0], call.values[1], call.values[2], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Calculate() {
  enum Place : std::size_t { kValue, kOperation, kClamp };
  constexpr double kDivide = 3.0;
  OperatorEntry entry = PointOperator();
  entry.name = "calculate";
  entry.title = "adds, subtracts, multiplies or divides every sample by one number";
  entry.parameters = {
      Real("value", "", -1e30, 1e30, 1.0, "the number: raw units to add and subtract, a factor otherwise"),
      Choice("operation", {"add", "subtract", "multiply", "divide"}, "what is done with it"),
      Flag("clamp", "operation subtract: what falls below 0 becomes 0"),
  };
  entry.levelUse = LevelUse::kNone;
  entry.message = 6109;
  entry.check = [](Invocation const& call) {
    bool const isWrong = call.values[kOperation] == kDivide && call.values[kValue] == 0.0;
    return std::string(isWrong ? "value is 0; to divide, it must be another number" : "");
  };
  entry.run = [](Invocation const& call) {
    AsOperator<CImgCalculation> image(call);
    image->Do(call.values[kValue], static_cast<int>(call.values[kOperation]), call.values[kClamp] != 0.0,
              image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Balance() {
  OperatorEntry entry = PointOperator();
  entry.name = "balance";
  entry.title = "adds to each colour a number of its own, all by the levels of the first plane";
  entry.parameters = {
      Real("red", k256Scale, -kMost, kMost, 0.0, "what is added to the first plane, and to a mono image"),
      Real("green", k256Scale, -kMost, kMost, 0.0, "what is added to the second plane"),
      Real("blue", k256Scale, -kMost, kMost, 0.0, "what is added to the third plane"),
  };
  entry.message = 6118;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgColorBalance> image(call);
    image->Do(call.values[0], call.values[1], call.values[2], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Posterise() {
  OperatorEntry entry = PointOperator();
  entry.name = "posterise";
  entry.title = "leaves a given number of tones within the levels";
  entry.parameters = {Integer("tones", "", 1, 256, 8, "how many; the brightest lies one step below white")};
  entry.message = 6144;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgReduceTone> image(call);
    image->Do(static_cast<int>(call.values[0]), image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Curve() {
  OperatorEntry entry = PointOperator();
  entry.name = "curve";
  entry.title = "takes samples through tone curves, a plane's own first and then the master";
  entry.tables = {
      Table{"master", 2, kMostEntries, false, "entries from 0 to 1, evenly spaced between the levels"},
      Table{"plane", 2, kMostEntries, true, "the same, for one plane"},
  };
  entry.message = 6114;
  entry.units = Units::kImageRowsTimesPlanes;
  entry.run = [](Invocation const& call) {
    // The operator asks for pointers that it may write through, and does not.
    std::vector<float*> curves;
    for (std::vector<float> const& table : call.tables) curves.push_back(const_cast<float*>(table.data()));
    AsOperator<CImgToneCurve> image(call);
    image->Do(curves.data(), static_cast<int>(call.tables[0].size()), image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Equalise() {
  OperatorEntry entry;
  entry.name = "equalise";
  entry.title = "gives every sample a level by its rank, so that the histogram is flat";
  entry.takesRectangle = false;
  entry.changes.samples = true;
  entry.changes.sourceLevels = true;
  entry.message = 6177;
  entry.reports = Reports::kAlways;
  entry.runsByPlane = true;
  entry.units = Units::kClasses;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgHstEql> image(call);
    return image->Do(image.Source());
  };
  return entry;
}

// The limits are held as floats on the 256-scale.
std::string CheckLimits(Invocation const& call) {
  COrbImage const& source = *call.source;
  bool const isRange =
      static_cast<float>(source.To256(call.values[0], 0)) != static_cast<float>(source.To256(call.values[1], 0));
  return isRange ? "" : "low and high leave no range between them";
}

OperatorEntry FalseColour() {
  enum Place : std::size_t { kLow, kHigh, kPalette, kRepeat };
  OperatorEntry entry = PointOperator();
  entry.name = "false-colour";
  entry.title = "shows brightness as colours";
  entry.sourceShape = SourceShape::kFrameToColour;
  entry.parameters = {
      Real("low", "raw units", -1e30, 1e30, 0.0, "where the palette begins"),
      Real("high", "raw units", -1e30, 1e30, 255.0, "where the palette ends"),
      Choice("palette", {"spectrum", "full-spectrum", "blue", "cold", "warm", "fire", "gray"}, "the colours"),
      Integer("repeat", "", 0, 255, 0, "how many times the palette runs through; 0: once"),
  };
  entry.parameters[kLow].follows = Parameter::Follows::kBlack;
  entry.parameters[kHigh].follows = Parameter::Follows::kWhite;
  entry.message = 6117;
  entry.units = entry.ticks = Units::kRows;
  entry.check = CheckLimits;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFalseColor> image(call);
    image->Do(call.values[kLow], call.values[kHigh], static_cast<int>(call.values[kPalette]),
              static_cast<int>(call.values[kRepeat]), image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> PointOperators() {
  return {Bright(), Calculate(), Balance(), Posterise(), Curve(), Equalise(), FalseColour()};
}

}  // namespace orb::host
