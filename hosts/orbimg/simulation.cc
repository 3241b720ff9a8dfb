#include <hosts/orbimg/simulation.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <hosts/orbimg/random_source.h>

namespace orb::host {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMargin = 80.0;          // pixels around the reference in which stars stand, for what drifts in
constexpr double kFaintestStar = 400.0;   // ADU
constexpr double kBrightestStar = 3.0e5;  // ADU
constexpr double kNegligible = 0.02;      // ADU: a star's wings end here
constexpr double kDarkSignal = 30.0;      // ADU
constexpr double kCornerGlow = 60.0;      // ADU
constexpr double kFaintestHotPixel = 200.0;
constexpr double kBrightestHotPixel = 3.0e4;
constexpr double kVignetting = 0.35;        // of the light, lost in the corners
constexpr double kGrain = 0.01;             // deviation of the pixels' sensitivity
constexpr double kSkyGrowth = 0.01;         // a frame
constexpr double kFlatLevel = 28000.0;      // ADU
constexpr double kFlatDarkShare = 0.02;     // of a light's exposure
constexpr double kTrailPeak = 700.0;        // ADU
constexpr double kTrailReach = 14.0;        // pixels
constexpr double kCameraMaximum = 65535.0;  // ADU

// Half the full width at half height of a Moffat profile with exponent 3, in units of its core: sqrt(2^(1/3) - 1).
constexpr double kHalfWidth = 0.5098245285339;

// What a stream of random numbers is for; the index of a frame is added.
enum Stream : std::uint64_t {
  kStars = 1,
  kHotPixels = 2,
  kClouds = 3,
  kPlan = 4,
  kTrail = 5,
  kDarkPattern = 6,
  kDust = 7,
  kPixelGrain = 8,
  kLight = 1u << 20,
  kDark = 2u << 20,
  kFlat = 3u << 20,
  kFlatDark = 4u << 20,
  kCosmicRays = 5u << 20,
};

// Sine by its series, for angles within an eighth of a turn.
double PortableSin(double x) {
  double sum = 0.0;
  for (int k = 19; k >= 3; k -= 2) sum = (1.0 + sum) * (-x * x / (k * (k - 1)));
  return x * (1.0 + sum);
}

double PortableCos(double x) {
  double sum = 0.0;
  for (int k = 18; k >= 2; k -= 2) sum = (1.0 + sum) * (-x * x / (k * (k - 1)));
  return 1.0 + sum;
}

RigidMap PortableMap(FrameTransform const& transform) {
  double const radians = transform.angle * kRadiansPerDegree;
  return RigidMap(transform, PortableSin(radians), PortableCos(radians));
}

// How often values reach v falls as 1 / v.
double DrawBrightness(RandomSource& random, double least, double most) {
  return std::min(least / random.Uniform(), most);
}

// 1 at the middle, falling as the sixth power of the distance; `squared` in units of the core.
double MoffatProfile(double squared) {
  double const base = 1.0 + squared;
  return 1.0 / (base * base * base);
}

// The pixels of an axis within `reach` of a position; none: first > last.
struct PixelRange {
  int first;
  int last;
};

PixelRange PixelsWithin(double position, double reach, int size) {
  double const first = std::clamp(std::ceil(position - reach), 0.0, static_cast<double>(size));
  double const last = std::clamp(std::floor(position + reach), -1.0, size - 1.0);
  return PixelRange{static_cast<int>(first), static_cast<int>(last)};
}

double CoreOf(double fwhm) { return fwhm / (2.0 * kHalfWidth); }

// Mean of the profile over the pixel, at 3 x 3 points.
double PixelMean(double x, double y, double core) {
  double sum = 0.0;
  for (int j = -1; j <= 1; ++j) {
    for (int i = -1; i <= 1; ++i) {
      double const px = (x + i / 3.0) / core;
      double const py = (y + j / 3.0) / core;
      sum += MoffatProfile(px * px + py * py);
    }
  }
  return sum / 9.0;
}

}  // namespace

Simulation::Simulation(SimulationSettings const& initSettings)
    : settings(initSettings),
      darkSignal(static_cast<std::size_t>(initSettings.width) * initSettings.height),
      sensitivity(darkSignal.size()) {
  PlaceStars();
  PlaceHotPixels();
  PlaceNebula();
  PlanFrames();
  PlanTrail();
  MakeDarkSignal();
  MakeSensitivity();
}

