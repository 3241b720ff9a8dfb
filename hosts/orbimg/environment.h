// What every subcommand works with: where it writes, how it shows progress, and the options they all have.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include <hosts/io/atomic_file.h>
#include <hosts/io/frame_reader.h>
#include <hosts/orbimg/progress_display.h>
#include <CLI/CLI.hpp>

namespace orb::host {

// The options as they stand on the command line.
struct CommonOptions {
  bool quiet = false;
  bool force = false;
  int threads = 1;
  std::int64_t memory = 0;  // bytes
  bool mosaic = false;
};

// Adds -q, --threads, and --memory where `usesBands`, --force where `writes`, and --mosaic where `readsFrames`.
struct CommonNeeds {
  bool writes = false;
  bool runsParallel = false;
  bool usesBands = false;
  bool readsFrames = true;
};
void AddMosaicOption(CLI::App& command, bool& mosaic);
void AddCommonOptions(CLI::App& command, CommonOptions& options, CommonNeeds const& needs);

// Finite numbers from `low` to `high`.
CLI::Validator NumberBetween(double low, double high);

// "512M", "2G", "100k" or plain bytes; 0 where the text is no size above 0.
std::int64_t ParseBytes(std::string const& text);
// "1.5 GiB", "12 MiB": for people.
std::string FormatBytes(std::int64_t bytes);

// What a job works with.
class Environment {
 public:
  Environment(std::ostream& initOut, std::ostream& err, CommonOptions const& options);

  void Warn(std::string const& line) { progress.PrintLine("orbimg: warning: " + line); }

  std::ostream& out;
  ProgressDisplay progress;
  int threads;
  std::int64_t memory;
  Existing existing;
  ReadOptions reading;
};

}  // namespace orb::host
