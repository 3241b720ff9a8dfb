#include <hosts/orbimg/recipe.h>

#include <algorithm>
#include <fstream>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

class RecipeReader {
 public:
  explicit RecipeReader(std::string const& file) { recipe.file = file; }

  Recipe Read() {
    Json const document = Parse();
    Require(document.is_object(), "", "must be an object with title, inputs and steps");
    RequireOnly(document, "", {"title", "inputs", "steps"});
    recipe.title = TextOf(document, "", "title");
    Require(document.contains("inputs") && document["inputs"].is_object(), "inputs",
            "must be an object of file patterns");
    for (auto const& [name, value] : document["inputs"].items()) ReadInput(name, value);
    Require(document.contains("steps") && document["steps"].is_array() && !document["steps"].empty(), "steps",
            "must be a list of one step or more");
    for (Json const& step : document["steps"]) ReadStep(step);
    return recipe;
  }

 private:
  Json Parse() const {
    std::ifstream stream(recipe.file);
    try {
      return Json::parse(stream);
    } catch (Json::parse_error const& error) {
      throw HostError(Exit::kInput, fmt::format("{}: is no JSON: {}", recipe.file, error.what()));
    }
  }

  void Require(bool condition, std::string const& place, std::string const& what) const {
    if (condition) return;
    throw HostError(Exit::kInput, fmt::format("{}: {}{}{}", recipe.file, place, place.empty() ? "" : ": ", what));
  }

  void RequireOnly(Json const& object, std::string const& place, std::vector<std::string> const& names) const {
    for (auto const& [name, value] : object.items()) {
      bool const isKnown = std::find(names.begin(), names.end(), name) != names.end();
      Require(isKnown, place, fmt::format("{}: is no name of a recipe", name));
    }
  }

  std::string TextOf(Json const& object, std::string const& place, char const* name) const {
    Require(object.contains(name) && object[name].is_string(), place, fmt::format("{}: must be a text", name));
    return object[name].get<std::string>();
  }

  std::vector<std::string> TextsOf(Json const& value, std::string const& place) const {
    std::vector<std::string> texts;
    if (value.is_string()) return {value.get<std::string>()};
    Require(value.is_array(), place, "must be a text or a list of texts");
    for (Json const& each : value) {
      Require(each.is_string(), place, "must be a text or a list of texts");
      texts.push_back(each.get<std::string>());
    }
    return texts;
  }

  void ReadInput(std::string const& name, Json const& value) {
    std::string const place = "inputs: " + name;
    RecipeInput input;
    input.name = name;
    if (value.is_object()) {
      RequireOnly(value, place, {"files", "optional"});
      Require(value.contains("files"), place, "must have files");
      Require(!value.contains("optional") || value["optional"].is_boolean(), place, "optional: must be true or false");
      input.isOptional = value.value("optional", false);
    }
    input.patterns = TextsOf(value.is_object() ? value["files"] : value, place);
    recipe.inputs.push_back(input);
  }

  void ReadStep(Json const& value) {
    std::string const number = fmt::format("step {}", recipe.steps.size() + 1);
    Require(value.is_object(), number, "must be an object with name, output and run");
    RequireOnly(value, number, {"name", "output", "run"});
    RecipeStep step;
    step.name = TextOf(value, number, "name");
    step.output = TextOf(value, number, "output");
    Require(value.contains("run") && value["run"].is_array(), number, "run: must be a list of words");
    for (Json const& part : value["run"]) {
      step.run.push_back(RecipeWords{TextsOf(part, number + ": run"), part.is_array()});
    }
    recipe.steps.push_back(step);
  }

  Recipe recipe;
};

}  // namespace

Recipe ReadRecipe(std::string const& file) {
  RequireReadableFile(file);
  return RecipeReader(file).Read();
}

}  // namespace orb::host
