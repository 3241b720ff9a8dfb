#include <hosts/orbimg/stack_job.h>

#include <algorithm>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/add_constant.h>
#include <hosts/orbimg/band_stack.h>
#include <hosts/orbimg/frame_median.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/parallel.h>
#include <hosts/orbimg/rejection_stack.h>
#include <hosts/orbimg/stack_header.h>
#include <hosts/orbimg/texts.h>

namespace orb::host {
namespace {

constexpr int kMedianMessage = 6141;
constexpr int kCompositeMessage = 6107;

using SetLevels = std::function<void(COrbImage&, std::size_t)>;

// What brings the median of each frame to that of the first.
std::vector<double> FindSkyOffsets(ReaderList const& readers, Environment& environment) {
  std::vector<double> medians(readers.size());
  RunInParallel(static_cast<std::int64_t>(readers.size()), environment.threads, [&](std::int64_t i) {
    auto const index = static_cast<std::size_t>(i);
    medians[index] = FindFrameMedian(*readers[index], {});
  });
  std::vector<double> offsets;
  for (double const median : medians) offsets.push_back(medians[0] - median);
  return offsets;
}

std::vector<BandSource> MakeSources(StackJob const& job, ReaderList const& readers, Environment& environment) {
  std::vector<double> const offsets =
      job.parameters.equalSky ? FindSkyOffsets(readers, environment) : std::vector<double>(readers.size(), 0.0);
  std::vector<BandSource> sources;
  for (std::size_t i = 0; i < readers.size(); ++i) {
    BandSource source{readers[i], job.frames[i].transform, {}};
    if (offsets[i] != 0.0) {
      source.prepare = [offset = offsets[i], width = readers[i]->Shape().width](int, int, int rows, float* samples) {
        AddConstant(samples, static_cast<std::int64_t>(width) * rows, offset);
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

// Bands of the result, and for an average of the counts and the ones.
double ResultBands(StackParameters const& parameters) { return parameters.IsAverage() ? 3.0 : 1.0; }

void StackInBands(StackJob const& job, ReaderList const& readers, SetLevels const& setLevels, FrameWriter& writer,
                  Environment& environment) {
  Shape const shape = readers.front()->Shape();
  StackParameters const& parameters = job.parameters;
  FrameBands frames(MakeSources(job, readers, environment), shape);
  std::int64_t const scratch =
      parameters.IsMedian() ? FindMedianScratch(readers.size(), shape, environment.threads) : 0;
  int const rowsPerBand = frames.FindRowsPerBand(environment.memory, ResultBands(parameters), scratch);
  WindowedFrame result(shape);
  for (int top = 0; top < shape.height; top += rowsPerBand) {
    StopIfInterrupted();
    RowRange const band{top, std::min(top + rowsPerBand, shape.height)};
    frames.Load(band, environment.threads);
    if (parameters.IsMedian()) {
      StackByMedian(frames, result, band, environment);
    } else {
      StackByFolding(frames, result, band, parameters, setLevels, environment);
    }
    WriteBand(writer, result, band);
  }
  frames.ReportNonFinite(environment);
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
  StackByRejection(MakeSources(job, readers, environment), result, job.parameters, setLevels, environment);
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
