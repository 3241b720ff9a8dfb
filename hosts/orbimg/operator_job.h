// One operator of the catalogue on one file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <hosts/catalogue/operator_entry.h>
#include <hosts/io/fits_file.h>
#include <hosts/orbimg/curve_options.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/star_width.h>

namespace orb::host {

struct OperatorJob {
  OperatorEntry const* entry = nullptr;
  std::string input;
  std::string source;  // a calibration frame or another image, where the operator works with one
  std::string second;
  std::vector<double> values;  // one a parameter; not a number stands for what it follows in the image
  CurveOptions curves;         // of operators with tables
  std::vector<int> rect;       // empty, or left top right bottom
  std::string psfFrom;         // where the stars come from whose width the blur has; empty: the blur is given
};

// The values that a job begins with: the defaults, but not a number where a parameter follows the image.
std::vector<double> StartingValues(OperatorEntry const& entry);

// What an operator leaves behind.
struct OperatorOutcome {
  Frame frame;                    // the result with the header of the input and a HISTORY of this step
  std::vector<double> values;     // the parameters as they were used
  std::vector<double> results;    // of operators that find numbers
  std::optional<StarWidth> blur;  // where it was measured
  std::vector<int> iterations;    // that each plane took, of operators that report them
};

// Whether the operator works with another file beside the one that it changes.
bool TakesSourceFile(OperatorEntry const& entry);

// Reads, checks and runs. HostError names the file and what is wrong before any work is done; `progress` is shown on
// the environment's display. Holds the image, a copy of it where the operator cannot work in place, and further images.
void RunOperator(OperatorJob const& job, Environment& environment, OperatorOutcome& outcome);

// The same for images that are there already: the checks, the run on the environment's threads, its progress. The
// errors begin with `file`. Returns the iterations that each plane took, of operators that report them.
std::vector<int> RunChecked(OperatorEntry const& entry, Invocation call, std::string const& file,
                            Environment& environment);

}  // namespace orb::host
