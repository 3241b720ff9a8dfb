#include <hosts/orbimg/demo_report.h>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <hosts/io/fits_file.h>
#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/simulation_files.h>
#include <hosts/orbimg/star_finder.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kSpikeSigmas = 6.0;     // a pixel that stands out by so many times the noise is hot
constexpr double kGoneFraction = 0.05;   // what is left of a trail that counts as gone
constexpr double kCountedFlux = 2000.0;  // ADU: stars bright enough to count on
constexpr int kEdge = 20;                // pixels where stars are not looked for
constexpr int kOverlapMargin = 60;       // pixels that drift leaves uncovered at most, in a demo of 12 frames

struct Inputs {
  SimulationTruth truth;
  AlignmentList alignment;
  Frame raw;
  Frame calibrated;
  Frame stack;
};

CRect Overlap(COrbImage const& image) {
  return CRect(kOverlapMargin, kOverlapMargin, image.GetWidth() - kOverlapMargin, image.GetHeight() - kOverlapMargin);
}

double NoiseOf(COrbImage const& image) {
  CRect const rect = Overlap(image);
  return MeasureSky(image, 0, &rect).noise;
}

SimulatedFrame const& TruthOf(DemoFiles const& files, Inputs const& inputs, std::string const& file) {
  auto const same = [&](std::string const& light) { return BareName(light) == BareName(file); };
  auto const found = std::find_if(files.calibrated.begin(), files.calibrated.end(), same);
  return inputs.truth.frames[static_cast<std::size_t>(found - files.calibrated.begin())];
}

void MeasureStars(Inputs const& inputs, DemoReport& report) {
  COrbImage const& reference = inputs.calibrated.image;
  for (SimulatedStar const& star : inputs.truth.stars) {
    bool const inside = star.x >= kEdge && star.y >= kEdge && star.x < reference.GetWidth() - kEdge &&
                        star.y < reference.GetHeight() - kEdge;
    if (inside && star.flux >= kCountedFlux) ++report.starsInField;
  }
  report.starsFound = static_cast<int>(FindStars(reference, StarFinderSettings()).size());
}

void MeasureAlignment(DemoFiles const& files, Inputs const& inputs, DemoReport& report) {
  double squares = 0.0;
  for (AlignedFrame const& frame : inputs.alignment.frames) {
    double const error = FindTransformError(frame.transform, TruthOf(files, inputs, frame.file).transform,
                                            inputs.stack.image.GetWidth(), inputs.stack.image.GetHeight());
    report.worstTransformError = std::max(report.worstTransformError, error);
    squares += error * error;
  }
  report.framesAligned = static_cast<int>(inputs.alignment.frames.size());
  // The reference lies over itself without error and does not count.
  report.rmsTransformError = std::sqrt(squares / std::max(1, report.framesAligned - 1));
}

void MeasureHotPixels(Inputs const& inputs, DemoReport& report) {
  std::vector<Position> onChip;
  std::vector<Position> onSky;  // where each frame carries them
  for (PixelExcess const& hot : inputs.truth.hotPixels) {
    Position const position{static_cast<double>(hot.x), static_cast<double>(hot.y)};
    onChip.push_back(position);
    for (SimulatedFrame const& frame : inputs.truth.frames) {
      onSky.push_back(RigidMap(frame.transform).ToReference(position));
    }
  }
  auto const count = [&](Frame const& frame, std::vector<Position> const& positions) {
    return CountSpikes(frame.image, positions, inputs.truth.stars, kSpikeSigmas * NoiseOf(frame.image));
  };
  report.hotInRaw = count(inputs.raw, onChip);
  report.hotInCalibrated = count(inputs.calibrated, onChip);
  report.hotInStack = count(inputs.stack, onSky);
}

void MeasureTrail(DemoFiles const& files, Inputs const& inputs, DemoReport& report) {
  if (!inputs.truth.trail) return;
  SimulatedTrail const& trail = *inputs.truth.trail;
  auto const index = static_cast<std::size_t>(trail.frame);
  Frame crossed;
  ReadFits(files.calibrated[index], crossed);
  report.trailInFrame = FindLineExcess(crossed.image, trail.from, trail.to);
  RigidMap const map(inputs.truth.frames[index].transform);
  Position const from = map.ToReference(trail.from);
  Position const to = map.ToReference(trail.to);
  report.trailInStack = FindLineExcess(inputs.stack.image, from, to);
  ReadFits(files.rejection, crossed);
  report.trailInRejection = FindLineExcess(crossed.image, from, to);
}

bool IsGone(double left, double before) { return std::abs(left) <= kGoneFraction * before; }