void Simulation::PlaceStars() {
  RandomSource random(settings.seed, kStars);
  for (int i = 0; i < settings.stars; ++i) {
    double const x = random.Uniform(-kMargin, settings.width + kMargin);
    double const y = random.Uniform(-kMargin, settings.height + kMargin);
    truth.stars.push_back(SimulatedStar{x, y, DrawBrightness(random, kFaintestStar, kBrightestStar)});
  }
  std::stable_sort(truth.stars.begin(), truth.stars.end(),
                   [](SimulatedStar const& a, SimulatedStar const& b) { return a.flux > b.flux; });
}

void Simulation::PlaceHotPixels() {
  RandomSource random(settings.seed, kHotPixels);
  for (int i = 0; i < settings.hotPixels; ++i) {
    int const x = static_cast<int>(random.Uniform() * settings.width);
    int const y = static_cast<int>(random.Uniform() * settings.height);
    truth.hotPixels.push_back(PixelExcess{x, y, DrawBrightness(random, kFaintestHotPixel, kBrightestHotPixel)});
  }
}

// Bright clouds, and smaller dark ones before them.
void Simulation::PlaceNebula() {
  RandomSource random(settings.seed, kClouds);
  for (int i = 0; i < 9; ++i) {
    bool const dark = i >= 6;
    double const size = settings.width * (dark ? random.Uniform(0.03, 0.06) : random.Uniform(0.06, 0.14));
    double const x = settings.width * random.Uniform(0.3, 0.7);
    double const y = settings.height * random.Uniform(0.3, 0.7);
    double const brightness = settings.nebula * (dark ? -random.Uniform(0.3, 0.5) : random.Uniform(0.2, 0.5));
    clouds.push_back(Cloud{x, y, size * random.Uniform(0.7, 1.6), size, brightness});
  }
}

void Simulation::PlanFrames() {
  RandomSource random(settings.seed, kPlan);
  for (int i = 0; i < settings.frames; ++i) {
    SimulatedFrame frame;
    frame.transform.cx = (settings.width - 1) / 2.0;
    frame.transform.cy = (settings.height - 1) / 2.0;
    double const stepX = random.Uniform(-settings.dither, settings.dither);
    double const stepY = random.Uniform(-settings.dither, settings.dither);
    if (i > 0) {
      frame.transform.dx = settings.driftX * i + stepX;
      frame.transform.dy = settings.driftY * i + stepY;
      frame.transform.angle = settings.rotation * i;
    }
    frame.fwhm = settings.fwhm * random.Uniform(1.0, 1.2);
    frame.transparency = random.Uniform(0.88, 1.0);
    frame.cosmicRays = PlanCosmicRays(i);
    truth.frames.push_back(frame);
  }
}

// Short tracks, nearly along the rows.
std::vector<PixelExcess> Simulation::PlanCosmicRays(int index) const {
  RandomSource random(settings.seed, kCosmicRays + index);
  std::vector<PixelExcess> pixels;
  for (int hit = 0; hit < settings.cosmicRays; ++hit) {
    int const x = static_cast<int>(random.Uniform() * settings.width);
    int const y = static_cast<int>(random.Uniform() * settings.height);
    int const length = 1 + static_cast<int>(random.Uniform() * 4.0);
    int const direction = random.Uniform() < 0.5 ? 1 : -1;
    for (int k = 0; k < length; ++k) {
      PixelExcess const pixel{x + k, y + direction * (k / 2), random.Uniform(500.0, 6000.0)};
      bool const inside = pixel.x < settings.width && pixel.y >= 0 && pixel.y < settings.height;
      if (inside) pixels.push_back(pixel);
    }
  }
  return pixels;
}

void Simulation::PlanTrail() {
  if (settings.trailFrame < 0 || settings.trailFrame >= settings.frames || settings.width < 2) return;
  RandomSource random(settings.seed, kTrail);
  double const right = settings.width - 1.0;
  Position const from{0.0, settings.height * random.Uniform(0.1, 0.4)};
  Position const to{right, settings.height * random.Uniform(0.6, 0.9)};
  truth.trail = SimulatedTrail{settings.trailFrame, from, to, kTrailPeak};
}

