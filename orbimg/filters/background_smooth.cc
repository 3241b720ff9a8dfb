// CImgFilterMisc::BkgSmooth: a mean where the image is dark, with a fade towards a level.
#include <algorithm>
#include <optional>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/dark_mix_kernels.h>
#include <orbimg/filters/filter_misc.h>
#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/filters/window_rows_internal.h>

namespace {

constexpr int kMessage = 6123;
constexpr int kColours = 3;
constexpr double kMonoBand = 0.05;    // of the source's level range
constexpr double kColourBand = 16.0;  // of 255

// The means of one row and plane at a time, and how dark its samples are.
class DarkRows {
 public:
  DarkRows(COrbImage& image, orb::Bounds const& bounds, int radius)
      : source(image),
        area(bounds),
        windowRadius(std::max(radius, 0)),
        rows(2 * static_cast<std::size_t>(windowRadius) + 1) {
    CFilterKernel mean;
    mean.MakeMean(radius, radius, 1.0);
    convolution.emplace(mean, windowRadius, source.GetWidth());
    auto const columns = static_cast<std::size_t>(std::max(area.Columns(), 0));
    means.resize(columns);
    gauge.resize(columns);
    for (int p = 0; p < kColours; ++p) levels[p] = orb::LevelOf(source, PlaneOf(p));
  }

  void GaugeRaw(int y) { orb::GaugeRawRow(Samples(y, 0), area.Columns(), gauge.data()); }

  void GaugeBrightness(int y) {
    if (source.GetPlanes() >= kColours) {
      orb::GaugeColourRow(Samples(y, 0), Samples(y, 1), Samples(y, 2), area.Columns(), levels, gauge.data());
    } else {
      orb::GaugePlaneRow(Samples(y, 0), area.Columns(), levels[0], gauge.data());
    }
  }

  void Mix(int y, int plane, orb::Fade const& fade, float* dst) {
    orb::SetWindowRows(source, 0, y, PlaneOf(plane), windowRadius, 0, rows.data());
    convolution->Compute(rows.data(), area.left, area.right, means.data());
    orb::MixDarkRow(Samples(y, plane), means.data(), gauge.data(), area.Columns(), fade, dst);
  }

 private:
  // A mono source serves all planes.
  int PlaneOf(int plane) const { return std::min(plane, source.GetPlanes() - 1); }
  float const* Samples(int y, int plane) const {
    return source.GetImageAdr(area.left, y, PlaneOf(plane), orb::kReadRow, nullptr);
  }

  COrbImage& source;
  orb::Bounds area;
  int windowRadius;
  std::optional<orb::RowConvolution> convolution;
  std::vector<float*> rows;
  std::vector<double> means;
  std::vector<double> gauge;
  orb::Level levels[kColours];
};

}  // namespace

void CImgFilterMisc::BkgSmooth(double level, int radius, double strength, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows());
  DarkRows dark(*src, area, radius);
  // Intended: the bands of mono and colour images differ.
  orb::Fade const fade = IsColor() ? orb::Fade{orb::LevelOf(*this, 0).To256(level), kColourBand, strength}
                                   : orb::Fade{level, src->GetLevelRange(0) * kMonoBand, strength};
  int const smoothed = IsColor() ? std::min(planes, kColours) : 1;
  for (int y = area.top; y < area.bottom; ++y) {
    IsColor() ? dark.GaugeBrightness(y) : dark.GaugeRaw(y);
    for (int p = 0; p < smoothed; ++p) dark.Mix(y, p, fade, GetImageAdr(area.left, y, p, 0, nullptr));
    run.Tick();
  }
  run.End();
}
