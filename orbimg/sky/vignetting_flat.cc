#include <orbimg/sky/vignetting_flat.h>

#include <cmath>
#include <cstdint>

#include <orbimg/core/operator_run.h>

namespace {

constexpr int kMessage = 6139;

// Shown where the flat field is not above 0.
constexpr double kNoLight = 255.0;

// How far one coordinate lies from another. As a double, which no pair of them overflows.
double Distance(int from, int to) { return static_cast<double>(to) - from; }

struct RadialField {
  double falloff;
  double level;
};

// f = (dx^2 + dy^2) * falloff + level, dx being `left` at the first column
ORB_ROW_KERNEL void DivideByFieldRow(float const* src, float* dst, std::ptrdiff_t count, double left, double dy,
                                     RadialField field) {
  orb::EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    int const columns = static_cast<int>(end - begin);
    double const first = left + static_cast<double>(begin);
    float const* const in = src + begin;
    float* const out = dst + begin;
    ORB_COLUMNS_INDEPENDENT
    for (int i = 0; i < columns; ++i) {
      double const dx = first + i;
      double const f = (dx * dx + dy * dy) * field.falloff + field.level;
      double const corrected = field.level / f * in[i];
      out[i] = static_cast<float>(f <= 0.0 ? kNoLight : corrected);
    }
  });
}

struct Ramp {
  double c;
  double s;
  double m;
  double slope;
};

// Intended: the middle of the rows alone, also for a ramp along x, and no more than 16 bits of it.
int MiddleRow(int from, int to) {
  std::int64_t const middle = (static_cast<std::int64_t>(to) + from) / 2;
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(middle));
}

Ramp MakeRamp(CPoint from, CPoint to, double slope) {
  double const run = Distance(from.x, to.x);
  double const t = Distance(from.y, to.y) / run;
  double const cosine = std::sqrt(1.0 / (t * t + 1.0));
  double const c = run < 0.0 ? -cosine : cosine;
  return Ramp{c, c * t, static_cast<double>(MiddleRow(from.y, to.y)), slope};
}

ORB_ROW_KERNEL void SubtractRampRow(float const* src, float* dst, std::ptrdiff_t count, int left, int y, Ramp ramp) {
  double const across = y * ramp.s;
  orb::EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    int const columns = static_cast<int>(end - begin);
    int const first = left + static_cast<int>(begin);
    float const* const in = src + begin;
    float* const out = dst + begin;
    ORB_COLUMNS_INDEPENDENT
    for (int i = 0; i < columns; ++i) {
      out[i] = static_cast<float>(in[i] - ((first + i) * ramp.c + across - ramp.m) * ramp.slope);
    }
  });
}

}  // namespace

void CImgFlat::Do(COrbImage* src, CPoint center, double falloff, double level, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows() * planes);
  double const left = Distance(center.x, run.Area().left);
  run.EachRow(*src, [&](orb::RowSpan const& row) {
    DivideByFieldRow(row.src, row.dst, row.count, left, Distance(center.y, row.y), RadialField{falloff, level});
  });
  run.End();
}

void CImgFlat::Do(COrbImage* src, CPoint from, CPoint to, double slope, double /*extra*/, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  Ramp const ramp = MakeRamp(from, to, slope);
  run.Start(progress, kMessage, run.Rows() * planes);
  run.EachRow(*src, [&](orb::RowSpan const& row) {
    SubtractRampRow(row.src, row.dst, row.count, run.Area().left, row.y, ramp);
  });
  run.End();
}
