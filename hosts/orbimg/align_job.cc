#include <hosts/orbimg/align_job.h>

#include <algorithm>

#include <fmt/format.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/parallel.h>
#include <hosts/orbimg/texts.h>

namespace orb::host {
namespace {

constexpr int kMatchingMessage = 6152;

struct Reference {
  COrbImage image;  // for matching, the copy prepared for it
  std::vector<Star> stars;

  // An image of its own over the same samples: what is set on one frame's turn does not reach another's.
  void ShowIn(COrbImage& shown) {
    WrapSamples(shown, image.GetImageAdr(0, 0, 0, 1, nullptr), image.GetWidth(), image.GetHeight(), image.GetPlanes());
    for (int p = 0; p < image.GetPlanes(); ++p) {
      shown.CImage::SetLevel(p, image.GetLevelMin(p), image.GetLevelMax(p));
    }
  }
};

void ReadFrame(FrameReader& reader, COrbImage& image, Environment& environment) {
  WarnOfNonFinite(environment, reader.Path(), ReadSamples(reader, image), "and hide what is near them");
}

AlignmentOutcome AlignOne(AlignJob const& job, Reference& reference, FrameReader& reader, Environment& environment) {
  COrbImage frame;
  ReadFrame(reader, frame, environment);
  if (job.byMatching) {
    return AlignByMatching(reference.image, PrepareForMatching(frame, job.matching), job.matching);
  }
  COrbImage shown;
  reference.ShowIn(shown);
  return AlignByStars(shown, reference.stars, frame, FindStars(frame, job.finder), job.stars);
}

AlignedFrame Describe(std::string const& file, Alignment const& alignment) {
  return AlignedFrame{file, alignment.transform, NameOf(alignment.method), alignment.starsMatched, alignment.rms};
}

AlignedFrame DescribeReference(std::string const& file, Reference const& reference) {
  AlignedFrame described;
  described.file = file;
  described.transform.cx = reference.image.GetWidth() / 2;
  described.transform.cy = reference.image.GetHeight() / 2;
  described.method = "reference";
  described.stars = static_cast<int>(reference.stars.size());
  return described;
}

void PrepareReference(AlignJob const& job, FrameReader& reader, Reference& reference, Environment& environment) {
  ReadFrame(reader, reference.image, environment);
  if (job.byMatching) {
    reference.image = PrepareForMatching(reference.image, job.matching);
    return;
  }
  reference.stars = FindStars(reference.image, job.finder);
  if (reference.stars.size() >= 2) return;
  throw HostError(Exit::kFailed,
                  fmt::format("{}: {} stars are too few for a reference; choose another one with --reference, "
                              "lower --threshold, or align by --method match",
                              reader.Path(), reference.stars.size()));
}

// The reference's place among the files, which it joins if it is not there yet.
std::size_t PlaceReference(AlignJob const& job, std::vector<std::string>& files) {
  if (job.reference.empty()) return 0;
  auto const found = std::find(files.begin(), files.end(), job.reference);
  if (found != files.end()) return static_cast<std::size_t>(found - files.begin());
  files.insert(files.begin(), job.reference);
  return 0;
}

AlignmentList Collect(std::vector<std::string> const& files, std::size_t referenceIndex, Reference const& reference,
                      std::vector<AlignmentOutcome> const& outcomes, Environment& environment) {
  AlignmentList list;
  list.reference = files[referenceIndex];
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i == referenceIndex) {
      list.frames.push_back(DescribeReference(files[i], reference));
    } else if (outcomes[i].alignment) {
      list.frames.push_back(Describe(files[i], *outcomes[i].alignment));
    } else {
      list.leftOut.push_back(LeftOutFrame{files[i], outcomes[i].reason});
      environment.Warn(fmt::format("{}: left out: {}", files[i], outcomes[i].reason));
    }
  }
  if (list.frames.size() < 2) {
    throw HostError(
        Exit::kFailed,
        fmt::format("{}: no frame could be aligned with it; choose another one with --reference", list.reference));
  }
  return list;
}

}  // namespace

AlignmentList AlignFrames(AlignJob const& job, Environment& environment) {
  std::vector<std::string> given = job.files;
  std::string const referenceFile = given[PlaceReference(job, given)];
  if (given.size() < 2) throw HostError(Exit::kUsage, "align: one frame lies over nothing; give two or more");
  std::vector<std::string> const files = LeaveOutBroken(given, 2, referenceFile, environment);
  auto const referenceIndex =
      static_cast<std::size_t>(std::find(files.begin(), files.end(), referenceFile) - files.begin());
  ReaderList const readers = OpenFrames(files, "frames", environment);
  std::int64_t const bytes = BytesOf(readers.front()->Shape());
  auto const inFlight = static_cast<int>(std::clamp<std::int64_t>(environment.memory / bytes, 1, environment.threads));
  std::string const text = fmt::format("Aligning {} frames", files.size());
  ProgressStep const step(environment.progress, job.byMatching ? StepText(kMatchingMessage, text) : text,
                          static_cast<std::int64_t>(files.size()));
  Reference reference;
  PrepareReference(job, *readers[referenceIndex], reference, environment);
  std::vector<AlignmentOutcome> outcomes(files.size());
  RunInParallel(static_cast<std::int64_t>(files.size()), inFlight, [&](std::int64_t i) {
    auto const index = static_cast<std::size_t>(i);
    if (index != referenceIndex) outcomes[index] = AlignOne(job, reference, *readers[index], environment);
    environment.progress.Advance(1);
  });
  AlignmentList list = Collect(files, referenceIndex, reference, outcomes, environment);
  for (std::string const& file : given) {
    if (std::find(files.begin(), files.end(), file) != files.end()) continue;
    list.leftOut.push_back(LeftOutFrame{file, "cannot be read"});
  }
  return list;
}

}  // namespace orb::host
