#include <orbimg/tone/false_color.h>

#include <algorithm>

#include <orbimg/core/operator_run.h>
#include <orbimg/tone/color_ramp_internal.h>
#include <orbimg/tone/false_color_kernels.h>

namespace {

constexpr int kMessage = 6117;

orb::FalseColorScale ScaleOf(COrbImage const& source, double low, double high) {
  float const lo = static_cast<float>(source.To256(low, 0));
  float const hi = static_cast<float>(source.To256(high, 0));
  return orb::FalseColorScale{lo, static_cast<double>(hi) - lo};
}

// The values of a block of pixels. A source of two planes has no brightness; its first plane stands for it.
void ReadValues(COrbImage const& source, orb::FalseColorScale const& scale, int x, int y, int count, double* values) {
  float const* const first = source.GetImageAdr(x, y, 0, 1, nullptr);
  if (source.GetPlanes() < orb::kRampChannels) {
    orb::FalseColorValueRow(first, count, orb::LevelOf(source, 0), scale, values);
    return;
  }
  orb::FalseColorValueRow({first, source.GetImageAdr(x, y, 1, 1, nullptr), source.GetImageAdr(x, y, 2, 1, nullptr)},
                          {source.GetLevelMin(0), source.GetLevelMin(1), source.GetLevelMin(2)}, count, scale, values);
}

// All values are read before a plane is written, so that the source may be the image.
void PaintBlock(COrbImage& image, COrbImage const& source, orb::FalseColorScale const& scale,
                orb::ColorRamp const& ramp, int repeat, int x, int y, int count) {
  double values[orb::kBlockColumns];
  ReadValues(source, scale, x, y, count, values);
  orb::WrapValueRow(values, count, repeat);
  for (int p = 0; p < std::min(image.GetPlanes(), orb::kRampChannels); ++p) {
    orb::PaintRow(values, count, ramp, p, orb::LevelOf(image, p), image.GetImageAdr(x, y, p, 0, nullptr));
  }
}

}  // namespace

void CImgFalseColor::Do(double low, double high, int palette, int repeat, COrbImage* source, CRect* rect,
                        int progress) {
  if (!IsColor()) return;
  orb::FalseColorScale const scale = ScaleOf(*source, low, high);
  orb::ColorRamp const ramp = orb::RampOf(palette);
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows());
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; x += orb::kBlockColumns) {
      int const count = std::min(area.right - x, static_cast<int>(orb::kBlockColumns));
      PaintBlock(*this, *source, scale, ramp, repeat, x, y, count);
    }
    run.Tick();
  }
  run.End();
}

void CImgFalseColor::GetFalseColor(float value, int palette, int repeat, float* red, float* green, float* blue) {
  float* const channels[] = {red, green, blue};
  orb::ColorRamp const ramp = orb::RampOf(palette);
  double const v = orb::Wrapped(value, repeat);
  for (int p = 0; p < orb::kRampChannels; ++p) *channels[p] = static_cast<float>(ramp.At(p, v));
}
