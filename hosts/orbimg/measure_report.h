// What the parts of orbimg measure share: their options, and a report of each file.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <hosts/orbimg/command.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <nlohmann/json.hpp>

namespace orb::host {

using Json = nlohmann::ordered_json;

// One file's part of a report.
struct Report {
  std::string text;
  Json json;
};

struct MeasureOptions {
  std::vector<std::string> files;
  bool json = false;
  bool mosaic = false;  // of camera raw: the sensor, not colours
};

void AddMeasureOptions(CLI::App& command, MeasureOptions& options);

// JSON has no not-a-number: null.
Json FiniteOrNull(double v);

// measure(file, image) makes the report of each file.
template <typename Measure>
void ReportFiles(MeasureOptions const& options, CommandContext& context, Measure measure) {
  Json all = Json::array();
  for (std::string const& file : ExpandFiles(options.files, FileOrder::kNatural)) {
    Frame frame;
    ReadFrameFile(file, frame, {options.mosaic});
    Report report = measure(file, frame.image);
    if (options.json) {
      all.push_back(std::move(report.json));
    } else {
      context.out << report.text;
    }
  }
  if (options.json) context.out << all.dump(2) << '\n';
}

void AddMeasureStars(CLI::App& group, CommandContext& context);
void AddMeasureAperture(CLI::App& group, CommandContext& context);
void AddMeasureRegion(CLI::App& group, CommandContext& context);
void AddMeasureSky(CLI::App& group, CommandContext& context);

}  // namespace orb::host
