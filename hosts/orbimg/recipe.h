// A recipe: the steps from a night's files to its results, as a JSON file.
//
//   {"title": "...",
//    "inputs": {"lights": "lights/*.fits", "flats": {"files": "flats/*.fits", "optional": true}},
//    "steps": [{"name": "calibrated", "output": "calibrated/",
//               "run": ["calibrate", "{lights}", ["--flat", "{flats}"], "-o", "{output}"]}, ...]}
//
// `run` is a call of the program, word by word. "{NAME}" stands for the files of an input or for what an earlier step
// left; words in a list of their own are left out where an optional input in them has no files. An output is a name in
// the folder of the run; with a slash at its end it is a folder of FITS files.
#pragma once

#include <string>
#include <vector>

namespace orb::host {

struct RecipeInput {
  std::string name;
  std::vector<std::string> patterns;
  bool isOptional = false;
};

// Words that stay or go together.
struct RecipeWords {
  std::vector<std::string> words;
  bool isOptional = false;
};

struct RecipeStep {
  std::string name;
  std::string output;
  std::vector<RecipeWords> run;
};

struct Recipe {
  std::string file;
  std::string title;
  std::vector<RecipeInput> inputs;
  std::vector<RecipeStep> steps;
};

// HostError names what is wrong with the file, and where.
Recipe ReadRecipe(std::string const& file);

}  // namespace orb::host
