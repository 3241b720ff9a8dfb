#include <hosts/orbimg/curve_options.h>

#include <algorithm>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/curve_file.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/file_list.h>

namespace orb::host {
namespace {

constexpr char const* kPlanes[] = {"red", "green", "blue"};

std::vector<std::string> PresetNames() {
  std::vector<std::string> names;
  for (CurvePreset const& preset : CurvePresets()) names.emplace_back(preset.name);
  return names;
}

std::string PresetHelp() {
  std::string help = "A curve by its name, x and y from 0, black, to 1, white:";
  for (CurvePreset const& preset : CurvePresets()) {
    help += fmt::format("\n  {}: {}", preset.name, preset.help);
    if (preset.TakesAmount()) {
      help += fmt::format("; amount {:g} to {:g} (default: {:g})", preset.least, preset.most, preset.byDefault);
    }
  }
  return help;
}

double AmountOf(CurvePreset const& preset, std::optional<double> const& amount) {
  if (!amount) return preset.byDefault;
  if (!preset.TakesAmount()) {
    throw HostError(Exit::kUsage, fmt::format("--amount: {} takes none; leave it out", preset.name));
  }
  if (*amount >= preset.least && *amount <= preset.most) return *amount;
  throw HostError(Exit::kUsage, fmt::format("--amount: is {}; for {} it must be a number from {:g} to {:g}", *amount,
                                            preset.name, preset.least, preset.most));
}

double StraightLine(double x) { return x; }

void ReadMaster(CurveOptions const& options, CurveSet& set) {
  set.master = StraightLine;
  if (!options.file.empty()) {
    set.master = CurveThrough(ReadCurvePoints(options.file));
    set.text = "points of " + BareName(options.file);
  } else if (!options.preset.empty()) {
    CurvePreset const& preset = FindCurvePreset(options.preset);
    double const amount = AmountOf(preset, options.amount);
    set.master = [&preset, amount](double x) { return preset.at(x, amount); };
    set.text = preset.TakesAmount() ? fmt::format("{} {}", preset.name, amount) : std::string(preset.name);
  }
}

}  // namespace

void AddCurveOptions(CLI::App& command, OperatorEntry const& entry, CurveOptions& options) {
  CLI::Option* const file =
      command.add_option("--curve", options.file,
                         "File with points x y of the curve, from 0, black, to 1, white, a point a line or as JSON; "
                         "monotone pieces join them");
  CLI::Option* const preset = command.add_option("--preset", options.preset, PresetHelp());
  preset->check(CLI::IsMember(PresetNames()))->type_name("NAME")->excludes(file);
  command.add_option("--amount", options.amount, "What shapes the preset")
      ->check(NumberBetween(-1e30, 1e30))
      ->needs(preset);
  for (std::size_t p = 0; p < 3; ++p) {
    command.add_option(fmt::format("--curve-{}", kPlanes[p]), options.planeFiles[p],
                       fmt::format("File with points of a curve for {} alone, which comes first", kPlanes[p]));
  }
  Table const& master = entry.tables.front();
  command
      .add_option("--samples", options.samples,
                  "Entries of the table that the curve becomes. Samples take the entry below them, so that the result "
                  "is a staircase of as many steps (default: 65536)")
      ->check(CLI::Range(master.leastEntries, master.mostEntries));
}

std::vector<std::vector<float>> CurveSet::TablesFor(int imagePlanes) const {
  std::vector<std::vector<float>> tables{SampleCurve(master, samples)};
  for (int p = 0; imagePlanes > 1 && p < imagePlanes; ++p) {
    tables.push_back(SampleCurve(planes[static_cast<std::size_t>(p)], samples));
  }
  return tables;
}

CurveSet ReadCurves(CurveOptions const& options) {
  CurveSet set;
  set.samples = options.samples;
  ReadMaster(options, set);
  for (std::size_t p = 0; p < 3; ++p) {
    set.planes[p] = StraightLine;
    if (options.planeFiles[p].empty()) continue;
    set.planes[p] = CurveThrough(ReadCurvePoints(options.planeFiles[p]));
    set.hasPlanes = true;
    set.text += fmt::format("{}{} {}", set.text.empty() ? "" : ", ", kPlanes[p], BareName(options.planeFiles[p]));
  }
  if (set.text.empty()) {
    throw HostError(Exit::kUsage, "curve: there is no curve; give --preset, --curve, or --curve-red and the like");
  }
  set.text += fmt::format(", {} samples", set.samples);
  return set;
}

}  // namespace orb::host
