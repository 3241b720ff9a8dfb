#include <tests/reference/mem_reference.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include <orbimg/core/orb_image.h>

namespace orb::test::reference {

SolverOutcome Solve(std::vector<float> y, std::vector<float> const& w, std::vector<float> const& psf,
                    ConvolveOperator const& op, double const* limits, double variance, int nx, int ny, int halfX,
                    int halfY, std::vector<float> const& start) {
  std::size_t const n = y.size();
  std::vector<float> store(2 * n);
  auto const apply = [&](int mode, std::vector<float>& out, std::vector<float> const& in, std::vector<float> const& k) {
    op(out.data(), in.data(), k.data(), store.data(), nx, ny, halfX, halfY, &mode, nullptr, 0, 0);
    return mode;
  };
  SolverOutcome outcome;
  auto const fail = [&](int status) {
    outcome.code = status == 8 ? 8 : 3;
    return outcome;
  };
  if (!(variance > 0.0)) {
    outcome.code = 1;
    return outcome;
  }
  double ndata = 0.0;
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    if (w[i] == 0.0f) continue;
    ndata += 1.0;
    sum += y[i];
  }
  double const scale = ndata / sum;
  std::vector<float> x(n, 1.0f);
  double startSum = 0.0;
  for (float each : start) startSum += each;
  for (std::size_t i = 0; i < start.size(); ++i) {
    x[i] = static_cast<float>(std::max(start[i] * (static_cast<double>(n) / startSum), 1e-10));
  }
  double const sigma = std::sqrt(variance) * scale;
  std::vector<float> square(psf.size());
  for (std::size_t i = 0; i < psf.size(); ++i) {
    double const v = psf[psf.size() - 1 - i];
    square[i] = static_cast<float>(v * v);
  }
  std::vector<float> g(n);
  std::vector<float> s(n);
  std::vector<float> D(n);
  std::vector<float> b(n);
  std::vector<float> v(n);
  if (int const status = apply(3, D, w, square)) return fail(status);
  for (float& each : D) each = static_cast<float>(each * (1.0 / sigma));
  if (int const status = apply(1, s, x, psf)) return fail(status);
  for (std::size_t i = 0; i < n; ++i) y[i] = static_cast<float>(y[i] * scale - s[i]);
  for (std::size_t i = 0; i < n; ++i) s[i] = static_cast<float>(static_cast<double>(y[i]) * w[i] * (-1.0 / sigma));
  if (int const status = apply(2, g, s, psf)) return fail(status);
  double nunk = static_cast<double>(n);
  if (ndata < nunk) {
    for (std::size_t i = 0; i < n; ++i) {
      if (g[i] != 0.0f) continue;
      nunk -= 1.0;
      if (!start.empty()) x[i] = 1.0f;
    }
  }
  double chi = 0.0;
  for (std::size_t i = 0; i < n; ++i) chi += static_cast<double>(y[i]) * y[i] * w[i];
  chi /= sigma * sigma;
  double a = 0.0;
  for (std::size_t i = 0; i < n; ++i) s[i] = static_cast<float>(-std::log(static_cast<double>(x[i])));
  double lag = 1e-10;
  double lag0 = 1e-10;
  if (!start.empty()) {
    double A = 0.0;
    double B = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
      A += static_cast<double>(g[i]) * g[i] * x[i];
      B += static_cast<double>(s[i]) * s[i] * x[i];
    }
    if (B > 0.0) {
      lag0 = std::sqrt(A / B);
      lag = lag0 / std::sqrt(chi / ndata);
    }
  }
  std::vector<float>& d = y;
  double dAd = 0.0;
  double aOld = 0.0;
  double ratio = 1e-10;
  for (int k = 1;; ++k) {
    for (std::size_t i = 0; i < n; ++i) {
      x[i] = static_cast<float>(1.0 / x[i]);
      s[i] = static_cast<float>((g[i] - s[i] * lag) / (x[i] * lag + D[i]));
    }
    if (k == 1) {
      d = s;
    } else {
      double p = 0.0;
      double q = 0.0;
      double u = 0.0;
      for (std::size_t i = 0; i < n; ++i) {
        p += static_cast<double>(s[i]) * v[i];
        q += static_cast<double>(s[i]) * d[i] * x[i];
        u += static_cast<double>(d[i]) * d[i] * x[i];
      }
      double const beta = (p / sigma + q * lag) / (u * lag + dAd);
      for (std::size_t i = 0; i < n; ++i) d[i] = static_cast<float>(d[i] * -beta + s[i]);
    }
    int iuch = 0;
    double S1 = 0.0;
    double Q1 = 0.0;
    double Q2 = 0.0;
    double aLimit = 0.0;
    for (;;) {
      if (int const status = apply(1, b, d, psf)) return fail(status);
      S1 = 0.0;
      dAd = 0.0;
      for (std::size_t i = 0; i < n; ++i) S1 += static_cast<double>(g[i]) * d[i];
      for (std::size_t i = 0; i < n; ++i) dAd += static_cast<double>(b[i]) * b[i] * w[i];
      dAd /= sigma;
      Q1 = 2.0 * S1 / sigma;
      Q2 = dAd / sigma;
      if (iuch == 1) break;
      double L = 0.0;
      for (std::size_t i = 0; i < n; ++i) {
        x[i] = static_cast<float>(1.0 / x[i]);
        L += std::log(static_cast<double>(x[i])) * d[i];
      }
      aLimit = -(lag * L + S1) / dAd;
      double const t = 0.9 / std::fabs(aLimit);
      bool isCut = false;
      for (std::size_t i = 0; i < n; ++i) {
        if (aLimit <= 0.0 && x[i] * t - d[i] < 0.0) {
          d[i] = static_cast<float>(x[i] * (0.5 / std::fabs(aLimit)));
          isCut = true;
        } else if (aLimit > 0.0 && x[i] * t + d[i] < 0.0) {
          d[i] = static_cast<float>(x[i] * (-0.5 / std::fabs(aLimit)));
          isCut = true;
        }
      }
      if (!isCut) break;
      iuch = 1;
    }
    for (std::size_t i = 0; i < n; ++i) s[i] = static_cast<float>(static_cast<double>(b[i]) * w[i]);
    if (int const status = apply(2, v, s, psf)) return fail(status);
    for (std::size_t i = 0; i < n; ++i) s[i] = static_cast<float>(-static_cast<double>(d[i]) / x[i]);
    double aLow = 1.0 / *std::min_element(s.begin(), s.end());
    double aHigh = 1.0 / *std::max_element(s.begin(), s.end());
    if (aLow >= 0.0) aLow = -HUGE_VAL;
    if (aHigh <= 0.0) aHigh = HUGE_VAL;
    a = aOld > aLow && aOld < aHigh ? aOld : 0.0;
    double const lagSaved = lag;
    int stage = 0;
    int sub = 0;
    double G = 0.0;
    double G1 = 0.0;
    double chiNew = 0.0;
    for (;;) {
      aOld = a;
      sub = sub + 1;
      double sd = 0.0;
      for (std::size_t i = 0; i < n; ++i) {
        double const t = std::max(d[i] * a + x[i], 1e-10);
        s[i] = static_cast<float>(-std::log(t));
      }
      for (std::size_t i = 0; i < n; ++i) sd += static_cast<double>(s[i]) * d[i];
      G = ((a * dAd + S1) - lag * sd) / nunk;
      if (sub <= 6) {
        double ddx = 0.0;
        for (std::size_t i = 0; i < n; ++i) ddx += static_cast<double>(d[i]) * d[i] / (d[i] * a + x[i]);
        G1 = (lag * ddx + dAd) / nunk;
      }
      a = a - G / G1;
      if (a <= aLow) a = aLow * 0.99 + aOld * 0.01;
      if (a >= aHigh) a = aHigh * 0.99 + aOld * 0.01;
      chiNew = (a * Q2 + Q1) * a + chi;
      if (sub <= 5 && stage == 0) {
        double const c = a / sigma;
        double A = 0.0;
        double B = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
          double const u = v[i] * c + g[i];
          double const t = d[i] * a + x[i];
          A += t * u * u;
          B += t * s[i] * s[i];
        }
        if (B != 0.0) {
          ratio = std::sqrt(A / B);
          lag = ratio / std::sqrt(chiNew / ndata);
        } else {
          lag = 0.0;
        }
      } else if (sub <= 5) {
        lag = lag0 / std::sqrt(chiNew / ndata);
      }
      if (sub < 10 && (sub < 2 || (std::fabs(G) >= 1e-07 && std::fabs((a - aOld) / a) >= 0.0001))) continue;
      bool const good = a <= 0.0 && std::fabs((a - aLimit) / aLimit) <= 0.5 && sub < 10;
      if (good || stage == 1) break;
      a = 0.0;
      lag = lagSaved;
      stage = 1;
      sub = 0;
    }
    if (stage == 0) lag0 = ratio;
    for (std::size_t i = 0; i < n; ++i) x[i] = static_cast<float>(std::max(d[i] * a + x[i], 1e-10));
    chi = chiNew;
    for (std::size_t i = 0; i < n; ++i) g[i] = static_cast<float>(g[i] + v[i] * (a / sigma));
    double dd = 0.0;
    double largest = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
      dd += static_cast<double>(d[i]) * d[i];
      largest = std::max(largest, std::fabs(static_cast<double>(d[i])));
    }
    outcome.limits[0] = std::sqrt(dd / nunk) * std::fabs(a) / scale;
    outcome.limits[1] = largest * std::fabs(a) / scale;
    outcome.limits[2] = std::sqrt(sigma * dAd / ndata) * std::fabs(a) / sigma;
    outcome.limits[3] = std::sqrt(chi / ndata);
    outcome.trace.a.push_back(a);
    outcome.trace.lag.push_back(lag);
    outcome.trace.aLimit.push_back(aLimit);
    outcome.trace.sub.push_back(sub);
    outcome.trace.stage.push_back(stage);
    outcome.trace.iuch.push_back(iuch);
    bool const reached =
        outcome.limits[0] <= limits[0] || outcome.limits[1] <= limits[1] || outcome.limits[2] <= limits[2];
    bool const isLost = std::isnan(outcome.limits[0] + outcome.limits[1] + outcome.limits[2]);
    bool const stop = reached || (limits[3] > 0.0 ? k >= limits[3] : isLost);
    if (!stop) continue;
    float const least = *std::min_element(x.begin(), x.end());
    for (float& each : x) each = static_cast<float>(each / scale);
    outcome.code = iuch == 1 ? 5 : 0;
    if (least <= 1e-10f) outcome.code = outcome.code * 10 + 6;
    outcome.x = x;
    return outcome;
  }
}

