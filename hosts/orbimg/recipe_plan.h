// What a recipe will do, found out and checked before anything is done.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <hosts/io/fits_file.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/recipe.h>

namespace orb::host {

struct PlannedStep {
  std::string name;
  std::vector<std::string> arguments;  // of the program, whole
  std::string output;                  // a file, or a folder with a slash at its end
  std::vector<std::string> reads;      // files and patterns that are inputs, or outputs of earlier steps
  std::int64_t frames = 0;             // images that it is expected to write
  Shape shape{};                       // of each
  std::int64_t Bytes() const;          // of them together, as floats
};

struct PlannedInput {
  std::string name;
  std::vector<std::string> files;
  Shape shape{};  // of the first
};

struct RecipePlan {
  std::string title;
  std::vector<PlannedInput> inputs;
  std::vector<PlannedStep> steps;
  std::int64_t Bytes() const;
};

struct RecipeSettings {
  std::string folder;                                         // for all outputs
  std::map<std::string, std::vector<std::string>> overrides;  // patterns in place of the recipe's, by input
  CommonOptions common;                                       // go to every step that takes them
};

// HostError names the input that has no files or cannot be read, the step whose call the program would refuse and why.
RecipePlan MakePlan(Recipe const& recipe, RecipeSettings const& settings);

// For people: inputs, steps with what they are expected to write, memory and disk.
std::string FormatPlan(RecipePlan const& plan, std::int64_t memory);

}  // namespace orb::host
