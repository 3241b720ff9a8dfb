#include <hosts/orbimg/operator_job.h>

#include <cmath>
#include <new>
#include <optional>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <hosts/catalogue/band_runner.h>
#include <hosts/catalogue/check.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/file_list.h>
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
    case Parameter::Follows::kNothing:
      break;
  }
  return std::nan("");
}

std::vector<double> FollowImage(OperatorJob const& job, COrbImage const& image) {
  std::vector<double> values = job.values;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::isnan(values[i])) continue;
    Parameter const& parameter = job.entry->parameters[i];
    values[i] = ValueOf(parameter.follows, image);
    if (parameter.kind == Parameter::Kind::kInteger) values[i] = std::floor(values[i]);
  }
  return values;
}

// The images of a call, the result being that of the outcome.
class CallImages {
 public:
  CallImages(OperatorJob const& job, OperatorOutcome& outcome, Environment& environment) {
    Frame& frame = outcome.frame;
    ReadForWork(job.input, frame, environment);
    outcome.values = FollowImage(job, frame.image);
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

void RunChecked(OperatorEntry const& entry, Invocation call, std::string const& file, Environment& environment) {
  std::string const wrong = CheckInvocation(entry, call);
  if (!wrong.empty()) throw HostError(Exit::kUsage, fmt::format("{}: {}", file, wrong));
  OperatorProgress progress(environment.progress, Capitalised(entry.name));
  call.image->SetProgressHandle(&progress);
  int const result = RunInBands(entry, call, environment.threads);
  call.image->SetProgressHandle(nullptr);
  StopIfInterrupted();
  if (result != 0) return;
  throw HostError(
      entry.results.empty() ? Exit::kResources : Exit::kFailed,
      fmt::format("{}: {}: {}", file, entry.name,
                  entry.results.empty() ? "not enough memory; close other programs" : "finds no result in this image"));
}

void RunOperator(OperatorJob const& job, Environment& environment, OperatorOutcome& outcome) {
  bool const takesCurves = !job.entry->tables.empty();
  CurveSet const curves = takesCurves ? ReadCurves(job.curves) : CurveSet();
  CallImages images(job, outcome, environment);
  if (takesCurves) SetTables(curves, job.input, images.call);
  RunChecked(*job.entry, images.call, job.input, environment);
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
