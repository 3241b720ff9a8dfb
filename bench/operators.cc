// Every operator of the catalogue alone, with its default parameters: time a sample, mono and colour.
//
//   operators --benchmark_filter=composite
#include <bench/bench_images.h>
#include <benchmark/benchmark.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/catalogue/check.h>

#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 2048;
constexpr int kHeight = 2048;

int PlanesOfSource(orb::host::OperatorEntry const& entry, int planes) {
  using orb::host::SourceShape;
  return entry.sourceShape == SourceShape::kColourToMono || entry.sourceShape == SourceShape::kColour ? 3 : planes;
}

int PlanesOfImage(orb::host::OperatorEntry const& entry, int planes) {
  if (entry.imagePlanes != 0) return entry.imagePlanes;
  if (entry.sourceShape == orb::host::SourceShape::kFrameToColour) return 3;
  if (entry.sourceShape == orb::host::SourceShape::kColourToMono) return 3;
  return entry.sourceShape == orb::host::SourceShape::kAnyToColour ? 1 : planes;
}

// A stack of nine, or the frames that have a name, each a little further off, from two images.
std::vector<orb::host::PlacedFrame> FramesOf(orb::host::OperatorEntry const& entry, COrbImage& even, COrbImage& odd) {
  int const count = entry.frameNames.empty() ? 9 : static_cast<int>(entry.frameNames.size());
  std::vector<orb::host::PlacedFrame> frames;
  for (int i = 0; entry.TakesFrames() && i < count; ++i) {
    frames.push_back({i % 2 == 0 ? &even : &odd, {1.3 * i, -0.7 * i, 0.05 * i}});
  }
  return frames;
}

void RunEntry(benchmark::State& state, orb::host::OperatorEntry const& entry, int planes) {
  COrbImage source = orb::bench::SkyImage(kWidth, kHeight, PlanesOfSource(entry, planes), 1);
  COrbImage second = orb::bench::SkyImage(kWidth, kHeight, PlanesOfSource(entry, planes), 2);
  COrbImage const fresh = orb::bench::SkyImage(kWidth, kHeight, PlanesOfImage(entry, planes), 3);
  COrbImage image(fresh);
  orb::host::Invocation call;
  call.image = &image;
  call.source = entry.sourceShape == orb::host::SourceShape::kNone ? nullptr : &source;
  call.second = entry.needsSecond ? &second : nullptr;
  call.values = entry.Defaults();
  call.frames = FramesOf(entry, source, second);
  call.tables.resize(entry.TablesFor(fresh.GetPlanes()), {0.0f, 0.25f, 0.5f, 0.75f, 1.0f});
  std::vector<double> results;
  call.results = &results;
  std::string const complaint = orb::host::CheckInvocation(entry, call);
  if (!complaint.empty()) {
    state.SkipWithError(complaint.c_str());
    return;
  }
  for (auto _ : state) {
    if (entry.changes.planes || entry.sizeOfResult != nullptr) {
      state.PauseTiming();
      image.CopyImage(fresh, nullptr, nullptr);
      state.ResumeTiming();
    }
    benchmark::DoNotOptimize(entry.run(call));
  }
  state.SetItemsProcessed(state.iterations() * fresh.GetPixelCount());
}

}  // namespace

int main(int argc, char** argv) {
  for (orb::host::OperatorEntry const& entry : orb::host::Catalogue()) {
    for (int const planes : {1, 3}) {
      benchmark::RegisterBenchmark((entry.name + (planes == 1 ? "/mono" : "/colour")).c_str(),
                                   [&entry, planes](benchmark::State& state) { RunEntry(state, entry, planes); })
          ->Unit(benchmark::kMillisecond);
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
