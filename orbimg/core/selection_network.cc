#include <orbimg/core/selection_network_internal.h>

namespace orb {

SelectionNetwork::SelectionNetwork(int inputCount, int wantedRank) : inputs(inputCount), rank(wantedRank) {
  EachSortExchange(inputs, [this](Exchange const& e) { exchanges.push_back(e); });
  std::vector<char> isNeeded(static_cast<std::size_t>(inputs), 0);
  if (rank < inputs) isNeeded[static_cast<std::size_t>(rank)] = 1;
  auto const first = static_cast<std::ptrdiff_t>(PruneExchanges(exchanges, isNeeded));
  exchanges.erase(exchanges.begin(), exchanges.begin() + first);
}

}  // namespace orb
