#include <orbimg/stacking/cmy_composite.h>

#include <algorithm>
#include <vector>

#include <orbimg/stacking/channel_kernels.h>
#include <orbimg/stacking/filter_exposure_internal.h>
#include <platform/assert.h>

namespace {

constexpr int kCmyMessage = 6136;

using orb::FilterExposure;

void SetMeanLevel(COrbImage& image, int plane, FilterExposure const& a, FilterExposure const& b) {
  image.SetLevel(plane, (a.LevelMin() + b.LevelMin()) * 0.5, (a.LevelMax() + b.LevelMax()) * 0.5);
}

// One exposure with its sampler and its present row.
class ExposureRow {
 public:
  ExposureRow(FilterExposure const& initExposure, orb::Bounds const& area)
      : exposure(initExposure),
        sampler(exposure.Sampler(area)),
        samples(static_cast<std::size_t>(std::max(area.Columns(), 0))) {}

  float const* At(int y, double outside) {
    exposure.Sample(sampler, y, outside, samples.data());
    return samples.data();
  }

 private:
  FilterExposure const& exposure;
  orb::SampledRow sampler;
  std::vector<float> samples;
};

}  // namespace

void CImgCmyComposit::Do(COrbImage* cyan, double dxC, double dyC, double angleC, COrbImage* magenta, double dxM,
                         double dyM, double angleM, COrbImage* yellow, double dxY, double dyY, double angleY,
                         CRect* rect, int outside, int progress) {
  ORB_ASSERT(planes >= 3);
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  FilterExposure const c{*cyan, dxC, dyC, angleC, 2};
  FilterExposure const m{*magenta, dxM, dyM, angleM, 0};
  FilterExposure const y{*yellow, dxY, dyY, angleY, 1};
  SetMeanLevel(*this, 0, y, m);
  SetMeanLevel(*this, 1, c, y);
  SetMeanLevel(*this, 2, c, m);
  run.Start(progress, kCmyMessage, run.Rows());
  ExposureRow cyanRow(c, area);
  ExposureRow magentaRow(m, area);
  ExposureRow yellowRow(y, area);
  for (int row = area.top; row < area.bottom; ++row) {
    float const* const complements[3] = {cyanRow.At(row, outside), magentaRow.At(row, outside),
                                         yellowRow.At(row, outside)};
    float* const primaries[3] = {GetImageAdr(area.left, row, 0, 0, nullptr), GetImageAdr(area.left, row, 1, 0, nullptr),
                                 GetImageAdr(area.left, row, 2, 0, nullptr)};
    orb::PrimariesRow(complements, area.Columns(), primaries);
    run.Tick();
  }
  run.End();
}
