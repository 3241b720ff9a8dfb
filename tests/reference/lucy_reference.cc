#include <tests/reference/lucy_reference.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace orb::test::reference {

namespace {

using Plane = std::vector<float>;

struct Lucy1 {
  int nx, ny, w, h, acceleration;
  double adu, noise, c0;
  Plane weight, norm, estimate, model, prevModelStep, prevStep, spectrumOfPsf, data;

  std::size_t Size() const { return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny); }

  Plane Pad(Plane const& from, int width, int height) const {
    Plane pad(Size(), 0.0f);
    int const x0 = (nx - width) / 2 + 1;
    int const y0 = (ny - height) / 2 + 1;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        pad[static_cast<std::size_t>((y + y0 - 1) * nx + x + x0 - 1)] = from[static_cast<std::size_t>(y * width + x)];
      }
    }
    return pad;
  }

  Plane Transform(Plane const& a) const {
    Plane spectrum(2 * Size());
    FftTables tables(nx, ny);
    Fft2Forward(&tables, a.data(), spectrum.data(), nx, ny, nullptr, 0, 0);
    return spectrum;
  }

  // sign 1: blur; -1: unblur.
  Plane Convolve(Plane const& a, double sign) const {
    Plane s = Transform(a);
    for (std::size_t i = 0; i < s.size(); i += 2) {
      double const hr = spectrumOfPsf[i], hi = sign * spectrumOfPsf[i + 1], ar = s[i], ai = s[i + 1];
      s[i] = static_cast<float>(hr * ar - hi * ai);
      s[i + 1] = static_cast<float>(hr * ai + hi * ar);
    }
    Plane out(Size());
    FftTables tables(nx, ny);
    Fft2Inverse(&tables, s.data(), out.data(), nx, ny, nullptr, 0, 0);
    return out;
  }

  double ChiSquare() const {
    double sum = 0.0;
    double n = 0.0;
    for (std::size_t i = 0; i < Size(); ++i) {
      if (!(weight[i] > 0.0f)) continue;
      double const t = weight[i] * adu;
      double const r = (static_cast<double>(model[i]) - data[i]) * t;
      double const v = t * (model[i] + 0.0) + noise * noise;
      if (v != 0.0) sum += r * r / v;
      n += 1.0;
    }
    return sum / (n - 1.0);
  }

  double StepLimit(Plane const& step) const {
    double limit = DBL_MAX;
    bool isThere = false;
    for (std::size_t i = 0; i < Size(); ++i) {
      if (!(step[i] < 0.0f)) continue;
      isThere = true;
      limit = std::min(limit, -static_cast<double>(estimate[i]) / step[i]);
    }
    return isThere ? limit : 100.0;
  }

  double LowerLimit(Plane const& step) const {
    double limit = -DBL_MAX;
    bool isThere = false;
    for (std::size_t i = 0; i < Size(); ++i) {
      if (!(step[i] > 0.0f)) continue;
      isThere = true;
      limit = std::max(limit, -static_cast<double>(estimate[i]) / step[i]);
    }
    return isThere ? limit : -100.0;
  }

  double LineSearch(Plane const& g, double cmin, double cmax) const {
    double c = 1.0;
    for (int pass = 1; pass <= 20; ++pass) {
      double s1 = 0.0;
      double s2 = 0.0;
      for (std::size_t i = 0; i < Size(); ++i) {
        double const wt = weight[i];
        if (!(wt > 0.0)) continue;
        double const m = (g[i] * c + model[i] + 0.0) * wt + c0;
        double const d = (data[i] + 0.0) * wt + c0;
        s1 += (d / m - 1.0) * (wt * g[i]);
        s2 += (wt * g[i] / m) * (wt * g[i] / m) * d;
      }
      double dc = s1 / s2;
      if (c + dc >= cmax) {
        dc = (cmax - c) * 0.5;
      } else if (c + dc <= cmin) {
        dc = (cmin - c) * 0.5;
      }
      c = c + dc;
      if (std::fabs(dc) <= 0.01) break;
    }
    return c;
  }

  void Mix(double alpha, Plane& now, Plane& last) const {
    for (std::size_t i = 0; i < Size(); ++i) {
      float const old = now[i];
      now[i] = static_cast<float>(old + alpha * last[i]);
      last[i] = old;
    }
  }

  void Accelerate(Plane& step, int iteration) {
    bool turbo = acceleration == 2 && iteration >= 2;
    Plane g = Convolve(step, 1.0);
    if (turbo) {
      double a = 0.0;
      double b = 0.0;
      for (std::size_t i = 0; i < Size(); ++i) {
        double const p = weight[i] * adu, e = estimate[i] + c0, q = data[i] + c0, m = prevModelStep[i];
        a += g[i] * m * p * q / (e * e);
        b += p * q * (m * m) / (e * e);
      }
      Mix(-a / b, step, prevStep);
      Mix(-a / b, g, prevModelStep);
    }
    for (std::size_t i = 0; i < Size(); ++i) {
      if (estimate[i] < 0.0f) estimate[i] = step[i] = 0.0f;
    }
    double cmax = StepLimit(step);
    double cmin = 1.0;
    if (cmax < 1.0) {
      if (turbo) {
        step = prevStep;
        g = prevModelStep;
        cmax = StepLimit(step);
      }
    } else if (turbo) {
      cmin = LowerLimit(step);
    }
    double const c = LineSearch(g, cmin, cmax);
    for (std::size_t i = 0; i < Size(); ++i) {
      step[i] = static_cast<float>(c * step[i]);
      g[i] = static_cast<float>(c * g[i]);
      estimate[i] = static_cast<float>(static_cast<double>(estimate[i]) + step[i]);
      model[i] = static_cast<float>(static_cast<double>(model[i]) + g[i]);
    }
    prevStep = step;
    prevModelStep = g;
  }

  void Iterate(int iteration) {
    Plane work(Size());
    for (std::size_t i = 0; i < Size(); ++i) {
      double const num = data[i] + 0.0 + c0;
      double den = model[i] + 0.0 + c0;
      if (den == 0.0) den = 1.0;
      work[i] = static_cast<float>(num / den * weight[i]);
    }
    work = Convolve(work, -1.0);
    for (std::size_t i = 0; i < Size(); ++i) work[i] = static_cast<float>(static_cast<double>(work[i]) / norm[i]);
    for (std::size_t i = 0; i < Size(); ++i) work[i] = static_cast<float>(static_cast<double>(estimate[i]) * work[i]);
    if (acceleration == 0) {
      estimate = work;
      model = Convolve(estimate, 1.0);
      return;
    }
    for (std::size_t i = 0; i < Size(); ++i) work[i] = static_cast<float>(static_cast<double>(work[i]) - estimate[i]);
    Accelerate(work, iteration);
  }

  void SetWeightsAndMean() {
    weight = Pad(Plane(static_cast<std::size_t>(w * h), 1.0f), w, h);
    double sum = 0.0;
    double weights = 0.0;
    for (std::size_t i = 0; i < Size(); ++i) {
      if (data[i] < -(std::sqrt(c0 / adu) * 5.0)) weight[i] = 0.0f;
      sum += static_cast<double>(weight[i]) * data[i];
      weights += weight[i];
    }
    double mean = sum / weights;
    if (!(mean >= 0.0)) mean = 1.0;
    estimate = Pad(Plane(static_cast<std::size_t>(w * h), static_cast<float>(mean)), w, h);
  }

  void SetSpectrum(Plane psf) {
    std::size_t const at = static_cast<std::size_t>(std::max_element(psf.begin(), psf.end()) - psf.begin());
    int const px = static_cast<int>(at) % nx;
    int const py = static_cast<int>(at) / nx;
    Plane shifted(Size());
    for (int y = 0; y < ny; ++y) {
      for (int x = 0; x < nx; ++x) {
        shifted[static_cast<std::size_t>(y * nx + x)] =
            psf[static_cast<std::size_t>((y + py) % ny * nx + (x + px) % nx)];
      }
    }
    spectrumOfPsf = Transform(shifted);
    double const zero = spectrumOfPsf[0];
    for (float& v : spectrumOfPsf) v = static_cast<float>(v / zero);
  }

  void Reach() {
    norm = Convolve(weight, -1.0);
    float const limit = static_cast<float>(0.001 * *std::max_element(norm.begin(), norm.end()));
    for (std::size_t i = 0; i < Size(); ++i) {
      if (!(norm[i] < limit)) continue;
      norm[i] = 1.0f;
      estimate[i] = 0.0f;
    }
  }
};

}  // namespace

