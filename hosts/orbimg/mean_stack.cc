#include <hosts/orbimg/mean_stack.h>

#include <algorithm>
#include <memory>
#include <mutex>

#include <hosts/orbimg/band_stack.h>
#include <hosts/orbimg/covered_columns.h>

namespace orb::host {
namespace {

// One frame at one line after the other: a median of one is that one, as the library samples it.
class LineReader {
 public:
  LineReader(FrameBands const& frames, std::size_t i, WindowedFrame const& result)
      : map(frames.Transform(i)), shape(frames.Window(i).GetShape()), transform(frames.Transform(i)) {
    frames.ShowIn(image, i);
    result.ShowIn(destination);
    sampler = std::make_unique<CImgMedianComposit>(&destination);
    samples.resize(static_cast<std::size_t>(result.GetShape().width) * static_cast<std::size_t>(shape.planes));
  }

  // Uses row y of the result as scratch.
  void Read(int y, WindowedFrame const& result) {
    sampler->Store(&image, y, transform.dx, transform.dy, transform.angle);
    sampler->Calc();
    int const width = result.GetShape().width;
    for (int p = 0; p < shape.planes; ++p) std::copy_n(result.Row(p, y), width, Samples(p, width));
    covered = FindCoveredColumns(map, shape, y, width);
  }

  FrameLineView View(int plane, int width, double weight) {
    return FrameLineView{Samples(plane, width), covered.begin, covered.end, weight};
  }

 private:
  float* Samples(int plane, int width) {
    return samples.data() + static_cast<std::size_t>(plane) * static_cast<std::size_t>(width);
  }

  RigidMap map;
  Shape shape;
  FrameTransform transform;
  COrbImage image;
  COrbImage destination;
  std::unique_ptr<CImgMedianComposit> sampler;
  std::vector<float> samples;
  ColumnRange covered;
};

// The rows of a piece, on one thread.
class PieceJoiner {
 public:
  PieceJoiner(FrameBands const& initFrames, WindowedFrame& initResult, JoinRule const& rule,
              std::vector<double> const& initWeights)
      : frames(initFrames), result(initResult), weights(initWeights), joiner(rule) {
    for (std::size_t i = 0; i < frames.Count(); ++i) {
      readers.push_back(std::make_unique<LineReader>(frames, i, result));
    }
    if (rule.rejection == JoinRule::Rejection::kWinsorised) PrepareMedians();
  }

  void JoinRow(int y) {
    for (auto const& reader : readers) reader->Read(y, result);
    if (medians != nullptr) FindMedians(y);
    int const width = result.GetShape().width;
    for (int p = 0; p < result.GetShape().planes; ++p) {
      views.clear();
      for (std::size_t i = 0; i < readers.size(); ++i) views.push_back(readers[i]->View(p, width, weights[i]));
      joiner.Join(views, result.Row(p, y), width, result.Row(p, y));
    }
  }

  JoinCount const& Count() const { return joiner.Count(); }

 private:
  void PrepareMedians() {
    result.ShowIn(destination);
    images.resize(frames.Count());
    for (std::size_t i = 0; i < images.size(); ++i) frames.ShowIn(images[i], i);
    medians = std::make_unique<CImgMedianComposit>(&destination);
  }

  // They stand in the result until the means take their place.
  void FindMedians(int y) {
    for (std::size_t i = 0; i < images.size(); ++i) {
      FrameTransform const& t = frames.Transform(i);
      medians->Store(&images[i], y, t.dx, t.dy, t.angle);
    }
    medians->Calc();
  }

  FrameBands const& frames;
  WindowedFrame& result;
  std::vector<double> const& weights;
  std::vector<std::unique_ptr<LineReader>> readers;
  std::vector<FrameLineView> views;
  LineJoiner joiner;
  COrbImage destination;
  std::vector<COrbImage> images;
  std::unique_ptr<CImgMedianComposit> medians;
};

}  // namespace

std::int64_t FindMeanScratch(std::size_t frames, Shape const& result, JoinRule const& rule, int threads) {
  std::int64_t const samples = static_cast<std::int64_t>(frames) * result.width * result.planes;
  int const samplers = rule.rejection == JoinRule::Rejection::kWinsorised ? 2 : 1;  // of single lines; of the median
  return samplers * FindMedianScratch(frames, result, threads) +
         samples * static_cast<std::int64_t>(sizeof(float)) * threads;
}

JoinCount StackByMean(FrameBands const& frames, WindowedFrame& result, RowRange const& band, JoinRule const& rule,
                      std::vector<double> const& weights, Environment& environment) {
  result.Open(band.top, band.bottom);
  JoinCount total;
  std::mutex mutex;
  EachPiece(band, environment.threads, [&](RowRange const& rows) {
    PieceJoiner piece(frames, result, rule, weights);
    for (int y = rows.top; y < rows.bottom; ++y) piece.JoinRow(y);
    environment.progress.Advance(rows.Count());
    std::lock_guard<std::mutex> const lock(mutex);
    total.values += piece.Count().values;
    total.low += piece.Count().low;
    total.high += piece.Count().high;
  });
  return total;
}

}  // namespace orb::host
