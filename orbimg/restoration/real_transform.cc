#include <orbimg/restoration/real_transform.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <orbimg/restoration/plane_memory_internal.h>
#include <orbimg/restoration/real_transform_kernels.h>

namespace {

constexpr double kTwoPi = 6.2831853071796;
constexpr std::ptrdiff_t kFloatsPerCacheLine = 16;

}  // namespace

int IntPow2(int e) {
  int power = 1;
  for (int i = 0; i < e; ++i) power *= 2;
  return power;
}

void RealFft::RealFftSetup(int m) {
  if (m >= 0) SetLine(m, 1);
}

void RealFft::SetLine(int m, int lanes) {
  if (m != lineLog2) {
    lineLog2 = m;
    lineLength = static_cast<std::ptrdiff_t>(1) << m;
    lineNorm = std::sqrt(1.0 / static_cast<double>(lineLength));
    std::size_t const entries = static_cast<std::size_t>(lineLength / 4 + 1);
    cosTable.resize(entries);
    sinTable.resize(entries);
    for (std::size_t j = 0; j < entries; ++j) {
      double const angle = kTwoPi * static_cast<double>(j) / static_cast<double>(lineLength);
      cosTable[j] = static_cast<float>(std::cos(angle));
      sinTable[j] = static_cast<float>(std::sin(angle));
    }
  }
  // The second buffer lies a cache line off a power of two, or its stores would look like the loads of the first.
  std::ptrdiff_t const floats = lineLength * lanes;
  std::ptrdiff_t const needed = 2 * floats + 3 * kFloatsPerCacheLine;
  if (static_cast<std::ptrdiff_t>(area.size()) < needed) area.resize(static_cast<std::size_t>(needed));
  source = orb::AlignToCacheLine(area.data());
  target = orb::AlignToCacheLine(source + floats + kFloatsPerCacheLine);
  resultBuffer = source;
}

void RealFft::LoadLine(float const* samples, std::ptrdiff_t stride) {
  for (std::ptrdiff_t t = 0; t < lineLength; ++t) source[t] = static_cast<float>(samples[t * stride] * lineNorm);
}

void RealFft::StoreLine(float* samples, std::ptrdiff_t stride) const {
  for (std::ptrdiff_t t = 0; t < lineLength; ++t) samples[t * stride] = resultBuffer[t];
}

void RealFft::RealFftForward() { Transform(1, 1); }

void RealFft::RealFftInverse() { Transform(-1, 1); }

// From `source` to the result. With an odd number of passes of radix 2 one stands alone: the one between samples and
// spectra of two, which turns nothing.
void RealFft::Transform(int direction, int lanes) {
  orb::TransformPass pass{nullptr, nullptr, lineLength / 2, 0, lanes, cosTable.data(), sinTable.data()};
  float* from = source;
  float* to = target;
  auto const apply = [&](void (*kernel)(orb::TransformPass const&), std::ptrdiff_t span) {
    pass.from = from;
    pass.to = to;
    pass.span = span;
    kernel(pass);
    std::swap(from, to);
  };
  bool const hasPair = lineLog2 % 2 == 1;
  std::ptrdiff_t const half = lineLength / 2;
  if (direction > 0) {
    if (hasPair) apply(orb::PairPass, half);
    for (std::ptrdiff_t span = hasPair ? half / 4 : half / 2; span >= 1; span /= 4) apply(orb::ForwardQuadPass, span);
  } else {
    for (std::ptrdiff_t span = 1; 2 * span <= half; span *= 4) apply(orb::InverseQuadPass, span);
    if (hasPair) apply(orb::PairPass, half);
  }
  resultBuffer = from;
}

void RealFft::TransformLine(float const* from, float* to, int direction) {
  LoadLine(from, 1);
  Transform(direction, 1);
  StoreLine(to, 1);
}

void RealFft::TransformRows(float const* from, float* to, int log2x, std::ptrdiff_t rows, int direction) {
  std::ptrdiff_t const width = static_cast<std::ptrdiff_t>(1) << log2x;
  if (rows < orb::kTransformLanes || width < orb::kTransformLanes) {
    SetLine(log2x, 1);
    for (std::ptrdiff_t y = 0; y < rows; ++y) TransformLine(from + y * width, to + y * width, direction);
    return;
  }
  SetLine(log2x, orb::kTransformLanes);
  for (std::ptrdiff_t y = 0; y < rows; y += orb::kTransformLanes) {
    orb::InterleaveRows(from + y * width, width, width, lineNorm, source);
    Transform(direction, orb::kTransformLanes);
    orb::SeparateRows(resultBuffer, width, to + y * width, width);
  }
}

void RealFft::TransformColumns(float const* from, float* to, int log2y, std::ptrdiff_t columns, int direction) {
  if (columns < orb::kTransformLanes) {
    SetLine(log2y, 1);
    for (std::ptrdiff_t x = 0; x < columns; ++x) {
      LoadLine(from + x, columns);
      Transform(direction, 1);
      StoreLine(to + x, columns);
    }
    return;
  }
  SetLine(log2y, orb::kTransformLanes);
  for (std::ptrdiff_t x = 0; x < columns; x += orb::kTransformLanes) {
    orb::GatherColumns(from + x, columns, lineLength, lineNorm, source, to + x);
    Transform(direction, orb::kTransformLanes);
    orb::ScatterColumns(resultBuffer, lineLength, to + x, columns);
  }
}

void RealFft::RealFft2(float* image, float* spectrum, int log2x, int log2y, int direction) {
  if (log2x < 0 || log2y < 0 || direction == 0) return;
  std::ptrdiff_t const columns = static_cast<std::ptrdiff_t>(1) << log2x;
  std::ptrdiff_t const rows = static_cast<std::ptrdiff_t>(1) << log2y;
  if ((log2x == 0) != (log2y == 0)) {  // a single line, which way it runs being all the same
    SetLine(std::max(log2x, log2y), 1);
    if (direction > 0) {
      TransformLine(image, spectrum, direction);
    } else {
      TransformLine(spectrum, image, direction);
    }
    return;
  }
  if (direction > 0) {
    TransformRows(image, spectrum, log2x, rows, direction);
    TransformColumns(spectrum, spectrum, log2y, columns, direction);
  } else {
    TransformColumns(spectrum, image, log2y, columns, direction);
    TransformRows(image, image, log2x, rows, direction);
  }
}
