#include <tests/reference/color_reference.h>

#include <cmath>

namespace orb::test::reference {

namespace {

void FillLinearAndXyz(Color& c, double r, double g, double b) {
  double const m = (r + g + b) * 0.3333333333333333;
  double k = 1.0;
  if (m >= 1e-07) k = std::pow(m, 1.2000000000000002);
  c.r = k * r;
  c.g = k * g;
  c.b = k * b;
  c.x = 2.7689 * c.r + 1.7517 * c.g + 1.1302 * c.b;
  c.y = c.r + 4.5907 * c.g + 0.0601 * c.b;
  c.z = 0.0565 * c.g + 5.5943 * c.b;
}

void FillEncoded(Color& c, double x, double y, double z) {
  c.x = x;
  c.y = y;
  c.z = z;
  double blue = ((x - 2.7689 * y) * 0.0565 + 10.95948923 * z) * 0.01629590105369801;
  double green = (z - 5.5943 * blue) * 17.699115044247787;
  double red = y - 4.5907 * green - 0.0601 * blue;
  if (red <= 0) red = 0;
  if (green <= 0) green = 0;
  if (blue <= 0) blue = 0;
  double const m = (red + green + blue) * 0.3333333333333333;
  double k = 1.0;
  if (m >= 1e-07) k = std::pow(m, -0.5454545454545454);
  c.r = k * red;
  c.g = k * green;
  c.b = k * blue;
}

double F(double t) {
  if (t > 0.008856) return std::pow(t, 0.3333333333333333);
  return 7.78 * t + 0.13793103448275862;
}

double Cubed(double f) { return f * f * f; }

double T(double f) {
  double const e = std::pow(0.008856, 0.3333333333333333);
  if (f <= e) return (f - 0.13793103448275862) * 0.12853470437017994;
  return Cubed(f);
}

double Limited(double v, double low, double high) {
  if (v <= low) return low;
  if (v >= high) return high;
  return v;
}

Color ColorOfPixel(COrbImage& image, int x, int y, double high) {
  double v[3];
  for (int p = 0; p < 3; ++p) {
    if (!image.IsColor()) {
      double const raw = image.GetPixelGrayRaw(x, y, 0);
      v[p] = (raw - image.GetLevelMin(0)) / image.GetLevelRange(0) * 255.0;
      v[p] = Limited(v[p], 0.0, 5000.0);
    } else {
      float const min = static_cast<float>(image.GetLevelMin(p));
      float const s = static_cast<float>(255.0 / image.GetLevelRange(p));
      double const raw = image.GetPixelGrayRaw(x, y, p);
      v[p] = (raw - static_cast<double>(min)) * static_cast<double>(s);
      v[p] = Limited(v[p], 0.0, high);
    }
    v[p] = v[p] * 0.00392156862745098;
  }
  return RgbToLab(v[0], v[1], v[2]);
}

template <typename Store>
COrbImage Planes(COrbImage& image, int planes, double high, Store store) {
  COrbImage result(-32, image.GetWidth(), image.GetHeight(), planes, 1.0, 0.0, 1, nullptr, nullptr);
  result.SetStdCtr(image.GetStdCtr());
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) store(result, x, y, ColorOfPixel(image, x, y, high));
  }
  return result;
}

void Set(COrbImage& image, int x, int y, double v, int plane) {
  image.SetPixelGrayRaw(x, y, static_cast<float>(v), plane);
}

}  // namespace

Color RgbToXyz(double r, double g, double b) {
  Color c{};
  FillLinearAndXyz(c, r, g, b);
  return c;
}

Color XyzToRgb(double x, double y, double z) {
  Color c{};
  FillEncoded(c, x, y, z);
  return c;
}

Color RgbToLab(double r, double g, double b) {
  Color c{};
  FillLinearAndXyz(c, r, g, b);
  double const tx = c.x * 0.17696609329652438;
  double const ty = c.y * 0.17696609329652438;
  double const tz = c.z * 0.17696609329652438;
  if (ty > 0.008856) {
    c.l = 116 * std::pow(ty, 0.3333333333333333) - 16;
  } else {
    c.l = 903.29 * ty;
  }
  c.a = (F(tx) - F(ty)) * 500.0;
  c.bb = (F(ty) - F(tz)) * 200.0;
  return c;
}

Color LabToRgb(double l, double a, double b) {
  Color c{};
  c.l = l;
  c.a = a;
  c.bb = b;
  double const ty = l <= 7.999536239999999 ? l * 0.0011070641765103123 : Cubed((l + 16.0) * 0.008620689655172414);
  double const fy = ty <= 0.008856 ? 7.78 * ty + 0.13793103448275862 : std::pow(ty, 0.3333333333333333);
  double const fx = a * 0.002 + fy;
  double const fz = fy - b * 0.005;
  FillEncoded(c, 5.6508 * T(fx), 5.6508 * ty, 5.6508 * T(fz));
  return c;
}

double BrightL(double r, double g, double b) {
  double const unit = 0.00392156862745098;
  Color const c = RgbToLab(Limited(r, -5000.0, 5000.0) * unit, Limited(g, -5000.0, 5000.0) * unit,
                           Limited(b, -5000.0, 5000.0) * unit);
  return LabToRgb(c.l, 0.0, 0.0).r * 255.0;
}

COrbImage LPlane(COrbImage& image) {
  COrbImage result =
      Planes(image, 1, 5000.0, [](COrbImage& to, int x, int y, Color const& c) { Set(to, x, y, c.l, 0); });
  result.SetLevel(0, image.GetLevelMin(0), image.GetLevelMax(0));
  return result;
}

COrbImage AbPlane(COrbImage& image, int clip) {
  return Planes(image, 2, clip != 0 ? 255.0 : 5000.0, [](COrbImage& to, int x, int y, Color const& c) {
    Set(to, x, y, c.a, 0);
    Set(to, x, y, c.bb, 1);
  });
}

COrbImage LabPlane(COrbImage& image) {
  return Planes(image, 3, 5000.0, [](COrbImage& to, int x, int y, Color const& c) {
    Set(to, x, y, c.l, 0);
    Set(to, x, y, c.a, 1);
    Set(to, x, y, c.bb, 2);
  });
}

}  // namespace orb::test::reference