// Even, but for the grain of the pixels, a glow towards the lower right corner, and the hot pixels.
void Simulation::MakeDarkSignal() {
  RandomSource random(settings.seed, kDarkPattern);
  for (int y = 0; y < settings.height; ++y) {
    float* row = darkSignal.data() + static_cast<std::ptrdiff_t>(y) * settings.width;
    for (int x = 0; x < settings.width; ++x) {
      double const u = 1.0 - static_cast<double>(x) / settings.width;
      double const v = 1.0 - static_cast<double>(y) / settings.height;
      double const glow = kCornerGlow * MoffatProfile((u * u + v * v) / 0.04);
      row[x] = static_cast<float>(std::max(0.0, kDarkSignal * (1.0 + 0.15 * random.Normal()) + glow));
    }
  }
  for (PixelExcess const& hot : truth.hotPixels) {
    darkSignal[static_cast<std::size_t>(hot.y) * settings.width + hot.x] += static_cast<float>(hot.excess);
  }
}

void Simulation::MakeSensitivity() {
  RandomSource grain(settings.seed, kPixelGrain);
  double const cx = (settings.width - 1) / 2.0;
  double const cy = (settings.height - 1) / 2.0;
  double const corner = cx * cx + cy * cy;
  for (int y = 0; y < settings.height; ++y) {
    float* row = sensitivity.data() + static_cast<std::ptrdiff_t>(y) * settings.width;
    for (int x = 0; x < settings.width; ++x) {
      double const squared = (x - cx) * (x - cx) + (y - cy) * (y - cy);
      double const vignetting = 1.0 - kVignetting * squared / std::max(corner, 1.0);
      row[x] = static_cast<float>(vignetting * (1.0 + kGrain * grain.Normal()));
    }
  }
  RandomSource dust(settings.seed, kDust);
  for (int i = 0; i < settings.dustShadows; ++i) {
    double const x = dust.Uniform() * settings.width;
    double const y = dust.Uniform() * settings.height;
    double const radius = dust.Uniform(10.0, 26.0);
    double const depth = dust.Uniform(0.05, 0.14);
    AddDust(x, y, radius, depth);
  }
}

// A ring, as a speck far out of focus throws it: darkest half way out, in terms of area.
void Simulation::AddDust(double x, double y, double radius, double depth) {
  PixelRange const rows = PixelsWithin(y, radius, settings.height);
  PixelRange const columns = PixelsWithin(x, radius, settings.width);
  for (int row = rows.first; row <= rows.last; ++row) {
    for (int column = columns.first; column <= columns.last; ++column) {
      double const t = ((column - x) * (column - x) + (row - y) * (row - y)) / (radius * radius);
      float& sample = sensitivity[static_cast<std::size_t>(row) * settings.width + column];
      if (t < 1.0) sample *= static_cast<float>(1.0 - depth * 4.0 * t * (1.0 - t));
    }
  }
}

double Simulation::NebulaAt(Position const& reference) const {
  double sum = 0.0;
  for (Cloud const& cloud : clouds) {
    double const x = (reference.x - cloud.x) / cloud.width;
    double const y = (reference.y - cloud.y) / cloud.height;
    sum += cloud.brightness * MoffatProfile(x * x + y * y);
  }
  return std::max(0.0, sum);
}

void Simulation::AddSky(int index, std::vector<float>& scene) const {
  SimulatedFrame const& frame = truth.frames[index];
  RigidMap const map = PortableMap(frame.transform);
  double const level = settings.sky * (1.0 + kSkyGrowth * index);
  for (int y = 0; y < settings.height; ++y) {
    float* row = scene.data() + static_cast<std::ptrdiff_t>(y) * settings.width;
    for (int x = 0; x < settings.width; ++x) {
      double const u = static_cast<double>(x) / settings.width - 0.5;
      double const v = static_cast<double>(y) / settings.height - 0.5;
      double const sky = level * (1.0 + 0.16 * u + 0.10 * v);
      Position const place{static_cast<double>(x), static_cast<double>(y)};
      row[x] = static_cast<float>(sky + frame.transparency * NebulaAt(map.ToReference(place)));
    }
  }
}

