#include <hosts/catalogue/catalogue.h>

#include <utility>

#include <hosts/catalogue/rooms_internal.h>

namespace orb::host {

namespace {

struct Room {
  std::vector<OperatorEntry> (*operators)();
  char const* group;  // of its entries that name none
};

constexpr Room kRooms[] = {
    {CoreOperators, ""},
    {ToneOperators, ""},
    {PointOperators, "apply"},
    {StackingOperators, ""},
    {ChannelOperators, ""},
    {LabOperators, ""},
    {FilterOperators, "filter"},
    {RankFilterOperators, "filter"},
    {StarFilterOperators, "filter"},
    {GeometryOperators, "transform"},
    {ResampleOperators, ""},
    {MemOperators, "restore"},
    {RestorationOperators, "restore"},
    {SkyOperators, "sky"},
};

}  // namespace

std::vector<OperatorEntry> const& Catalogue() {
  static std::vector<OperatorEntry> const all = [] {
    std::vector<OperatorEntry> entries;
    for (Room const& room : kRooms) {
      for (OperatorEntry& entry : room.operators()) {
        if (entry.group.empty()) entry.group = room.group;
        entries.push_back(std::move(entry));
      }
    }
    return entries;
  }();
  return all;
}

std::vector<OperatorEntry const*> OperatorsOf(std::string const& group) {
  std::vector<OperatorEntry const*> entries;
  for (OperatorEntry const& entry : Catalogue()) {
    if (entry.group == group) entries.push_back(&entry);
  }
  return entries;
}

OperatorEntry const* FindOperator(std::string const& name) {
  for (OperatorEntry const& entry : Catalogue()) {
    if (entry.name == name) return &entry;
  }
  return nullptr;
}

}  // namespace orb::host
