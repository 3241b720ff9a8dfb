#include <hosts/orbimg/stack_job.h>

#include <algorithm>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/band_stack.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/mean_stack.h>
#include <hosts/orbimg/rejection_stack.h>
#include <hosts/orbimg/stack_header.h>
#include <hosts/orbimg/texts.h>

namespace orb::host {
namespace {

constexpr int kMedianMessage = 6141;
constexpr int kCompositeMessage = 6107;

using SetLevels = std::function<void(COrbImage&, std::size_t)>;

// factor * v + offset, rounded once.
void Scale(float* samples, std::int64_t count, double factor, double offset) {
  for (std::int64_t i = 0; i < count; ++i) samples[i] = static_cast<float>(samples[i] * factor + offset);
}

std::vector<BandSource> MakeSources(StackJob const& job, ReaderList const& readers,
                                    std::vector<FrameScaling> const& scalings) {
  std::vector<BandSource> sources;
  for (std::size_t i = 0; i < readers.size(); ++i) {
    BandSource source{readers[i], job.frames[i].transform, {}};
    if (!scalings[i].IsIdle()) {
      source.prepare = [scaling = scalings[i], width = readers[i]->Shape().width](int plane, int, int rows,
                                                                                  float* samples) {
        auto const p = static_cast<std::size_t>(plane);
        Scale(samples, static_cast<std::int64_t>(width) * rows, scaling.factors[p], scaling.offsets[p]);
      };
    }
    sources.push_back(std::move(source));
  }
  return sources;
}

// The levels on the cards of a frame; planes without cards of their own take plane 0's. False without plane 0's.
bool SetLevelsOf(FrameReader const& reader, COrbImage& image) {
  if (!SetLevelsFromCards(reader.Header(), 0, image)) return false;
  for (int p = 1; p < image.GetPlanes(); ++p) {
    if (SetLevelsFromCards(reader.Header(), p, image)) continue;
    image.CImage::SetLevel(p, image.GetLevelMin(0), image.GetLevelMax(0));
  }
  return true;
}

void CheckLevels(ReaderList const& readers) {
  for (auto const& reader : readers) {
    COrbImage probe(-32, 1, 1, reader->Shape().planes, 1.0, 0.0, 1, nullptr, nullptr);
    if (SetLevelsOf(*reader, probe)) continue;
    throw HostError(Exit::kUsage,
                    fmt::format("{}: has no levels (CBLACK below CWHITE), which --scale 256 needs; set them "
                                "with orbimg level, or use --scale raw",
                                reader->Path()));
  }
}

// Nothing for work on raw samples.
SetLevels MakeLevelSetter(ReaderList const& readers, bool on256) {
  if (!on256) return [](COrbImage&, std::size_t) {};
  CheckLevels(readers);
  return [&readers](COrbImage& image, std::size_t i) { SetLevelsOf(*readers[i], image); };
}

void WriteBand(FrameWriter& writer, WindowedFrame const& result, RowRange const& rows) {
  for (int p = 0; p < result.GetShape().planes; ++p) {
    writer.WriteRows(p, rows.top, rows.Count(), result.Row(p, rows.top));
  }
}

JoinRule RuleOf(StackParameters const& parameters) {
  return JoinRule{parameters.mode->rejection, parameters.low, parameters.high};
}

std::int64_t FindScratch(StackParameters const& parameters, std::size_t frames, Shape const& shape, int threads) {
  if (parameters.IsMedian()) return FindMedianScratch(frames, shape, threads);
  return parameters.IsMean() ? FindMeanScratch(frames, shape, RuleOf(parameters), threads) : 0;
}

std::vector<double> WeightsOf(std::vector<FrameScaling> const& scalings) {
  std::vector<double> weights;
  for (FrameScaling const& scaling : scalings) weights.push_back(scaling.weight);
  return weights;
}

void Add(JoinCount& total, JoinCount const& count) {
  total.values += count.values;
  total.low += count.low;
  total.high += count.high;
}

void ReportTakenOut(JoinCount const& count, Environment& environment) {
  double const percent = 100.0 / static_cast<double>(std::max<std::int64_t>(count.values, 1));
  environment.out << fmt::format("Taken out: {:.3f} % of the samples as too low, {:.3f} % as too high\n",
                                 percent * static_cast<double>(count.low), percent * static_cast<double>(count.high));
}

void StackInBands(StackJob const& job, ReaderList const& readers, SetLevels const& setLevels, FrameWriter& writer,
                  Environment& environment) {
  Shape const shape = readers.front()->Shape();
  StackParameters const& parameters = job.parameters;
  std::vector<FrameScaling> const scalings =
      FindScalings(readers, parameters.normalise, parameters.weighting, environment);
  std::vector<double> const weights = WeightsOf(scalings);
  FrameBands frames(MakeSources(job, readers, scalings), shape);
  std::int64_t const scratch = FindScratch(parameters, readers.size(), shape, environment.threads);
  int const rowsPerBand = frames.FindRowsPerBand(environment.memory, 1.0, scratch);
  JoinRule const rule = RuleOf(parameters);
  JoinCount takenOut;
  WindowedFrame result(shape);
  for (int top = 0; top < shape.height; top += rowsPerBand) {
    StopIfInterrupted();
    RowRange const band{top, std::min(top + rowsPerBand, shape.height)};
    frames.Load(band, environment.threads);
    if (parameters.IsMedian()) {
      StackByMedian(frames, result, band, environment);
    } else if (parameters.IsMean()) {
      Add(takenOut, StackByMean(frames, result, band, rule, weights, environment));
    } else {
      StackByFolding(frames, result, band, parameters, setLevels, environment);
    }
    WriteBand(writer, result, band);
  }
  frames.ReportNonFinite(environment, parameters.IsMean() ? kAreLeftOut : kGoIntoResult);
  if (parameters.TakesOut()) ReportTakenOut(takenOut, environment);
}

void StackWhole(StackJob const& job, ReaderList const& readers, SetLevels const& setLevels, FrameWriter& writer,
                Environment& environment) {
  Shape const shape = readers.front()->Shape();
  std::int64_t const needed = kRejectionFrames * BytesOf(shape);
  if (needed > environment.memory) {
    throw HostError(
        Exit::kResources,
        fmt::format("--memory: rejection with a window holds {} whole frames; give at least {}K, or --radius 0",
                    kRejectionFrames, (needed + 1023) / 1024));
  }
  WindowedFrame result(shape);
  std::vector<FrameScaling> const scalings =
      FindScalings(readers, job.parameters.normalise, job.parameters.weighting, environment);
  StackByRejection(MakeSources(job, readers, scalings), result, job.parameters, setLevels, environment);
  WriteBand(writer, result, RowRange{0, shape.height});
}

}  // namespace

void StackToFile(StackJob const& job, Environment& environment) {
  std::vector<std::string> files;
  for (AlignedFrame const& frame : job.frames) files.push_back(frame.file);
  ReaderList const readers = OpenFrames(files, "frames", environment);
  SetLevels const setLevels = MakeLevelSetter(readers, job.parameters.on256);
  Shape const shape = readers.front()->Shape();
  std::unique_ptr<FrameWriter> const writer =
      MakeFrameWriter(job.output, shape, MakeStackHeader(readers, job.frames, job.parameters), environment.existing);
  // The window of the rejection reads its own result; without it every pixel stands for itself.
  bool const whole = job.parameters.IsRejection() && job.parameters.radius > 0;
  {
    int const message = job.parameters.IsMedian() ? kMedianMessage : kCompositeMessage;
    ProgressStep const step(
        environment.progress,
        StepText(message, fmt::format("Stacking {} frames, {}", files.size(), job.parameters.mode->name)),
        whole ? static_cast<std::int64_t>(files.size()) - 1 : shape.height);
    (whole ? StackWhole : StackInBands)(job, readers, setLevels, *writer, environment);
  }
  StopIfInterrupted();
  writer->Commit();
  WarnOfLosses(environment, job.output, writer->Report());
}

}  // namespace orb::host
