#include <orbimg/restoration/real_transform_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

struct Rotation {
  float c;
  float s;
};

struct Complex {
  float re;
  float im;
};

// From frequency k of the spectra e and o of the even and the odd samples of a line: k and (its conjugate's place) of
// the whole line's.
struct Joined {
  Complex low;
  Complex high;
};

[[gnu::always_inline]] inline Joined Join(Complex e, Complex o, Rotation w) {
  float const t = o.re * w.c - o.im * w.s;
  float const u = o.re * w.s + o.im * w.c;
  return {{e.re + t, e.im + u}, {e.re - t, u - e.im}};
}

// The reverse, twice as large.
struct Split {
  Complex e;
  Complex o;
};

[[gnu::always_inline]] inline Split Halve(Complex low, Complex high, Rotation w) {
  float const sum = low.im + high.im;
  float const difference = low.re - high.re;
  return {{low.re + high.re, low.im - high.im}, {sum * w.s + difference * w.c, sum * w.c - difference * w.s}};
}

// Where the parts of a pass stand, in floats.
class Places {
 public:
  explicit Places(TransformPass const& pass)
      : q(pass.span * pass.lanes), h(pass.half * pass.lanes), lanes(pass.lanes) {}

  std::ptrdiff_t At(std::ptrdiff_t element) const { return element * lanes; }

  std::ptrdiff_t const q;
  std::ptrdiff_t const h;

 private:
  std::ptrdiff_t const lanes;
};

[[gnu::always_inline]] inline Rotation RotationOf(TransformPass const& pass, std::ptrdiff_t k) {
  return {pass.cosTable[k], pass.sinTable[k]};
}

// The real terms: frequencies 0 and L of spectra of four subsequences.
[[gnu::always_inline]] inline void ForwardEnds(float const* __restrict a, float* __restrict b, Places const& at) {
  float* const middle = b + at.h / 2;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t j = 0; j < at.q; ++j) {
    float const x = a[j] + a[2 * at.q + j];
    float const y = a[at.q + j] + a[3 * at.q + j];
    middle[j] = a[j] - a[2 * at.q + j];
    middle[at.h + j] = a[at.q + j] - a[3 * at.q + j];
    b[j] = x + y;
    b[at.h + j] = x - y;
  }
}

// The middle frequency, L/2: the highest, real terms of four subsequences make two complex numbers.
[[gnu::always_inline]] inline void ForwardMiddle(float const* __restrict a, float* __restrict b, Places const& at,
                                                 Rotation w) {
  float const* const nyquist = a + at.h;
  float* const low = b + at.h / 4;
  float* const high = b + (at.h - at.h / 4);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t j = 0; j < at.q; ++j) {
    Joined const z = Join({nyquist[j], nyquist[2 * at.q + j]}, {nyquist[at.q + j], nyquist[3 * at.q + j]}, w);
    low[j] = z.low.re;
    low[at.h + j] = z.low.im;
    high[j] = z.high.re;
    high[at.h + j] = z.high.im;
  }
}

// Frequencies f and L - f. `place` is span x f, in floats.
[[gnu::always_inline]] inline void ForwardQuads(float const* __restrict a, float* __restrict b, Places const& at,
                                                std::ptrdiff_t place, Rotation first, Rotation near, Rotation far) {
  float const* const re = a + 4 * place;
  float const* const im = re + at.h;
  float* const nearLow = b + place;
  float* const nearHigh = b + (at.h - place);
  float* const farLow = b + (at.h / 2 - place);
  float* const farHigh = b + (at.h / 2 + place);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t j = 0; j < at.q; ++j) {
    Joined const x = Join({re[j], im[j]}, {re[2 * at.q + j], im[2 * at.q + j]}, first);
    Joined const y = Join({re[at.q + j], im[at.q + j]}, {re[3 * at.q + j], im[3 * at.q + j]}, first);
    Joined const n = Join(x.low, y.low, near);
    Joined const f = Join(x.high, y.high, far);
    nearLow[j] = n.low.re;
    nearLow[at.h + j] = n.low.im;
    nearHigh[j] = n.high.re;
    nearHigh[at.h + j] = n.high.im;
    farLow[j] = f.low.re;
    farLow[at.h + j] = f.low.im;
    farHigh[j] = f.high.re;
    farHigh[at.h + j] = f.high.im;
  }
}

[[gnu::always_inline]] inline void InverseEnds(float const* __restrict a, float* __restrict b, Places const& at) {
  float const* const middle = a + at.h / 2;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t j = 0; j < at.q; ++j) {
    float const x = a[j] + a[at.h + j];
    float const y = a[j] - a[at.h + j];
    float const xMiddle = 2.0f * middle[j];
    float const yMiddle = 2.0f * middle[at.h + j];
    b[j] = x + xMiddle;
    b[at.q + j] = y + yMiddle;
    b[2 * at.q + j] = x - xMiddle;
    b[3 * at.q + j] = y - yMiddle;
  }
}

