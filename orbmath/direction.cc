#include <orbmath/direction.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

double SineOf(double degrees) { return std::sin(degrees * kRadiansPerDegree); }

double CosineOf(double degrees) { return std::cos(degrees * kRadiansPerDegree); }

void Fill(double const (&rows)[3][3], double m[3][3]) {
  for (int i = 0; i < 3; ++i) std::copy_n(rows[i], 3, m[i]);
}

}  // namespace

void AdToDc(double const ad[2], double dc[3]) {
  double const longitude = ad[0];
  double const latitude = ad[1];
  dc[0] = CosineOf(latitude) * CosineOf(longitude);
  dc[1] = CosineOf(latitude) * SineOf(longitude);
  dc[2] = SineOf(latitude);
}

void RotateX(double angle, double m[3][3]) {
  double const c = CosineOf(angle);
  double const s = SineOf(angle);
  Fill({{1.0, 0.0, 0.0}, {0.0, c, -s}, {0.0, s, c}}, m);
}

void RotateY(double angle, double m[3][3]) {
  double const c = CosineOf(angle);
  double const s = SineOf(angle);
  Fill({{c, 0.0, s}, {0.0, 1.0, 0.0}, {-s, 0.0, c}}, m);
}

void MulMatrix(double const a[3][3], double const b[3][3], double out[3][3]) {
  double product[3][3];
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) product[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
  }
  Fill(product, out);
}

void RotateDc(double const v[3], double const m[3][3], double out[3]) {
  double turned[3];
  for (int i = 0; i < 3; ++i) turned[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
  std::copy_n(turned, 3, out);
}
