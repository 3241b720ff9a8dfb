// Filters for stars and nebulae.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

std::vector<OperatorEntry> StarFilterOperators() { return {}; }

}  // namespace orb::host
