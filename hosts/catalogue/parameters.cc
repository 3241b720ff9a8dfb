#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

Parameter Real(std::string name, std::string unit, double least, double most, double byDefault, std::string help) {
  return Parameter{name, Parameter::Kind::kReal, unit, least, most, byDefault, help, {}};
}

Parameter Integer(std::string name, std::string unit, int least, int most, int byDefault, std::string help) {
  return Parameter{name,
                   Parameter::Kind::kInteger,
                   unit,
                   static_cast<double>(least),
                   static_cast<double>(most),
                   static_cast<double>(byDefault),
                   help,
                   {}};
}

Parameter Flag(std::string name, std::string help) {
  return Parameter{name, Parameter::Kind::kFlag, "", 0.0, 1.0, 0.0, help, {}};
}

Parameter Choice(std::string name, std::vector<std::string> choices, std::string help) {
  double const last = static_cast<double>(choices.size()) - 1.0;
  return Parameter{name, Parameter::Kind::kChoice, "", 0.0, last, 0.0, help, choices};
}

std::vector<Parameter> Placement(std::string const& what, double mostAngle) {
  constexpr double kMostShift = 1e6;
  return {
      Real("dx", "pixels", -kMostShift, kMostShift, 0.0, "shift of the " + what + " to the right"),
      Real("dy", "pixels", -kMostShift, kMostShift, 0.0, "shift of the " + what + " downwards"),
      Real("angle", "degrees", -mostAngle, mostAngle, 0.0, "rotation of the " + what + " about its standard centre"),
  };
}

}  // namespace orb::host
