#include <orbimg/stacking/rgb_composite.h>

#include <orbimg/stacking/filter_exposure_internal.h>
#include <platform/assert.h>

namespace {

constexpr int kRgbMessage = 6108;

using Exposures = orb::FilterExposure const[3];
using Samplers = orb::SampledRow[3];

// The sampler asks its image for addresses between the writes of a row, so the row that is written is locked.
void WriteRow(COrbImage& image, Exposures& exposures, Samplers& samplers, int left, int y, double outside) {
  for (int p = 0; p < 3; ++p) {
    orb::LockedRow const to(image, left, y, p, false);
    exposures[p].Sample(samplers[p], y, outside, to.Address());
  }
}

// Plane 0 is never among the planes asked for. The locks have no tokens: they go all at once.
void WritePartialRow(COrbImage& image, Exposures& exposures, Samplers& samplers, int left, int y, double outside,
                     int const* planes) {
  for (int p = 1; p < 3; ++p) {
    if (planes[p] != 0) exposures[p].Sample(samplers[p], y, outside, image.GetImageAdr(left, y, p, 2, nullptr));
  }
  image.UnlockAll();
}

}  // namespace

void CImgRgbCmpst::Do(COrbImage* red, double dxR, double dyR, double angleR, COrbImage* green, double dxG, double dyG,
                      double angleG, COrbImage* blue, double dxB, double dyB, double angleB, CRect* rect, int outside,
                      int* const chosenPlanes, int progress) {
  ORB_ASSERT(planes >= 3);
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  Exposures exposures = {{*red, dxR, dyR, angleR, 0}, {*green, dxG, dyG, angleG, 1}, {*blue, dxB, dyB, angleB, 2}};
  for (int p = 0; p < 3; ++p) SetLevel(p, exposures[p].LevelMin(), exposures[p].LevelMax());
  run.Start(progress, kRgbMessage, run.Rows());
  Samplers samplers = {exposures[0].Sampler(area), exposures[1].Sampler(area), exposures[2].Sampler(area)};
  // Intended: the first flag alone decides whether the others are looked at.
  bool const isPartial = chosenPlanes != nullptr && chosenPlanes[0] == 0;
  for (int y = area.top; y < area.bottom; ++y) {
    if (isPartial) {
      WritePartialRow(*this, exposures, samplers, area.left, y, outside, chosenPlanes);
    } else {
      WriteRow(*this, exposures, samplers, area.left, y, outside);
    }
    run.Tick();
  }
  run.End();
}
