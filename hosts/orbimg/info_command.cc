// orbimg info: what a file holds.
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/image_summary.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr char const* kKeyCards[] = {"OBJECT",   "DATE-OBS", "EXPTIME",  "EXPTOTAL", "STACKCNT", "FILTER",
                                     "INSTRUME", "TELESCOP", "CCD-TEMP", "GAIN",     "EGAIN",    "XBINNING",
                                     "IMAGETYP", "ROWORDER", "CBLACK",   "CWHITE"};

struct InfoOptions {
  std::vector<std::string> files;
  bool json = false;
  bool mosaic = false;
};

struct FileInfo {
  std::string file;
  std::string type;
  Shape shape;
  std::vector<PlaneSummary> planes;
  std::vector<std::string> notes;
  std::vector<std::pair<std::string, std::string>> cards;
};

FileInfo Inspect(std::string const& file, ReadOptions const& reading) {
  Frame frame;
  std::unique_ptr<FrameReader> const reader = OpenFrame(file, reading);
  ReadFrameFile(*reader, frame);
  FileInfo info;
  info.file = file;
  info.type = reader->Description();
  info.notes = reader->Facts().notes;
  info.shape = Shape{frame.image.GetWidth(), frame.image.GetHeight(), frame.image.GetPlanes()};
  for (int p = 0; p < info.shape.planes; ++p) info.planes.push_back(SummarizePlane(frame.image, p));
  for (char const* keyword : kKeyCards) {
    if (auto const value = frame.header.Text(keyword)) info.cards.emplace_back(keyword, *value);
  }
  return info;
}

std::string Format(FileInfo const& info) {
  std::string text =
      fmt::format("{}\n  {:<10} {}\n  {:<10} {}\n", info.file, "shape", info.shape.Text(), "type", info.type);
  for (std::size_t p = 0; p < info.planes.size(); ++p) {
    PlaneSummary const& s = info.planes[p];
    text += fmt::format("  plane {}    levels {:.6g} to {:.6g}\n", p, s.black, s.white);
    text += fmt::format("             min {:.6g}  max {:.6g}  mean {:.6g}  deviation {:.6g}  median {:.6g}\n", s.min,
                        s.max, s.mean, s.deviation, s.median);
    text +=
        fmt::format("             sky {:.6g}  noise {:.6g}  not finite {}\n", s.sky.level, s.sky.noise, s.nonFinite);
  }
  for (std::string const& note : info.notes) text += fmt::format("  {:<10} {}\n", "note", note);
  for (auto const& [keyword, value] : info.cards) text += fmt::format("  {:<10} {}\n", keyword, value);
  return text;
}

Json ToJson(PlaneSummary const& s) {
  return Json{{"levels", {s.black, s.white}}, {"min", s.min},       {"max", s.max},       {"mean", s.mean},
              {"deviation", s.deviation},     {"median", s.median}, {"sky", s.sky.level}, {"noise", s.sky.noise},
              {"non_finite", s.nonFinite}};
}

Json ToJson(FileInfo const& info) {
  Json planes = Json::array();
  for (PlaneSummary const& plane : info.planes) planes.push_back(ToJson(plane));
  Json cards = Json::object();
  for (auto const& [keyword, value] : info.cards) cards[keyword] = value;
  return Json{{"file", info.file}, {"width", info.shape.width}, {"height", info.shape.height},
              {"type", info.type}, {"planes", planes},          {"notes", info.notes},
              {"cards", cards}};
}

void RunInfo(InfoOptions const& options, CommandContext& context) {
  Json all = Json::array();
  for (std::string const& file : ExpandFiles(options.files, FileOrder::kNatural)) {
    FileInfo const info = Inspect(file, {options.mosaic});
    if (options.json) {
      all.push_back(ToJson(info));
    } else {
      context.out << Format(info);
    }
  }
  if (options.json) context.out << all.dump(2) << '\n';
}

}  // namespace

void AddInfoCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = app.add_subcommand("info", "Shape, type, levels, statistics and key cards of files");
  command->footer("Example: orbimg info light_001.fits");
  command->add_option("files", options->files, "Frames: FITS, TIFF, PNG, BMP or camera raw")->required();
  command->add_flag("--json", options->json, "Print JSON");
  AddMosaicOption(*command, options->mosaic);
  command->callback([options, &context] { context.run = [options, &context] { RunInfo(*options, context); }; });
}

}  // namespace orb::host
