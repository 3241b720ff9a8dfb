#include <hosts/orbimg/recipe_plan.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/command_tree.h>
#include <hosts/orbimg/file_list.h>

namespace orb::host {
namespace {

// What a placeholder stands for.
struct Source {
  std::vector<std::string> words;
  std::int64_t frames = 0;
  Shape shape{};
};

std::string NameIn(std::string const& word) {
  bool const isPlaceholder = word.size() > 2 && word.front() == '{' && word.back() == '}';
  return isPlaceholder ? word.substr(1, word.size() - 2) : std::string();
}

class Planner {
 public:
  Planner(Recipe const& initRecipe, RecipeSettings const& initSettings)
      : recipe(initRecipe), settings(initSettings), program(DescribeProgram()) {}

  RecipePlan Make() {
    plan.title = recipe.title;
    CheckOverrides();
    for (RecipeInput const& input : recipe.inputs) AddInput(input);
    for (RecipeStep const& step : recipe.steps) AddStep(step);
    return plan;
  }

 private:
  [[noreturn]] void Refuse(std::string const& place, std::string const& what) const {
    throw HostError(Exit::kUsage, fmt::format("{}: {}: {}", recipe.file, place, what));
  }

  void CheckOverrides() const {
    for (auto const& [name, patterns] : settings.overrides) {
      auto const isMeant = [&name = name](RecipeInput const& input) { return input.name == name; };
      if (std::none_of(recipe.inputs.begin(), recipe.inputs.end(), isMeant)) {
        throw HostError(Exit::kUsage, fmt::format("--input: {}: is no input of {}", name, recipe.file));
      }
    }
  }

  std::vector<std::string> FilesOf(RecipeInput const& input, std::vector<std::string> const& patterns) const {
    try {
      return ExpandFiles(patterns, FileOrder::kNatural);
    } catch (HostError const& error) {
      if (input.isOptional) return {};
      throw HostError(error.Status(), fmt::format("{}: input {}: {}; give other ones with --input {}=FILES",
                                                  recipe.file, input.name, error.what(), input.name));
    }
  }

  void AddInput(RecipeInput const& input) {
    if (sources.count(input.name) != 0 || input.name == "output") Refuse("inputs", input.name + ": is there already");
    auto const found = settings.overrides.find(input.name);
    std::vector<std::string> const& patterns = found != settings.overrides.end() ? found->second : input.patterns;
    PlannedInput planned{input.name, FilesOf(input, patterns), Shape{}};
    if (!planned.files.empty()) planned.shape = OpenFrame(planned.files.front())->Shape();
    // Many files keep their short patterns, which the commands for many files take.
    sources[input.name] = Source{planned.files.size() > 1 ? patterns : planned.files,
                                 static_cast<std::int64_t>(planned.files.size()), planned.shape};
    plan.inputs.push_back(planned);
  }

  void AddStep(RecipeStep const& step) {
    std::string const place = "step " + step.name;
    if (sources.count(step.name) != 0 || step.name == "output") Refuse(place, "the name is taken already");
    CheckOutputName(place, step.output);
    PlannedStep planned;
    planned.name = step.name;
    planned.output = (std::filesystem::path(settings.folder) / step.output).string();
    for (RecipeWords const& part : step.run) AddWords(place, part, planned);
    AddCommonOptions(planned);
    if (std::string const complaint = CheckArguments(planned.arguments); !complaint.empty()) Refuse(place, complaint);
    Estimate(planned);
    bool const isFolder = planned.output.back() == '/';
    sources[step.name] = Source{{isFolder ? planned.output + "*.fits" : planned.output}, planned.frames, planned.shape};
    plan.steps.push_back(planned);
  }

  void CheckOutputName(std::string const& place, std::string const& output) const {
    std::filesystem::path const path(output);
    bool const leavesFolder = std::find(path.begin(), path.end(), "..") != path.end();
    if (output.empty() || path.is_absolute() || leavesFolder) {
      Refuse(place, fmt::format("output: {}: must be a name inside the folder of the run", output));
    }
    for (PlannedStep const& other : plan.steps) {
      if (other.output == (std::filesystem::path(settings.folder) / output).string()) {
        Refuse(place, fmt::format("output: {}: is that of step {} already", output, other.name));
      }
    }
  }

