// Brightness, arithmetic, balance, curves: samples by themselves.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

std::vector<OperatorEntry> PointOperators() { return {}; }

}  // namespace orb::host
