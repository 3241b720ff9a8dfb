#include <orbimg/core/row_kernel.h>
#include <orbimg/filters/convolution_kernels.h>
#include <orbimg/filters/row_vectors_internal.h>

namespace orb {

ORB_ROW_KERNEL void ClipRow(float const* samples, std::ptrdiff_t count, float lo, float hi, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const v = samples[x];
    out[x] = v <= lo ? lo : v >= hi ? hi : v;
  }
}

ORB_ROW_KERNEL void FoldRow(double const* sums, double const* factors, int radius, std::ptrdiff_t count, float* out) {
  constexpr std::ptrdiff_t kVectors = 4;
  EachColumnBlock<kVectors * kLanes>(
      count,
      [=](std::ptrdiff_t x) __attribute__((always_inline)) {
        Doubles totals[kVectors];
        std::memcpy(totals, sums + x, sizeof(totals));
        for (Doubles& total : totals) total *= factors[0];
        for (int i = 1; i <= radius; ++i) {
          for (std::ptrdiff_t k = 0; k < kVectors; ++k) {
            Doubles left;
            Doubles right;
            std::memcpy(&left, sums + x + k * kLanes - i, sizeof(left));
            std::memcpy(&right, sums + x + k * kLanes + i, sizeof(right));
            totals[k] += factors[i] * (left + right);
          }
        }
        for (std::ptrdiff_t k = 0; k < kVectors; ++k) {
          Floats const narrow = __builtin_convertvector(totals[k], Floats);
          std::memcpy(out + x + k * kLanes, &narrow, sizeof(narrow));
        }
      },
      [=](std::ptrdiff_t x) __attribute__((always_inline)) {
        double total = factors[0] * sums[x];
        for (int i = 1; i <= radius; ++i) total += factors[i] * (sums[x - i] + sums[x + i]);
        out[x] = static_cast<float>(total);
      });
}

}  // namespace orb
