// The mean squared difference of two images at one shift or at many, tile by tile.
#pragma once

#include <cstdint>
#include <span>

#include <orbimg/core/orb_image.h>

namespace orb {

// What the metric is where the images have no column or no row in common.
inline constexpr double kOutOfRange = 3.402823466e+38;

// 64 bits wide, so that neighbours and sums of sizes never overflow.
struct Shift {
  std::int64_t dx;
  std::int64_t dy;
};

class MatchingMetric {
 public:
  // `ratio` has an entry for each plane that both images have. All three must outlive this.
  MatchingMetric(COrbImage const& reference, COrbImage const& source, double const* ratio);

  // values[i] is the metric at shifts[i]. All shifts of a call share the wide copies of a tile, which are as much
  // larger than a tile as the shifts lie apart: pass those together that lie close together.
  void AtWholeShifts(std::span<Shift const> shifts, std::span<double> values) const;

  double AtFractionalShift(double dx, double dy) const;

 private:
  double RatioOf(int plane) const;

  COrbImage const& reference;
  COrbImage const& source;
  double const* ratio;
  int planes;
};

}  // namespace orb
