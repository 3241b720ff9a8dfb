// orbimg convert: the same image in another file format or sample type.
#include <memory>
#include <optional>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>

namespace orb::host {
namespace {

struct ConvertOptions {
  std::string input;
  std::string output;
  std::string bits;  // empty: as the input
  bool isSigned = false;
  bool planar = false;
  bool bigTiff = false;
  std::string compression = "none";
  std::string scale = "raw";
  CommonOptions common;
};

// The type that was asked for.
std::optional<SampleType> AskedType(ConvertOptions const& options) {
  bool const isSigned = options.isSigned;
  if (options.bits == "8") return isSigned ? SampleType::kInt8 : SampleType::kUint8;
  if (options.bits == "16") return isSigned ? SampleType::kInt16 : SampleType::kUint16;
  if (options.bits == "32") return isSigned ? SampleType::kInt32 : SampleType::kUint32;
  if (options.bits == "float") return SampleType::kFloat;
  return std::nullopt;
}

// That of the input where the format has it; nothing leaves the choice to the format.
std::optional<SampleType> SameType(FrameFacts const& facts, FileFormat format) {
  if (format == FileFormat::kBmp) return std::nullopt;
  if (format == FileFormat::kPng) {
    return facts.type == SampleType::kUint8 ? SampleType::kUint8 : SampleType::kUint16;
  }
  if (facts.isScaled || BytesOf(facts.type) > 4) return std::nullopt;
  return facts.type;
}

void CheckOptions(ConvertOptions const& options, FileFormat format) {
  if (options.isSigned && (options.bits.empty() || options.bits == "float")) {
    throw HostError(Exit::kUsage, "--signed: is for integers; give --bits 8, 16 or 32 with it");
  }
  if (format == FileFormat::kTiff) return;
  for (auto const& [name, isGiven] : {std::pair{"--planar", options.planar}, std::pair{"--bigtiff", options.bigTiff},
                                      std::pair{"--compress", options.compression != "none"}}) {
    if (!isGiven) continue;
    throw HostError(Exit::kUsage,
                    fmt::format("{}: is for TIFF, but {} becomes {}{}", name, options.output, NameOf(format),
                                format == FileFormat::kFits ? "; .fits.gz and .fits.fz are compressed" : ""));
  }
}

WriteSettings SettingsOf(ConvertOptions const& options, FrameFacts const& facts, FileFormat format) {
  WriteSettings settings;
  settings.type = AskedType(options);
  if (!settings.type) settings.type = SameType(facts, format);
  settings.mapsLevels = options.scale == "levels";
  settings.planar = options.planar;
  settings.bigTiff = options.bigTiff;
  if (options.compression == "lzw") settings.compression = Compression::kLzw;
  if (options.compression == "deflate") settings.compression = Compression::kDeflate;
  return settings;
}

void RunConvert(ConvertOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  FileFormat const format = FormatOf(options.output);
  CheckOptions(options, format);
  CheckImageFile(options.output, environment.existing);
  std::unique_ptr<FrameReader> const reader = OpenImage(options.input, environment);
  WriteSettings const settings = SettingsOf(options, reader->Facts(), format);
  SampleType const type = ChooseType(format, settings, reader->Bitpix(), options.output);
  Frame frame;
  ReadFrameFile(*reader, frame);
  if (frame.inexact != 0) {
    environment.Warn(fmt::format("{}: {} of its numbers are rounded to 32-bit floats", options.input, frame.inexact));
  }
  if (format == FileFormat::kFits || format == FileFormat::kTiff) {
    frame.header.AddHistory(fmt::format("orbimg convert: {} of {} to {}{}", reader->Description(),
                                        BareName(options.input), NameOf(type),
                                        settings.mapsLevels ? ", black to white over its range" : ""));
  }
  WriteImage(options.output, frame, environment, settings);
}

}  // namespace

void AddConvertCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* command = app.add_subcommand("convert", "Write an image in another file format or sample type");
  command->footer("Example: orbimg convert stack.fits -o stack.tif --bits 16");
  command->add_option("file", options->input, "Image: FITS, TIFF, PNG, BMP or camera raw")->required();
  command
      ->add_option("-o,--output", options->output,
                   "File to write: .fits .fit .fts (and .gz or .fz behind them), .tif .tiff, .png or .bmp")
      ->required();
  command
      ->add_option("--bits", options->bits,
                   "Integers of 8, 16 or 32 bits, or float (default: as the input, as far as the format has it)")
      ->check(CLI::IsMember({"8", "16", "32", "float"}));
  command->add_flag("--signed", options->isSigned, "Integers below 0 too; FITS and TIFF");
  command
      ->add_option("--scale", options->scale,
                   "raw: numbers stay as they are; levels: black to white become the range of the integers, or 0 to 1 "
                   "of floats (default: raw)")
      ->check(CLI::IsMember({"raw", "levels"}));
  command->add_flag("--planar", options->planar, "TIFF: plane after plane, not pixel after pixel");
  command->add_flag("--bigtiff", options->bigTiff, "TIFF: BigTIFF though the file stays below 4 GB");
  command
      ->add_option("--compress", options->compression, "TIFF: none, lzw or deflate, all without loss (default: none)")
      ->check(CLI::IsMember({"none", "lzw", "deflate"}));
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = false, .usesBands = false});
  command->callback([options, &context] { context.run = [options, &context] { RunConvert(*options, context); }; });
}

}  // namespace orb::host
