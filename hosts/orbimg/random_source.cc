#include <hosts/orbimg/random_source.h>

#include <cmath>

namespace orb::host {
namespace {

constexpr double kLn2 = 0.6931471805599453;
constexpr double kSqrtHalf = 0.7071067811865476;
constexpr std::uint64_t kGoldenGamma = 0x9E3779B97F4A7C15u;
constexpr double kLargestCountedMean = 20.0;

// Finaliser of the SplitMix64 generator (Steele, Lea, Flood, 2014).
std::uint64_t Mix(std::uint64_t z) {
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

}  // namespace

// x = 2^e m with m between the root of 1/2 and of 2; ln m = 2 artanh t = 2 (t + t^3 / 3 + t^5 / 5 ...), t = (m - 1) /
// (m + 1)
double PortableLog(double x) {
  int exponent = 0;
  double m = std::frexp(x, &exponent);
  if (m < kSqrtHalf) {
    m *= 2.0;
    --exponent;
  }
  double const t = (m - 1.0) / (m + 1.0);
  double const t2 = t * t;
  double series = 0.0;
  for (int k = 21; k >= 3; k -= 2) series = (series + 1.0 / k) * t2;
  return exponent * kLn2 + 2.0 * (t + t * series);
}

RandomSource::RandomSource(std::uint64_t seed, std::uint64_t stream)
    : state(Mix(seed + kGoldenGamma) ^ Mix(stream * kGoldenGamma + 1u)) {}

std::uint64_t RandomSource::Next() {
  state += kGoldenGamma;
  return Mix(state);
}

double RandomSource::Uniform() {
  constexpr double kStep = 1.0 / 9007199254740992.0;  // 2^-53
  return (static_cast<double>(Next() >> 11) + 0.5) * kStep;
}

// Polar method of Marsaglia: two deviates from a point within the unit circle.
double RandomSource::Normal() {
  if (hasSpare) {
    hasSpare = false;
    return spare;
  }
  double u = 0.0;
  double v = 0.0;
  double s = 0.0;
  do {
    u = 2.0 * Uniform() - 1.0;
    v = 2.0 * Uniform() - 1.0;
    s = u * u + v * v;
  } while (s >= 1.0 || s == 0.0);
  double const factor = std::sqrt(-2.0 * PortableLog(s) / s);
  spare = v * factor;
  hasSpare = true;
  return u * factor;
}

// Small means: events at exponential distances are counted until they pass the mean.
double RandomSource::Count(double mean) {
  if (mean > kLargestCountedMean) return mean + std::sqrt(mean) * Normal();
  double count = 0.0;
  for (double passed = -PortableLog(Uniform()); passed < mean; passed -= PortableLog(Uniform())) count += 1.0;
  return count;
}

}  // namespace orb::host
