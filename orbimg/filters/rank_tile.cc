#include <orbimg/filters/rank_tile_internal.h>

#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include <orbimg/core/sample_key_internal.h>

namespace orb {

namespace {

constexpr int kKeyShift = 32;
constexpr int kMostDigitBits = 11;
constexpr std::uint32_t kSignBit = 0x80000000u;

std::uint64_t RecordOf(std::int32_t key, std::size_t place) {
  return static_cast<std::uint64_t>(static_cast<std::uint32_t>(key) ^ kSignBit) << kKeyShift | place;
}

float SampleOfRecord(std::uint64_t record) {
  return SampleOf(static_cast<std::int32_t>(static_cast<std::uint32_t>(record >> kKeyShift) ^ kSignBit));
}

std::size_t PlaceOf(std::uint64_t record) { return static_cast<std::uint32_t>(record); }

// The bits in which the records' keys differ, as positions in a record: [first, end).
struct BitSpan {
  int first;
  int end;
};

BitSpan DifferingBits(std::vector<std::uint64_t> const& records) {
  std::uint64_t differing = 0;
  for (std::uint64_t r : records) differing |= r ^ records.front();
  differing = differing >> kKeyShift << kKeyShift;
  if (differing == 0) return BitSpan{kKeyShift, kKeyShift};
  return BitSpan{std::countr_zero(differing), 64 - std::countl_zero(differing)};
}

void SortByDigit(std::vector<std::uint64_t>& records, std::vector<std::uint64_t>& spare, int shift, int bits) {
  std::array<std::uint32_t, std::size_t{1} << kMostDigitBits> places;
  std::span<std::uint32_t> const next(places.data(), std::size_t{1} << bits);
  std::fill(next.begin(), next.end(), 0);
  auto const digitOf = [shift, last = next.size() - 1](std::uint64_t record) { return record >> shift & last; };
  for (std::uint64_t r : records) ++next[digitOf(r)];
  std::uint32_t begin = 0;
  for (std::uint32_t& n : next) {
    std::uint32_t const count = n;
    n = begin;
    begin += count;
  }
  spare.resize(records.size());
  for (std::uint64_t r : records) spare[next[digitOf(r)]++] = r;
  records.swap(spare);
}

// By key; stable, so that equal keys stay in the order of their places. Bits in which no two keys differ cost nothing:
// samples that are whole numbers, as cameras give them, differ in few. The others are shared out evenly, as a digit of
// few bits has its counts nearer at hand.
void Sort(std::vector<std::uint64_t>& records, std::vector<std::uint64_t>& spare) {
  if (records.empty()) return;
  BitSpan const bits = DifferingBits(records);
  int const span = bits.end - bits.first;
  int const digits = (span + kMostDigitBits - 1) / kMostDigitBits;
  int const digitBits = digits > 0 ? (span + digits - 1) / digits : 0;
  for (int i = 0; i < digits; ++i) SortByDigit(records, spare, bits.first + i * digitBits, digitBits);
}

}  // namespace

template <typename Rank>
void RankTile<Rank>::Build(KeyTile const& tile) {
  records.clear();
  for (int row = 0; row < tile.Rows(); ++row) {
    if (!tile.hasRow[static_cast<std::size_t>(row)]) continue;
    std::int32_t const* const keys = tile.Row(row);
    auto const place = static_cast<std::size_t>(row * tile.stride);
    for (int x = tile.firstColumn; x < tile.endColumn; ++x) {
      records.push_back(RecordOf(keys[x], place + static_cast<std::size_t>(x)));
    }
  }
  Sort(records, spare);

  auto const zero = std::lower_bound(records.begin(), records.end(), RecordOf(KeyOf(0.0f), 0));
  auto const negative = static_cast<std::size_t>(zero - records.begin());
  zeroWord = (negative + kWordBits - 1) / kWordBits;
  std::size_t const fromZero = (zeroWord + 1) * kWordBits;  // rank of the first sample from 0.0 on
  std::size_t const end = fromZero + records.size() - negative;
  words = end / kWordBits + 2;
  ranks.assign(static_cast<std::size_t>(tile.Rows() * tile.stride), static_cast<Rank>((words - 1) * kWordBits));
  samples.resize(end);
  samples[zeroWord * kWordBits] = 0.0f;
  std::size_t rank = 0;
  for (std::size_t i = 0; i < records.size(); ++i, ++rank) {
    if (i == negative) rank = fromZero;
    ranks[PlaceOf(records[i])] = static_cast<Rank>(rank);
    samples[rank] = SampleOfRecord(records[i]);
  }
}

template class RankTile<std::uint16_t>;
template class RankTile<std::uint32_t>;

}  // namespace orb
