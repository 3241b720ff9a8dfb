#include <hosts/orbimg/operator_job.h>

#include <optional>

#include <fmt/format.h>
#include <hosts/catalogue/band_runner.h>
#include <hosts/catalogue/check.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/operator_options.h>
#include <hosts/orbimg/operator_progress.h>
#include <hosts/orbimg/rectangle_option.h>

namespace orb::host {
namespace {

// The images of a call, the result being that of the first frame.
class CallImages {
 public:
  CallImages(OperatorJob const& job, Frame& frame, Environment& environment) {
    OperatorEntry const& entry = *job.entry;
    ReadForWork(job.input, frame, environment);
    call.image = &frame.image;
    call.progress = 1;
    call.values = job.values;
    rect = MakeRect(job.rect, frame.image);
    call.rect = rect ? &*rect : nullptr;
    if (TakesSourceFile(entry)) {
      ReadForWork(job.source, source, environment);
      call.source = &source.image;
    } else if (entry.sourceShape != SourceShape::kNone) {
      if (!entry.mayRunInPlace) source.image = frame.image;
      call.source = entry.mayRunInPlace ? &frame.image : &source.image;
    }
    if (entry.needsSecond) {
      ReadForWork(job.second, second, environment);
      call.second = &second.image;
    }
  }
  CallImages(CallImages const&) = delete;
  CallImages& operator=(CallImages const&) = delete;

  Invocation call;

 private:
  Frame source;
  Frame second;
  std::optional<CRect> rect;
};

std::string HistoryOf(OperatorJob const& job) {
  std::string text = DescribeValues(job.entry->parameters, job.values);
  if (!job.source.empty()) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", job.entry->sourceName, job.source);
  if (!job.second.empty()) text += fmt::format("{}second image {}", text.empty() ? "" : ", ", job.second);
  if (!job.rect.empty()) {
    text += fmt::format("{}rectangle {} {} {} {}", text.empty() ? "" : ", ", job.rect[0], job.rect[1], job.rect[2],
                        job.rect[3]);
  }
  return fmt::format("orbimg {} {}{}{}", job.entry->group, job.entry->name, text.empty() ? "" : ": ", text);
}

}  // namespace

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
  CallImages images(job, outcome.frame, environment);
  images.call.results = &outcome.results;
  RunChecked(*job.entry, images.call, job.input, environment);
  outcome.frame.header.AddHistory(HistoryOf(job));
}

}  // namespace orb::host
