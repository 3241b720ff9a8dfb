// orbimg annotate: lines, texts and star labels into an image.
#include <charconv>
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/annotation.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/preview.h>
#include <hosts/orbimg/star_table.h>

namespace orb::host {
namespace {

constexpr int kLargestLetters = 2000;  // pixels

struct AnnotateOptions {
  std::string input;
  std::string output;
  std::vector<std::string> lines;  // four each
  std::vector<std::string> texts;  // three each
  std::string stars;
  int maxStars = 20;
  std::string label = "number";
  std::string font;
  int size = 24;
  bool bold = false;
  bool italic = false;
  bool plain = false;
  std::string color = "#ffffff";
  bool rgb = false;
  bool view = false;
  CommonOptions common;
};

struct Line {
  CPoint from;
  CPoint to;
};

struct Text {
  CPoint pt;
  std::string text;
};

int ParsePixel(std::string const& option, std::string const& text, std::string const& wanted) {
  int number = 0;
  char const* const end = text.data() + text.size();
  auto const [rest, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && rest == end) return number;
  throw HostError(Exit::kUsage, fmt::format("{}: {} is no whole number of pixels; give {}", option, text, wanted));
}

std::vector<Line> ParseLines(std::vector<std::string> const& values) {
  std::vector<Line> lines;
  auto const pixel = [&](std::size_t i) { return ParsePixel("--line", values[i], "X1 Y1 X2 Y2"); };
  for (std::size_t i = 0; i + 3 < values.size(); i += 4) {
    lines.push_back(Line{CPoint(pixel(i), pixel(i + 1)), CPoint(pixel(i + 2), pixel(i + 3))});
  }
  return lines;
}

std::vector<Text> ParseTexts(std::vector<std::string> const& values) {
  std::vector<Text> texts;
  auto const pixel = [&](std::size_t i) { return ParsePixel("--text", values[i], "X Y TEXT"); };
  for (std::size_t i = 0; i + 2 < values.size(); i += 3) {
    texts.push_back(Text{CPoint(pixel(i), pixel(i + 1)), values[i + 2]});
    if (texts.back().text.empty()) throw HostError(Exit::kUsage, "--text: an empty text; give X Y TEXT");
  }
  return texts;
}

TextStyle StyleOf(AnnotateOptions const& options) {
  TextStyle style;
  style.font.lfHeight = -options.size;
  style.font.lfWeight = options.bold ? 700 : 400;
  style.font.lfItalic = options.italic;
  style.font.lfFaceName = options.font;
  style.color = ParseColor("--color", options.color);
  style.isSmooth = !options.plain;
  return style;
}

std::string LabelOf(std::string const& kind, std::size_t index, Star const& star) {
  if (kind == "number") return std::to_string(index + 1);
  if (kind == "peak") return fmt::format("{:.0f}", star.peak);
  if (kind == "flux") return fmt::format("{:.0f}", star.flux);
  if (kind == "position") return fmt::format("{:.1f} {:.1f}", star.x, star.y);
  return {};
}

bool IsPicture(std::string const& path) { return EndingOf(path) == ".png" || EndingOf(path) == ".bmp"; }

class Annotation {
 public:
  Annotation(AnnotateOptions const& initOptions, CommandContext& context)
      : options(initOptions), environment(context.out, context.err, options.common), style(StyleOf(options)) {}

  void Run() {
    Check();
    Frame frame;
    ReadImage(options.input, frame, environment);
    if (options.view) SetViewLevels(frame.image);
    if (options.rgb && frame.image.IsColor() == 0 && frame.image.ToColor() == 0) throw std::bad_alloc();
    DrawLines(frame.image);
    DrawStars(frame.image);
    DrawTexts(frame.image);
    Write(frame);
  }

 private:
  // Everything that can be said before an image is read.
  void Check() {
    if (lines.empty() && texts.empty() && options.stars.empty()) {
      throw HostError(Exit::kUsage, "annotate: nothing to draw; give --line, --text or --stars");
    }
    if (IsPicture(options.output)) {
      CheckPictureFile(options.output, environment.existing);
    } else {
      CheckImageFile(options.output, environment.existing);
    }
    bool const hasLabels = !options.stars.empty() && options.label != "none";
    if (!texts.empty() || hasLabels) RequireFont(style.font);
    if (!options.stars.empty()) stars = ReadStarTable(options.stars, options.input);
    if (stars.size() > static_cast<std::size_t>(options.maxStars))
      stars.resize(static_cast<std::size_t>(options.maxStars));
  }

