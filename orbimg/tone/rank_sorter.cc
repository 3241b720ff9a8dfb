#include <algorithm>
#include <array>

#include <orbimg/tone/rank_sorter_internal.h>
#include <orbimg/tone/rank_sorter_kernels.h>

namespace orb {

namespace {

constexpr std::size_t kFew = 16;  // that many are inserted one by one
constexpr int kMostBits = 11;     // of the number of a part

int WidthOf(std::uint64_t number) { return static_cast<int>(std::bit_width(number)); }

std::uint64_t KeyOf(std::uint64_t item) { return item; }

template <typename Item>
std::uint64_t KeyOf(Item const& item) {
  return item.key;
}

KeyRange RangeOf(std::uint64_t const* items, std::size_t count) {
  return RangeOfKeys(items, static_cast<std::ptrdiff_t>(count));
}

template <typename Item>
KeyRange RangeOf(Item const* items, std::size_t count) {
  KeyRange range{KeyOf(items[0]), KeyOf(items[0])};
  for (std::size_t i = 1; i < count; ++i) {
    range.least = std::min(range.least, KeyOf(items[i]));
    range.most = std::max(range.most, KeyOf(items[i]));
  }
  return range;
}

// `to` may be `from`.
template <typename Item>
void InsertEach(Item const* from, std::size_t count, Item* to) {
  for (std::size_t i = 0; i < count; ++i) {
    Item const item = from[i];
    std::size_t at = i;
    for (; at > 0 && KeyOf(item) < KeyOf(to[at - 1]); --at) to[at] = to[at - 1];
    to[at] = item;
  }
}

// About as many equal parts of a range as there are items.
class Parts {
 public:
  // Moves the items to their parts, in the order in which they come.
  template <typename Item>
  Parts(Item const* items, std::size_t count, KeyRange range, Item* to)
      : least(range.least),
        shift(std::max(WidthOf(range.most - least) - std::min(WidthOf(count), kMostBits), 0)),
        parts(PartOf(range.most) + 1) {
    std::fill_n(ends.begin(), parts, 0);
    for (std::size_t i = 0; i < count; ++i) ++ends[PartOf(KeyOf(items[i]))];
    std::size_t begin = 0;
    for (std::size_t i = 0; i < parts; ++i) {
      std::size_t const size = ends[i];
      fullest = std::max(fullest, size);
      ends[i] = begin;
      begin += size;
    }
    for (std::size_t i = 0; i < count; ++i) to[ends[PartOf(KeyOf(items[i]))]++] = items[i];
  }

  std::size_t Count() const { return parts; }
  std::size_t Fullest() const { return fullest; }
  std::size_t End(std::size_t part) const { return ends[part]; }

 private:
  std::size_t PartOf(std::uint64_t key) const { return static_cast<std::size_t>((key - least) >> shift); }

  std::uint64_t least;
  int shift;
  std::size_t parts;
  std::size_t fullest = 0;
  std::array<std::size_t, (std::size_t{1} << kMostBits)> ends;
};

// Sorts by splitting the range of the keys until few items are left in a part. Linear: each round takes bits of the
// keys away, so that there are few rounds, whatever the keys. Items of equal keys stay in their order. The result
// stands in `items`, or in `spare`, which has the same room.
template <typename Item>
void SortItems(Item* items, Item* spare, std::size_t count, KeyRange range, bool isForSpare) {
  Item* const result = isForSpare ? spare : items;
  if (count <= kFew || range.least == range.most) return InsertEach(items, count, result);
  Parts const parts(items, count, range, spare);
  // Nothing is further from its place than the fullest part is long.
  if (parts.Fullest() <= kFew) return InsertEach(spare, count, result);
  for (std::size_t i = 0, begin = 0; i < parts.Count(); begin = parts.End(i++)) {
    std::size_t const size = parts.End(i) - begin;
    if (size == 0) continue;
    SortItems(spare + begin, items + begin, size, RangeOf(spare + begin, size), !isForSpare);
  }
}

}  // namespace

void RankSorter::Rank(std::uint64_t* keys, std::size_t count, std::uint64_t first) {
  if (count == 0) return;
  auto const [least, most] = RangeOf(keys, count);
  int const placeBits = WidthOf(count - 1);
  if (WidthOf(most - least) + placeBits <= 64) {
    RankPacked(keys, count, least, most, placeBits, first);
  } else {
    RankKeyed(keys, count, least, most, first);
  }
}

// Most buckets are so narrow that key and place fit one number.
void RankSorter::RankPacked(std::uint64_t* keys, std::size_t count, std::uint64_t least, std::uint64_t most,
                            int placeBits, std::uint64_t first) {
  if (packed.size() < 2 * count) packed.resize(2 * count);
  for (std::size_t i = 0; i < count; ++i) packed[i] = (keys[i] - least) << placeBits | i;
  std::uint64_t const mask = (std::uint64_t{1} << placeBits) - 1;
  SortItems(packed.data(), packed.data() + count, count, {0, (most - least) << placeBits | mask}, false);
  for (std::size_t i = 0; i < count; ++i) keys[packed[i] & mask] = first + i;
}

void RankSorter::RankKeyed(std::uint64_t* keys, std::size_t count, std::uint64_t least, std::uint64_t most,
                           std::uint64_t first) {
  if (keyed.size() < 2 * count) keyed.resize(2 * count);
  for (std::size_t i = 0; i < count; ++i) keyed[i] = {keys[i], i};
  SortItems(keyed.data(), keyed.data() + count, count, {least, most}, false);
  for (std::size_t i = 0; i < count; ++i) keys[keyed[i].place] = first + i;
}

}  // namespace orb
