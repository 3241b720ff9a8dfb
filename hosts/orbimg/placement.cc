#include <hosts/orbimg/placement.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/interrupt.h>

namespace orb::host {
namespace {

namespace fs = std::filesystem;

bool IsSameFile(std::string const& a, std::string const& b) {
  std::error_code error;
  return fs::weakly_canonical(a, error) == fs::weakly_canonical(b, error);
}

[[noreturn]] void FailToPlace(std::string const& file, std::string const& reference, std::string const& reason) {
  throw HostError(Exit::kFailed,
                  fmt::format("{}: cannot be laid over {}: {}; give --alignment, or try --method match or another "
                              "--threshold",
                              file, reference, reason));
}

// The stars that may lie in the other image as well, this one lying dx, dy (pixels) off it.
std::vector<Star> KeepWithin(COrbImage const& other, double dx, double dy, double margin, std::vector<Star> stars) {
  std::erase_if(stars, [&](Star const& star) {
    double const x = star.x + dx;
    double const y = star.y + dy;
    return x < -margin || y < -margin || x > other.GetWidth() + margin || y > other.GetHeight() + margin;
  });
  return stars;
}

class Aligner {
 public:
  Aligner(PlacementOptions const& initOptions, PlacedImage const& initReference)
      : options(initOptions), reference(initReference) {
    if (IsMatching()) {
      prepared = PrepareForMatching(*reference.image, options.matching);
    } else {
      stars = FindStars(*reference.image, options.finder);
    }
  }

  FrameTransform Place(PlacedImage const& placed) const {
    AlignmentOutcome const outcome = IsMatching() ? Match(placed) : FitStars(placed);
    if (!outcome.alignment) FailToPlace(placed.file, reference.file, outcome.reason);
    return outcome.alignment->transform;
  }

 private:
  bool IsMatching() const { return options.method == "match"; }

  AlignmentOutcome Match(PlacedImage const& placed) const {
    return AlignByMatching(prepared, PrepareForMatching(*placed.image, options.matching), options.matching);
  }

  AlignmentOutcome FitStars(PlacedImage const& placed) const {
    std::vector<Star> const found = FindStars(*placed.image, options.finder);
    if (options.start.empty()) return AlignByStars(*reference.image, stars, *placed.image, found, {});
    double const dx = options.start[0];
    double const dy = options.start[1];
    double const margin = options.matching.range / 2.0;
    return AlignByStars(*reference.image, KeepWithin(*placed.image, -dx, -dy, margin, stars), *placed.image,
                        KeepWithin(*reference.image, dx, dy, margin, found), {});
  }

  PlacementOptions const& options;
  PlacedImage const& reference;
  COrbImage prepared;       // for matching
  std::vector<Star> stars;  // for alignment by stars
};

std::vector<FrameTransform> Align(PlacementOptions options, std::vector<PlacedImage> const& images,
                                  Environment& environment) {
  if (!options.start.empty()) {
    options.matching.startX = options.start[0];
    options.matching.startY = options.start[1];
  }
  ProgressStep const step(environment.progress, fmt::format("Aligning {} images", images.size()),
                          static_cast<std::int64_t>(images.size()));
  Aligner const aligner(options, images.front());
  std::vector<FrameTransform> transforms(1);
  environment.progress.Advance(1);
  for (std::size_t i = 1; i < images.size(); ++i) {
    StopIfInterrupted();
    bool const isReference = IsSameFile(images[i].file, images[0].file);
    transforms.push_back(isReference ? FrameTransform{} : aligner.Place(images[i]));
    environment.progress.Advance(1);
  }
  return transforms;
}

std::vector<FrameTransform> LookUp(std::string const& path, std::vector<PlacedImage> const& images) {
  AlignmentList const list = ReadAlignment(path);
  if (!IsSameFile(list.reference, images[0].file)) {
    throw HostError(Exit::kUsage, fmt::format("{}: its reference is {}, not {}; align again with --reference {}", path,
                                              list.reference, images[0].file, images[0].file));
  }
  std::vector<FrameTransform> transforms(1);
  for (std::size_t i = 1; i < images.size(); ++i) {
    auto const found = std::find_if(list.frames.begin(), list.frames.end(),
                                    [&](AlignedFrame const& frame) { return IsSameFile(frame.file, images[i].file); });
    if (found == list.frames.end()) {
      throw HostError(Exit::kUsage,
                      fmt::format("{}: does not have {}; align it with the others", path, images[i].file));
    }
    transforms.push_back(IsSameFile(found->file, list.reference) ? FrameTransform{} : found->transform);
  }
  return transforms;
}

}  // namespace

void AddPlacementOptions(CLI::App& command, PlacementOptions& options) {
  CLI::Option* const align = command.add_flag("--align", options.align, "Align the images with the first one");
  CLI::Option* const file =
      command.add_option("--alignment", options.file, "Alignment file (.json) whose reference is the first image");
  file->excludes(align);
  command
      .add_option("--method", options.method,
                  "align: stars, by the triangles that they form, or match, by the least squared difference, shifts "
                  "alone (default: stars)")
      ->check(CLI::IsMember({"stars", "match"}))
      ->needs(align);
  command
      .add_option("--threshold", options.finder.threshold,
                  "align, stars: how far one stands above the sky, in units of its noise (default: 5)")
      ->check(NumberBetween(1.0, 1e6))
      ->needs(align);
  command
      .add_option("--start", options.start,
                  "align: shift x y in pixels that the search is centred on; stars then count only where the images "
                  "overlap, give or take half the range")
      ->expected(2)
      ->check(NumberBetween(-1e5, 1e5))
      ->needs(align);
  command.add_option("--range", options.matching.range, "align: full width of the search in pixels (default: 100)")
      ->check(CLI::Range(2, 4000))
      ->needs(align);
}

std::vector<FrameTransform> PlaceImages(PlacementOptions const& options, std::vector<PlacedImage> const& images,
                                        Environment& environment) {
  if (options.align) return Align(options, images, environment);
  if (!options.file.empty()) return LookUp(options.file, images);
  return std::vector<FrameTransform>(images.size());
}

nlohmann::ordered_json ToJson(FrameTransform const& t) {
  return {{"dx", t.dx}, {"dy", t.dy}, {"angle", t.angle}, {"centre", {t.cx, t.cy}}};
}

}  // namespace orb::host
