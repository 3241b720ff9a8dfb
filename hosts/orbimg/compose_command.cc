// orbimg compose: exposures through filters, or a luminance and a colour image, into one colour image.
#include <memory>

#include <fmt/format.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/composition.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/operator_options.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/preview.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kPrefix[] = "compose-";  // of the entries' names

struct ComposeOptions {
  CompositionJob job;
  std::string output;
  std::string preview;
  bool json = false;
  CommonOptions common;
};

void Print(ComposeOptions const& options, Composition const& result, CommandContext& context) {
  CompositionJob const& job = options.job;
  Json images = Json::array();
  for (std::size_t i = 0; i < job.files.size(); ++i) {
    std::string const& name = job.entry->frameNames[i];
    images.push_back(Json{{"name", name}, {"file", job.files[i]}, {"placement", ToJson(result.transforms[i])}});
    if (options.json || !job.placement.IsGiven()) continue;
    context.out << fmt::format("{}: {} {}\n", name, job.files[i], result.transforms[i].Text());
  }
  if (options.json) context.out << Json{{"file", options.output}, {"images", images}}.dump(2) << '\n';
}

void RunCompose(ComposeOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckImageFile(options.output, environment.existing);
  if (!options.preview.empty()) CheckPictureFile(options.preview, environment.existing);
  Composition result;
  Compose(options.job, environment, result);
  WriteImage(options.output, result.frame, environment);
  if (!options.preview.empty()) WritePreview(options.output, options.preview, environment.existing);
  Print(options, result, context);
}

// "Example: orbimg compose rgb --red red.fits --green green.fits --blue blue.fits -o colour.fits"
std::string ExampleOf(std::string const& name, OperatorEntry const& entry) {
  std::string text = "Example: orbimg compose " + name;
  for (std::string const& frame : entry.frameNames) text += fmt::format(" --{0} {0}.fits", frame);
  return text + " --align -o result.fits";
}

void AddComposition(CLI::App& compose, OperatorEntry const& entry, CommandContext& context) {
  auto options = std::make_shared<ComposeOptions>();
  CompositionJob& job = options->job;
  std::size_t const count = entry.frameNames.size();
  job.entry = &entry;
  job.files.resize(count);
  job.values = entry.Defaults();
  std::vector<double> defaults;
  for (Parameter const& parameter : entry.frameParameters) defaults.push_back(parameter.byDefault);
  job.frameValues.assign(count, defaults);
  CLI::App* command = compose.add_subcommand(entry.name.substr(sizeof kPrefix - 1), Capitalised(entry.title));
  command->footer(ExampleOf(command->get_name(), entry));
  for (std::size_t i = 0; i < count; ++i) {
    command->add_option("--" + entry.frameNames[i], job.files[i], fmt::format("Image file: {}", entry.frameNames[i]))
        ->required();
  }
  AddPlacementOptions(*command, job.placement);
  AddParameterOptions(*command, entry.parameters, job.values, {"planes"});  // all, for an image that is new
  command
      ->add_option("-o,--output", options->output,
                   "File to write (.fits, .tif or .png), of the size of the first image")
      ->required();
  command->add_option("--preview", options->preview, "Picture (.png, .bmp) to look at");
  command->add_flag("--json", options->json, "Print JSON: how the images lie");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = true, .usesBands = false});
  command->callback([options, &context] { context.run = [options, &context] { RunCompose(*options, context); }; });
}

}  // namespace

void AddComposeCommand(CLI::App& app, CommandContext& context) {
  CLI::App* command = app.add_subcommand("compose", "Make one colour image of several");
  command->require_subcommand(1);
  for (OperatorEntry const& entry : Catalogue()) {
    if (entry.name.starts_with(kPrefix)) AddComposition(*command, entry, context);
  }
}

}  // namespace orb::host
