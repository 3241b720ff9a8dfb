// The samples that a turn about a centre brings to a place, by the plain formula.
#pragma once

#include <cmath>
#include <cstddef>

namespace orb {

struct PlaneSamples {
  float const* samples;
  int width;
  int height;
};

// Turns by plus and minus an angle in radians about a centre.
struct Turn {
  double angle;
  double cx;
  double cy;
};

// The pair of samples at (x, y), each turned its way.
struct TurnedPair {
  double plus;
  double minus;
};

// A coordinate that lies inside a side of `size` samples: the sample before it, and where it lies. At the last sample,
// and where it is not a number, it is the last sample, told from the one before.
struct TurnedCoordinate {
  int cell;
  double position;

  TurnedCoordinate(double p, int size) : cell(size - 2), position(size - 1) {
    if (!(p < size - 1)) return;
    cell = static_cast<int>(p);
    position = p;
  }
  double Fraction() const { return position - cell; }
  bool IsWhole() const { return cell == position; }
};

inline double SampleTurned(PlaneSamples const& plane, double px, double py) {
  if (px < 0 || px >= plane.width || py < 0 || py >= plane.height) return 0.0;
  TurnedCoordinate const column(px, plane.width);
  TurnedCoordinate const row(py, plane.height);
  // A side of one sample has none before its last; it stands for its own neighbour.
  auto const at = [&plane](int x, int y) -> double {
    return plane.samples[static_cast<std::ptrdiff_t>(y < 0 ? 0 : y) * plane.width + (x < 0 ? 0 : x)];
  };
  if (column.IsWhole() && row.IsWhole()) return at(column.cell, row.cell);
  double const u = column.Fraction();
  double const v = row.Fraction();
  double const upper = (1 - u) * at(column.cell, row.cell) + u * at(column.cell + 1, row.cell);
  double const lower = (1 - u) * at(column.cell, row.cell + 1) + u * at(column.cell + 1, row.cell + 1);
  return upper * (1 - v) + lower * v;
}

inline TurnedPair SampleTurnedPair(PlaneSamples const& plane, Turn const& turn, int x, int y) {
  double const dx = x - turn.cx;
  double const dy = y - turn.cy;
  double const rho = std::sqrt(dx * dx + dy * dy);
  double const theta = std::atan2(dx, dy);
  auto const sample = [&](double turned) {
    return SampleTurned(plane, rho * std::sin(turned) + turn.cx, rho * std::cos(turned) + turn.cy);
  };
  return TurnedPair{sample(theta + turn.angle), sample(theta - turn.angle)};
}

}  // namespace orb
