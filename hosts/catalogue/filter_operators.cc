// Kernels and windows: the base filters, blurring and sharpening.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

constexpr int kMostRange = 30;       // the kernel's radius at that
constexpr int kMostBlurSigma = 50;   // pixels; the kernel's radius is twice that
constexpr int kMostSharpSigma = 30;  // summed in full, so that the work grows with its square
constexpr int kShapeRadius = 2;      // of the largest shape

OperatorEntry Filter(std::string name, std::string title, int message, int marginRows) {
  OperatorEntry entry;
  entry.name = std::move(name);
  entry.title = std::move(title);
  entry.changes.samples = true;
  entry.bands = Bands::kRectangle;
  entry.units = entry.ticks = Units::kRowsTimesPlanes;
  entry.message = message;
  entry.marginRows = marginRows;
  return entry;
}

Parameter ShapeOf(std::string const& what) {
  return Choice("shape", {"cross", "square", "round"},
                what + ": 5 samples, 3 x 3, or 21 samples (5 x 5 without its corners)");
}

Parameter RangeOf() {
  return Real("range", "squared pixels", 1.0, kMostRange, 2.0,
              "neighbours up to this squared distance; 2 takes 3 x 3, 4 the disk of radius 2");
}

Parameter Sigma(int most) {
  return Real("sigma", "pixels", 0.1, most, 2.0, "width of the Gaussian, which ends at twice its whole part");
}

Parameter NeighbourWeight() {
  return Real("weight", "", 0.0, 1000.0, 1.0, "weight of a neighbour, that of the centre being 1");
}

Parameter SharpWeight() {
  return Real("weight", "", 0.0, 2.0, 1.0,
              "what all neighbours take off; the centre has 2, so that 2 leaves edges alone");
}

Parameter Strength() {
  return Real("strength", "", -1000.0, 1000.0, 1.0, "share of the difference from the blur that is added");
}

Parameter Threshold() {
  return Real("threshold", "", 0.0, 1e6, 0.0, "samples that differ less from the blur, as a share of their own, stay");
}

OperatorEntry ShapeMedian() {
  OperatorEntry entry = Filter("shape-median", "takes the median of a small neighbourhood", 6120, kShapeRadius);
  entry.parameters = {ShapeOf("the neighbourhood")};
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilter> image(call);
    image->MedianFilter(static_cast<int>(call.values[0]), image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry ShapeRank() {
  enum Place : std::size_t { kRank, kShape };
  OperatorEntry entry = Filter(
      "shape-rank", "takes the minimum, the maximum or any rank between of a small neighbourhood", 6153, kShapeRadius);
  entry.parameters = {
      Real("rank", "", 0.0, 1.0, 0.0, "place among the samples in ascending order: 0 the first, 1 the last"),
      ShapeOf("the neighbourhood")};
  entry.run = [](Invocation const& call) {
    constexpr int kLast[] = {4, 8, 20};
    int const shape = static_cast<int>(call.values[kShape]);
    AsOperator<CImgFilter> image(call);
    image->MinMaxFilter(shape, static_cast<int>(call.values[kRank] * kLast[shape] + 0.5), image.Source(), call.rect,
                        call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Laplacian() {
  OperatorEntry entry = Filter("laplacian", "shows edges: the size of the second difference", 6143, kShapeRadius);
  entry.parameters = {Choice("shape", {"direct", "all", "corners"},
                             "neighbours that count: 4, 8, or the corners against twice the direct ones")};
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilter> image(call);
    image->LaplacianFilter(static_cast<int>(call.values[0]), image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry ShapeUnsharp() {
  enum Place : std::size_t { kStrength, kThreshold, kWeight, kShape };
  OperatorEntry entry =
      Filter("shape-unsharp", "sharpens by the difference from the mean of a small neighbourhood", 6122, kShapeRadius);
  entry.parameters = {Strength(), Threshold(), NeighbourWeight(), ShapeOf("the mean")};
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgFilter> image(call);
    image->UnSharpMask(v[kStrength], static_cast<int>(v[kShape]), v[kWeight], v[kThreshold], image.Source(), call.rect,
                       call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Mean() {
  OperatorEntry entry = Filter("mean", "blurs by a mean", 6119, kMostRange);
  entry.parameters = {RangeOf(), NeighbourWeight()};
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterBlur> image(call);
    image->MeanFilter(call.values[0], call.values[1], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Gaussian() {
  OperatorEntry entry = Filter("gaussian", "blurs by a Gaussian", 6131, 2 * kMostBlurSigma);
  entry.parameters = {Sigma(kMostBlurSigma)};
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterBlur> image(call);
    image->GaussianFilter(call.values[0], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry BlurMedian() {
  OperatorEntry entry =
      Filter("blur-median", "takes the median of a disk whose lower half counts as 0", 6120, kMostRange);
  entry.parameters = {Real("radius", "pixels", 1.0, kMostRange, 2.0, "radius of the disk")};
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterBlur> image(call);
    image->MedianFilter(call.values[0], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry MeanOffEdges() {
  OperatorEntry entry = Filter("mean-off-edges", "blurs flat parts by a mean and keeps edges", 6119, kMostRange);
  entry.parameters = {RangeOf(), NeighbourWeight()};
  entry.levelUse = LevelUse::kAlways;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterBlur> image(call);
    image->MeanWithoutEdgeFilter(call.values[0], call.values[1], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Sharpen() {
  OperatorEntry entry = Filter("sharpen", "sharpens by the difference from the neighbours", 6121, kMostRange);
  entry.parameters = {RangeOf(), SharpWeight()};
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterSharp> image(call);
    image->SharpFilter(call.values[0], call.values[1], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry SharpenEdges() {
  OperatorEntry entry = Filter("sharpen-edges", "sharpens edges and keeps flat parts", 6121, kMostRange);
  entry.parameters = {RangeOf(), SharpWeight()};
  entry.levelUse = LevelUse::kAlways;
  entry.run = [](Invocation const& call) {
    AsOperator<CImgFilterSharp> image(call);
    image->SharpEdgeFilter(call.values[0], call.values[1], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

OperatorEntry Unsharp() {
  OperatorEntry entry = Filter("unsharp", "sharpens by the difference from a Gaussian blur", 6122, 2 * kMostSharpSigma);
  entry.parameters = {Sigma(kMostSharpSigma), Strength(), Threshold()};
  entry.run = [](Invocation const& call) {
    std::vector<double> const& v = call.values;
    AsOperator<CImgFilterSharp> image(call);
    image->UnSharpMask(v[0], v[1], v[2], image.Source(), call.rect, call.progress);
    return 1;
  };
  return entry;
}

}  // namespace

std::vector<OperatorEntry> FilterOperators() {
  return {Mean(),    Gaussian(),    BlurMedian(), MeanOffEdges(), Sharpen(),     SharpenEdges(),
          Unsharp(), ShapeMedian(), ShapeRank(),  Laplacian(),    ShapeUnsharp()};
}

}  // namespace orb::host
