#include <orbimg/filters/rotational_gradient_kernels.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include <orbimg/core/row_kernel.h>

namespace {

constexpr std::ptrdiff_t kBlock = 128;  // columns at a time: what is kept of them fits the first cache
constexpr double kUnit = 0x1p-53;       // the largest relative error of one rounding

// Roundings of both ways between the samples and the result, counted generously: six for each reading of a sample,
// three for the sum, one for the division, each taken twice, and what the bound itself rounds.
constexpr double kResultRoundings = 32.0 * kUnit;
// Second-order terms, and the roundings of the steepness, which is a float.
constexpr double kSteepnessMargin = 1.0625;
constexpr double kMostSlack = 1e-3;

// One of the two turned positions of each column of a block, and what is read there.
struct Turned {
  alignas(64) double u[kBlock];
  alignas(64) double v[kBlock];
  alignas(64) double inside[kBlock];  // 1.0 or 0.0
  alignas(64) std::int32_t column[kBlock];
  alignas(64) std::int32_t row[kBlock];
  alignas(64) std::uint64_t upper[kBlock];  // two neighbouring samples
  alignas(64) std::uint64_t lower[kBlock];
  alignas(64) double sample[kBlock];
  alignas(64) float steepness[kBlock];  // by how much the sample may change over one pixel
  alignas(64) float size[kBlock];       // bound for its magnitude
};

struct Axis {
  double along;   // of dx
  double offset;  // of the row
  int size;
};

// The cell and the fraction of a coordinate; `near` gets lower to its distance from a whole number.
[[gnu::always_inline]] inline void Locate(Axis const& axis, double dx, double& fraction, std::int32_t& cell,
                                          bool& isInside, double& near) {
  double const p = dx * axis.along + axis.offset;
  double const whole = __builtin_floor(p);
  double const f = p - whole;
  double const distance = f < 1 - f ? f : 1 - f;
  near = distance < near ? distance : near;
  double const last = axis.size - 1;
  double const lastCell = axis.size - 2;
  isInside = isInside & (p > 0) & (p < axis.size);
  double const held = p < last ? p : last;
  // Not a number, too, becomes a cell that there is.
  double const from0 = whole > 0 ? whole : 0;
  double const first = from0 < lastCell ? from0 : lastCell;
  cell = static_cast<std::int32_t>(first);
  fraction = held - first;
}

[[gnu::always_inline]] inline void LocateBlock(Axis const& x, Axis const& y, double firstColumn, double cx,
                                               std::ptrdiff_t count, Turned& t, double* near) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const dx = firstColumn + static_cast<double>(static_cast<std::int32_t>(i)) - cx;
    bool isInside = true;
    Locate(x, dx, t.u[i], t.column[i], isInside, near[i]);
    Locate(y, dx, t.v[i], t.row[i], isInside, near[i]);
    t.inside[i] = isInside ? 1.0 : 0.0;
  }
}

[[gnu::always_inline]] inline void GatherBlock(float const* plane, std::ptrdiff_t width, std::ptrdiff_t count,
                                               Turned& t) {
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float const* const cell = plane + t.row[i] * width + t.column[i];
    std::memcpy(&t.upper[i], cell, sizeof(t.upper[i]));
    std::memcpy(&t.lower[i], cell + width, sizeof(t.lower[i]));
  }
}

[[gnu::always_inline]] inline float FirstOf(std::uint64_t pair) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(pair));
}

[[gnu::always_inline]] inline float SecondOf(std::uint64_t pair) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(pair >> 32));
}

[[gnu::always_inline]] inline float Larger(float a, float b) { return a > b ? a : b; }

[[gnu::always_inline]] inline void InterpolateBlock(std::ptrdiff_t count, Turned& t) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float const a0 = FirstOf(t.upper[i]);
    float const a1 = SecondOf(t.upper[i]);
    float const b0 = FirstOf(t.lower[i]);
    float const b1 = SecondOf(t.lower[i]);
    double const u = t.u[i];
    double const v = t.v[i];
    double const upper = (1 - u) * a0 + u * a1;
    double const lower = (1 - u) * b0 + u * b1;
    double const sample = upper * (1 - v) + lower * v;
    float const across = Larger(__builtin_fabsf(a1 - a0), __builtin_fabsf(b1 - b0));
    float const down = Larger(__builtin_fabsf(b0 - a0), __builtin_fabsf(b1 - a1));
    float const size = __builtin_fabsf(a0) + __builtin_fabsf(a1) + __builtin_fabsf(b0) + __builtin_fabsf(b1);
    // What stands in for a place outside must not reach the bounds either: not a number would hide a doubt there.
    bool const isInside = t.inside[i] != 0.0;
    t.sample[i] = isInside ? sample : 0.0;
    t.steepness[i] = isInside ? across + down : 0.0f;
    t.size[i] = isInside ? size : 0.0f;
  }
}

