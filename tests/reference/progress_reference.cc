#include <tests/reference/progress_reference.h>

namespace orb::test::reference {

ProgressModel::ProgressModel(int units) : total(units), step(units / 50) {
  if (step < 1) step = 1;
}

void ProgressModel::Step(int n) {
  count += n;
  if (count > next) {
    double const part = static_cast<double>(count) / static_cast<double>(total);
    positions.push_back(static_cast<int>(part * 100.0));
    next += step;
  }
}

}  // namespace orb::test::reference
