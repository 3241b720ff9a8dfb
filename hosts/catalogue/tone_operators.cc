#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr char kPerPlaneHelp[] = "a colour image: set the levels of each plane by itself, not by the brightness";

OperatorEntry AutoLevel() {
  OperatorEntry entry;
  entry.sourceShape = SourceShape::kNone;
  entry.changes.levels = true;
  entry.reports = Reports::kNever;
  return entry;
}

OperatorEntry ByArea() {
  OperatorEntry entry = AutoLevel();
  entry.name = "level-area";
  entry.title = "sets the levels where given fractions of the histogram's area lie below and above";
  entry.parameters = {Real("low", "", -10.0, 10.0, 0.01,
                           "fraction of the area below the black level; from 0 down, of the range of values"),
                      Real("high", "", -10.0, 10.0, 0.99,
                           "fraction of the area below the white level; from 1 up, of the range of values"),
                      Flag("per-plane", kPerPlaneHelp)};
  entry.message = 6168;
  entry.reports = Reports::kAlwaysForBrightness;
  entry.units = entry.ticks = Units::kRows;
  entry.check = [](Invocation const& call) {
    return std::string(call.values[0] < call.values[1] ? "" : "low must be below high");
  };
  entry.run = [](Invocation const& call) {
    AsOperator<CImgAutoLevel>(call)->Do(call.values[0], call.values[1], call.values[2] != 0.0, call.rect);
    return 1;
  };
  return entry;
}

std::vector<Parameter> DeviationParameters(std::string const& centre) {
  return {
      Real("low-factor", "standard deviations", -1000.0, 1000.0, 1.0, "how far below the " + centre + " black lies"),
      Real("high-factor", "standard deviations", -1000.0, 1000.0, 5.0, "how far above the " + centre + " white lies"),
      Flag("per-plane", kPerPlaneHelp)};
}

std::string CheckFactors(Invocation const& call) {
  return call.values[0] + call.values[1] > 0.0 ? ""
                                               : "low-factor and high-factor leave no range between black and white";
}

OperatorEntry ByMean() {
  OperatorEntry entry = AutoLevel();
  entry.name = "level-mean";
  entry.title = "sets the levels around the mean, in standard deviations";
  entry.parameters = DeviationParameters("mean");
  entry.check = CheckFactors;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgAutoLevel>(call)->DoByMean(call.values[0], call.values[1], call.values[2] != 0.0, call.rect);
    return 1;
  };
  return entry;
}

OperatorEntry ByMedian() {
  OperatorEntry entry = AutoLevel();
  entry.name = "level-median";
  entry.title = "sets the levels around the median, in standard deviations";
  entry.parameters = DeviationParameters("median");
  entry.parameters.push_back(
      Real("fixed-range", "raw units", 0.0, 1e30, 0.0,
           "a mono image: black just above the tenth percentile, white this much above; 0: off"));
  entry.check = CheckFactors;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgAutoLevel>(call)->DoByMedian(call.values[0], call.values[1], call.values[2] != 0.0, call.rect,
                                                call.values[3]);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> ToneOperators() { return {ByArea(), ByMean(), ByMedian()}; }

}  // namespace orb::host
