#include <orbimg/tone/tone_curve.h>

#include <algorithm>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/tone/tone_curve_kernels.h>

namespace {

constexpr int kMessage = 6114;

}  // namespace

void CImgToneCurve::Do(float** const curves, int count, COrbImage* source, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  // Intended: the rows of the image, whatever the rectangle.
  run.Start(progress, kMessage, planes * height);
  run.EachRow(*source, [&](orb::RowSpan const& row) {
    orb::Level const level = orb::LevelOf(*this, row.plane);
    orb::ToneCurve const master(curves[0], count);
    if (IsColor()) {
      orb::CurveRow(row.src, row.dst, row.count, level, orb::ToneCurve(curves[1 + row.plane], count), master);
    } else {
      orb::CurveRow(row.src, row.dst, row.count, level, master);
    }
  });
  run.End();
}

double CImgToneCurve::CalcToneCurve(float* curve, int count, double value) {
  if (value != value || count < 1) return value;
  int const last = count - 1;
  if (value < 0.0) {
    double const a = curve[0];
    double const b = curve[std::min(1, last)];
    if (a == b) return a * 255.0;
    double const s = (b - a) * last;
    return s < 0.0 ? s * value : 0.0;
  }
  if (value > 255.0) {
    double const a = curve[std::max(last - 1, 0)];
    double const b = curve[last];
    double const white = b * 255.0;
    if (a == b) return white;
    double const s = (b - a) * last;
    // Intended: the line passes through (white, white), not through (255, white).
    return (s > 0.0 ? s : 0.0) * (value - white) + white;
  }
  // Intended: the entry as it is. Neighbouring entries are not interpolated.
  return curve[std::min(orb::TruncateToInt(last * value * orb::kInverse255), last)] * 255.0;
}
