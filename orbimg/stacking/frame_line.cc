#include <orbimg/stacking/frame_line_internal.h>

#include <cmath>

namespace orb {

FrameLine::FrameLine(COrbImage& frame, double dx, double dy, double angle, int columns, int planes)
    : origin(OriginOf(frame, dx, dy, angle, columns, planes)),
      row(frame, 0, columns, dx, dy, std::sin(angle * kRadiansPerDegree), std::cos(angle * kRadiansPerDegree)),
      samples(static_cast<std::size_t>(columns) * static_cast<std::size_t>(planes)) {}

FrameLine::Origin FrameLine::OriginOf(COrbImage& frame, double dx, double dy, double angle, int columns, int planes) {
  CfPoint const center = frame.GetStdCtr();
  return Origin{&frame, frame.GetWidth(), frame.GetHeight(), center.fx, center.fy, dx, dy, angle, columns, planes};
}

bool FrameLine::Fits(COrbImage& frame, double dx, double dy, double angle, int columns, int planes) const {
  return origin == OriginOf(frame, dx, dy, angle, columns, planes);
}

void FrameLine::Sample(int y) {
  frameAddress = reinterpret_cast<std::uintptr_t>(origin.frame->GetImageAdr(0, 0, 0, 1, nullptr));
  row.Locate(y);
  for (int p = 0; p < origin.planes; ++p) {
    row.SampleRaw(p, 0.0, samples.data() + p * static_cast<std::ptrdiff_t>(origin.columns));
  }
}

std::uintptr_t FrameLine::NextAddress(int plane, std::ptrdiff_t column) const {
  if (column < Begin() || column >= End()) return 0;
  double const sx = row.PositionX(column);
  double const sy = row.PositionY(column);
  auto const x = static_cast<std::ptrdiff_t>(sx);
  auto const y = static_cast<std::ptrdiff_t>(sy);
  // Samples as they are need one row, interpolated ones the next but one as well.
  bool const whole = static_cast<double>(x) == sx && static_cast<double>(y) == sy;
  std::ptrdiff_t const sourceRow = static_cast<std::ptrdiff_t>(origin.frameHeight) * plane + y + (whole ? 1 : 2);
  return frameAddress + static_cast<std::uintptr_t>(sourceRow * origin.frameWidth + x) * sizeof(float);
}

}  // namespace orb
