#include <hosts/orbimg/frame_bands.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/parallel.h>

namespace orb::host {
namespace {

std::int64_t RowBytes(Shape const& shape) {
  return static_cast<std::int64_t>(shape.width) * shape.planes * static_cast<std::int64_t>(sizeof(float));
}

std::int64_t CountNonFinite(float const* samples, std::int64_t count) {
  return std::count_if(samples, samples + count, [](float v) { return !std::isfinite(v); });
}

// Bands share rows, and a turned frame is read from its end: a row counts once.
std::array<RowRange, 2> PartsOutside(RowRange const& counted, RowRange const& rows) {
  if (counted.Count() <= 0) return {rows, RowRange{rows.bottom, rows.bottom}};
  return {RowRange{rows.top, std::clamp(counted.top, rows.top, rows.bottom)},
          RowRange{std::clamp(counted.bottom, rows.top, rows.bottom), rows.bottom}};
}

RowRange Join(RowRange const& a, RowRange const& b) {
  if (a.Count() <= 0) return b;
  return RowRange{std::min(a.top, b.top), std::max(a.bottom, b.bottom)};
}

}  // namespace

FrameBands::FrameBands(std::vector<BandSource> initSources, Shape const& initResult)
    : sources(std::move(initSources)), result(initResult), counted(sources.size()), nonFinite(sources.size(), 0) {
  for (BandSource const& source : sources) windows.push_back(std::make_unique<WindowedFrame>(source.reader->Shape()));
}

std::int64_t FrameBands::BytesFor(int rows, double resultFrames, std::int64_t scratch) const {
  auto bytes = scratch + static_cast<std::int64_t>(resultFrames * rows) * RowBytes(result);
  for (BandSource const& source : sources) {
    Shape const shape = source.reader->Shape();
    int most = 0;
    for (int top = 0; top < result.height; top += rows) {
      RowRange const band{top, std::min(top + rows, result.height)};
      most = std::max(most, FindRowsToRead(source.transform, shape.height, result.width, band).Count());
    }
    bytes += most * RowBytes(shape);
  }
  return bytes;
}

int FrameBands::FindRowsPerBand(std::int64_t memory, double resultFrames, std::int64_t scratch) const {
  std::int64_t const least = BytesFor(1, resultFrames, scratch);
  if (least > memory) {
    throw HostError(Exit::kResources,
                    fmt::format("--memory: {} are too little for one row of {} frames of {}; give at least {}K",
                                FormatBytes(memory), sources.size(), result.Text(), (least + 1023) / 1024));
  }
  int fits = 1;
  for (int tooMany = result.height + 1; tooMany - fits > 1;) {
    int const middle = fits + (tooMany - fits) / 2;
    (BytesFor(middle, resultFrames, scratch) <= memory ? fits : tooMany) = middle;
  }
  return fits;
}

void FrameBands::LoadFrame(std::size_t i, RowRange const& band) {
  BandSource const& source = sources[i];
  WindowedFrame& window = *windows[i];
  Shape const& shape = window.GetShape();
  RowRange const rows = FindRowsToRead(source.transform, shape.height, result.width, band);
  window.Open(rows.top, rows.bottom);
  if (rows.Count() <= 0) return;
  std::int64_t const before = source.reader->NonFinite();
  source.reader->ReadPlanes(rows.top, rows.Count(), window.Rows(rows.top));
  for (int p = 0; p < shape.planes; ++p) {
    if (source.reader->NonFinite() != before) {
      for (RowRange const& part : PartsOutside(counted[i], rows)) {
        nonFinite[i] += CountNonFinite(window.Row(p, part.top), static_cast<std::int64_t>(part.Count()) * shape.width);
      }
    }
    if (source.prepare) source.prepare(p, rows.top, rows.Count(), window.Row(p, rows.top));
  }
  counted[i] = Join(counted[i], rows);
}

void FrameBands::Load(RowRange const& band, int threads) {
  RunInParallel(static_cast<std::int64_t>(sources.size()), threads,
                [&](std::int64_t i) { LoadFrame(static_cast<std::size_t>(i), band); });
}

void FrameBands::ShowIn(COrbImage& image, std::size_t i) const {
  windows[i]->ShowIn(image);
  image.SetStdCtr(sources[i].transform.cx, sources[i].transform.cy);
}

void FrameBands::ReportNonFinite(Environment& environment, std::string const& consequence) const {
  for (std::size_t i = 0; i < sources.size(); ++i) {
    WarnOfNonFinite(environment, sources[i].reader->Path(), nonFinite[i], consequence);
  }
}

}  // namespace orb::host
