#include <hosts/orbimg/band_stack.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include <hosts/orbimg/parallel.h>

namespace orb::host {
namespace {

constexpr int kRowsPerPiece = 16;  // few enough to share evenly, enough to pay for the images over them

constexpr int kAdd = 1;
constexpr int kDivide = 5;

// Calls work(rows) for the rows of the band in pieces.
void EachPiece(RowRange const& band, int threads, std::function<void(RowRange const&)> const& work) {
  std::int64_t const pieces = (band.Count() + kRowsPerPiece - 1) / kRowsPerPiece;
  RunInParallel(pieces, threads, [&](std::int64_t i) {
    int const top = band.top + static_cast<int>(i) * kRowsPerPiece;
    work(RowRange{top, std::min(top + kRowsPerPiece, band.bottom)});
  });
}

void AddTransformed(CImgComposit& sum, COrbImage& frame, FrameTransform const& t, int mode,
                    StackParameters const& parameters, RowRange const& rows) {
  CRect rect(0, rows.top, sum.GetWidth(), rows.bottom);
  sum.Do(&sum, &frame, t.dx, t.dy, t.angle, mode, parameters.ratio, parameters.on256 ? 1 : 0, parameters.clamp ? 1 : 0,
         parameters.threshold, parameters.radius, &rect, 0, -1);
}

void CopyRows(WindowedFrame const& from, WindowedFrame const& to, RowRange const& rows) {
  std::size_t const count = static_cast<std::size_t>(rows.Count()) * static_cast<std::size_t>(to.GetShape().width);
  for (int p = 0; p < to.GetShape().planes; ++p) {
    std::memcpy(to.Row(p, rows.top), from.Row(p, rows.top), count * sizeof(float));
  }
}

void FillRows(WindowedFrame const& frame, RowRange const& rows, float value) {
  std::size_t const count = static_cast<std::size_t>(rows.Count()) * static_cast<std::size_t>(frame.GetShape().width);
  for (int p = 0; p < frame.GetShape().planes; ++p) std::fill_n(frame.Row(p, rows.top), count, value);
}

// How many frames reach each pixel of a band.
class Coverage {
 public:
  Coverage(FrameBands const& initFrames, RowRange const& band)
      : frames(initFrames), counts(PlaneOf(initFrames.ResultShape())), ones(PlaneOf(initFrames.Window(0).GetShape())) {
    // Reading a row of the counts also looks at its neighbours, with no weight.
    RowRange const around = WithNeighbours(band, counts.GetShape().height);
    counts.Open(around.top, around.bottom);
    FillRows(counts, around, 1.0f);
    RowRange const read = FindRowsRead();
    ones.Open(read.top, read.bottom);
    FillRows(ones, read, 1.0f);
  }

  void Count(RowRange const& rows) const {
    CImgComposit count;
    counts.ShowIn(count);
    for (std::size_t i = 1; i < frames.Count(); ++i) {
      FrameTransform const& t = frames.Transform(i);
      COrbImage one;
      ones.ShowIn(one);
      one.SetStdCtr(t.cx, t.cy);
      AddTransformed(count, one, t, kAdd, StackParameters(), rows);
    }
  }

  // After all rows of the band were counted.
  void DivideByCount(CImgComposit& sum, RowRange const& rows) const {
    COrbImage count;
    counts.ShowIn(count);
    AddTransformed(sum, count, FrameTransform(), kDivide, StackParameters(), rows);
  }

 private:
  static Shape PlaneOf(Shape const& shape) { return Shape{shape.width, shape.height, 1}; }

  static RowRange WithNeighbours(RowRange const& band, int height) {
    return RowRange{std::max(band.top - 1, 0), std::min(band.bottom + 1, height)};
  }

  RowRange FindRowsRead() const {
    RowRange read{frames.Window(0).Top(), frames.Window(0).Bottom()};
    for (std::size_t i = 1; i < frames.Count(); ++i) {
      if (frames.Window(i).Top() >= frames.Window(i).Bottom()) continue;
      read.top = std::min(read.top, frames.Window(i).Top());
      read.bottom = std::max(read.bottom, frames.Window(i).Bottom());
    }
    return read;
  }

  FrameBands const& frames;
  WindowedFrame counts;
  WindowedFrame ones;
};

void DivideByCoverage(FrameBands const& frames, WindowedFrame const& sums, RowRange const& band, int threads) {
  Coverage const coverage(frames, band);
  EachPiece(band, threads, [&](RowRange const& rows) { coverage.Count(rows); });
  EachPiece(band, threads, [&](RowRange const& rows) {
    CImgComposit sum;
    sums.ShowIn(sum);
    coverage.DivideByCount(sum, rows);
  });
}

}  // namespace

std::int64_t FindMedianScratch(std::size_t frames, Shape const& result, int threads) {
  // What the operator states: for each frame of a line a float a sample, and what it keeps of the columns.
  std::int64_t const column = std::int64_t{sizeof(float)} * result.planes + 72;
  return static_cast<std::int64_t>(frames) * result.width * column * threads;
}

void StackByMedian(FrameBands const& frames, WindowedFrame& result, RowRange const& band, Environment& environment) {
  result.Open(band.top, band.bottom);
  EachPiece(band, environment.threads, [&](RowRange const& rows) {
    COrbImage destination;
    result.ShowIn(destination);
    std::vector<COrbImage> images(frames.Count());
    for (std::size_t i = 0; i < images.size(); ++i) frames.ShowIn(images[i], i);
    CImgMedianComposit composite(&destination);
    for (int y = rows.top; y < rows.bottom; ++y) {
      for (std::size_t i = 0; i < images.size(); ++i) {
        FrameTransform const& t = frames.Transform(i);
        composite.Store(&images[i], y, t.dx, t.dy, t.angle);
      }
      composite.Calc();
    }
    environment.progress.Advance(rows.Count());
  });
}

void StackByFolding(FrameBands const& frames, WindowedFrame& result, RowRange const& band,
                    StackParameters const& parameters, std::function<void(COrbImage&, std::size_t)> const& setLevels,
                    Environment& environment) {
  result.Open(band.top, band.bottom);
  int const mode = parameters.IsAverage() ? kAdd : parameters.mode->compositeMode;
  EachPiece(band, environment.threads, [&](RowRange const& rows) {
    CImgComposit sum;
    result.ShowIn(sum);
    setLevels(sum, 0);
    CopyRows(frames.Window(0), result, rows);
    for (std::size_t i = 1; i < frames.Count(); ++i) {
      COrbImage frame;
      frames.ShowIn(frame, i);
      setLevels(frame, i);
      AddTransformed(sum, frame, frames.Transform(i), mode, parameters, rows);
    }
    environment.progress.Advance(rows.Count());
  });
  if (parameters.IsAverage()) DivideByCoverage(frames, result, band, environment.threads);
}

}  // namespace orb::host
