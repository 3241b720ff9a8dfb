#include <algorithm>

#include <orbimg/filters/sample_order_internal.h>
#include <orbimg/filters/shape_internal.h>

namespace orb {

namespace {

constexpr Cell kCentreCell[] = {{0, 0}};
constexpr Cell kCrossCells[] = {{0, -1}, {-1, 0}, {0, 0}, {1, 0}, {0, 1}};
constexpr Cell kSquareCells[] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {0, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}};
constexpr Cell kRoundCells[] = {{-1, -2}, {0, -2}, {1, -2}, {-2, -1}, {-1, -1}, {0, -1}, {1, -1},
                                {2, -1},  {-2, 0}, {-1, 0}, {0, 0},   {1, 0},   {2, 0},  {-2, 1},
                                {-1, 1},  {0, 1},  {1, 1},  {2, 1},   {-1, 2},  {0, 2},  {1, 2}};

double ShareOf(int cells) { return cells == 5 ? 0.2 : cells == 9 ? 0.1111111111111111 : 0.047619047619047616; }

}  // namespace

std::span<Cell const> CellsOf(int shape) {
  switch (shape) {
    case kCross:
      return kCrossCells;
    case kSquare:
      return kSquareCells;
    case kRound:
      return kRoundCells;
    default:
      return kCentreCell;
  }
}

Neighbourhood::Neighbourhood(float const* const* rows, int x, int width, int shape) : count(0) {
  int const r = RadiusOf(shape);
  for (Cell const& cell : CellsOf(shape)) {
    samples[static_cast<std::size_t>(count++)] = rows[r + cell.dy][TurnedOffset(cell.dx, x, width)];
  }
}

double Neighbourhood::SumOfOthers() const {
  double sum = 0.0;
  for (int i = 0; i < count; ++i) {
    if (i != count / 2) sum += samples[static_cast<std::size_t>(i)];
  }
  return sum;
}

float Neighbourhood::AtRank(int rank) {
  SortSamples(samples.data(), static_cast<std::size_t>(count));
  return samples[static_cast<std::size_t>(std::clamp(rank, 0, count - 1))];
}

MeanFormula::MeanFormula(int cells, double initWeight)
    : weight(initWeight), divisor(initWeight * (cells - 1) + 1), share(ShareOf(cells)) {}

}  // namespace orb
