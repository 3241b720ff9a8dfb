// The mean squared difference of two images at one shift or at many, tile by tile.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

namespace orb {

// What the metric is where the images have no column or no row in common.
inline constexpr double kOutOfRange = 3.402823466e+38;

// 64 bits wide, so that neighbours and sums of sizes never overflow.
struct Shift {
  std::int64_t dx;
  std::int64_t dy;
};

// Without arguments: whatever there is, not-a-number too.
struct ValueRange {
  double lowest = -std::numeric_limits<double>::infinity();
  double highest = std::numeric_limits<double>::infinity();
};

class ORBIMG_API MatchingMetric {
 public:
  // `ratio` has an entry for each plane that both images have. The images must outlive this, unchanged.
  MatchingMetric(COrbImage const& reference, COrbImage const& source, double const* ratio);

  // values[i] is the metric at shifts[i]. All shifts of a call share the wide copies of a tile, which are as much
  // larger than a tile as the shifts lie apart: pass those together that lie close together.
  void AtWholeShifts(std::span<Shift const> shifts, std::span<double> values) const;

  // Limits for what AtWholeShifts gives, in half the time: differences and their squares as floats, and what floats can
  // be off by. Usually a range is a few millionths of its value for each 100 columns.
  void BoundAtWholeShifts(std::span<Shift const> shifts, std::span<ValueRange> ranges);

  double AtFractionalShift(double dx, double dy) const;

 private:
  int Planes() const { return static_cast<int>(ratios.size()); }
  double FindSourceLength() const;

  COrbImage const& reference;
  COrbImage const& source;
  std::vector<double> ratios;          // rounded to float, as the metric takes them
  std::optional<double> sourceLength;  // of the source times its ratios, all samples as one vector
};

}  // namespace orb
