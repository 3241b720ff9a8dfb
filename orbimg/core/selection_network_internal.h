// A network of exchanges that brings one order statistic to its place, the same steps whatever the values.
#pragma once

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
