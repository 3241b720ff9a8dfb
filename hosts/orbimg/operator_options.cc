#include <hosts/orbimg/operator_options.h>

#include <algorithm>
#include <cctype>

#include <fmt/format.h>
#include <hosts/catalogue/check.h>

namespace orb::host {
namespace {

std::string DefaultText(Parameter const& parameter) {
  switch (parameter.follows) {
    case Parameter::Follows::kBlack:
      return "the black level";
    case Parameter::Follows::kWhite:
      return "the white level";
    case Parameter::Follows::kMiddleLevel:
      return "halfway between the levels";
    case Parameter::Follows::kMiddleColumn:
      return "the middle column";
    case Parameter::Follows::kMiddleRow:
      return "the middle row";
    case Parameter::Follows::kWidth:
      return "the width of the image";
    case Parameter::Follows::kHeight:
      return "the height of the image";
    case Parameter::Follows::kNoise:
      return "the noise that orbimg info gives";
    case Parameter::Follows::kNothing:
      break;
  }
  return fmt::format("{:g}", parameter.byDefault);
}

std::string RangeText(Parameter const& parameter) {
  std::string const unit = parameter.unit.empty() ? "" : " " + parameter.unit;
  return fmt::format("{:g} to {:g}{} (default: {})", parameter.least, parameter.most, unit, DefaultText(parameter));
}

CLI::Validator WithinRange(Parameter const& parameter) {
  return CLI::Validator(
      [parameter](std::string const& text) {
        double value = 0.0;
        if (!CLI::detail::lexical_cast(text, value)) return fmt::format("{} is no number", text);
        return CheckValue(parameter, value);
      },
      "");
}

void AddNumber(CLI::App& command, Parameter const& parameter, double& value) {
  std::string const help = fmt::format("{}; {}", Capitalised(parameter.help), RangeText(parameter));
  command.add_option("--" + parameter.name, value, help)
      ->check(WithinRange(parameter))
      ->type_name(parameter.kind == Parameter::Kind::kInteger ? "INT" : "NUMBER");
}

void AddFlag(CLI::App& command, Parameter const& parameter, double& value) {
  command.add_flag_callback(
      "--" + parameter.name, [&value] { value = 1.0; }, Capitalised(parameter.help));
}

void AddChoice(CLI::App& command, Parameter const& parameter, double& value) {
  auto const choose = [&value, choices = parameter.choices](std::string const& name) {
    for (std::size_t i = 0; i < choices.size(); ++i) {
      if (choices[i] == name) value = static_cast<double>(i);
    }
  };
  std::string const& byDefault = parameter.choices[static_cast<std::size_t>(parameter.byDefault)];
  command
      .add_option_function<std::string>("--" + parameter.name, choose,
                                        fmt::format("{} (default: {})", Capitalised(parameter.help), byDefault))
      ->check(CLI::IsMember(parameter.choices))
      ->type_name("NAME");
}

bool IsAmong(std::vector<std::string> const& names, std::string const& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

std::string Capitalised(std::string text) {
  if (!text.empty()) text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

std::string OptionName(std::string name) {
  std::replace(name.begin(), name.end(), ' ', '-');
  return "--" + name;
}

void AddParameterOptions(CLI::App& command, std::vector<Parameter> const& parameters, std::vector<double>& values,
                         std::vector<std::string> const& leftOut) {
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (IsAmong(leftOut, parameters[i].name)) continue;
    switch (parameters[i].kind) {
      case Parameter::Kind::kFlag:
        AddFlag(command, parameters[i], values[i]);
        break;
      case Parameter::Kind::kChoice:
        AddChoice(command, parameters[i], values[i]);
        break;
      default:
        AddNumber(command, parameters[i], values[i]);
    }
  }
}

std::string DescribeValues(std::vector<Parameter> const& parameters, std::vector<double> const& values,
                           std::vector<std::string> const& leftOut) {
  std::string text;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    Parameter const& parameter = parameters[i];
    bool const isFlag = parameter.kind == Parameter::Kind::kFlag;
    if ((isFlag && values[i] == 0.0) || IsAmong(leftOut, parameter.name)) continue;
    text += (text.empty() ? "" : ", ") + parameter.name;
    if (parameter.kind == Parameter::Kind::kChoice)
      text += " " + parameter.choices[static_cast<std::size_t>(values[i])];
    if (!isFlag && parameter.choices.empty()) text += fmt::format(" {}", values[i]);
  }
  return text;
}

}  // namespace orb::host
