#include <orbimg/stacking/composite.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/sampled_row_kernels.h>
#include <orbimg/stacking/composite_kernels.h>
#include <orbimg/stacking/composite_modes_internal.h>

namespace {

// A colour image's planes that are joined; `second` has no more.
constexpr int kColorPlanes = 3;

struct Sources {
  COrbImage& first;
  COrbImage& second;
  bool is256;
  double outside;
};

void Sample(orb::SampledRow& sampled, Sources const& sources, int plane, float* row) {
  sources.is256 ? sampled.Sample256f(plane, sources.outside, row) : sampled.SampleRaw(plane, sources.outside, row);
}

void Sample(orb::SampledRow& sampled, Sources const& sources, int plane, double* row) {
  sources.is256 ? sampled.SampleDouble256f(plane, sources.outside, row)
                : sampled.SampleDouble(plane, sources.outside, row);
}

// One row of one plane; `second` holds the sampled values. The sampler asks its image for addresses between the writes
// of a row, so the rows that are held meanwhile are locked.
template <typename Value>
void CombinePlane(COrbImage& image, Sources const& sources, orb::Combination const& combination,
                  orb::Bounds const& area, int y, int plane, Value const* second) {
  orb::LockedRow const to(image, area.left, y, plane, false);
  orb::LockedRow const from(sources.first, area.left, y, plane, true);
  if (sources.is256) {
    orb::Combine256Row(combination, from.Address(), orb::LevelOf(sources.first, plane), second, area.Columns(),
                       orb::LevelOf(image, plane), to.Address());
  } else {
    orb::CombineRawRow(combination, from.Address(), second, area.Columns(), to.Address());
  }
}

// Samples of type Value: the single-value sampler of a mono destination rounds to float, the three of a colour one are
// not rounded before they are combined.
template <typename Value>
void CombineRows(COrbImage& image, Sources const& sources, orb::Combination const& combination, orb::Run& run,
                 orb::SampledRow& sampled) {
  orb::Bounds const& area = run.Area();
  bool const isColor = image.IsColor() != 0;
  std::vector<Value> second(static_cast<std::size_t>(area.Columns()));
  for (int y = area.top; y < area.bottom; ++y) {
    sampled.Locate(y);
    for (int p = 0; p < (isColor ? std::min(image.GetPlanes(), kColorPlanes) : 1); ++p) {
      Sample(sampled, sources, isColor ? p : -1, second.data());
      CombinePlane(image, sources, combination, area, y, p, second.data());
    }
    run.Tick();
  }
}

}  // namespace

float CImgComposit::GetOutsideValue(int mode) { return mode == orb::kMultiply || mode == orb::kDivide ? 255.0f : 0.0f; }

void CImgComposit::Do(COrbImage* first, COrbImage* second, double dx, double dy, double angle, int mode, double ratio,
                      int to256, int clamp, double threshold, int radius, CRect* rect, int progress, int messageId) {
  if (mode == orb::kRejection) {
    Abr(first, second, dx, dy, angle, mode, ratio, to256, clamp, threshold, radius, rect, progress, messageId);
    return;
  }
  // Intended: an unknown mode copies through the 256-scale, so that the first source arrives in the destination's
  // levels.
  bool const is256 = to256 != 0 || mode < orb::kAverage || mode > orb::kRejection;
  Sources const sources{*first, *second, is256, is256 ? GetOutsideValue(mode) : 0.0};
  orb::Run run(*this, rect);
  run.Start(progress, orb::CompositeMessage(messageId), run.Rows());
  if (!run.Area().IsEmpty()) {
    double const radians = angle * orb::kRadiansPerDegree;
    orb::SampledRow sampled(*second, run.Area().left, run.Area().right, dx, dy, std::sin(radians), std::cos(radians));
    orb::Combination const combination{mode, ratio, clamp != 0};
    if (IsColor()) {
      CombineRows<double>(*this, sources, combination, run, sampled);
    } else {
      CombineRows<float>(*this, sources, combination, run, sampled);
    }
  }
  run.End();
}

void CImgComposit::Do(COrbImage* first, COrbImage* second, double dx, double dy, double angle, int mode, int to256) {
  Do(first, second, dx, dy, angle, mode, 0.5, to256, 0, 0.95, 0, nullptr, 0, -1);
}
