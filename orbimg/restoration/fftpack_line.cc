#include <orbimg/restoration/fftpack_line.h>

#include <cstddef>
#include <mutex>

#include <orbimg/core/row_kernel.h>

#ifdef ORB_FFTPACK_DOUBLE
extern "C" {
void cffti(long n, double* table);
void cfftf(long n, double* line, double* table);
void cfftb(long n, double* line, double* table);
}
#else
extern "C" {
int cffti_(ORB_FFTPACK_INTEGER* n, float* table);
int cfftf_(ORB_FFTPACK_INTEGER* n, float* line, float* table);
int cfftb_(ORB_FFTPACK_INTEGER* n, float* line, float* table);
}
#endif

namespace orb {

namespace {

#ifdef ORB_FFTPACK_DOUBLE
using Real = double;

void SetUp(int n, Real* table) { cffti(n, table); }
void TransformForward(int n, void* line, void* table) { cfftf(n, static_cast<Real*>(line), static_cast<Real*>(table)); }
void TransformBackward(int n, void* line, void* table) {
  cfftb(n, static_cast<Real*>(line), static_cast<Real*>(table));
}
#else
using Real = float;
using Integer = ORB_FFTPACK_INTEGER;

// The loop counters of this build are static: two threads in it would run past the ends of lines, or forever.
class Turn {
 public:
  Turn() : lock(mutex) {}

 private:
  inline static std::mutex mutex;
  std::lock_guard<std::mutex> lock;
};

void SetUp(int n, Real* table) {
  Integer points = n;
  Turn const turn;
  cffti_(&points, table);
}
void TransformForward(int n, void* line, void* table) {
  Integer points = n;
  Turn const turn;
  cfftf_(&points, static_cast<Real*>(line), static_cast<Real*>(table));
}
void TransformBackward(int n, void* line, void* table) {
  Integer points = n;
  Turn const turn;
  cfftb_(&points, static_cast<Real*>(line), static_cast<Real*>(table));
}
#endif

constexpr bool kIsWidened = sizeof(Real) == sizeof(double);

// 4 n numbers and the factors of n: up to 13 integers and two counts, of 8 bytes each at most.
constexpr std::size_t kFactorReals = 30;

std::size_t TableReals(int n) { return 4 * static_cast<std::size_t>(n) + kFactorReals; }

std::size_t WorkDoubles(int n) {
  std::size_t const line = kIsWidened ? 2 * static_cast<std::size_t>(n) : 0;
  return (TableReals(n) + line) * sizeof(Real) / sizeof(double) + 1;
}

ORB_ROW_KERNEL void Widen(float const* line, std::ptrdiff_t count, Real* wide) {
  for (std::ptrdiff_t i = 0; i < count; ++i) wide[i] = line[i];
}

ORB_ROW_KERNEL void Narrow(Real const* wide, std::ptrdiff_t count, float* line) {
  for (std::ptrdiff_t i = 0; i < count; ++i) line[i] = static_cast<float>(wide[i]);
}

}  // namespace

FftpackLine::FftpackLine(int n) : length(n), work(WorkDoubles(n), 0.0) {
  if (n > 1) SetUp(n, reinterpret_cast<Real*>(work.data()));
}

void FftpackLine::Forward(float* line) { Run(TransformForward, line); }

void FftpackLine::Backward(float* line) { Run(TransformBackward, line); }

void FftpackLine::Run(Transform transform, float* line) {
  if (length <= 1) return;
  Real* const table = reinterpret_cast<Real*>(work.data());
  if constexpr (kIsWidened) {
    std::ptrdiff_t const floats = 2 * static_cast<std::ptrdiff_t>(length);
    Real* const wide = table + TableReals(length);
    Widen(line, floats, wide);
    transform(length, wide, table);
    Narrow(wide, floats, line);
  } else {
    transform(length, line, table);
  }
}

}  // namespace orb
