#include <hosts/orbimg/operator_job.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <hosts/catalogue/band_runner.h>
#include <hosts/catalogue/check.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/operator_options.h>
#include <hosts/orbimg/operator_progress.h>
#include <hosts/orbimg/rectangle_option.h>

namespace orb::host {
namespace {

// An image of three planes that shows what a mono one shows.
COrbImage MakeColour(COrbImage const& image) {
  COrbImage colour(image);
  if (image.IsColor() != 0) return colour;
  if (colour.ChangePlanes(3, nullptr, nullptr) == 0) throw std::bad_alloc();
  for (int p = 1; p < 3; ++p) colour.CImage::SetLevel(p, image.GetLevelMin(0), image.GetLevelMax(0));
  return colour;
}

double ValueOf(Parameter::Follows what, COrbImage const& image) {
  switch (what) {
    case Parameter::Follows::kBlack:
      return image.GetLevelMin(0);
    case Parameter::Follows::kWhite:
      return image.GetLevelMax(0);
    case Parameter::Follows::kMiddleLevel:
      return 0.5 * image.GetLevelMin(0) + 0.5 * image.GetLevelMax(0);
    case Parameter::Follows::kMiddleColumn:
      return 0.5 * (image.GetWidth() - 1);
    case Parameter::Follows::kMiddleRow:
      return 0.5 * (image.GetHeight() - 1);
    case Parameter::Follows::kWidth:
      return image.GetWidth();
    case Parameter::Follows::kHeight:
      return image.GetHeight();
    case Parameter::Follows::kNoise:
      return MeasureSky(image, 0, nullptr).noise;
    case Parameter::Follows::kNothing:
      break;
  }
  return std::nan("");
}

double ValueFollowing(Parameter const& parameter, COrbImage const& image) {
  double const value = ValueOf(parameter.follows, image);
  bool const hasNoNoise = parameter.follows == Parameter::Follows::kNoise && !(value >= parameter.least);
  return hasNoNoise ? parameter.byDefault : value;
}

std::vector<double> FollowImage(OperatorJob const& job, COrbImage const& image) {
  std::vector<double> values = job.values;
  for (std::size_t i = 0; i < values.size(); ++i) {
    Parameter const& parameter = job.entry->parameters[i];
    if (!std::isnan(values[i])) continue;
    values[i] = ValueFollowing(parameter, image);
    if (parameter.kind == Parameter::Kind::kInteger) values[i] = std::floor(values[i]);
  }
  return values;
}

// The width of the blur from stars, in the terms of the operator.
void FollowStars(OperatorJob const& job, COrbImage const& image, OperatorOutcome& outcome) {
  if (job.psfFrom.empty()) return;
  outcome.blur = MeasureBlur(job.psfFrom, image, job.input);
  auto const place = static_cast<std::size_t>(job.entry->FindBlur());
  Parameter const& parameter = job.entry->parameters[place];
  outcome.values[place] = outcome.blur->sigma * parameter.ofBlur;
  std::string const wrong = CheckValue(parameter, outcome.values[place]);
  if (!wrong.empty()) throw HostError(Exit::kUsage, fmt::format("--psf-from {}: {}", job.psfFrom, wrong));
}

// The images of a call, the result being that of the outcome.
class CallImages {
 public:
  CallImages(OperatorJob const& job, OperatorOutcome& outcome, Environment& environment) {
    Frame& frame = outcome.frame;
    ReadForWork(job.input, frame, environment);
    outcome.values = FollowImage(job, frame.image);
    FollowStars(job, frame.image, outcome);
    call.image = &frame.image;
    call.progress = 1;
    call.values = outcome.values;
    call.results = &outcome.results;
    rect = MakeRect(job.rect, frame.image);
    call.rect = rect ? &*rect : nullptr;
    SetSource(job, frame, environment);
    if (!job.entry->needsSecond) return;
    ReadForWork(job.second, second, environment);
    if (second.image.IsValidStdCtr() == 0) second.image.SetDefaultCenter();
    call.second = &second.image;
  }
  CallImages(CallImages const&) = delete;
  CallImages& operator=(CallImages const&) = delete;

  Invocation call;

 private:
  void SetSource(OperatorJob const& job, Frame& frame, Environment& environment) {
    OperatorEntry const& entry = *job.entry;
    if (entry.sourceShape == SourceShape::kNone) return;
    bool const turnsColour = entry.sourceShape == SourceShape::kFrameToColour;
    call.source = &source.image;
    if (TakesSourceFile(entry)) {
      ReadForWork(job.source, source, environment);
    } else if (entry.mayRunInPlace && !turnsColour) {
      call.source = &frame.image;
    } else {
      source.image = frame.image;
    }
    if (turnsColour) frame.image = MakeColour(source.image);
  }

