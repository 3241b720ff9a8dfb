#include <hosts/orbimg/stack_header.h>

#include <cmath>

#include <fmt/format.h>
#include <hosts/orbimg/file_list.h>

namespace orb::host {
namespace {

constexpr char kExposure[] = "EXPTIME";
constexpr char kTotalExposure[] = "EXPTOTAL";
constexpr char kStackCount[] = "STACKCNT";

void SetExposure(FitsHeader& header, ReaderList const& readers, ExposureRule rule) {
  double total = 0.0;
  for (auto const& reader : readers) {
    auto const exposure = reader->Header().Number(kExposure);
    if (!exposure) {
      header.Remove(kExposure);
      return;
    }
    total += *exposure;
  }
  if (rule == ExposureRule::kSum) header.SetNumber(kExposure, total, "[s] sum of the exposures");
  if (rule == ExposureRule::kMean) {
    header.SetNumber(kExposure, total / static_cast<double>(readers.size()), "[s] mean of the exposures");
  }
  header.SetNumber(kTotalExposure, total, "[s] sum of the exposures");
}

long long CountFrames(ReaderList const& readers) {
  long long count = 0;
  for (auto const& reader : readers) {
    double const own = reader->Header().Number(kStackCount).value_or(1.0);
    count += own >= 1.0 && own < 1e9 ? std::llround(own) : 1;
  }
  return count;
}

void RemoveLevels(FitsHeader& header) {
  for (char const* plane : {"", "2", "3"}) {
    header.Remove(std::string("CBLACK") + plane);
    header.Remove(std::string("CWHITE") + plane);
  }
}

}  // namespace

FitsHeader MakeStackHeader(ReaderList const& readers, std::vector<AlignedFrame> const& frames,
                           StackParameters const& parameters) {
  FitsHeader header = readers.front()->Header();
  SetExposure(header, readers, parameters.mode->exposure);
  header.SetInteger(kStackCount, CountFrames(readers), "number of frames in the stack");
  if (!parameters.on256) RemoveLevels(header);
  header.AddHistory(fmt::format("orbimg stack: {}, {} frames on {}", parameters.Text(), frames.size(),
                                BareName(frames.front().file)));
  for (AlignedFrame const& frame : frames) {
    header.AddHistory(fmt::format("orbimg stack: {} {}", BareName(frame.file), frame.transform.Text()));
  }
  return header;
}

}  // namespace orb::host
