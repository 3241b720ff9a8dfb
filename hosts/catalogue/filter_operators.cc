// Kernels and windows: the base filters, blurring and sharpening.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

std::vector<OperatorEntry> FilterOperators() { return {}; }

}  // namespace orb::host
