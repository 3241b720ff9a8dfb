// The small neighbourhoods that a shape code stands for.
#pragma once

#include <array>
#include <span>

#include <orbimg/filters/edge_rules_internal.h>

namespace orb {

enum Shape { kCross = 0, kSquare = 1, kRound = 2 };

struct Cell {
  int dx;
  int dy;
};

inline constexpr int kMostCells = 21;

// The cells row by row, the centre in the middle; for any other code the centre alone.
std::span<Cell const> CellsOf(int shape);

inline int RadiusOf(int shape) { return shape == kCross || shape == kSquare ? 1 : shape == kRound ? 2 : 0; }

inline bool IsShape(int shape) { return RadiusOf(shape) > 0; }

// The samples of a neighbourhood, in the order of its cells. rows[0 .. 2 radius] are addresses at column x.
class Neighbourhood {
 public:
  Neighbourhood(float const* const* rows, int x, int width, int shape);

  int Count() const { return count; }
  float Centre() const { return samples[static_cast<std::size_t>(count / 2)]; }
  double SumOfOthers() const;
  float AtRank(int rank);  // reorders; a rank outside is held inside

 private:
  std::array<float, kMostCells> samples;
  int count;
};

struct Means {
  float weighted;
  double plain;
};

// With c the centre and S the sum of the N others: (S * weight + c) / (weight * N + 1) and (S + c) / (N + 1), the
// latter by the digits of 1 / (N + 1).
struct MeanFormula {
  double weight;
  double divisor;
  double share;

  MeanFormula(int cells, double initWeight);

  [[gnu::always_inline]] Means Apply(double c, double sum) const {
    return Means{static_cast<float>((sum * weight + c) / divisor), (sum + c) * share};
  }
};

// Second differences around c in a 3 x 3 square.
struct Laplacian {
  int shape;

  [[gnu::always_inline]] double Apply(float const* above, float const* centre, float const* below, std::ptrdiff_t left,
                                      std::ptrdiff_t right) const {
    double const c = centre[0];
    double const direct = static_cast<double>(centre[left]) + centre[right] + above[0] + below[0];
    double const c1 = above[left];
    double const c2 = above[right];
    double const c3 = below[left];
    double const c4 = below[right];
    if (shape == kCross) return 4.0 * c - direct;
    if (shape == kSquare) return 8.0 * c - (direct + c1 + c2 + c3 + c4);
    if (shape == kRound) return 4.0 * c - 2.0 * direct + (c1 + c2 + c3 + c4);
    return above[0];
  }
};

}  // namespace orb
