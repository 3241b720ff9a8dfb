// The frames of a stack, a band of rows at a time: every file is opened once, and memory holds one band of each.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/row_range.h>
#include <hosts/orbimg/windowed_frame.h>

namespace orb::host {

struct BandSource {
  std::shared_ptr<FrameReader> reader;
  FrameTransform transform;
  // What is done to the rows top .. top + rows - 1 of a plane right after reading; may be empty.
  std::function<void(int plane, int top, int rows, float* samples)> prepare;
};

class FrameBands {
 public:
  FrameBands(std::vector<BandSource> initSources, Shape const& initResult);

  // The most rows of the result for which the rows of all frames, `resultFrames` bands of the result itself and
  // `scratch` bytes fit into `memory`. HostError if one row does not fit.
  int FindRowsPerBand(std::int64_t memory, double resultFrames, std::int64_t scratch) const;

  // Reads what the rows of `band` need, on `threads` threads.
  void Load(RowRange const& band, int threads);

  std::size_t Count() const { return sources.size(); }
  Shape const& ResultShape() const { return result; }
  FrameTransform const& Transform(std::size_t i) const { return sources[i].transform; }
  // Makes the image show frame i, its centre of rotation set; for the rows that are loaded.
  void ShowIn(COrbImage& image, std::size_t i) const;
  WindowedFrame const& Window(std::size_t i) const { return *windows[i]; }

  // One line for each frame with samples that are not finite.
  void ReportNonFinite(Environment& environment, std::string const& consequence) const;

 private:
  std::int64_t BytesFor(int rows, double resultFrames, std::int64_t scratch) const;
  void LoadFrame(std::size_t i, RowRange const& band);

  std::vector<BandSource> sources;
  Shape result;
  std::vector<std::unique_ptr<WindowedFrame>> windows;
  std::vector<RowRange> counted;  // rows whose samples that are not finite were counted
  std::vector<std::int64_t> nonFinite;
};

}  // namespace orb::host
