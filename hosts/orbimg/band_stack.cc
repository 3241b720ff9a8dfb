#include <hosts/orbimg/band_stack.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include <hosts/orbimg/parallel.h>

namespace orb::host {
namespace {

constexpr int kRowsPerPiece = 16;  // few enough to share evenly, enough to pay for the images over them

void AddTransformed(CImgComposit& sum, COrbImage& frame, FrameTransform const& t, StackParameters const& parameters,
                    RowRange const& rows) {
  CRect rect(0, rows.top, sum.GetWidth(), rows.bottom);
  sum.Do(&sum, &frame, t.dx, t.dy, t.angle, parameters.mode->compositeMode, parameters.ratio, parameters.on256 ? 1 : 0,
         parameters.clamp ? 1 : 0, parameters.threshold, parameters.radius, &rect, 0, -1);
}

void CopyRows(WindowedFrame const& from, WindowedFrame const& to, RowRange const& rows) {
  std::size_t const count = static_cast<std::size_t>(rows.Count()) * static_cast<std::size_t>(to.GetShape().width);
  for (int p = 0; p < to.GetShape().planes; ++p) {
    std::memcpy(to.Row(p, rows.top), from.Row(p, rows.top), count * sizeof(float));
  }
}

}  // namespace

void EachPiece(RowRange const& band, int threads, std::function<void(RowRange const&)> const& work) {
  std::int64_t const pieces = (band.Count() + kRowsPerPiece - 1) / kRowsPerPiece;
  RunInParallel(pieces, threads, [&](std::int64_t i) {
    int const top = band.top + static_cast<int>(i) * kRowsPerPiece;
    work(RowRange{top, std::min(top + kRowsPerPiece, band.bottom)});
  });
}

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
  EachPiece(band, environment.threads, [&](RowRange const& rows) {
    CImgComposit sum;
    result.ShowIn(sum);
    setLevels(sum, 0);
    CopyRows(frames.Window(0), result, rows);
    for (std::size_t i = 1; i < frames.Count(); ++i) {
      COrbImage frame;
      frames.ShowIn(frame, i);
      setLevels(frame, i);
      AddTransformed(sum, frame, frames.Transform(i), parameters, rows);
    }
    environment.progress.Advance(rows.Count());
  });
}

}  // namespace orb::host
