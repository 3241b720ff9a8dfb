#include <hosts/catalogue/catalogue.h>

#include <iterator>

#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

std::vector<OperatorEntry> const& Catalogue() {
  static std::vector<OperatorEntry> const all = [] {
    std::vector<OperatorEntry> entries;
    for (auto room : {CoreOperators, ToneOperators, PointOperators, StackingOperators, ChannelOperators, LabOperators,
                      FilterOperators, RankFilterOperators, StarFilterOperators}) {
      std::vector<OperatorEntry> ofRoom = room();
      entries.insert(entries.end(), std::make_move_iterator(ofRoom.begin()), std::make_move_iterator(ofRoom.end()));
    }
    return entries;
  }();
  return all;
}

OperatorEntry const* FindOperator(std::string const& name) {
  for (OperatorEntry const& entry : Catalogue()) {
    if (entry.name == name) return &entry;
  }
  return nullptr;
}

}  // namespace orb::host
