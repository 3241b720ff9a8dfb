#include <orbimg/core/constants.h>
#include <orbimg/core/row_kernel.h>
#include <orbimg/tone/auto_level_internal.h>

namespace orb {

namespace {

ORB_ROW_KERNEL void BrightnessRow(float const* red, float const* green, float const* blue, std::ptrdiff_t count,
                                  Level r, Level g, Level b, double* values) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    values[x] = kRedWeight * r.To256(red[x]) + kGreenWeight * g.To256(green[x]) + kBlueWeight * b.To256(blue[x]);
  }
}

ORB_ROW_KERNEL void ToRawRow(double* values, std::ptrdiff_t count, Level level) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) values[x] = level.ToRaw(values[x]);
}

}  // namespace

Brightness256Values::Brightness256Values(COrbImage const& of, Bounds const& area)
    : RectangleValues(of, area), buffer(static_cast<std::size_t>(area.Columns())) {}

double const* Brightness256Values::Row(int row) {
  Compute(row, 0, Columns(), buffer.data());
  return buffer.data();
}

void Brightness256Values::Compute(int row, int column, std::ptrdiff_t count, double* values) const {
  int const x = bounds.left + column;
  int const y = bounds.top + row;
  BrightnessRow(image->GetImageAdr(x, y, 0, 1, nullptr), image->GetImageAdr(x, y, 1, 1, nullptr),
                image->GetImageAdr(x, y, 2, 1, nullptr), count, LevelOf(*image, 0), LevelOf(*image, 1),
                LevelOf(*image, 2), values);
}

RawBrightnessValues::RawBrightnessValues(COrbImage const& of, Bounds const& area)
    : Brightness256Values(of, area), level(LevelOf(of, 0)) {}

double const* RawBrightnessValues::Row(int row) {
  Compute(row, 0, Columns(), buffer.data());
  ToRawRow(buffer.data(), Columns(), level);
  return buffer.data();
}

double RawBrightnessValues::At(std::int64_t position) const {
  double v = 0.0;
  Compute(static_cast<int>(position / Columns()), static_cast<int>(position % Columns()), 1, &v);
  return level.ToRaw(v);
}

}  // namespace orb
