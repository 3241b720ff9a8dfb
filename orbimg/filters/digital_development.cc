// CImgFilterSpecial::DigitalDvlp: each sample divided by its blurred surroundings.
#include <algorithm>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/digital_development_kernels.h>
#include <orbimg/filters/filter_rows.h>
#include <orbimg/filters/filter_special.h>
#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/filters/window_rows_internal.h>

namespace {

constexpr int kMessage = 6116;
constexpr int kColours = 3;
constexpr int kRadius = 1;

orb::RowConvolution CrossConvolution(double weight, int width) {
  CFilterKernel cross;
  cross.MakeMean(kRadius, 1.0, weight);
  return orb::RowConvolution(cross, kRadius, width);
}

// Develops the rows of a source by its blurred rows.
class Developer {
 public:
  Developer(COrbImage& src, int usedPlanes, double weight, orb::Bounds const& wantedArea)
      : source(src),
        planes(usedPlanes),
        area(wantedArea),
        blur(CrossConvolution(weight, src.GetWidth())),
        divisor(static_cast<std::size_t>(std::max(area.Columns(), 0))),
        blurred(divisor.size()) {}

  // Row y of a plane, divided by what `from` chooses. Locks rows of the source.
  void Develop(int y, int plane, int from, orb::DevelopmentCurve const& curve, float* dst) {
    float const* const samples = source.GetImageAdr(area.left, y, plane, orb::kReadRow | orb::kLockRow, nullptr);
    if (HasPlane(from)) {
      Blur(y, from, divisor);
      orb::DevelopRow(samples, divisor.data(), area.Columns(), orb::LevelOf(source, from), curve, dst);
      return;
    }
    if (from >= kColours) {
      MakeMean(y);
    } else {
      std::fill(divisor.begin(), divisor.end(), 0.0);
    }
    orb::DevelopRow(samples, divisor.data(), area.Columns(), curve, dst);
  }

 private:
  bool HasPlane(int plane) const { return plane >= 0 && plane < planes; }

  void Blur(int y, int plane, std::vector<double>& out) {
    window.Set(&source, kRadius, 0, y, plane, static_cast<int>(orb::kLockRow));
    blur.Compute(window.rows.get(), area.left, area.right, out.data());
  }

  // Intended: each plane by its own levels, after a rounding to float.
  void MakeMean(int y) {
    std::fill(divisor.begin(), divisor.end(), -0.0);  // what adds to nothing, not even to the sign of a zero
    for (int p = 0; p < planes; ++p) {
      Blur(y, p, blurred);
      orb::AddBlurTo256Row(blurred.data(), area.Columns(), orb::LevelOf(source, p), divisor.data());
    }
    orb::TakeThirdRow(divisor.data(), area.Columns());
  }

  COrbImage& source;
  int planes;
  orb::Bounds area;
  orb::RowConvolution blur;
  CFilterRows window;
  std::vector<double> divisor;
  std::vector<double> blurred;
};

}  // namespace

void CImgFilterSpecial::DigitalDvlp(double pivot, double weight, COrbImage* src, int* const blurPlane, CRect* rect,
                                    int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows() * planes);
  if (planes < 1) return run.End();
  // Intended: the destination's plane 0 for all.
  orb::Level const first = orb::LevelOf(*this, 0);
  double const a = first.To256(pivot);
  double const b = first.To256(src->GetAvrGrayRaw(0)) + a;
  Developer developer(*src, IsColor() ? std::min(kColours, src->GetPlanes()) : 1, weight, area);
  for (int p = 0; p < planes; ++p) {
    orb::DevelopmentCurve const curve{orb::LevelOf(*src, p), orb::LevelOf(*this, p), a, b};
    for (int y = area.top; y < area.bottom; ++y) {
      developer.Develop(y, p, blurPlane[p], curve, GetImageAdr(area.left, y, p, 0, nullptr));
      src->UnlockAll();
      run.Tick();
    }
  }
  run.End();
}