char const* YesNo(bool yes) { return yes ? "gone" : "NOT GONE"; }

std::string Line(char const* label, std::string const& text) { return fmt::format("  {:<22} {}\n", label, text); }

double Fraction(SpikeCount const& count) {
  return count.pixels > 0 ? static_cast<double>(count.spikes) / count.pixels : 0.0;
}

bool HotPixelsGone(DemoReport const& report) {
  return Fraction(report.hotInStack) <= kGoneFraction * Fraction(report.hotInRaw);
}

}  // namespace

void MeasureDemo(DemoFiles const& files, DemoReport& report) {
  Inputs inputs;
  inputs.truth = ReadTruth(files.truth);
  inputs.alignment = ReadAlignment(files.alignment);
  ReadFits(files.raw.front(), inputs.raw);
  ReadFits(files.calibrated.front(), inputs.calibrated);
  ReadFits(files.median, inputs.stack);
  report.frames = static_cast<int>(inputs.truth.frames.size());
  MeasureStars(inputs, report);
  MeasureAlignment(files, inputs, report);
  report.noiseOfFrame = NoiseOf(inputs.calibrated.image);
  report.noiseOfStack = NoiseOf(inputs.stack.image);
  MeasureHotPixels(inputs, report);
  MeasureTrail(files, inputs, report);
}

std::string FormatReport(DemoReport const& report) {
  std::string text = "Report\n";
  text += Line("stars", fmt::format("{} found in the reference; {} brighter than {:.0f} ADU stand in its field",
                                    report.starsFound, report.starsInField, kCountedFlux));
  text += Line("alignment",
               fmt::format("{} of {} frames; off the truth by {:.3f} px rms, {:.3f} px at most", report.framesAligned,
                           report.frames, report.rmsTransformError, report.worstTransformError));
  text +=
      Line("noise", fmt::format("{:.2f} ADU in a frame, {:.2f} ADU in the median stack: {:.2f} times less (square root "
                                "of {} frames: {:.2f})",
                                report.noiseOfFrame, report.noiseOfStack, report.NoiseGain(), report.frames,
                                std::sqrt(report.frames)));
  text += Line("hot pixels",
               fmt::format("{}: {} of {} stand out in a raw frame, {} of {} after calibration, {} of {} places "
                           "in the stack",
                           YesNo(HotPixelsGone(report)), report.hotInRaw.spikes, report.hotInRaw.pixels,
                           report.hotInCalibrated.spikes, report.hotInCalibrated.pixels, report.hotInStack.spikes,
                           report.hotInStack.pixels));
  text +=
      Line("satellite trail",
           fmt::format("{} from the median stack, {} from the rejection of two: {:.1f} ADU in its frame, {:.1f} and "
                       "{:.1f} ADU left",
                       YesNo(IsGone(report.trailInStack, report.trailInFrame)),
                       YesNo(IsGone(report.trailInRejection, report.trailInFrame)), report.trailInFrame,
                       report.trailInStack, report.trailInRejection));
  if (!report.hasCaption) text += Line("caption", "none in the picture: no font is installed");
  std::string times;
  for (auto const& [step, seconds] : report.seconds)
    times += fmt::format("{}{} {:.2f}", times.empty() ? "" : ", ", step, seconds);
  return text + Line("seconds", times);
}

std::string FormatReportJson(DemoReport const& report) {
  Json seconds = Json::object();
  for (auto const& [step, time] : report.seconds) seconds[step] = time;
  auto const spikes = [](SpikeCount const& count) { return Json{{"pixels", count.pixels}, {"spikes", count.spikes}}; };
  Json const document{{"frames", report.frames},
                      {"stars_found", report.starsFound},
                      {"stars_in_field", report.starsInField},
                      {"frames_aligned", report.framesAligned},
                      {"alignment_error_rms", report.rmsTransformError},
                      {"alignment_error_worst", report.worstTransformError},
                      {"noise_frame", report.noiseOfFrame},
                      {"noise_stack", report.noiseOfStack},
                      {"noise_gain", report.NoiseGain()},
                      {"noise_gain_of_mean", std::sqrt(report.frames)},
                      {"hot_raw", spikes(report.hotInRaw)},
                      {"hot_calibrated", spikes(report.hotInCalibrated)},
                      {"hot_stack", spikes(report.hotInStack)},
                      {"hot_gone", HotPixelsGone(report)},
                      {"trail_frame", report.trailInFrame},
                      {"trail_stack", report.trailInStack},
                      {"trail_rejection", report.trailInRejection},
                      {"caption", report.hasCaption},
                      {"seconds", seconds}};
  return document.dump(2) + "\n";
}

}  // namespace orb::host
