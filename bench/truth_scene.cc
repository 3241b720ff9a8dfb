#include <bench/truth_scene.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <random>

#include <hosts/orbimg/star_width.h>

namespace orb::bench {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kReach = 6.0;         // sigmas that a source is drawn to
constexpr double kBrightPlace = 96.0;  // pixels from both edges
constexpr double kKeptFree = 45.0;     // pixels around the bright star
constexpr double kMargin = 24.0;       // pixels that stars stay off the edges
constexpr int kEdge = 16;              // pixels that count for nothing
constexpr double kAperture = 8.0;      // pixels
constexpr double kDark = 0.01;         // units: where the blurred scene is less above the sky, there is no source

struct Noise {
  std::mt19937_64 engine;
  double Uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine); }
};

void AddSource(SceneSource const& s, double blur, double shift, int side, std::vector<double>& image) {
  double const varianceX = s.sigmaX * s.sigmaX + blur * blur;
  double const varianceY = s.sigmaY * s.sigmaY + blur * blur;
  double const reachX = kReach * std::sqrt(varianceX);
  double const reachY = kReach * std::sqrt(varianceY);
  int const left = std::max(0, static_cast<int>(s.x - reachX));
  int const right = std::min(side - 1, static_cast<int>(s.x + reachX));
  int const top = std::max(0, static_cast<int>(s.y - reachY));
  int const bottom = std::min(side - 1, static_cast<int>(s.y + reachY));
  double const peak = s.flux / (2.0 * kPi * std::sqrt(varianceX * varianceY));
  for (int y = top; y <= bottom; ++y) {
    double const dy = y + shift - s.y;
    for (int x = left; x <= right; ++x) {
      double const dx = x + shift - s.x;
      image[static_cast<std::size_t>(y * side + x)] +=
          peak * std::exp(-0.5 * (dx * dx / varianceX + dy * dy / varianceY));
    }
  }
}

double Quantile(std::vector<double>& values, double share) {
  auto const place = values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

// What stands within a circle above the sky.
double LightWithin(std::vector<float> const& image, int side, double sky, double x, double y) {
  double sum = 0.0;
  for (int j = static_cast<int>(std::ceil(y - kAperture)); j <= y + kAperture; ++j) {
    for (int i = static_cast<int>(std::ceil(x - kAperture)); i <= x + kAperture; ++i) {
      if (std::hypot(i - x, j - y) <= kAperture) sum += image[static_cast<std::size_t>(j * side + i)] - sky;
    }
  }
  return sum;
}

// The mean of rings a pixel wide, the darkest of them.
double DarkestRing(std::vector<float> const& image, int side, double sky, double x, double y) {
  constexpr int kFirst = 3;
  constexpr int kLast = 14;
  std::vector<double> sums(kLast + 1);
  std::vector<int> counts(kLast + 1);
  for (int j = static_cast<int>(y) - kLast; j <= static_cast<int>(y) + kLast; ++j) {
    for (int i = static_cast<int>(x) - kLast; i <= static_cast<int>(x) + kLast; ++i) {
      auto const ring = static_cast<std::size_t>(std::lround(std::hypot(i - x, j - y)));
      if (ring > kLast) continue;
      sums[ring] += image[static_cast<std::size_t>(j * side + i)];
      ++counts[ring];
    }
  }
  double least = sky;
  for (std::size_t ring = kFirst; ring <= kLast; ++ring) least = std::min(least, sums[ring] / counts[ring]);
  return sky - least;
}

COrbImage LessSky(std::vector<float> const& image, int side, double sky) {
  COrbImage result(-32, side, side, 1, 1.0, 0.0, 1, nullptr, nullptr);
  float* const samples = result.GetImageAdr(0, 0, 0, 0, nullptr);
  for (std::size_t i = 0; i < image.size(); ++i) samples[i] = static_cast<float>(image[i] - sky);
  return result;
}

}  // namespace

