#include <orbimg/tone/lab_color_enhance.h>

#include <algorithm>

#include <orbimg/core/lab_kernels.h>
#include <orbimg/core/operator_run.h>
#include <platform/assert.h>

namespace {

constexpr int kMessage = 6134;

struct Gain {
  double plus;
  double minus;
};

ORB_ROW_KERNEL void GainRow(float const* src, std::ptrdiff_t count, Gain gain, double* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const v = src[i];
    out[i] = v >= 0.0 ? v * gain.plus : v * gain.minus;
  }
}

// All three planes are read before any is written: the images may be one.
void EnhanceBlock(COrbImage const& lab, Gain a, Gain b, int x, int y, std::ptrdiff_t count, COrbImage& image) {
  orb::ColorBlock colors;
  orb::ColorBlock rgb;
  orb::WidenRow(lab.GetImageAdr(x, y, 0, 1, nullptr), count, colors.first);
  GainRow(lab.GetImageAdr(x, y, 1, 1, nullptr), count, a, colors.second);
  GainRow(lab.GetImageAdr(x, y, 2, 1, nullptr), count, b, colors.third);
  orb::LabToRgb(colors, count, rgb);
  double const* const channels[] = {rgb.first, rgb.second, rgb.third};
  for (int p = 0; p < 3; ++p) {
    orb::StoreEncodedRow(channels[p], count, orb::LevelOf(image, p), image.GetImageAdr(x, y, p, 0, nullptr));
  }
}

}  // namespace

void CImgLabColorEnhance::Do(COrbImage* source, double gainA, double gainB, CRect* rect, int progress) {
  Do(source, gainA, gainA, gainB, gainB, rect, progress);
}

void CImgLabColorEnhance::Do(COrbImage* source, double gainAPlus, double gainAMinus, double gainBPlus,
                             double gainBMinus, CRect* rect, int progress) {
  ORB_ASSERT(planes >= 3 && source->GetPlanes() >= 3);
  orb::Run run(*this, rect);
  // Intended: the height of the image, not of the rectangle.
  run.Start(progress, kMessage, height);
  orb::Bounds const& area = run.Area();
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; x += static_cast<int>(orb::kLabBlock)) {
      EnhanceBlock(*source, Gain{gainAPlus, gainAMinus}, Gain{gainBPlus, gainBMinus}, x, y,
                   std::min<std::ptrdiff_t>(orb::kLabBlock, area.right - x), *this);
    }
    run.Tick();
  }
  run.End();
}