// The peak of a profile with exponent 3 is 2 / (pi core^2) of the flux.
void Simulation::AddStar(Position const& centre, double flux, double fwhm, std::vector<float>& scene) const {
  double const core = CoreOf(fwhm);
  double const peak = flux * 2.0 / (kPi * core * core);
  double reach = 2.0 * fwhm;
  while (peak * MoffatProfile(reach * reach / (core * core)) > kNegligible) reach *= 1.25;
  PixelRange const rows = PixelsWithin(centre.y, reach, settings.height);
  PixelRange const columns = PixelsWithin(centre.x, reach, settings.width);
  for (int y = rows.first; y <= rows.last; ++y) {
    float* row = scene.data() + static_cast<std::ptrdiff_t>(y) * settings.width;
    for (int x = columns.first; x <= columns.last; ++x) {
      row[x] += static_cast<float>(peak * PixelMean(x - centre.x, y - centre.y, core));
    }
  }
}

void Simulation::AddTrail(std::vector<float>& scene) const {
  SimulatedTrail const& trail = *truth.trail;
  double const core = CoreOf(settings.fwhm);
  double const slope = (trail.to.y - trail.from.y) / (trail.to.x - trail.from.x);
  double const perRow = 1.0 / std::sqrt(1.0 + slope * slope);  // distance from the line for a row's difference
  for (int x = 0; x < settings.width; ++x) {
    double const middle = trail.from.y + slope * (x - trail.from.x);
    PixelRange const rows = PixelsWithin(middle, kTrailReach / perRow, settings.height);
    for (int y = rows.first; y <= rows.last; ++y) {
      double const distance = (y - middle) * perRow / core;
      scene[static_cast<std::size_t>(y) * settings.width + x] +=
          static_cast<float>(trail.peak * MoffatProfile(distance * distance));
    }
  }
}

// electrons = count(gain (scene sensitivity + dark share)) + read noise; ADU = electrons / gain + bias + hits, as a
// camera stores it.
COrbImage Simulation::Expose(std::vector<float> const& scene, double darkShare, std::uint64_t stream,
                             std::vector<PixelExcess> const& hits) const {
  RandomSource random(settings.seed, stream);
  COrbImage image(-32, settings.width, settings.height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetLevel(0, 0.0, kCameraMaximum);
  float* const samples = image.GetImageAdr(0, 0, 0, 0, nullptr);
  for (std::size_t i = 0; i < scene.size(); ++i) {
    double const light = static_cast<double>(scene[i]) * sensitivity[i] + darkShare * darkSignal[i];
    double const electrons = random.Count(light * settings.gain) + settings.readNoise * random.Normal();
    samples[i] = static_cast<float>(electrons / settings.gain + settings.bias);
  }
  for (PixelExcess const& hit : hits) {
    samples[static_cast<std::size_t>(hit.y) * settings.width + hit.x] += static_cast<float>(hit.excess);
  }
  for (std::size_t i = 0; i < scene.size(); ++i) {
    samples[i] = static_cast<float>(std::clamp(std::floor(samples[i] + 0.5), 0.0, kCameraMaximum));
  }
  return image;
}

COrbImage Simulation::Light(int index) const {
  SimulatedFrame const& frame = truth.frames[index];
  std::vector<float> scene(darkSignal.size());
  AddSky(index, scene);
  RigidMap const map = PortableMap(frame.transform);
  for (SimulatedStar const& star : truth.stars) {
    AddStar(map.ToFrame(Position{star.x, star.y}), star.flux * frame.transparency, frame.fwhm, scene);
  }
  if (truth.trail && truth.trail->frame == index) AddTrail(scene);
  return Expose(scene, 1.0, kLight + index, frame.cosmicRays);
}

COrbImage Simulation::Dark(int index) const {
  return Expose(std::vector<float>(darkSignal.size()), 1.0, kDark + index, {});
}

// The lamp's brightness changes a little from frame to frame.
COrbImage Simulation::Flat(int index) const {
  RandomSource lamp(settings.seed, kFlat + (1u << 19) + index);
  float const level = static_cast<float>(kFlatLevel * lamp.Uniform(0.97, 1.03));
  return Expose(std::vector<float>(darkSignal.size(), level), kFlatDarkShare, kFlat + index, {});
}

COrbImage Simulation::FlatDark(int index) const {
  return Expose(std::vector<float>(darkSignal.size()), kFlatDarkShare, kFlatDark + index, {});
}

}  // namespace orb::host