  Frame source;
  Frame second;
  std::optional<CRect> rect;
};

std::string HistoryOf(OperatorJob const& job, OperatorOutcome const& outcome, std::string const& curves) {
  std::vector<std::string> parts;
  if (!job.values.empty()) parts.push_back(DescribeValues(job.entry->parameters, outcome.values));
  if (outcome.blur) parts.push_back(fmt::format("of {} of {}", outcome.blur->StarsText(), BareName(job.psfFrom)));
  if (!outcome.iterations.empty()) {
    parts.push_back(fmt::format("iterations made {}", fmt::join(outcome.iterations, " ")));
  }
  if (!curves.empty()) parts.push_back(curves);
  if (!job.source.empty()) parts.push_back(job.entry->sourceName + " " + BareName(job.source));
  if (!job.second.empty()) parts.push_back("second image " + BareName(job.second));
  if (!job.rect.empty()) parts.push_back(fmt::format("rectangle {}", fmt::join(job.rect, " ")));
  std::erase(parts, "");
  return fmt::format("orbimg {} {}{}{}", job.entry->group, job.entry->CommandName(), parts.empty() ? "" : ": ",
                     fmt::join(parts, ", "));
}

// A curve of a single plane has no meaning for a mono image.
void SetTables(CurveSet const& curves, std::string const& file, Invocation& call) {
  int const planes = call.image->GetPlanes();
  if (planes == 1 && curves.hasPlanes) {
    throw HostError(Exit::kUsage,
                    fmt::format("{}: has one plane; leave out --curve-red, --curve-green, --curve-blue", file));
  }
  call.tables = curves.TablesFor(planes);
}

// An image that would grow beyond what the user gives for samples: better refused than begun.
void CheckMemory(OperatorEntry const& entry, Invocation const& call, std::string const& file,
                 Environment const& environment) {
  ImageSize const size = entry.SizeOf(call);
  double const samples = static_cast<double>(size.width) * static_cast<double>(size.height) * call.image->GetPlanes();
  double const bytes = samples * sizeof(float);
  bool const grows = samples > static_cast<double>(call.image->GetPixelCount());
  if (!grows || bytes <= static_cast<double>(environment.memory)) return;
  throw HostError(
      Exit::kResources,
      fmt::format("--memory: {}: the result of {} x {} takes {}; give at least {:.0f}K, or check its size", file,
                  size.width, size.height, FormatBytes(static_cast<std::int64_t>(bytes)), std::ceil(bytes / 1024.0)));
}

RunPlan PlanOf(OperatorEntry const& entry, Invocation const& call) {
  int const iterations = entry.Find("iterations");
  if (!entry.hasOwnRuns || iterations < 0) return {};
  return {call.image->GetPlanes(), static_cast<int>(call.values[static_cast<std::size_t>(iterations)])};
}

std::string ReasonOfFailure(OperatorEntry const& entry, OperatorProgress const& progress) {
  if (!progress.Box().empty()) return progress.Box();
  return entry.results.empty() ? "not enough memory; close other programs" : "finds no result in this image";
}

constexpr int kFewIterations = 4;  // the first ones of Richardson and Lucy begin from an even image

// A restoration that is over at once has found the data to lie within the noise that it was told, and blurs them more
// than it sharpens them.
void WarnOfEarlyEnd(OperatorJob const& job, OperatorOutcome const& outcome, Environment& environment) {
  int const place = job.entry->Find("adu");
  if (place < 0 || outcome.iterations.empty()) return;
  int const asked = static_cast<int>(outcome.values[static_cast<std::size_t>(job.entry->Find("iterations"))]);
  int const least = *std::min_element(outcome.iterations.begin(), outcome.iterations.end());
  if (least >= std::min(asked, kFewIterations)) return;
  environment.Warn(
      fmt::format("{}: the data are met within the noise after {} iteration{}, so the result may be smoother "
                  "than the image; give a larger --adu or a smaller --noise",
                  job.input, least, least == 1 ? "" : "s"));
}

}  // namespace

std::vector<double> StartingValues(OperatorEntry const& entry) {
  std::vector<double> values = entry.Defaults();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (entry.parameters[i].follows != Parameter::Follows::kNothing) values[i] = std::nan("");
  }
  return values;
}

bool TakesSourceFile(OperatorEntry const& entry) {
  return entry.sourceShape == SourceShape::kFrame || entry.sourceShape == SourceShape::kAny;
}

std::vector<int> RunChecked(OperatorEntry const& entry, Invocation call, std::string const& file,
                            Environment& environment) {
  std::string const wrong = CheckInvocation(entry, call);
  if (!wrong.empty()) throw HostError(Exit::kUsage, fmt::format("{}: {}", file, wrong));
  if (entry.sizeOfResult != nullptr) CheckMemory(entry, call, file, environment);
  OperatorProgress progress(environment.progress, Capitalised(entry.name), PlanOf(entry, call), entry.stopsAtEscape);
  call.image->SetProgressHandle(&progress);
  int const result = RunInBands(entry, call, environment.threads);
  call.image->SetProgressHandle(nullptr);
  StopIfInterrupted();
  // An operator may end well after ESC, with what it had by then.
  if (progress.WasEscaped()) {
    throw HostError(Exit::kInterrupted, fmt::format("{}: {}: stopped by ESC; nothing is written", file, entry.name));
  }
  if (result != 0) return progress.Iterations();
  throw HostError(entry.results.empty() ? Exit::kResources : Exit::kFailed,
                  fmt::format("{}: {}: {}", file, entry.name, ReasonOfFailure(entry, progress)));
}

void RunOperator(OperatorJob const& job, Environment& environment, OperatorOutcome& outcome) {
  bool const takesCurves = !job.entry->tables.empty();
  CurveSet const curves = takesCurves ? ReadCurves(job.curves) : CurveSet();
  CallImages images(job, outcome, environment);
  if (takesCurves) SetTables(curves, job.input, images.call);
  outcome.iterations = RunChecked(*job.entry, images.call, job.input, environment);
  if (job.entry->changes.geometry) outcome.frame.header.RemoveWcs();
  WarnOfEarlyEnd(job, outcome, environment);
  COrbImage& result = outcome.frame.image;
  // Values within the extrema of the source, which are the levels that the operator gave it.
  if (job.entry->changes.sourceLevels) {
    COrbImage const& source = *images.call.source;
    for (int p = 0; p < result.GetPlanes(); ++p) {
      result.CImage::SetLevel(p, source.GetLevelMin(p), source.GetLevelMax(p));
    }
  }
  outcome.frame.header.AddHistory(HistoryOf(job, outcome, curves.text));
}

}  // namespace orb::host