std::vector<float> MemGauss(double sigma, int width, int height) {
  std::vector<float> values;
  double sum = 0.0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double const dx = x - width * 0.5;
      double const dy = y - height * 0.5;
      double const value = std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma)) / (sigma * sigma * 6.28318);
      values.push_back(static_cast<float>(value));
      sum += value;
    }
  }
  for (int i = 0; i < width * height; ++i) values[0] = static_cast<float>(values[0] / sum);
  return values;
}

int Mem(COrbImage& image, double sigma, double noise, int iterations, CRect const* rect) {
  int left = 0;
  int top = 0;
  int w = image.GetWidth();
  int h = image.GetHeight();
  if (rect != nullptr && (rect->Width() != w || rect->Height() != h)) {
    left = rect->left;
    top = rect->top;
    w = rect->Width();
    h = rect->Height();
  }
  int nx = 1;
  int ny = 1;
  while (nx < w) nx *= 2;
  while (ny < h) ny *= 2;
  std::vector<float> const psf = MemGauss(sigma, 63, 63);
  std::vector<std::vector<float>> results;
  for (int p = 0; p < image.GetPlanes(); ++p) {
    std::vector<float> data(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny));
    auto const at = [&](int x, int y) { return static_cast<std::size_t>((y + (ny - h) / 2) * nx + x + (nx - w) / 2); };
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) data[at(x, y)] = image.GetPixelGrayRaw(left + x, top + y, p);
    }
    MemConvolve convolve;
    double const limits[] = {0.5, 1.0, 0.05, static_cast<double>(iterations)};
    SolverOutcome const outcome = Solve(data, std::vector<float>(data.size(), 1.0f), psf, std::ref(convolve), limits,
                                        noise * noise, nx, ny, 31, 31, {});
    for (int code = outcome.code; code > 0; code /= 10) {
      if (code % 10 != 0 && code % 10 != 5 && code % 10 != 6 && code % 10 != 9) return 0;
    }
    std::vector<float> plane;
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) plane.push_back(outcome.x[at(x, y)]);
    }
    results.push_back(plane);
  }
  for (int p = 0; p < image.GetPlanes(); ++p) {
    std::size_t i = 0;
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x)
        image.SetPixelGrayRaw(left + x, top + y, results[static_cast<std::size_t>(p)][i++], p);
    }
  }
  return 1;
}

}  // namespace orb::test::reference
