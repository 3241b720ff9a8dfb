#include <hosts/orbimg/simulation_files.h>

#include <filesystem>
#include <fstream>

#include <fmt/format.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/parallel.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kTruthFile[] = "truth.json";
constexpr double kExposure = 60.0;     // seconds: what lights and darks say
constexpr double kFlatExposure = 1.2;  // a fiftieth, as their dark signal

// One sort of frame.
struct Series {
  char const* stem;
  char const* type;  // IMAGETYP
  int count;
  double exposure;
  COrbImage (Simulation::*make)(int index) const;
};

std::vector<Series> ListSeries(SimulationJob const& job) {
  return {{"light", "Light Frame", job.settings.frames, kExposure, &Simulation::Light},
          {"dark", "Dark Frame", job.darks, kExposure, &Simulation::Dark},
          {"flat", "Flat Field", job.flats, kFlatExposure, &Simulation::Flat},
          {"flatdark", "Dark Frame", job.flats, kFlatExposure, &Simulation::FlatDark}};
}

std::string NameFrame(SimulationJob const& job, Series const& series, int index) {
  return (std::filesystem::path(job.folder) / fmt::format("{}_{:03}.fits", series.stem, index + 1)).string();
}

struct FramePlan {
  Series series;
  int index;
  std::string file;
};

std::vector<FramePlan> PlanFrames(SimulationJob const& job) {
  std::vector<FramePlan> plans;
  for (Series const& series : ListSeries(job)) {
    for (int i = 0; i < series.count; ++i) plans.push_back(FramePlan{series, i, NameFrame(job, series, i)});
  }
  return plans;
}

void WriteSimulated(Simulation const& simulation, FramePlan const& plan, Existing existing) {
  SimulationSettings const& settings = simulation.Settings();
  COrbImage const image = (simulation.*plan.series.make)(plan.index);
  FitsHeader header;
  header.SetText("OBJECT", "Simulated field", "object");
  header.SetText("IMAGETYP", plan.series.type, "kind of frame");
  header.SetNumber("EXPTIME", plan.series.exposure, "[s] exposure");
  header.SetNumber("EGAIN", settings.gain, "[e-/ADU] gain");
  header.AddHistory(fmt::format("orbimg simulate: seed {}, {} {}", settings.seed, plan.series.stem, plan.index + 1));
  FitsWriter writer(plan.file, Shape{settings.width, settings.height, 1}, header, existing);
  writer.WriteRows(0, 0, settings.height, image.GetImageAdr(0, 0, 0, 1, nullptr));
  writer.Commit();
}

Json ToJson(Position const& position) { return Json{position.x, position.y}; }

Json ToJson(std::vector<PixelExcess> const& pixels) {
  Json list = Json::array();
  for (PixelExcess const& pixel : pixels) list.push_back(Json{pixel.x, pixel.y, pixel.excess});
  return list;
}

std::vector<PixelExcess> PixelsFromJson(Json const& list) {
  std::vector<PixelExcess> pixels;
  for (Json const& entry : list) pixels.push_back(PixelExcess{entry.at(0), entry.at(1), entry.at(2)});
  return pixels;
}

Json ToJson(SimulatedFrame const& frame, std::string const& file) {
  FrameTransform const& t = frame.transform;
  return Json{{"file", BareName(file)},
              {"dx", t.dx},
              {"dy", t.dy},
              {"angle", t.angle},
              {"centre", {t.cx, t.cy}},
              {"fwhm", frame.fwhm},
              {"transparency", frame.transparency},
              {"cosmic_rays", ToJson(frame.cosmicRays)}};
}

SimulatedFrame FrameFromJson(Json const& entry) {
  SimulatedFrame frame;
  frame.transform.dx = entry.at("dx");
  frame.transform.dy = entry.at("dy");
  frame.transform.angle = entry.at("angle");
  frame.transform.cx = entry.at("centre").at(0);
  frame.transform.cy = entry.at("centre").at(1);
  frame.fwhm = entry.at("fwhm");
  frame.transparency = entry.at("transparency");
  frame.cosmicRays = PixelsFromJson(entry.at("cosmic_rays"));
  return frame;
}

SimulationTruth TruthFromJson(Json const& document) {
  SimulationTruth truth;
  for (Json const& star : document.at("stars"))
    truth.stars.push_back(SimulatedStar{star.at(0), star.at(1), star.at(2)});
  truth.hotPixels = PixelsFromJson(document.at("hot_pixels"));
  for (Json const& frame : document.at("frames")) truth.frames.push_back(FrameFromJson(frame));
  Json const& trail = document.at("trail");
  if (!trail.is_null()) {
    truth.trail = SimulatedTrail{trail.at("frame"), Position{trail.at("from").at(0), trail.at("from").at(1)},
                                 Position{trail.at("to").at(0), trail.at("to").at(1)}, trail.at("peak")};
  }
  return truth;
}

}  // namespace

std::string FormatTruth(Simulation const& simulation, std::vector<std::string> const& lights) {
  SimulationTruth const& truth = simulation.Truth();
  Json frames = Json::array();
  for (std::size_t i = 0; i < truth.frames.size(); ++i) frames.push_back(ToJson(truth.frames[i], lights[i]));
  Json stars = Json::array();
  for (SimulatedStar const& star : truth.stars) stars.push_back(Json{star.x, star.y, star.flux});
  Json trail;
  if (truth.trail) {
    trail = Json{{"frame", truth.trail->frame},
                 {"from", ToJson(truth.trail->from)},
                 {"to", ToJson(truth.trail->to)},
                 {"peak", truth.trail->peak}};
  }
  Json const document{{"kind", "orbimg truth"}, {"seed", simulation.Settings().seed},
                      {"frames", frames},       {"trail", trail},
                      {"stars", stars},         {"hot_pixels", ToJson(truth.hotPixels)}};
  return document.dump(1) + "\n";
}

SimulationTruth ReadTruth(std::string const& path) {
  RequireReadableFile(path);
  try {
    std::ifstream file(path);
    return TruthFromJson(Json::parse(file));
  } catch (std::exception const&) {
    throw HostError(Exit::kInput,
                    fmt::format("{}: not the truth of a simulation; make one with orbimg simulate", path));
  }
}

void SimulateToFolder(SimulationJob const& job, Environment& environment) {
  MakeOutputFolder(job.folder);
  std::vector<FramePlan> const plans = PlanFrames(job);
  std::string const truthFile = (std::filesystem::path(job.folder) / kTruthFile).string();
  for (FramePlan const& plan : plans) CheckOutputFile(plan.file, environment.existing);
  CheckOutputFile(truthFile, environment.existing);
  Shape const shape{job.settings.width, job.settings.height, 1};
  CheckFreeSpace(job.folder, BytesOf(shape) * static_cast<std::int64_t>(plans.size()));
  ProgressStep const step(environment.progress, fmt::format("Simulating {} frames", plans.size()),
                          static_cast<std::int64_t>(plans.size()));
  Simulation const simulation(job.settings);
  RunInParallel(static_cast<std::int64_t>(plans.size()), environment.threads, [&](std::int64_t i) {
    WriteSimulated(simulation, plans[static_cast<std::size_t>(i)], environment.existing);
    environment.progress.Advance(1);
  });
  std::vector<std::string> lights;
  for (int i = 0; i < job.settings.frames; ++i) lights.push_back(plans[static_cast<std::size_t>(i)].file);
  WriteTextFile(truthFile, FormatTruth(simulation, lights), environment.existing);
}

}  // namespace orb::host
