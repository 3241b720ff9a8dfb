// The parameters of an operator as options of a command.
#pragma once

#include <string>
#include <vector>

#include <hosts/catalogue/operator_entry.h>
#include <CLI/CLI.hpp>

namespace orb::host {

// "bright" becomes "Bright".
std::string Capitalised(std::string text);
// "first image" becomes "--first-image".
std::string OptionName(std::string name);

// One option a parameter, named like it and checked against its range, but for those that are `leftOut`. What is given
// goes to `values`, which has one number a parameter, the defaults at first, and must stay where it is until the
// command was parsed.
void AddParameterOptions(CLI::App& command, std::vector<Parameter> const& parameters, std::vector<double>& values,
                         std::vector<std::string> const& leftOut = {});

// "brightness 10, mode weighted, clamp": what goes to the HISTORY of the result. Flags that are not set are left out,
// and those that are `leftOut`.
std::string DescribeValues(std::vector<Parameter> const& parameters, std::vector<double> const& values,
                           std::vector<std::string> const& leftOut = {});

}  // namespace orb::host
