#include <algorithm>
#include <array>
#include <bit>

#include <orbimg/tone/rank_sorter_internal.h>

namespace orb {

namespace {

using Entry = RankSorter::Entry;

constexpr std::size_t kFew = 24;  // that many are inserted one by one
constexpr int kMostBits = 11;     // of the number of a part

void InsertionSort(Entry* entries, std::size_t count) {
  for (std::size_t i = 1; i < count; ++i) {
    Entry const entry = entries[i];
    std::size_t at = i;
    for (; at > 0 && entry.key < entries[at - 1].key; --at) entries[at] = entries[at - 1];
    entries[at] = entry;
  }
}

int WidthOf(std::uint64_t number) { return static_cast<int>(std::bit_width(number)); }

// Splits the range of keys into about as many equal parts as there are entries.
struct Parts {
  std::uint64_t least;
  int shift;
  std::size_t count;

  std::size_t Of(std::uint64_t key) const { return static_cast<std::size_t>((key - least) >> shift); }
};

Parts PartsOf(Entry const* entries, std::size_t count) {
  std::uint64_t least = entries[0].key;
  std::uint64_t most = least;
  for (std::size_t i = 1; i < count; ++i) {
    least = std::min(least, entries[i].key);
    most = std::max(most, entries[i].key);
  }
  int const shift = std::max(WidthOf(most - least) - std::min(WidthOf(count), kMostBits), 0);
  return {least, shift, static_cast<std::size_t>((most - least) >> shift) + 1};
}

// Leaves the order in `entries`; `spare` has the same room. Linear: each round takes bits of the keys away, so that
// there are few rounds, whatever the keys.
void SortEntries(Entry* entries, Entry* spare, std::size_t count) {
  if (count <= kFew) return InsertionSort(entries, count);
  Parts const parts = PartsOf(entries, count);
  if (parts.count == 1) return;  // all keys are equal
  std::array<std::size_t, (std::size_t{1} << kMostBits) + 1> ends;
  std::fill_n(ends.begin(), parts.count + 1, 0);
  for (std::size_t i = 0; i < count; ++i) ++ends[parts.Of(entries[i].key) + 1];
  for (std::size_t i = 1; i < parts.count; ++i) ends[i] += ends[i - 1];
  for (std::size_t i = 0; i < count; ++i) spare[ends[parts.Of(entries[i].key)]++] = entries[i];
  std::copy_n(spare, count, entries);
  for (std::size_t i = 0, begin = 0; i < parts.count; begin = ends[i++]) {
    if (ends[i] - begin > 1) SortEntries(entries + begin, spare + begin, ends[i] - begin);
  }
}

}  // namespace

Entry const* RankSorter::Sort(std::uint64_t const* keys, std::size_t count) {
  if (entries.size() < count) {
    entries.resize(count);
    spare.resize(count);
  }
  for (std::size_t i = 0; i < count; ++i) entries[i] = {keys[i], i};
  SortEntries(entries.data(), spare.data(), count);
  return entries.data();
}

}  // namespace orb
