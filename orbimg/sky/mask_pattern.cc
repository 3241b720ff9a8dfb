#include <orbimg/sky/mask_pattern.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/sampled_row_kernels.h>

namespace {

constexpr int kMakeMessage = 6180;
constexpr int kDoMessage = 6181;

ORB_ROW_KERNEL void ThresholdRow(float* samples, std::ptrdiff_t count, double threshold) {
  for (std::ptrdiff_t x = 0; x < count; ++x) samples[x] = samples[x] <= threshold ? 1.0f : 0.0f;
}

[[gnu::always_inline]] inline int CountZeros(float const* mask, int count) {
  int zeros = 0;
  for (int x = 0; x < count; ++x) zeros += mask[x] == 0.0f ? 1 : 0;
  return zeros;
}

// Most of a mask is one value over long stretches: where it is, the image need not be read, nor be written where the
// mask lets it stay.
ORB_ROW_KERNEL void BlankRow(float const* mask, float* samples, std::ptrdiff_t count) {
  constexpr std::ptrdiff_t kStretch = 64;
  for (std::ptrdiff_t begin = 0; begin < count; begin += kStretch) {
    int const columns = static_cast<int>(std::min(kStretch, count - begin));
    float const* const m = mask + begin;
    float* const out = samples + begin;
    int const zeros = CountZeros(m, columns);
    if (zeros == 0) continue;
    if (zeros == columns) {
      std::fill_n(out, columns, 0.0f);
      continue;
    }
    ORB_COLUMNS_INDEPENDENT
    for (int x = 0; x < columns; ++x) out[x] = m[x] == 0.0f ? 0.0f : out[x];
  }
}

}  // namespace

void CImgMaskPattern::Make(double threshold, int progress) {
  orb::Run run(*this, nullptr);
  run.Start(progress, kMakeMessage, run.Rows() * planes);
  run.EachRow(*this, [&](orb::RowSpan const& row) { ThresholdRow(row.dst, row.count, threshold); });
  run.End();
}

void CImgMaskPattern::Do(COrbImage* mask, double shiftX, double shiftY, double angle, int progress) {
  orb::Run run(*this, nullptr);
  double const radians = angle * orb::kRadiansPerDegree;
  run.Start(progress, kDoMessage, run.Rows() * planes);
  orb::SampledRow sampled(*mask, 0, width, shiftX, shiftY, std::sin(radians), std::cos(radians));
  std::vector<float> seen(static_cast<std::size_t>(width));
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      sampled.Locate(y);
      sampled.SampleRaw(0, 0.0, seen.data());
      BlankRow(seen.data(), GetImageAdr(0, y, p, 0, nullptr), width);
      run.Tick();
    }
  }
  run.End();
}
