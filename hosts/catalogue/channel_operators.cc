// Joining images into colour, mosaics, and taking colour apart.
#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

std::vector<OperatorEntry> ChannelOperators() { return {}; }

}  // namespace orb::host
