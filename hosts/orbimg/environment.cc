#include <hosts/orbimg/environment.h>

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <iostream>
#include <limits>
#include <thread>

#include <fmt/format.h>
#include <hosts/orbimg/logged_stream.h>

namespace orb::host {
namespace {

constexpr int kMostThreads = 256;
constexpr std::int64_t kDefaultMemory = std::int64_t{1} << 30;

std::string CheckBytes(std::string const& text) {
  return ParseBytes(text) > 0 ? std::string() : text + " is no amount of memory; write for example 512M or 2G";
}

ProgressDisplay::Style StyleFor(std::ostream const& err, bool quiet) {
  if (quiet) return ProgressDisplay::Style::kNone;
  auto const* const logged = dynamic_cast<LoggedStream const*>(&err);
  std::ostream const& target = logged != nullptr ? logged->Target() : err;
  bool const terminal = &target == &std::cerr && ::isatty(STDERR_FILENO) != 0;
  return terminal ? ProgressDisplay::Style::kBar : ProgressDisplay::Style::kLines;
}

}  // namespace

void AddMosaicOption(CLI::App& command, bool& mosaic) {
  command.add_flag("--mosaic", mosaic, "Camera raw: the mosaic of the sensor as one plane, not debayered");
}

void AddCommonOptions(CLI::App& command, CommonOptions& options, CommonNeeds const& needs) {
  command.add_flag("-q,--quiet", options.quiet, "No progress on standard error");
  if (needs.writes) command.add_flag("-f,--force", options.force, "Replace files that exist");
  if (needs.readsFrames) AddMosaicOption(command, options.mosaic);
  options.threads = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1u, unsigned{kMostThreads}));
  if (needs.runsParallel) {
    command.add_option("--threads", options.threads, "Threads to work with (default: all cores)")
        ->check(CLI::Range(1, kMostThreads));
  }
  options.memory = kDefaultMemory;
  if (needs.usesBands) {
    command
        .add_option_function<std::string>(
            "--memory", [&options](std::string const& text) { options.memory = ParseBytes(text); },
            "Most memory for samples, for example 512M or 2G (default: 1G)")
        ->check(CLI::Validator(CheckBytes, "SIZE"));
  }
}

CLI::Validator NumberBetween(double low, double high) {
  std::string const range = fmt::format("[{:g} - {:g}]", low, high);
  return CLI::Validator(
      [low, high, range](std::string const& text) {
        double number = 0.0;
        bool const fits = CLI::detail::lexical_cast(text, number) && low <= number && number <= high;
        return fits ? std::string() : fmt::format("Value {} not in range {}", text, range);
      },
      range);
}

std::int64_t ParseBytes(std::string const& text) {
  double number = 0.0;
  char const* const end = text.data() + text.size();
  auto const [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || !std::isfinite(number) || number <= 0.0) return 0;
  std::string unit(rest, end);
  std::transform(unit.begin(), unit.end(), unit.begin(), [](unsigned char c) { return std::toupper(c); });
  if (unit.ends_with("IB")) unit.resize(unit.size() - 2);
  if (unit.ends_with('B')) unit.resize(unit.size() - 1);
  std::string const units = "KMGT";
  double factor = 1.0;
  if (!unit.empty()) {
    std::size_t const power = unit.size() == 1 ? units.find(unit[0]) : std::string::npos;
    if (power == std::string::npos) return 0;
    factor = std::ldexp(1.0, 10 * (static_cast<int>(power) + 1));
  }
  double const bytes = number * factor;
  return bytes < static_cast<double>(std::numeric_limits<std::int64_t>::max()) ? static_cast<std::int64_t>(bytes) : 0;
}

std::string FormatBytes(std::int64_t bytes) {
  auto const size = static_cast<double>(bytes);
  if (size >= std::ldexp(1.0, 30)) return fmt::format("{:.1f} GiB", std::ldexp(size, -30));
  if (size >= std::ldexp(1.0, 20)) return fmt::format("{:.0f} MiB", std::ceil(std::ldexp(size, -20)));
  return fmt::format("{:.0f} KiB", std::ceil(std::ldexp(size, -10)));
}

Environment::Environment(std::ostream& initOut, std::ostream& err, CommonOptions const& options)
    : out(initOut),
      progress(err, StyleFor(err, options.quiet)),
      threads(options.threads),
      memory(options.memory),
      existing(options.force ? Existing::kReplace : Existing::kKeep),
      reading{options.mosaic} {}

}  // namespace orb::host
