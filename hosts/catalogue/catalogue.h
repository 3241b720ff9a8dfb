// Every operator of the library, once. Commands, bindings, benchmarks and contract tests all read this list.
#pragma once

#include <string>
#include <vector>

#include <hosts/catalogue/operator_entry.h>

namespace orb::host {

std::vector<OperatorEntry> const& Catalogue();

// Null if there is none of that name.
OperatorEntry const* FindOperator(std::string const& name);

// Those of a group, in the order of the catalogue.
std::vector<OperatorEntry const*> OperatorsOf(std::string const& group);

}  // namespace orb::host
