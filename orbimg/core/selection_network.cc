#include <orbimg/core/selection_network_internal.h>

namespace orb {

SelectionNetwork::SelectionNetwork(int inputCount, int wantedRank)
    : inputs(inputCount), rank(wantedRank), exchanges(SelectionExchanges(inputCount, wantedRank)) {}

}  // namespace orb
