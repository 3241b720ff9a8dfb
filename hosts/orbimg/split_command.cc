// orbimg split: a colour image into mono ones, a file for each channel.
#include <algorithm>
#include <filesystem>
#include <memory>

#include <fmt/format.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/operator_job.h>
#include <hosts/orbimg/output_check.h>

namespace orb::host {
namespace {

struct SplitOptions {
  std::string input;
  std::vector<std::string> channels{"red", "green", "blue"};
  bool sum = false;
  std::string folder;
  CommonOptions common;
};

std::vector<std::string> const& ChannelNames() { return FindOperator("separate")->parameters[0].choices; }

std::string PathOf(SplitOptions const& options, std::string const& channel) {
  std::filesystem::path const folder = options.folder;
  return (folder / (StemOf(options.input) + "_" + channel + ".fits")).string();
}

void WriteChannel(SplitOptions const& options, std::string const& channel, Frame& source, Environment& environment) {
  OperatorEntry const& entry = *FindOperator(options.sum ? "separate-sum" : "separate");
  std::vector<std::string> const& names = ChannelNames();
  Frame result;
  COrbImage plane(-32, source.image.GetWidth(), source.image.GetHeight(), 1, 1.0, 0.0, 1, nullptr, nullptr);
  result.image.Swap(&plane);
  result.header = source.header;
  Invocation call;
  call.image = &result.image;
  call.source = &source.image;
  call.values = {static_cast<double>(std::find(names.begin(), names.end(), channel) - names.begin())};
  call.progress = 1;
  RunChecked(entry, call, options.input, environment);
  for (char const* level : {"CBLACK2", "CWHITE2", "CBLACK3", "CWHITE3"}) result.header.Remove(level);
  result.header.AddHistory(fmt::format("orbimg split: {}, {} of {}", entry.name, channel, BareName(options.input)));
  WriteFits(PathOf(options, channel), result, environment.existing);
}

void RunSplit(SplitOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  Frame source;
  ReadForWork(options.input, source, environment);
  if (source.image.IsColor() == 0) {
    throw HostError(Exit::kUsage, fmt::format("{}: has one plane; give a colour image", options.input));
  }
  MakeOutputFolder(options.folder);
  for (std::string const& channel : options.channels) CheckOutputFile(PathOf(options, channel), environment.existing);
  Shape const shape{source.image.GetWidth(), source.image.GetHeight(), 1};
  CheckFreeSpace(options.folder, BytesOf(shape) * static_cast<std::int64_t>(options.channels.size()));
  for (std::string const& channel : options.channels) WriteChannel(options, channel, source, environment);
}

}  // namespace

void AddSplitCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<SplitOptions>();
  CLI::App* command = app.add_subcommand("split", "Take a colour image apart into channels");
  command->footer("Example: orbimg split colour.fits --channels red green blue -o channels");
  command->add_option("file", options->input, "Image file of three planes")->required();
  command
      ->add_option("--channels", options->channels,
                   "Which ones: red, green, blue, cyan, magenta, yellow (default: red green blue)")
      ->check(CLI::IsMember(ChannelNames()));
  command->add_flag("--sum", options->sum, "Cyan, magenta, yellow: the sum of two planes, not their mean");
  command->add_option("-o,--output", options->folder, "Folder for the files, which are named after file and channel")
      ->required();
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = false, .usesBands = false});
  command->callback([options, &context] { context.run = [options, &context] { RunSplit(*options, context); }; });
}

}  // namespace orb::host
