#include <hosts/orbimg/rejection_stack.h>

#include <cstring>

#include <hosts/orbimg/interrupt.h>

namespace orb::host {
namespace {

void ReadWhole(BandSource const& source, WindowedFrame& frame, Environment& environment) {
  FrameReader& reader = *source.reader;
  Shape const& shape = frame.GetShape();
  frame.Open(0, shape.height);
  std::int64_t const before = reader.NonFinite();
  reader.ReadPlanes(0, shape.height, frame.Rows(0));
  for (int p = 0; p < shape.planes; ++p) {
    if (source.prepare) source.prepare(p, 0, shape.height, frame.Row(p, 0));
  }
  WarnOfNonFinite(environment, reader.Path(), reader.NonFinite() - before, kGoIntoResult);
}

void CopyWhole(WindowedFrame const& from, WindowedFrame& to) {
  Shape const& shape = to.GetShape();
  to.Open(0, shape.height);
  std::size_t const count = static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height) *
                            static_cast<std::size_t>(shape.planes);
  std::memcpy(to.Row(0, 0), from.Row(0, 0), count * sizeof(float));
}

}  // namespace

void StackByRejection(std::vector<BandSource> const& sources, WindowedFrame& result, StackParameters const& parameters,
                      std::function<void(COrbImage&, std::size_t)> const& setLevels, Environment& environment) {
  WindowedFrame soFar(result.GetShape());
  WindowedFrame next(result.GetShape());
  ReadWhole(sources[0], result, environment);
  for (std::size_t i = 1; i < sources.size(); ++i) {
    StopIfInterrupted();
    FrameTransform const& t = sources[i].transform;
    ReadWhole(sources[i], next, environment);
    // The first row and column of the result are read before they are written: they start as the result so far.
    CopyWhole(result, soFar);
    COrbImage first;
    COrbImage second;
    CImgComposit composite;
    soFar.ShowIn(first);
    next.ShowIn(second);
    result.ShowIn(composite);
    second.SetStdCtr(t.cx, t.cy);
    setLevels(first, 0);
    setLevels(second, i);
    setLevels(composite, 0);
    // "Bright" is measured against the highest sample of each.
    first.CalcMinMax();
    second.CalcMinMax();
    composite.Do(&first, &second, t.dx, t.dy, t.angle, parameters.mode->compositeMode, parameters.ratio,
                 parameters.on256 ? 1 : 0, 0, parameters.threshold, parameters.radius, nullptr, 0, -1);
    environment.progress.Advance(1);
  }
}

}  // namespace orb::host
