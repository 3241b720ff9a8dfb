#include <tests/reference/false_color_reference.h>

#include <algorithm>
#include <cmath>

namespace orb::test::reference {

namespace {

struct Color {
  double channel[3];
};

Color TableColor(Rgb const& rgb) { return {{rgb.red, rgb.green, rgb.blue}}; }

Color StopColor(int palette, int s) {
  static Color const spectrum[] = {{{0, 0, 255}}, {{0, 255, 255}}, {{0, 255, 0}}, {{255, 255, 0}}, {{255, 0, 0}}};
  static Color const full[] = {{{0, 0, 0}},     {{0, 0, 255}}, {{0, 255, 255}},  {{0, 255, 0}},
                               {{255, 255, 0}}, {{255, 0, 0}}, {{255, 255, 255}}};
  static Color const blues[] = {{{0, 0, 0}}, {{0, 0, 128}}, {{0, 0, 255}}, {{128, 128, 255}}, {{255, 255, 255}}};
  return palette == 0 ? spectrum[s] : palette == 1 ? full[s] : blues[s];
}

Rgb Mix(Color a, Color b, double fraction) {
  float c[3];
  for (int p = 0; p < 3; ++p) c[p] = static_cast<float>(a.channel[p] * (1 - fraction) + b.channel[p] * fraction);
  return {c[0], c[1], c[2]};
}

double Clip(double v) {
  if (v < 0.0) return 0.0;
  if (v > 255.0) return 255.0;
  return v;
}

}  // namespace

std::vector<Rgb> FireTable() {
  std::vector<Rgb> table;
  for (int i = 0; i < 256; ++i) {
    table.push_back({static_cast<float>(std::min(3 * i, 255)), static_cast<float>(std::clamp(3 * (i - 85), 0, 255)),
                     static_cast<float>(std::clamp(3 * (i - 170), 0, 255))});
  }
  return table;
}

Rgb FalseColorOf(float value, int palette, int repeat, std::vector<Rgb> const& table) {
  double v = Clip(value);
  if (repeat > 0) v = Clip(std::fmod(repeat * v, 256.0));
  float const gray = static_cast<float>(v);
  if (palette < 0 || palette > 5 || std::isnan(v)) return {gray, gray, gray};
  if (palette >= 3) {
    auto const i = static_cast<std::size_t>(v);
    if (i == 255) return table[255];
    return Mix(TableColor(table[i]), TableColor(table[i + 1]), v - static_cast<double>(i));
  }
  double const spacing = palette == 1 ? 42.5 : 63.75;
  double const factor = palette == 1 ? 0.015625 : 0.01568627450980392;
  int const last = palette == 1 ? 6 : 4;
  int const s = static_cast<int>(v * (palette == 1 ? 0.023529411764705882 : 0.01568627450980392));
  if (s == last) return Mix(StopColor(palette, last), StopColor(palette, last), 0.0);
  return Mix(StopColor(palette, s), StopColor(palette, s + 1), (v - s * spacing) * factor);
}

float FalseColorValueOf(COrbImage& src, int x, int y, double low, double high) {
  float const lo = static_cast<float>((low - src.GetLevelMin(0)) / src.GetLevelRange(0) * 255.0);
  float const hi = static_cast<float>((high - src.GetLevelMin(0)) / src.GetLevelRange(0) * 255.0);
  double const range = static_cast<double>(hi) - static_cast<double>(lo);
  if (!src.IsColor()) {
    double const raw = src.GetPixelGrayRaw(x, y, 0);
    return static_cast<float>(((raw - src.GetLevelMin(0)) / src.GetLevelRange(0) * 255.0 - lo) / range * 255.0);
  }
  double u[3];
  for (int p = 0; p < 3; ++p) u[p] = (src.GetPixelGrayRaw(x, y, p) - src.GetLevelMin(p) - lo) / range * 255.0;
  return static_cast<float>(0.587 * u[1] + 0.299 * u[0] + 0.114 * u[2]);
}

void FalseColor(COrbImage& dst, double low, double high, int palette, int repeat, std::vector<Rgb> const& table,
                COrbImage& src, CRect* rect) {
  if (!dst.IsColor()) return;
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      Rgb const rgb = FalseColorOf(FalseColorValueOf(src, x, y, low, high), palette, repeat, table);
      float const c[] = {rgb.red, rgb.green, rgb.blue};
      for (int p = 0; p < 3; ++p) {
        double const raw = dst.GetLevelRange(p) * static_cast<double>(c[p]) * 0.00392156862745098 + dst.GetLevelMin(p);
        dst.SetPixelGrayRaw(x, y, static_cast<float>(raw), p);
      }
    }
  }
}

}  // namespace orb::test::reference
