// A network of exchanges that brings one order statistic to its place, the same steps whatever the values.
#pragma once

#include <algorithm>
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

// A full sort of any number of inputs. In the phase of `width`, each half of a block of 2 * width entries is in order
// and the block gets merged: first entries `width` apart, then, ever closer, the upper entries of one pair with the
// lower ones of a later pair. The halves interleave, so that the smallest steps come last.
constexpr std::vector<Exchange> SortExchanges(int inputs) {
  std::vector<Exchange> exchanges;
  int const widest = inputs > 1 ? static_cast<int>(std::bit_floor(static_cast<unsigned>(inputs - 1))) : 0;
  for (int width = widest; width > 0; width /= 2) {
    int distance = width;
    int parity = 0;
    for (int step = widest;; step /= 2) {
      for (int i = 0; i + distance < inputs; ++i) {
        if ((i & width) == parity) exchanges.push_back(Exchange{i, i + distance, Exchange::kBoth});
      }
      if (step == width) break;
      distance = step - width;
      parity = width;
    }
  }
  return exchanges;
}

// What entry `rank` of `inputs` sorted entries depends on. Walks back from that entry.
constexpr std::vector<Exchange> SelectionExchanges(int inputs, int rank) {
  std::vector<Exchange> const exchanges = SortExchanges(inputs);
  std::vector<char> isNeeded(static_cast<std::size_t>(inputs), 0);
  if (rank < inputs) isNeeded[static_cast<std::size_t>(rank)] = 1;
  std::vector<Exchange> kept;
  for (auto e = exchanges.rbegin(); e != exchanges.rend(); ++e) {
    char& lower = isNeeded[static_cast<std::size_t>(e->lower)];
    char& upper = isNeeded[static_cast<std::size_t>(e->upper)];
    if (lower == 0 && upper == 0) continue;
    Exchange::Kind const kind = upper == 0 ? Exchange::kSmaller : lower == 0 ? Exchange::kLarger : Exchange::kBoth;
    kept.push_back(Exchange{e->lower, e->upper, kind});
    lower = upper = 1;
  }
  std::reverse(kept.begin(), kept.end());
  return kept;
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
