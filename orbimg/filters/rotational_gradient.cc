#include <orbimg/filters/rotational_gradient.h>

#include <algorithm>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/rotational_gradient_kernels.h>

namespace {

constexpr int kMessage = 6176;
constexpr double kRadiansPerDegree = 0.017453292519943295;

float PlainGradient(orb::PlaneSamples const& plane, orb::Turn const& turn, double gain, int x, int y, float c) {
  orb::TurnedPair const s = orb::SampleTurnedPair(plane, turn, x, y);
  double const v = (gain + 2.0) * c - s.plus - s.minus;
  return static_cast<float>(gain != 0.0 ? v / gain : v);
}

}  // namespace

void CImgRttnGrdtn::CalcRect(int& left, int& top, int& right, int& bottom, CRect* rect) {
  NormalizeRect(rect, left, top, right, bottom);
}

void CImgRttnGrdtn::Do(double angle, double gain, double cx, double cy, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  int const left = run.Area().left;
  orb::Turn const turn{angle * kRadiansPerDegree, cx, cy};
  orb::GradientRun const gradient(turn, gain, src->GetWidth(), src->GetHeight());
  std::vector<unsigned char> doubtful(static_cast<std::size_t>(std::max(run.Area().Columns(), 0)), 1);
  run.EachRow(*src, [&](orb::RowSpan const& row) {
    if (row.count <= 0) return;
    orb::PlaneSamples const plane{src->GetImageAdr(0, 0, row.plane, 1, nullptr), gradient.width, gradient.height};
    bool const isSure = gradient.IsSound() && !orb::GradientRow(gradient, plane.samples, row.y, left, row.src,
                                                                row.count, row.dst, doubtful.data());
    if (isSure) return;
    for (std::ptrdiff_t i = 0; i < row.count; ++i) {
      if (doubtful[static_cast<std::size_t>(i)] == 0) continue;
      row.dst[i] = PlainGradient(plane, turn, gain, left + static_cast<int>(i), row.y, row.src[i]);
    }
  });
  run.End();
}