Scene::Scene(SceneSettings const& initSettings) : settings(initSettings) {
  Noise noise{std::mt19937_64(settings.seed)};
  double const side = settings.side;
  stars.push_back(
      {kBrightPlace + 0.3, kBrightPlace - 0.2, settings.brightFlux, settings.starSigma, settings.starSigma});
  auto const wanted = static_cast<std::size_t>(settings.stars * (side / 512.0) * (side / 512.0));
  while (stars.size() < wanted) {
    double const x = noise.Uniform(kMargin, side - kMargin);
    double const y = noise.Uniform(kMargin, side - kMargin);
    double const flux = std::exp(noise.Uniform(std::log(2e3), std::log(1e5)));
    bool isFree = IsFarFromBright(x, y);
    for (SceneSource const& s : stars) isFree = isFree && std::hypot(s.x - x, s.y - y) > 2.5 * kAperture;
    if (isFree) stars.push_back({x, y, flux, settings.starSigma, settings.starSigma});
  }
  // Two disks with cores, and two clouds, in the other three quarters.
  double const c = side / 512.0;
  clouds = {{370.0 * c, 140.0 * c, 4e5, 22.0, 12.0}, {370.0 * c, 140.0 * c, 5e4, 4.0, 2.5},
            {150.0 * c, 380.0 * c, 3e5, 10.0, 20.0}, {153.0 * c, 376.0 * c, 3e4, 2.0, 2.0},
            {380.0 * c, 390.0 * c, 2e5, 16.0, 16.0}, {410.0 * c, 370.0 * c, 8e4, 7.0, 9.0}};
}

bool Scene::IsFarFromBright(double x, double y) const { return std::hypot(x - stars[0].x, y - stars[0].y) > kKeptFree; }

std::vector<float> Scene::Render(double blur, double shift) const {
  std::vector<double> image(static_cast<std::size_t>(settings.side) * static_cast<std::size_t>(settings.side),
                            settings.sky);
  for (std::vector<SceneSource> const* sources : {&stars, &clouds}) {
    for (SceneSource const& s : *sources) AddSource(s, blur, shift, settings.side, image);
  }
  return {image.begin(), image.end()};
}

std::vector<float> Scene::Frame() const {
  std::vector<float> frame = Blurred();
  std::mt19937_64 engine(settings.seed + 1);
  std::normal_distribution<double> reading(0.0, settings.readNoise);
  for (float& v : frame) {
    std::poisson_distribution<long> photons(v * settings.adu);
    v = static_cast<float>((static_cast<double>(photons(engine)) + reading(engine)) / settings.adu);
  }
  return frame;
}

Fidelity Compare(Scene const& scene, std::vector<float> const& restored, double shift) {
  int const side = scene.Settings().side;
  double const sky = scene.Settings().sky;
  std::vector<float> const truth = scene.Truth(shift);
  std::vector<float> const blurred = scene.Blurred();
  double errors = 0.0;
  double skyErrors = 0.0;
  double pixels = 0.0;
  double skyPixels = 0.0;
  for (int y = kEdge; y < side - kEdge; ++y) {
    for (int x = kEdge; x < side - kEdge; ++x) {
      auto const i = static_cast<std::size_t>(y * side + x);
      double const error = restored[i] - truth[i];
      errors += error * error;
      ++pixels;
      if (blurred[i] - sky > kDark) continue;
      skyErrors += error * error;
      ++skyPixels;
    }
  }
  COrbImage const clean = LessSky(restored, side, sky);
  std::vector<double> sigmas;
  std::vector<double> shares;
  for (SceneSource const& s : scene.Stars()) {
    double const x = s.x - shift;
    double const y = s.y - shift;
    if (std::optional<double> const sigma = host::MeasureSigma(clean, {x, y})) sigmas.push_back(*sigma);
    shares.push_back(LightWithin(restored, side, sky, x, y) / LightWithin(truth, side, sky, x, y));
  }
  SceneSource const& bright = scene.Stars()[0];
  return {std::sqrt(errors / pixels),
          std::sqrt(skyErrors / skyPixels),
          sigmas.empty() ? 0.0 : Quantile(sigmas, 0.5),
          Quantile(shares, 0.5),
          0.5 * (Quantile(shares, 0.84) - Quantile(shares, 0.16)),
          DarkestRing(restored, side, sky, bright.x - shift, bright.y - shift)};
}

}  // namespace orb::bench
