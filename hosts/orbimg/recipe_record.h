// What a run of a recipe has finished, so that a second one does not do it again.
//
// A step is finished when its call is the same to the letter, the program has the same version, and the files that it
// read and wrote have kept size and time of change.
#pragma once

#include <string>

#include <hosts/orbimg/recipe_plan.h>
#include <nlohmann/json.hpp>

namespace orb::host {

class RecipeRecord {
 public:
  // What the folder of the run holds; nothing where there is none, or where it cannot be understood.
  explicit RecipeRecord(std::string const& folder);

  bool IsFinished(PlannedStep const& step) const;
  // After a step, with what it said; the record is written at once.
  void Finish(PlannedStep const& step, std::string const& said);
  // What a finished step said.
  std::string Said(PlannedStep const& step) const;

 private:
  std::string path;
  nlohmann::ordered_json document;
};

}  // namespace orb::host