  void DrawLines(COrbImage& image) {
    for (Line const& line : lines) {
      if (AnnotateLine(image, line.from, line.to, style.color).isSeen) continue;
      environment.Warn(fmt::format("--line {} {} {} {}: lies off the image of {} x {}", line.from.x, line.from.y,
                                   line.to.x, line.to.y, image.GetWidth(), image.GetHeight()));
    }
  }

  void DrawStars(COrbImage& image) {
    std::size_t off = 0;
    for (std::size_t i = 0; i < stars.size(); ++i) {
      Position const position{stars[i].x, stars[i].y};
      if (!AnnotateStar(image, position, LabelOf(options.label, i, stars[i]), style).isSeen) ++off;
    }
    if (off == 0) return;
    environment.Warn(fmt::format("{}: {} of {} stars lie off the image of {} x {}", options.stars, off, stars.size(),
                                 image.GetWidth(), image.GetHeight()));
  }

  void DrawTexts(COrbImage& image) {
    for (Text const& text : texts) {
      Drawn const drawn = AnnotateText(image, text.pt, text.text, style);
      if (drawn.missing != 0) {
        environment.Warn(
            fmt::format("--text {}: no installed font has {} of its characters", text.text, drawn.missing));
      }
      if (drawn.isSeen) continue;
      environment.Warn(
          fmt::format("--text {}: lies off the image of {} x {}", text.text, image.GetWidth(), image.GetHeight()));
    }
  }

  void Write(Frame& frame) {
    if (IsPicture(options.output)) {
      WriteRendering(options.output, frame.image, 24, environment.existing);
      return;
    }
    frame.header.AddHistory(fmt::format("orbimg annotate: CImgDrawLine, CImgDrawText, {} lines, {} stars, {} texts",
                                        lines.size(), stars.size(), texts.size()));
    WriteImage(options.output, frame, environment);
  }

  AnnotateOptions const& options;
  Environment environment;
  TextStyle style;
  std::vector<Line> lines = ParseLines(options.lines);
  std::vector<Text> texts = ParseTexts(options.texts);
  std::vector<Star> stars;
};

// An option that takes `count` values, and may be given again.
void AddRepeated(CLI::App& command, std::string const& name, std::vector<std::string>& values, int count,
                 std::string const& form, std::string const& help) {
  command.add_option(name, values, help)
      ->type_size(count)
      ->type_name(form)
      ->expected(1, CLI::detail::expected_max_vector_size)
      ->allow_extra_args(false);
}

void AddLetterOptions(CLI::App& command, AnnotateOptions& options) {
  command.add_option("--font", options.font, "Family, for example \"DejaVu Sans\" (default: the system's)");
  command.add_option("--size", options.size, "Height of the letters, pixels (default: 24)")
      ->check(CLI::Range(1, kLargestLetters));
  command.add_flag("--bold", options.bold, "Bold letters");
  command.add_flag("--italic", options.italic, "Slanted letters");
  command.add_flag("--plain", options.plain, "Letters without smoothed edges");
  command.add_option("--color", options.color,
                     "Of everything drawn, #RRGGBB; a mono image takes its gray (default: #ffffff)");
}

}  // namespace

void AddAnnotateCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<AnnotateOptions>();
  CLI::App* command = app.add_subcommand("annotate", "Draw lines, texts and star labels into an image");
  command->footer("Example: orbimg annotate stack.fits --text 16 16 \"M 51\" -o labelled.png");
  command->add_option("file", options->input, "Image: FITS, TIFF, PNG, BMP or camera raw")->required();
  command->add_option("-o,--output", options->output, ".fits or .tif, or a picture (.png, .bmp) through the levels")
      ->required();
  AddRepeated(*command, "--line", options->lines, 4, "X1 Y1 X2 Y2", "From pixel to pixel, row 0 on top; repeatable");
  AddRepeated(*command, "--text", options->texts, 3, "X Y TEXT", "With its upper left corner at X Y; repeatable");
  command->add_option("--stars", options->stars, "Mark the stars of a table by orbimg stars --json");
  command->add_option("--max", options->maxStars, "Only the first so many of the table (default: 20)")
      ->check(CLI::Range(1, 1000000));
  command->add_option("--label", options->label, "What stands beside a star (default: number)")
      ->check(CLI::IsMember({"number", "peak", "flux", "position", "none"}));
  AddLetterOptions(*command, *options);
  command->add_flag("--rgb", options->rgb, "Make three planes of a mono image, so that the colour shows");
  command->add_flag("--view", options->view,
                    "Levels from a little below the sky to 20 times its noise, not the file's");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = false, .usesBands = false});
  command->callback(
      [options, &context] { context.run = [options, &context] { Annotation(*options, context).Run(); }; });
}

}  // namespace orb::host
