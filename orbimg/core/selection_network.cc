#include <orbimg/core/selection_network_internal.h>

#include <algorithm>
#include <bit>
#include <cstddef>

namespace orb {

namespace {

// A full sort of any number of inputs. In the phase of `width`, each half of a block of 2 * width entries is in order
// and the block gets merged: first entries `width` apart, then, ever closer, the upper entries of one pair with the
// lower ones of a later pair. The halves interleave, so that the smallest steps come last.
std::vector<Exchange> SortExchanges(int inputs) {
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

// Walks back from the wanted entry and keeps what it depends on.
void Prune(std::vector<Exchange>& exchanges, int inputs, int rank) {
  std::vector<bool> isNeeded(static_cast<std::size_t>(inputs));
  if (rank < inputs) isNeeded[static_cast<std::size_t>(rank)] = true;
  std::vector<Exchange> kept;
  for (auto e = exchanges.rbegin(); e != exchanges.rend(); ++e) {
    auto lower = isNeeded[static_cast<std::size_t>(e->lower)];
    auto upper = isNeeded[static_cast<std::size_t>(e->upper)];
    if (!lower && !upper) continue;
    Exchange::Kind const kind = lower && upper ? Exchange::kBoth : lower ? Exchange::kSmaller : Exchange::kLarger;
    kept.push_back(Exchange{e->lower, e->upper, kind});
    lower = upper = true;
  }
  std::reverse(kept.begin(), kept.end());
  exchanges = std::move(kept);
}

}  // namespace

SelectionNetwork::SelectionNetwork(int inputCount, int wantedRank)
    : inputs(inputCount), rank(wantedRank), exchanges(SortExchanges(inputCount)) {
  Prune(exchanges, inputs, rank);
}

}  // namespace orb
