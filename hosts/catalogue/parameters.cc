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

}  // namespace orb::host