[[gnu::always_inline]] inline void InverseMiddle(float const* __restrict a, float* __restrict b, Places const& at,
                                                 Rotation w) {
  float* const nyquist = b + at.h;
  float const* const low = a + at.h / 4;
  float const* const high = a + (at.h - at.h / 4);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t j = 0; j < at.q; ++j) {
    Split const z = Halve({low[j], low[at.h + j]}, {high[j], high[at.h + j]}, w);
    nyquist[j] = 2.0f * z.e.re;
    nyquist[at.q + j] = 2.0f * z.o.re;
    nyquist[2 * at.q + j] = 2.0f * z.e.im;
    nyquist[3 * at.q + j] = 2.0f * z.o.im;
  }
}

[[gnu::always_inline]] inline void InverseQuads(float const* __restrict a, float* __restrict b, Places const& at,
                                                std::ptrdiff_t place, Rotation first, Rotation near, Rotation far) {
  float* const re = b + 4 * place;
  float* const im = re + at.h;
  float const* const nearLow = a + place;
  float const* const nearHigh = a + (at.h - place);
  float const* const farLow = a + (at.h / 2 - place);
  float const* const farHigh = a + (at.h / 2 + place);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t j = 0; j < at.q; ++j) {
    Split const n = Halve({nearLow[j], nearLow[at.h + j]}, {nearHigh[j], nearHigh[at.h + j]}, near);
    Split const f = Halve({farLow[j], farLow[at.h + j]}, {farHigh[j], farHigh[at.h + j]}, far);
    Split const x = Halve(n.e, f.e, first);
    Split const y = Halve(n.o, f.o, first);
    re[j] = x.e.re;
    im[j] = x.e.im;
    re[2 * at.q + j] = x.o.re;
    im[2 * at.q + j] = x.o.im;
    re[at.q + j] = y.e.re;
    im[at.q + j] = y.e.im;
    re[3 * at.q + j] = y.o.re;
    im[3 * at.q + j] = y.o.im;
  }
}

}  // namespace

ORB_ROW_KERNEL void PairPass(TransformPass const& pass) {
  float const* __restrict const a = pass.from;
  float* __restrict const b = pass.to;
  std::ptrdiff_t const h = pass.half * pass.lanes;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t j = 0; j < h; ++j) {
    b[j] = a[j] + a[h + j];
    b[h + j] = a[j] - a[h + j];
  }
}

ORB_ROW_KERNEL void ForwardQuadPass(TransformPass const& pass) {
  Places const at(pass);
  ForwardEnds(pass.from, pass.to, at);
  std::ptrdiff_t const middle = pass.half / 4;  // span x L/2
  for (std::ptrdiff_t k = pass.span; k < middle; k += pass.span) {
    ForwardQuads(pass.from, pass.to, at, at.At(k), RotationOf(pass, 2 * k), RotationOf(pass, k),
                 RotationOf(pass, pass.half / 2 - k));
  }
  if (middle >= pass.span) ForwardMiddle(pass.from, pass.to, at, RotationOf(pass, middle));
}

ORB_ROW_KERNEL void InverseQuadPass(TransformPass const& pass) {
  Places const at(pass);
  InverseEnds(pass.from, pass.to, at);
  std::ptrdiff_t const middle = pass.half / 4;
  for (std::ptrdiff_t k = pass.span; k < middle; k += pass.span) {
    InverseQuads(pass.from, pass.to, at, at.At(k), RotationOf(pass, 2 * k), RotationOf(pass, k),
                 RotationOf(pass, pass.half / 2 - k));
  }
  if (middle >= pass.span) InverseMiddle(pass.from, pass.to, at, RotationOf(pass, middle));
}

void InterleaveRows(float const* rows, std::ptrdiff_t stride, std::ptrdiff_t length, double factor, float* lines) {
  constexpr std::ptrdiff_t kLanes = kTransformLanes;
  for (std::ptrdiff_t x = 0; x < length; x += kLanes) {
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float const* const row = rows + lane * stride + x;
      for (std::ptrdiff_t t = 0; t < kLanes; ++t) {
        lines[(x + t) * kLanes + lane] = static_cast<float>(row[t] * factor);
      }
    }
  }
}

void SeparateRows(float const* lines, std::ptrdiff_t length, float* rows, std::ptrdiff_t stride) {
  constexpr std::ptrdiff_t kLanes = kTransformLanes;
  for (std::ptrdiff_t x = 0; x < length; x += kLanes) {
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float* const row = rows + lane * stride + x;
      for (std::ptrdiff_t t = 0; t < kLanes; ++t) row[t] = lines[(x + t) * kLanes + lane];
    }
  }
}

ORB_ROW_KERNEL void GatherColumns(float const* image, std::ptrdiff_t stride, std::ptrdiff_t length, double factor,
                                  float* lines, float const* soon) {
  for (std::ptrdiff_t t = 0; t < length; ++t) {
    float const* __restrict const row = image + t * stride;
    float* __restrict const line = lines + t * kTransformLanes;
    for (int lane = 0; lane < kTransformLanes; lane += kColumnsPerCacheLine) {
      __builtin_prefetch(soon + t * stride + lane, 1);
    }
    for (int lane = 0; lane < kTransformLanes; ++lane) line[lane] = static_cast<float>(row[lane] * factor);
  }
}

void ScatterColumns(float const* lines, std::ptrdiff_t length, float* image, std::ptrdiff_t stride) {
  for (std::ptrdiff_t t = 0; t < length; ++t) {
    std::copy_n(lines + t * kTransformLanes, kTransformLanes, image + t * stride);
  }
}

}  // namespace orb
