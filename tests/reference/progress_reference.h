// A plain model of a counted progress run: which positions go out for which steps.
#pragma once

#include <vector>

namespace orb::test::reference {

struct ProgressModel {
  explicit ProgressModel(int units);

  void Step(int n);

  int total;
  int step;
  int count = 0;
  int next = 0;
  std::vector<int> positions;
};

}  // namespace orb::test::reference
