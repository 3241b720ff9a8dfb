#include <hosts/orbimg/frame_scaling.h>

#include <algorithm>

#include <fmt/format.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/frame_median.h>
#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/parallel.h>

namespace orb::host {
namespace {

using Measured = std::vector<SampleStatistics>;  // of each plane

// The frame, and as much again to sort.
int FindThreads(Shape const& shape, Environment const& environment) {
  std::int64_t const needed = 2 * BytesOf(shape);
  if (needed > environment.memory) {
    throw HostError(Exit::kResources,
                    fmt::format("--memory: measuring sky and noise takes a frame and as much again; give "
                                "at least {}K",
                                (needed + 1023) / 1024));
  }
  return static_cast<int>(std::min<std::int64_t>(environment.threads, environment.memory / needed));
}

Measured MeasureFrame(FrameReader& reader) {
  COrbImage image;
  ReadSamples(reader, image);
  Measured planes;
  for (int p = 0; p < image.GetPlanes(); ++p) planes.push_back(MeasureSky(image, p, nullptr));
  return planes;
}

std::vector<Measured> MeasureFrames(ReaderList const& readers, Environment& environment) {
  std::vector<Measured> frames(readers.size());
  int const threads = FindThreads(readers.front()->Shape(), environment);
  RunInParallel(static_cast<std::int64_t>(readers.size()), threads, [&](std::int64_t i) {
    auto const index = static_cast<std::size_t>(i);
    frames[index] = MeasureFrame(*readers[index]);
  });
  return frames;
}

void CheckNoise(ReaderList const& readers, std::vector<Measured> const& frames) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    for (SampleStatistics const& plane : frames[i]) {
      if (plane.noise > 0.0) continue;
      throw HostError(
          Exit::kInput,
          fmt::format("{}: its sky has no noise to go by; leave out --normalise and --weights", readers[i]->Path()));
    }
  }
}

void SetSkyOffsets(ReaderList const& readers, Environment& environment, std::vector<FrameScaling>& scalings) {
  std::vector<double> medians(readers.size());
  RunInParallel(static_cast<std::int64_t>(readers.size()), environment.threads, [&](std::int64_t i) {
    auto const index = static_cast<std::size_t>(i);
    medians[index] = FindFrameMedian(*readers[index], {});
  });
  for (std::size_t i = 0; i < readers.size(); ++i) {
    std::fill(scalings[i].offsets.begin(), scalings[i].offsets.end(), medians[0] - medians[i]);
  }
}

void MatchNoise(std::vector<Measured> const& frames, std::vector<FrameScaling>& scalings) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    for (std::size_t p = 0; p < frames[i].size(); ++p) {
      double const factor = frames[0][p].noise / frames[i][p].noise;
      scalings[i].factors[p] = factor;
      scalings[i].offsets[p] = frames[0][p].level - factor * frames[i][p].level;
    }
  }
}

void WeighByNoise(std::vector<Measured> const& frames, std::vector<FrameScaling>& scalings) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    double variance = 0.0;
    for (SampleStatistics const& plane : frames[i]) variance += plane.noise * plane.noise;
    scalings[i].weight = static_cast<double>(frames[i].size()) / variance;
  }
}

}  // namespace

bool FrameScaling::IsIdle() const {
  return std::all_of(factors.begin(), factors.end(), [](double v) { return v == 1.0; }) &&
         std::all_of(offsets.begin(), offsets.end(), [](double v) { return v == 0.0; });
}

std::vector<FrameScaling> FindScalings(ReaderList const& readers, Normalise normalise, Weighting weighting,
                                       Environment& environment) {
  auto const planes = static_cast<std::size_t>(readers.front()->Shape().planes);
  FrameScaling const idle{std::vector<double>(planes, 1.0), std::vector<double>(planes, 0.0), 1.0};
  std::vector<FrameScaling> scalings(readers.size(), idle);
  if (normalise == Normalise::kSky) SetSkyOffsets(readers, environment, scalings);
  if (normalise != Normalise::kNoise && weighting != Weighting::kNoise) return scalings;
  std::vector<Measured> const frames = MeasureFrames(readers, environment);
  CheckNoise(readers, frames);
  if (normalise == Normalise::kNoise) MatchNoise(frames, scalings);
  if (weighting == Weighting::kNoise) WeighByNoise(frames, scalings);
  return scalings;
}

}  // namespace orb::host
