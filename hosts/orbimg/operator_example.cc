#include <hosts/orbimg/operator_example.h>

#include <fmt/format.h>
#include <hosts/orbimg/operator_job.h>
#include <hosts/orbimg/operator_options.h>

namespace orb::host {
namespace {

// With its default, which is always allowed; empty for a flag, and for what follows the image.
std::string ParameterText(Parameter const& parameter) {
  if (parameter.follows != Parameter::Follows::kNothing || parameter.kind == Parameter::Kind::kFlag) return {};
  if (parameter.kind == Parameter::Kind::kChoice) {
    return fmt::format(" --{} {}", parameter.name, parameter.choices[static_cast<std::size_t>(parameter.byDefault)]);
  }
  return fmt::format(" --{} {:g}", parameter.name, parameter.byDefault);
}

std::string FirstParameter(OperatorEntry const& entry) {
  for (Parameter const& parameter : entry.parameters) {
    if (std::string const text = ParameterText(parameter); !text.empty()) return text;
  }
  return {};
}

}  // namespace

std::string ExampleOf(std::string const& group, OperatorEntry const& entry) {
  bool const isColour = entry.imagePlanes == 3 || entry.sourceShape == SourceShape::kColourToMono;
  char const* const input = isColour ? "colour.fits" : "image.fits";
  std::string text = fmt::format("Example: orbimg {} {} {}", group, entry.name, input);
  if (TakesSourceFile(entry)) text += " " + OptionName(entry.sourceName) + " source.fits";
  if (entry.needsSecond) text += " --second second.fits";
  if (!entry.tables.empty()) text += " --preset gamma --amount 2.2";
  return text + FirstParameter(entry) + " -o result.fits --preview result.png";
}

}  // namespace orb::host