[[gnu::always_inline]] inline std::uint32_t BitsOf(double v) {
  return std::bit_cast<std::uint32_t>(static_cast<float>(v));
}

template <bool kDivides>
[[gnu::always_inline]] inline void StoreBlock(orb::GradientRun const& run, float const* c, Turned const& plus,
                                              Turned const& minus, double const* near, std::ptrdiff_t count, float* dst,
                                              unsigned char* doubtful) {
  double const weight = run.gain + 2.0;
  double const slack = run.slack;
  double const share = kDivides ? 1.0 / __builtin_fabs(run.gain) : 1.0;
  double const ofSteepness = slack * kSteepnessMargin * share;
  double const ofSize = kResultRoundings * share;
  double const gain = run.gain;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const centre = weight * c[i];
    double const difference = centre - plus.sample[i] - minus.sample[i];
    double const v = kDivides ? difference / gain : difference;
    double const steepness = static_cast<double>(plus.steepness[i]) + minus.steepness[i];
    double const size = static_cast<double>(plus.size[i]) + minus.size[i] + __builtin_fabs(centre);
    double const error = steepness * ofSteepness + size * ofSize;
    bool const isSure = (near[i] > slack) & (BitsOf(v - error) == BitsOf(v + error));
    dst[i] = static_cast<float>(v);
    doubtful[i] = isSure ? 0 : 1;
  }
}

}  // namespace

namespace orb {

// The difference of the two ways, in roundings: the angle of the plain formula is off by at most 8 for its arc tangent
// and pi + |angle| for the sum, its sine by 2, and its product, sum and distance by 5; the rotation, by 5 for its sine,
// cosine and products and by 4 for its sums. All of these count on the distance from the centre; the sums count on the
// centre too.
GradientRun::GradientRun(Turn const& initTurn, double initGain, int initWidth, int initHeight)
    : turn(initTurn),
      gain(initGain),
      cosA(std::cos(initTurn.angle)),
      sinA(std::sin(initTurn.angle)),
      width(initWidth),
      height(initHeight) {
  double const farX = std::max(std::fabs(turn.cx), std::fabs(width - turn.cx));
  double const farY = std::max(std::fabs(turn.cy), std::fabs(height - turn.cy));
  double const farthest = std::sqrt(farX * farX + farY * farY);
  double const centre = std::fabs(turn.cx) + std::fabs(turn.cy);
  slack = kUnit * (farthest * (32.0 + std::fabs(turn.angle)) + 8.0 * centre + 1.0);
}

bool GradientRun::IsSound() const { return width >= 2 && height >= 2 && slack < kMostSlack; }

ORB_ROW_KERNEL bool GradientRow(GradientRun const& run, float const* plane, int y, int left, float const* c,
                                std::ptrdiff_t count, float* dst, unsigned char* doubtful) {
  Turned plus;
  Turned minus;
  alignas(64) double near[kBlock];
  double const dy = y - run.turn.cy;
  double const acrossY = dy * run.sinA;
  double const alongY = dy * run.cosA + run.turn.cy;
  Axis const plusX{run.cosA, run.turn.cx + acrossY, run.width};
  Axis const plusY{-run.sinA, alongY, run.height};
  Axis const minusX{run.cosA, run.turn.cx - acrossY, run.width};
  Axis const minusY{run.sinA, alongY, run.height};
  for (std::ptrdiff_t first = 0; first < count; first += kBlock) {
    std::ptrdiff_t const n = std::min(kBlock, count - first);
    std::fill_n(near, n, 1.0);
    double const column = static_cast<double>(left + first);
    LocateBlock(plusX, plusY, column, run.turn.cx, n, plus, near);
    LocateBlock(minusX, minusY, column, run.turn.cx, n, minus, near);
    GatherBlock(plane, run.width, n, plus);
    GatherBlock(plane, run.width, n, minus);
    InterpolateBlock(n, plus);
    InterpolateBlock(n, minus);
    if (run.gain != 0.0) {
      StoreBlock<true>(run, c + first, plus, minus, near, n, dst + first, doubtful + first);
    } else {
      StoreBlock<false>(run, c + first, plus, minus, near, n, dst + first, doubtful + first);
    }
  }
  return std::memchr(doubtful, 1, static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0))) != nullptr;
}

}  // namespace orb
