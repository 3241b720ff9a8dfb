// Filters on the order of samples, contours, backgrounds.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

std::vector<OperatorEntry> RankFilterOperators() { return {}; }

}  // namespace orb::host
