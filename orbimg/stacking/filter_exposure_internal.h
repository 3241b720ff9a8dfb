// One of the exposures through colour filters that a colour composite is built of.
#pragma once

#include <cmath>

#include <orbimg/core/constants.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/core/sampled_row_kernels.h>

namespace orb {

struct FilterExposure {
  COrbImage& image;
  double dx;
  double dy;
  double angle;  // degrees
  int colorPlane;

  // The plane that is read.
  int Plane() const { return image.IsColor() != 0 ? colorPlane : 0; }
  double LevelMin() const { return image.GetLevelMin(Plane()); }
  double LevelMax() const { return image.GetLevelMax(Plane()); }

  SampledRow Sampler(Bounds const& area) const {
    double const radians = angle * kRadiansPerDegree;
    return SampledRow(image, area.left, area.right, dx, dy, std::sin(radians), std::cos(radians));
  }

  // Row y into `row`, with the sampler that was made above.
  void Sample(SampledRow& sampler, int y, double outside, float* row) const {
    sampler.Locate(y);
    sampler.SampleRaw(Plane(), outside, row);
  }
};

}  // namespace orb
