#include <hosts/orbimg/master_frame.h>

#include <algorithm>
#include <cstring>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/band_stack.h>
#include <hosts/orbimg/frame_median.h>
#include <hosts/orbimg/parallel.h>
#include <hosts/orbimg/row_dark.h>
#include <hosts/orbimg/texts.h>

namespace orb::host {
namespace {

constexpr int kMedianMessage = 6141;

// Takes the dark from rows that were read; nothing without a dark.
std::function<void(int, int, int, float*)> SubtractDark(MasterRecipe const& recipe) {
  if (recipe.dark == nullptr) return {};
  return [dark = recipe.dark](int plane, int top, int rows, float* samples) {
    SubtractDarkRows(*dark, plane, top, rows, samples);
  };
}

// The median of plane 0 of each frame after the dark.
std::vector<double> FindMedians(ReaderList const& readers, MasterRecipe const& recipe, Environment& environment) {
  std::vector<double> medians(readers.size());
  RunInParallel(static_cast<std::int64_t>(readers.size()), environment.threads, [&](std::int64_t i) {
    auto const index = static_cast<std::size_t>(i);
    medians[index] = FindFrameMedian(*readers[index], SubtractDark(recipe));
    if (medians[index] > 0.0) return;
    throw HostError(Exit::kFailed, fmt::format("{}: its median is {} after the dark; a {} needs light above its dark",
                                               readers[index]->Path(), medians[index], recipe.kind));
  });
  return medians;
}

void Multiply(float* samples, std::int64_t count, double factor) {
  for (std::int64_t i = 0; i < count; ++i) samples[i] = static_cast<float>(samples[i] * factor);
}

std::vector<BandSource> MakeSources(ReaderList const& readers, MasterRecipe const& recipe, Environment& environment) {
  std::vector<double> const medians =
      recipe.equalize ? FindMedians(readers, recipe, environment) : std::vector<double>(readers.size(), 1.0);
  std::vector<BandSource> sources;
  for (std::size_t i = 0; i < readers.size(); ++i) {
    BandSource source{readers[i], FrameTransform(), SubtractDark(recipe)};
    double const factor = medians[0] / medians[i];
    if (factor != 1.0) {
      source.prepare = [subtract = source.prepare, factor, width = readers[i]->Shape().width](
                           int plane, int top, int rows, float* samples) {
        if (subtract) subtract(plane, top, rows, samples);
        Multiply(samples, static_cast<std::int64_t>(width) * rows, factor);
      };
    }
    sources.push_back(std::move(source));
  }
  return sources;
}

void CopyBand(WindowedFrame const& from, RowRange const& rows, COrbImage& to) {
  std::size_t const bytes =
      sizeof(float) * static_cast<std::size_t>(rows.Count()) * static_cast<std::size_t>(to.GetWidth());
  for (int p = 0; p < to.GetPlanes(); ++p) {
    std::memcpy(to.GetImageAdr(0, rows.top, p, 0, nullptr), from.Row(p, rows.top), bytes);
  }
}

void TakeMedian(ReaderList const& readers, MasterRecipe const& recipe, COrbImage& master, Environment& environment) {
  Shape const shape = readers.front()->Shape();
  ProgressStep const step(environment.progress,
                          StepText(kMedianMessage, fmt::format("Median of {} {}s", readers.size(), recipe.kind)),
                          shape.height);
  FrameBands frames(MakeSources(readers, recipe, environment), shape);
  int const rowsPerBand =
      frames.FindRowsPerBand(environment.memory, 1.0, FindMedianScratch(readers.size(), shape, environment.threads));
  WindowedFrame result(shape);
  for (int top = 0; top < shape.height; top += rowsPerBand) {
    RowRange const band{top, std::min(top + rowsPerBand, shape.height)};
    frames.Load(band, environment.threads);
    StackByMedian(frames, result, band, environment);
    CopyBand(result, band, master);
  }
  frames.ReportNonFinite(environment, kGoIntoResult);
}

}  // namespace

void MakeMaster(ReaderList const& readers, MasterRecipe const& recipe, Environment& environment, Frame& master) {
  FrameReader& first = *readers.front();
  Shape const shape = first.Shape();
  master.header = first.Header();
  if (readers.size() > 1) {
    COrbImage image(-32, shape.width, shape.height, shape.planes, 1.0, 0.0, 1, nullptr, nullptr);
    master.image.Swap(&image);
    TakeMedian(readers, recipe, master.image, environment);
    master.header.SetInteger("STACKCNT", static_cast<long long>(readers.size()), "number of frames in the stack");
    master.header.AddHistory(fmt::format("orbimg calibrate: CImgMedianComposit, {} {}s{}", readers.size(), recipe.kind,
                                         recipe.equalize ? ", brought to the median of the first" : ""));
    return;
  }
  WarnOfNonFinite(environment, first.Path(), ReadSamples(first, master.image), "and go into every light");
  if (recipe.dark != nullptr) master.image.DarkClbrtn(recipe.dark, 0);
}

}  // namespace orb::host