std::vector<float> LucyGauss(double sigma, int width, int height) {
  std::vector<float> psf;
  double sum = 0.0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double const dx = x - width * 0.5;
      double const dy = y - height * 0.5;
      double const v = std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma)) / (sigma * sigma * 6.28318);
      psf.push_back(static_cast<float>(v));
      sum += v;
    }
  }
  for (int i = 0; i < width * height; ++i) psf[0] = static_cast<float>(psf[0] / sum);
  return psf;
}

std::vector<double> LucyPlane(std::vector<float>& data, int w, int h, std::vector<float> const& psf, int psfWidth,
                              int psfHeight, int iterations, double adu, double noise, int acceleration) {
  Lucy1 s{};
  s.nx = std::max(w, psfWidth);
  s.ny = std::max(h, psfHeight);
  s.w = w;
  s.h = h;
  s.acceleration = acceleration;
  s.adu = adu;
  s.noise = noise;
  s.c0 = noise * noise / adu;
  s.data = s.Pad(data, w, h);
  s.SetWeightsAndMean();
  Plane padded = s.Pad(psf, psfWidth, psfHeight);
  for (float& v : padded) v = std::max(v, 0.0f);
  s.SetSpectrum(padded);
  s.Reach();
  s.model = s.Convolve(s.estimate, 1.0);
  s.prevStep = s.prevModelStep = Plane(s.Size(), 0.0f);
  std::vector<double> chi{s.ChiSquare()};
  for (int i = 1; i <= iterations; ++i) {
    s.Iterate(i);
    chi.push_back(s.ChiSquare());
    if (chi.back() <= 1.0) break;
  }
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      data[static_cast<std::size_t>(y * w + x)] =
          s.estimate[static_cast<std::size_t>((y + (s.ny - h) / 2) * s.nx + x + (s.nx - w) / 2)];
    }
  }
  return chi;
}

void Lucy(COrbImage& image, double sigma, double adu, double noise, int iterations) {
  int const w = image.GetWidth();
  int const h = image.GetHeight();
  for (int p = 0; p < image.GetPlanes(); ++p) {
    std::vector<float> data;
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) data.push_back(image.GetPixelGrayRaw(x, y, p));
    }
    LucyPlane(data, w, h, LucyGauss(sigma, 64, 64), 64, 64, iterations, adu, noise, 2);
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) image.SetPixelGrayRaw(x, y, data[static_cast<std::size_t>(y * w + x)], p);
    }
  }
}

}  // namespace orb::test::reference
