// A network of exchanges that brings one order statistic to its place, the same steps whatever the values.
#pragma once

#include <bit>
#include <cstddef>
#include <span>
#include <vector>

#include <platform/export.h>

namespace orb {

// Puts the smaller of two entries into `lower` and the larger into `upper`, or does only the half that is needed later.
struct Exchange {
  enum Kind { kBoth, kSmaller, kLarger };
  int lower;
  int upper;
  Kind kind;
};

// Calls visit(Exchange) for a full sort of any number of inputs. In the phase of `width`, each half of a block of 2 *
// width entries is in order and the block gets merged: first entries `width` apart, then, ever closer, the upper
// entries of one pair with the lower ones of a later pair. The halves interleave, so that the smallest steps come last.
template <typename Visit>
constexpr void EachSortExchange(int inputs, Visit visit) {
  int const widest = inputs > 1 ? static_cast<int>(std::bit_floor(static_cast<unsigned>(inputs - 1))) : 0;
  for (int width = widest; width > 0; width /= 2) {
    int distance = width;
    int parity = 0;
    for (int step = widest;; step /= 2) {
      for (int i = 0; i + distance < inputs; ++i) {
        if ((i & width) == parity) visit(Exchange{i, i + distance, Exchange::kBoth});
      }
      if (step == width) break;
      distance = step - width;
      parity = width;
    }
  }
}

// Walks back from the entries that are needed, one flag each, and moves what they depend on to the end of the
// exchanges. Returns where that begins.
template <typename Exchanges, typename Flags>
constexpr std::size_t PruneExchanges(Exchanges& exchanges, Flags& isNeeded) {
  std::size_t first = exchanges.size();
  for (std::size_t i = exchanges.size(); i-- > 0;) {
    Exchange const e = exchanges[i];
    auto& lower = isNeeded[static_cast<std::size_t>(e.lower)];
    auto& upper = isNeeded[static_cast<std::size_t>(e.upper)];
    if (!lower && !upper) continue;
    Exchange::Kind const kind = !upper ? Exchange::kSmaller : !lower ? Exchange::kLarger : Exchange::kBoth;
    exchanges[--first] = Exchange{e.lower, e.upper, kind};
    lower = upper = 1;
  }
  return first;
}

// After all exchanges entry `rank` of `inputs` entries holds what a full sort would put there; the others hold nothing
// of use. An odd-even merge sort (K. E. Batcher, Sorting networks and their applications, 1968), without the exchanges
// and half exchanges on which that entry does not depend.
class ORBIMG_API SelectionNetwork {
 public:
  SelectionNetwork(int inputs, int rank);

  int Inputs() const { return inputs; }
  int Rank() const { return rank; }
  std::span<Exchange const> Exchanges() const { return exchanges; }

 private:
  int inputs;
  int rank;
  std::vector<Exchange> exchanges;
};

}  // namespace orb
