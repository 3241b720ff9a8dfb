// orbimg align: how frames lie over a reference.
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/align_job.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/output_check.h>

namespace orb::host {
namespace {

struct AlignOptions {
  AlignJob job;
  std::string method = "stars";
  bool twoStars = false;
  std::vector<double> start{0.0, 0.0};
  std::string output;
  bool json = false;
  CommonOptions common;
};

std::string Format(AlignmentList const& list) {
  std::string text = fmt::format("{:>9} {:>9} {:>9} {:>6} {:>8}  {:<10} {}\n", "dx", "dy", "angle", "stars", "residual",
                                 "method", "file");
  for (AlignedFrame const& frame : list.frames) {
    FrameTransform const& t = frame.transform;
    text += fmt::format("{:9.3f} {:9.3f} {:9.4f} {:6} {:>8}  {:<10} {}\n", t.dx, t.dy, t.angle, frame.stars,
                        frame.residual.has_value() ? fmt::format("{:.3f}", *frame.residual) : "-", frame.method,
                        frame.file);
  }
  return text;
}

void RunAlign(AlignOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckOutputFile(options.output, environment.existing);
  AlignJob job = options.job;
  job.files = ExpandFiles(job.files, FileOrder::kNatural);
  job.byMatching = options.method == "match";
  job.matching.startX = options.start[0];
  job.matching.startY = options.start[1];
  job.stars.refine = !options.twoStars;
  AlignmentList const list = AlignFrames(job, environment);
  std::string const document = FormatAlignment(list, options.output);
  WriteTextFile(options.output, document, environment.existing);
  context.out << (options.json ? document : Format(list));
}

}  // namespace

void AddAlignCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<AlignOptions>();
  AlignJob& job = options->job;
  CLI::App* command = app.add_subcommand("align", "Find shift and rotation of frames to a reference");
  command->footer("Example: orbimg align calibrated/*.fits -o alignment.json");
  command->add_option("frames", job.files, "Frames: FITS, TIFF, PNG, BMP or camera raw")->required();
  command->add_option("--reference", job.reference, "The frame that the others are laid over (default: the first)");
  command
      ->add_option("--method", options->method,
                   "stars: by the triangles that they form; match: by the least squared difference, shifts alone "
                   "(default: stars)")
      ->check(CLI::IsMember({"stars", "match"}));
  command->add_option("--range", job.matching.range, "match: full width of the search in pixels (default: 100)")
      ->check(CLI::Range(2, 4000));
  command
      ->add_option("--start", options->start, "match: shift x y in pixels that the search is centred on (default: 0 0)")
      ->expected(2)
      ->check(NumberBetween(-1e5, 1e5));
  command
      ->add_option("--threshold", job.finder.threshold,
                   "stars: how far one stands above the sky, in units of its noise (default: 5)")
      ->check(NumberBetween(1.0, 1e6));
  command->add_flag("--two-stars", options->twoStars,
                    "stars: keep the fit over two stars, its angle rounded down to a tenth of a degree");
  command->add_option("-o,--output", options->output, "Alignment file (.json) to write")->required();
  command->add_flag("--json", options->json, "Print the alignment file instead of a table");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = true, .usesBands = true});
  command->callback([options, &context] { context.run = [options, &context] { RunAlign(*options, context); }; });
}

}  // namespace orb::host
