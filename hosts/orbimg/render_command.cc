// orbimg render: an image as a picture.
#include <memory>

#include <hosts/orbimg/command.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/preview.h>

namespace orb::host {
namespace {

struct RenderOptions {
  std::string input;
  std::string output;
  int bits = 24;
  bool view = false;
  CommonOptions common;
};

void RunRender(RenderOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckPictureFile(options.output, environment.existing);
  Frame frame;
  ReadImage(options.input, frame, environment);
  if (options.view) SetViewLevels(frame.image);
  WriteRendering(options.output, frame.image, options.bits, environment.existing);
}

}  // namespace

void AddRenderCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<RenderOptions>();
  CLI::App* command = app.add_subcommand("render", "Render an image through its levels to PNG or BMP");
  command->footer("Example: orbimg render levelled.fits -o picture.png");
  command->add_option("file", options->input, "Image: FITS, TIFF, PNG, BMP or camera raw")->required();
  command->add_option("-o,--output", options->output, "Picture, .png or .bmp")->required();
  command->add_option("--bits", options->bits, "24, or 8 with a palette (default: 24)")->check(CLI::IsMember({24, 8}));
  command->add_flag("--view", options->view,
                    "From a little below the sky to 20 times its noise, not the file's levels");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = false, .usesBands = false});
  command->callback([options, &context] { context.run = [options, &context] { RunRender(*options, context); }; });
}

}  // namespace orb::host
