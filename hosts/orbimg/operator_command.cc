// The operators of the catalogue by their names: orbimg apply, orbimg filter ...
#include <algorithm>
#include <memory>

#include <fmt/format.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/operator_example.h>
#include <hosts/orbimg/operator_job.h>
#include <hosts/orbimg/operator_options.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/preview.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

struct Group {
  char const* name;
  char const* help;
};

constexpr Group kGroups[] = {
    {"apply", "Change the tone or the colours of an image"},
    {"filter", "Blur, sharpen or clean an image"},
    {"transform", "Move the samples of an image or change its size"},
    {"sky", "Work on the sky of an image"},
};

struct OperatorOptions {
  OperatorJob job;
  std::string output;
  std::string preview;
  bool json = false;
  CommonOptions common;
};

Json ValueOf(Parameter const& parameter, double value) {
  switch (parameter.kind) {
    case Parameter::Kind::kFlag:
      return value != 0.0;
    case Parameter::Kind::kChoice:
      return parameter.choices[static_cast<std::size_t>(value)];
    case Parameter::Kind::kInteger:
      return static_cast<std::int64_t>(value);
    default:
      return value;
  }
}

Json Describe(OperatorOptions const& options, OperatorOutcome const& outcome) {
  OperatorEntry const& entry = *options.job.entry;
  Json parameters = Json::object();
  for (std::size_t i = 0; i < entry.parameters.size(); ++i) {
    parameters[entry.parameters[i].name] = ValueOf(entry.parameters[i], outcome.values[i]);
  }
  Json results = Json::object();
  for (std::size_t i = 0; i < outcome.results.size(); ++i) results[entry.results[i].name] = outcome.results[i];
  Json levels = Json::array();
  COrbImage const& image = outcome.frame.image;
  for (int p = 0; p < image.GetPlanes(); ++p) {
    levels.push_back(Json{{"black", image.GetLevelMin(p)}, {"white", image.GetLevelMax(p)}});
  }
  return Json{{"file", options.output},
              {"operator", entry.name},
              {"parameters", parameters},
              {"results", results},
              {"levels", levels}};
}

void Print(OperatorOptions const& options, OperatorOutcome const& outcome, CommandContext& context) {
  if (options.json) {
    context.out << Describe(options, outcome).dump(2) << '\n';
    return;
  }
  OperatorEntry const& entry = *options.job.entry;
  for (std::size_t i = 0; i < outcome.results.size(); ++i) {
    Result const& result = entry.results[i];
    context.out << fmt::format("{} {:.9g}{}{}\n", result.name, outcome.results[i], result.unit.empty() ? "" : " ",
                               result.unit);
  }
}

void RunOperatorCommand(OperatorOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckImageFile(options.output, environment.existing);
  if (!options.preview.empty()) CheckPictureFile(options.preview, environment.existing);
  OperatorOutcome outcome;
  RunOperator(options.job, environment, outcome);
  WriteImage(options.output, outcome.frame, environment);
  if (!options.preview.empty()) WriteRendering(options.preview, outcome.frame.image, 24, environment.existing);
  Print(options, outcome, context);
}

void AddOperator(CLI::App& group, OperatorEntry const& entry, CommandContext& context) {
  auto options = std::make_shared<OperatorOptions>();
  OperatorJob& job = options->job;
  job.entry = &entry;
  job.values = StartingValues(entry);
  CLI::App* command = group.add_subcommand(entry.name, Capitalised(entry.title));
  command->footer(ExampleOf(group.get_name(), entry));
  command->add_option("file", job.input, "Image: FITS, TIFF, PNG, BMP or camera raw")->required();
  if (TakesSourceFile(entry)) {
    command->add_option(OptionName(entry.sourceName), job.source, "Image file: the " + entry.sourceName)->required();
  }
  if (entry.needsSecond) {
    command->add_option("--second", job.second, "Image file: the second image")->required();
  }
  AddParameterOptions(*command, entry.parameters, job.values);
  if (!entry.tables.empty()) AddCurveOptions(*command, entry, job.curves);
  if (entry.takesRectangle) {
    command->add_option("--rect", job.rect, "Change only what lies within left top right bottom")->expected(4);
  }
  command->add_option("-o,--output", options->output, "File to write: .fits, .tif or .png")->required();
  command->add_option("--preview", options->preview, "Picture (.png, .bmp) of the result through its levels");
  command->add_flag("--json", options->json, "Print JSON");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = true, .usesBands = false});
  command->callback(
      [options, &context] { context.run = [options, &context] { RunOperatorCommand(*options, context); }; });
}

}  // namespace

void AddOperatorCommands(CLI::App& app, CommandContext& context) {
  for (Group const& group : kGroups) {
    std::vector<OperatorEntry const*> const entries = OperatorsOf(group.name);
    if (entries.empty()) continue;
    CLI::App* command = app.add_subcommand(group.name, group.help);
    command->require_subcommand(1);
    for (OperatorEntry const* entry : entries) AddOperator(*command, *entry, context);
  }
}

}  // namespace orb::host
