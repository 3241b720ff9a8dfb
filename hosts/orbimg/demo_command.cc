// orbimg demo: the whole road on a simulated night, each step the command that a user would type.
#include <chrono>
#include <filesystem>
#include <memory>
#include <sstream>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/demo_report.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/output_check.h>

namespace orb::host {
namespace {

constexpr int kFrames = 12;
constexpr int kTrailLight = 6;  // counted from 1

struct DemoOptions {
  std::string folder;
  std::uint64_t seed = 1;
  bool json = false;
  CommonOptions common;
};

class Demo {
 public:
  Demo(DemoOptions const& initOptions, CommandContext& initContext) : options(initOptions), context(initContext) {}

  void Run() {
    MakeOutputFolder(options.folder);
    NameFiles();
    Simulate();
    Calibrate();
    Align();
    Stack();
    LevelAndRender();
    MeasureDemo(files, report);
    context.out << (options.json ? FormatReportJson(report) : FormatReport(report));
    if (!options.json)
      context.out << fmt::format("Pictures: {}; raw.png, calibrated.png and rejection.png beside it\n",
                                 In("stack.png"));
    WriteTextFile(In("report.json"), FormatReportJson(report),
                  options.common.force ? Existing::kReplace : Existing::kKeep);
  }

 private:
  std::string In(std::string const& name) const { return (std::filesystem::path(options.folder) / name).string(); }

  void NameFiles() {
    files.truth = In("raw/truth.json");
    for (int i = 1; i <= kFrames; ++i) {
      files.raw.push_back(In(fmt::format("raw/light_{:03}.fits", i)));
      files.calibrated.push_back(In(fmt::format("calibrated/light_{:03}.fits", i)));
    }
    files.alignment = In("alignment.json");
    files.median = In("median.fits");
    files.rejection = In("rejection.fits");
  }

  void Simulate() {
    Step("simulate", {"simulate", "-o", In("raw"), "--frames", std::to_string(kFrames), "--trail",
                      std::to_string(kTrailLight), "--seed", std::to_string(options.seed)});
  }

  void Calibrate() {
    Step("calibrate", {"calibrate", In("raw/light_*.fits"), "--dark", In("raw/dark_*.fits"), "--flat",
                       In("raw/flat_*.fits"), "--flat-dark", In("raw/flatdark_*.fits"), "-o", In("calibrated")});
  }

  void Align() {
    Step("align", {"align", In("calibrated/light_*.fits"), "-o", files.alignment});
    Step("align two", {"align", files.calibrated.front(), files.calibrated[kTrailLight - 1], "-o", In("pair.json")});
  }

  void Stack() {
    Step("stack median", {"stack", files.alignment, "--mode", "median", "--equal-sky", "-o", files.median});
    Step("stack rejection", {"stack", In("pair.json"), "--mode", "rejection", "--radius", "1", "-o", files.rejection});
  }

  void LevelAndRender() {
    Step("level", {"level", files.median, "--median", "1", "3", "-o", In("levelled.fits")});
    RenderStack();
    Step("render raw", {"render", "--view", files.raw.front(), "-o", In("raw.png")});
    Step("render one", {"render", "--view", files.calibrated[kTrailLight - 1], "-o", In("calibrated.png")});
    Step("render rejection", {"render", "--view", files.rejection, "-o", In("rejection.png")});
  }

  // With a caption where there are letters for it.
  void RenderStack() {
    report.hasCaption = !FindFontFamily("").empty();
    if (!report.hasCaption) {
      Step("render", {"render", In("levelled.fits"), "-o", In("stack.png")});
      return;
    }
    Step("annotate", {"annotate", In("levelled.fits"), "--text", "16", "12",
                      fmt::format("Simulated field, median of {} frames", kFrames), "--text", "16", "44",
                      fmt::format("シミュレーションの星野 {}枚のメディアン合成", kFrames), "-o", In("stack.png")});
  }

  void Step(std::string const& name, std::vector<std::string> arguments) {
    for (std::string const& option : CommonArguments(arguments.front())) arguments.push_back(option);
    if (!options.json) context.out << "orbimg " << fmt::format("{}", fmt::join(arguments, " ")) << '\n' << std::flush;
    std::ostringstream table;
    auto const start = std::chrono::steady_clock::now();
    Exit const status = RunCommand(arguments, table, context.err);
    std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start;
    if (status != Exit::kDone) throw HostError(status, fmt::format("demo: the step {} failed", name));
    report.seconds.emplace_back(name, time.count());
  }

  std::vector<std::string> CommonArguments(std::string const& command) const {
    std::vector<std::string> arguments;
    if (options.common.quiet) arguments.emplace_back("-q");
    if (options.common.force) arguments.emplace_back("--force");
    if (command != "level" && command != "render" && command != "annotate") {
      arguments.insert(arguments.end(), {"--threads", std::to_string(options.common.threads)});
    }
    return arguments;
  }

  DemoOptions const& options;
  CommandContext& context;
  DemoFiles files;
  DemoReport report;
};

}  // namespace

void AddDemoCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<DemoOptions>();
  CLI::App* command = app.add_subcommand("demo", "The whole road on simulated frames, with a report");
  command->footer("Example: orbimg demo -o demo");
  command->add_option("-o,--output", options->folder, "Folder for the frames, the stacks and the pictures")->required();
  command->add_option("--seed", options->seed, "The same seed gives the same frames (default: 1)");
  command->add_flag("--json", options->json, "Print the report as JSON");
  AddCommonOptions(*command, options->common,
                   {.writes = true, .runsParallel = true, .usesBands = false, .readsFrames = false});
  command->callback([options, &context] { context.run = [options, &context] { Demo(*options, context).Run(); }; });
}

}  // namespace orb::host
