// Filters for stars and nebulae.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr double kMostRadius = 100.0;  // pixels
constexpr double kMostSigma = 50.0;    // pixels
constexpr double kMostThreshold = 1e6;
constexpr double kMostGain = 1e6;
constexpr double kFarthest = 1e6;         // pixels
constexpr int kEveryRow = 1'000'000'000;  // more than any image has

OperatorEntry Filter() {
  OperatorEntry entry;
  entry.changes.samples = true;
  entry.bands = Bands::kRectangle;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  return entry;
}

OperatorEntry StarSharp() {
  enum Place : std::size_t { kRadius, kRank, kThreshold, kKeepPeaks };
  OperatorEntry entry = Filter();
  entry.name = "star-sharp";
  entry.title = "shrinks stars by taking a low rank of the samples under a disk";
  entry.parameters = {
      Real("radius", "pixels", 0.0, kMostRadius, 1.5, "radius of the disk"),
      Real("rank", "", 0.0, 1.0, 0.25,
           "place among the samples in ascending order: 0 the least, 1 the largest; interpolated between samples"),
      Real("threshold", "", 0.0, kMostThreshold, 0.0,
           "samples stay whose value of that rank lies nearer to the disk's largest, as a share of it; 0: none"),
      Flag("keep-peaks", "samples that are the largest of their disk stay")};
  entry.message = 6165;
  entry.marginRows = static_cast<int>(kMostRadius);
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgFilterSpecial> image(call);
    double const position = v[kRank] * (image->GetStarSharpFilterNum(v[kRadius]) - 1);
    image->StarSharpFilter(v[kRadius], position, v[kThreshold], v[kKeepPeaks] != 0.0, image.Source(), call.rect,
                           call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry StarEnhance() {
  enum Place : std::size_t { kSigma, kStrength, kThreshold };
  OperatorEntry entry = Filter();
  entry.name = "star-enhance";
  entry.title = "lets faint stars stand out by adding the edges of the blurred image to it";
  entry.parameters = {
      Real("sigma", "pixels", 0.1, kMostSigma, 1.0, "of the blur, which takes 5 x 5 samples at most"),
      Real("strength", "", -1e6, 1e6, 1.0, "share of the edges that is added"),
      Real("threshold", "", 0.0, kMostThreshold, 0.02, "edges below this share of the level range count as none")};
  entry.message = 6173;
  entry.levelUse = LevelUse::kAlways;
  entry.marginRows = 4;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgFilterSpecial> image(call);
    image->StarEnhanceFilter(v[kSigma], v[kStrength], v[kThreshold], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry NebulaSmooth() {
  enum Place : std::size_t { kSigma, kThreshold, kClearRadius };
  OperatorEntry entry = Filter();
  entry.name = "nebula-smooth";
  entry.title = "smooths what lies far from any edge and leaves stars and their surroundings as they are";
  entry.parameters = {Real("sigma", "pixels", 0.1, kMostSigma, 2.0, "of the smoothing"),
                      Real("threshold", "", 0.0, kMostThreshold, 0.2, "an edge reaches this share of the level range"),
                      Real("clear-radius", "pixels", 0.0, kMostRadius, 2.0, "how far around an edge samples stay")};
  entry.message = 6174;
  entry.levelUse = LevelUse::kAlways;
  entry.marginRows = static_cast<int>(kMostSigma) + 2;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgFilterSpecial> image(call);
    image->NebularSmootherFilter(v[kSigma], v[kThreshold], v[kClearRadius], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry DigitalDevelopment() {
  enum Place : std::size_t { kPivot, kWeight, kDivisor };
  enum Divisor { kOwn, kFirst, kMean };
  OperatorEntry entry = Filter();
  entry.name = "digital-development";
  entry.title = "compresses the tones as a photographic print does, each sample by its blurred surroundings";
  entry.parameters = {
      Real("pivot", "raw units", -1e30, 1e30, 1000.0, "knee of the curve: the nearer to the black level, the stronger"),
      Real("weight", "", 0.0, 1e6, 1.0, "weight of the four neighbours in the blur; 0: a curve of the sample alone"),
      Choice("divisor", {"own", "first", "mean"}, "the plane whose blur divides; the first for all keeps the colours")};
  entry.parameters[kPivot].follows = Parameter::Follows::kWhite;
  entry.message = 6116;
  entry.levelUse = LevelUse::kAlways;
  entry.marginRows = kEveryRow;  // the curve ends at the mean of the source
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgFilterSpecial> image(call);
    int const divisor = image->IsColor() ? static_cast<int>(v[kDivisor]) : kFirst;
    int from[] = {0, 1, 2};
    if (divisor == kFirst) from[1] = from[2] = 0;
    if (divisor == kMean) from[0] = from[1] = from[2] = 3;
    image->DigitalDvlp(v[kPivot], v[kWeight], image.Source(), from, call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry RotationalGradient() {
  enum Place : std::size_t { kAngle, kGain, kX, kY };
  OperatorEntry entry = Filter();
  entry.name = "rotational-gradient";
  entry.title = "compares each sample with those turned about a centre by an angle, to bring out what is not round";
  entry.parameters = {
      Real("angle", "degrees", -360.0, 360.0, 5.0, "of the turns to both sides"),
      Real("gain", "", 0.0, kMostGain, 0.0, "the image comes back with the differences divided by this; 0: they alone"),
      Real("x", "pixels", -kFarthest, kFarthest, 0.0, "column of the centre"),
      Real("y", "pixels", -kFarthest, kFarthest, 0.0, "row of the centre")};
  entry.parameters[kX].follows = Parameter::Follows::kMiddleColumn;
  entry.parameters[kY].follows = Parameter::Follows::kMiddleRow;
  entry.message = 6176;
  entry.marginRows = kEveryRow;
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgRttnGrdtn> image(call);
    image->Do(v[kAngle], v[kGain], v[kX], v[kY], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> StarFilterOperators() {
  return {StarSharp(), StarEnhance(), NebulaSmooth(), DigitalDevelopment(), RotationalGradient()};
}

}  // namespace orb::host
