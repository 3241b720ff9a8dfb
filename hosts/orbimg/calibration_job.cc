#include <hosts/orbimg/calibration_job.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/master_frame.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/parallel.h>
#include <hosts/orbimg/texts.h>

namespace orb::host {
namespace {

constexpr int kDarkMessage = 6106;
constexpr int kFlatMessage = 6105;
constexpr std::size_t kFewestForSkyFlat = 3;  // fewer leave the stars in the median

struct Masters {
  std::optional<Frame> dark;
  std::optional<Frame> flat;
  std::string darkText;  // what they were made of
  std::string flatText;
};

struct Inputs {
  ReaderList lights;
  ReaderList darks;
  ReaderList flats;
  ReaderList flatDarks;
};

ReaderList OpenFor(std::vector<std::string> const& files, std::string const& kind, FrameReader const& light,
                   Environment& environment) {
  ReaderList readers = OpenFrames(files, kind + "s", environment);
  if (!readers.empty()) CheckFitsLights(*readers.front(), kind, light);
  return readers;
}

Inputs OpenInputs(CalibrationJob const& job, Environment& environment) {
  Inputs inputs;
  inputs.lights = OpenFrames(job.lights, "lights", environment);
  FrameReader const& light = *inputs.lights.front();
  inputs.darks = OpenFor(job.darks, "dark", light, environment);
  inputs.flats = OpenFor(job.flats, "flat", light, environment);
  inputs.flatDarks = OpenFor(job.flatDarks, "flat dark", light, environment);
  if (!inputs.flatDarks.empty()) CheckFitsLights(*inputs.flatDarks.front(), "flat dark", *inputs.flats.front());
  return inputs;
}

std::vector<std::string> NameOutputs(CalibrationJob const& job, Environment const& environment) {
  std::map<std::string, std::string> takenBy;
  std::vector<std::string> outputs;
  for (std::string const& light : job.lights) {
    std::string const output = (std::filesystem::path(job.folder) / (StemOf(light) + ".fits")).string();
    auto const [other, isNew] = takenBy.emplace(output, light);
    if (!isNew) {
      throw HostError(Exit::kUsage, fmt::format("{}: would be written to the same file as {}; calibrate them into "
                                                "different folders",
                                                light, other->second));
    }
    CheckOutputFile(output, environment.existing);
    outputs.push_back(output);
  }
  return outputs;
}

std::string Describe(std::string const& kind, std::vector<std::string> const& files) {
  if (files.size() == 1) return fmt::format("{} {}", kind, BareName(files.front()));
  return fmt::format("{} the median of {} frames, {} to {}", kind, files.size(), BareName(files.front()),
                     BareName(files.back()));
}

void MakeFlat(CalibrationJob const& job, Inputs const& inputs, Frame& flat, Environment& environment) {
  Frame flatDark;
  bool const hasDark = !inputs.flatDarks.empty();
  if (hasDark) MakeMaster(inputs.flatDarks, MasterRecipe{"flat dark", nullptr, false}, environment, flatDark);
  MasterRecipe const recipe{"flat", hasDark ? &flatDark.image : nullptr, inputs.flats.size() > 1};
  MakeMaster(inputs.flats, recipe, environment, flat);
  if (flat.image.GetAvrGrayRaw(0) > 0.0f) return;
  throw HostError(Exit::kFailed, fmt::format("{}: the flat has no light above its dark; give a flat of an even source",
                                             job.flats.front()));
}

void MakeMasters(CalibrationJob const& job, Inputs const& inputs, Masters& masters, Environment& environment) {
  if (!inputs.darks.empty()) {
    masters.darkText = Describe("dark", job.darks);
    MakeMaster(inputs.darks, MasterRecipe{"dark", nullptr, false}, environment, masters.dark.emplace());
  }
  if (job.skyFlat) {
    masters.flatText = Describe("sky flat", job.lights);
    MasterRecipe const recipe{"light", masters.dark ? &masters.dark->image : nullptr, true};
    MakeMaster(inputs.lights, recipe, environment, masters.flat.emplace());
  } else if (!inputs.flats.empty()) {
    masters.flatText = Describe("flat", job.flats);
    MakeFlat(job, inputs, masters.flat.emplace(), environment);
  }
}

void SetFullLevels(COrbImage& image) {
  image.CalcMinMax();
  for (int p = 0; p < image.GetPlanes(); ++p) {
    image.CImage::SetLevel(p, image.GetMinPixel(p), image.GetMaxPixel(p));
  }
}

void CalibrateLight(FrameReader& reader, Masters& masters, std::string const& output, Environment& environment) {
  Frame light;
  light.header = reader.Header();
  light.nonFinite = ReadSamples(reader, light.image);
  WarnOfNonFinite(environment, reader.Path(), light.nonFinite, "and stay so or become 0");
  if (masters.dark) {
    light.image.DarkClbrtn(&masters.dark->image, 0);
    light.header.AddHistory("orbimg calibrate: DarkClbrtn, " + masters.darkText);
  }
  if (masters.flat) {
    light.image.FlatClbrtn(&masters.flat->image, 0);
    light.header.AddHistory("orbimg calibrate: FlatClbrtn, " + masters.flatText);
  }
  SetFullLevels(light.image);
  WriteImage(output, light, environment);
}

void SaveMaster(std::string const& path, std::optional<Frame>& master, Environment& environment) {
  if (path.empty() || !master) return;
  SetFullLevels(master->image);
  WriteImage(path, *master, environment);
}

void CheckJob(CalibrationJob const& job, Environment const& environment) {
  if (job.skyFlat && job.lights.size() < kFewestForSkyFlat) {
    throw HostError(Exit::kUsage, fmt::format("--sky-flat: {} lights leave their stars in the flat; give at least {}",
                                              job.lights.size(), kFewestForSkyFlat));
  }
  if (!job.saveDark.empty() && job.darks.empty()) {
    throw HostError(Exit::kUsage, "--save-dark: there is no dark to save; give --dark");
  }
  if (!job.saveFlat.empty() && job.flats.empty() && !job.skyFlat) {
    throw HostError(Exit::kUsage, "--save-flat: there is no flat to save; give --flat or --sky-flat");
  }
  for (std::string const& file : {job.saveDark, job.saveFlat}) {
    if (!file.empty()) CheckImageFile(file, environment.existing);
  }
}

}  // namespace

std::vector<std::string> CalibrateToFolder(CalibrationJob const& job, Environment& environment) {
  CheckJob(job, environment);
  Inputs const inputs = OpenInputs(job, environment);
  MakeOutputFolder(job.folder);
  std::vector<std::string> outputs = NameOutputs(job, environment);
  std::int64_t const frameBytes = BytesOf(inputs.lights.front()->Shape());
  CheckFreeSpace(job.folder, frameBytes * static_cast<std::int64_t>(outputs.size()));
  Masters masters;
  MakeMasters(job, inputs, masters, environment);
  SaveMaster(job.saveDark, masters.dark, environment);
  SaveMaster(job.saveFlat, masters.flat, environment);
  auto const inFlight =
      static_cast<int>(std::clamp<std::int64_t>(environment.memory / frameBytes, 1, environment.threads));
  ProgressStep const step(
      environment.progress,
      StepText(masters.dark ? kDarkMessage : kFlatMessage, fmt::format("Calibrating {} lights", outputs.size())),
      static_cast<std::int64_t>(outputs.size()));
  RunInParallel(static_cast<std::int64_t>(outputs.size()), inFlight, [&](std::int64_t i) {
    auto const index = static_cast<std::size_t>(i);
    CalibrateLight(*inputs.lights[index], masters, outputs[index], environment);
    environment.progress.Advance(1);
  });
  return outputs;
}

}  // namespace orb::host