  bool IsEmpty(std::string const& word) const {
    auto const source = sources.find(NameIn(word));
    return source != sources.end() && source->second.words.empty();
  }

  void AddWords(std::string const& place, RecipeWords const& part, PlannedStep& planned) {
    auto const isEmpty = [this](std::string const& word) { return IsEmpty(word); };
    if (part.isOptional && std::any_of(part.words.begin(), part.words.end(), isEmpty)) return;
    for (std::string const& word : part.words) AddWord(place, word, planned);
  }

  void AddWord(std::string const& place, std::string const& word, PlannedStep& planned) {
    std::string const name = NameIn(word);
    if (name.empty()) {
      planned.arguments.push_back(word);
      if (std::filesystem::is_regular_file(word)) planned.reads.push_back(word);
      return;
    }
    if (name == "output") {
      planned.arguments.push_back(planned.output);
      return;
    }
    auto const source = sources.find(name);
    if (source == sources.end()) Refuse(place, fmt::format("{}: is no input and no earlier step", word));
    if (source->second.words.empty()) {
      Refuse(place,
             fmt::format("{}: has no files; put it and its option in a list of their own to leave both out", word));
    }
    for (std::string const& each : source->second.words) {
      planned.arguments.push_back(each);
      planned.reads.push_back(each);
    }
    if (planned.shape.width == 0) {  // the first ones are what the step works on
      planned.shape = source->second.shape;
      planned.frames = source->second.frames;
    }
  }

  void AddCommonOptions(PlannedStep& planned) const {
    CommandNode const* const command = FindCommand(program, planned.arguments);
    if (command == nullptr) return;
    auto const add = [&](std::string const& option, std::optional<std::string> const& value) {
      bool const isGiven =
          std::find(planned.arguments.begin(), planned.arguments.end(), option) != planned.arguments.end();
      if (isGiven || !HasOption(*command, option)) return;
      planned.arguments.push_back(option);
      if (value) planned.arguments.push_back(*value);
    };
    add("--force", std::nullopt);
    add("--threads", std::to_string(settings.common.threads));
    add("--memory", std::to_string(settings.common.memory));
    if (settings.common.quiet) add("--quiet", std::nullopt);
  }

  // A folder gets as many frames as there are, a FITS or TIFF file one; tables and pictures are small beside them.
  static void Estimate(PlannedStep& planned) {
    bool const isFolder = planned.output.back() == '/';
    if (!isFolder) planned.frames = EndingOf(planned.output) == ".fits" || EndingOf(planned.output) == ".tif" ? 1 : 0;
    bool const isColour = !planned.arguments.empty() && planned.arguments.front() == "compose";
    if (isColour) planned.shape.planes = 3;
  }

  Recipe const& recipe;
  RecipeSettings const& settings;
  CommandNode const program;
  RecipePlan plan;
  std::map<std::string, Source> sources;
};

}  // namespace

std::int64_t PlannedStep::Bytes() const {
  return frames * static_cast<std::int64_t>(sizeof(float)) * shape.width * shape.height * shape.planes;
}

std::int64_t RecipePlan::Bytes() const {
  std::int64_t bytes = 0;
  for (PlannedStep const& step : steps) bytes += step.Bytes();
  return bytes;
}

RecipePlan MakePlan(Recipe const& recipe, RecipeSettings const& settings) { return Planner(recipe, settings).Make(); }

std::string FormatPlan(RecipePlan const& plan, std::int64_t memory) {
  std::string text = plan.title + "\n";
  for (PlannedInput const& input : plan.inputs) {
    text += input.files.empty()
                ? fmt::format("input {}: none\n", input.name)
                : fmt::format("input {}: {} files of {}, {} to {}\n", input.name, input.files.size(),
                              input.shape.Text(), BareName(input.files.front()), BareName(input.files.back()));
  }
  for (PlannedStep const& step : plan.steps) {
    std::string const frames =
        step.frames > 0 ? fmt::format(" ({} of {}, {})", step.frames, step.shape.Text(), FormatBytes(step.Bytes()))
                        : "";
    text += fmt::format("step {}: {}{}\n", step.name, step.output, frames);
  }
  return text +
         fmt::format("memory: up to {} for samples; disk: about {}\n", FormatBytes(memory), FormatBytes(plan.Bytes()));
}

}  // namespace orb::host
