// The simulated night: its frames hold what its truth says.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include <gtest/gtest.h>
#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/simulation.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::MeasureSky;
using host::PixelExcess;
using host::Position;
using host::RigidMap;
using host::SimulatedStar;
using host::Simulation;
using host::SimulationSettings;

SimulationSettings SmallNight() {
  SimulationSettings settings;
  settings.width = 200;
  settings.height = 150;
  settings.frames = 3;
  settings.stars = 30;
  settings.hotPixels = 40;
  settings.trailFrame = 1;
  return settings;
}

// FNV-1a over the samples, which are whole numbers.
std::uint64_t HashOf(COrbImage const& image) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (float sample : SamplesOf(image)) {
    hash ^= static_cast<std::uint64_t>(sample);
    hash *= 0x100000001b3u;
  }
  return hash;
}

float SampleAt(COrbImage const& image, int x, int y) { return *image.GetImageAdr(x, y, 0, 1, nullptr); }

TEST(Simulation, TheBitsNeverChange) {
  Simulation const night(SmallNight());
  EXPECT_EQ(16219154105574283776u, HashOf(night.Light(1)));
  EXPECT_EQ(17853069458783955202u, HashOf(night.Dark(0)));
  EXPECT_EQ(17823152203884307553u, HashOf(night.Flat(0)));
}

TEST(Simulation, EveryFrameIsTheSameInAnyOrder) {
  Simulation const night(SmallNight());
  std::uint64_t const second = HashOf(night.Light(1));
  night.Light(0);
  night.Dark(1);
  EXPECT_EQ(second, HashOf(night.Light(1)));
  EXPECT_NE(HashOf(night.Dark(0)), HashOf(night.Dark(1)));
  SimulationSettings other = SmallNight();
  other.seed = 2;
  EXPECT_NE(second, HashOf(Simulation(other).Light(1)));
}

TEST(Simulation, SamplesAreWhatACameraStores) {
  SimulationSettings settings = SmallNight();
  settings.sky = 80000.0;  // so that some samples run over
  Simulation const night(settings);
  float most = 0.0f;
  for (float sample : SamplesOf(night.Light(0))) {
    ASSERT_EQ(std::floor(sample), sample);
    ASSERT_GE(sample, 0.0f);
    ASSERT_LE(sample, 65535.0f);
    most = std::max(most, sample);
  }
  EXPECT_EQ(65535.0f, most);
}

TEST(Simulation, TheFirstFrameIsTheReference) {
  Simulation const night(SmallNight());
  EXPECT_EQ(0.0, night.Truth().frames[0].transform.dx);
  EXPECT_EQ(0.0, night.Truth().frames[0].transform.dy);
  EXPECT_EQ(0.0, night.Truth().frames[0].transform.angle);
  EXPECT_NE(0.0, night.Truth().frames[2].transform.angle);
}

// One star alone, no noise to speak of beside it.
TEST(Simulation, AStarStandsWhereTheTruthPutsItWithItsFlux) {
  SimulationSettings settings = SmallNight();
  settings.stars = 1;
  settings.nebula = 0.0;
  settings.hotPixels = 0;
  settings.cosmicRays = 0;
  settings.dustShadows = 0;
  settings.trailFrame = -1;
  settings.sky = 100.0;
  settings.rotation = 5.0;
  for (settings.seed = 1;; ++settings.seed) {
    Simulation const night(settings);
    SimulatedStar const star = night.Truth().stars[0];
    Position const place = RigidMap(night.Truth().frames[2].transform).ToFrame(Position{star.x, star.y});
    bool const clear = place.x > 50 && place.x < 150 && place.y > 50 && place.y < 100 && star.flux > 3000.0;
    if (!clear) continue;
    COrbImage light = night.Light(2);
    int const column = static_cast<int>(place.x + 0.5);
    int const row = static_cast<int>(place.y + 0.5);
    CRect const around(column - 30, row - 30, column + 31, row + 31);
    double const sky = MeasureSky(light, 0, &around).level;
    double sum = 0.0;
    for (int y = row - 10; y <= row + 10; ++y) {
      for (int x = column - 10; x <= column + 10; ++x) sum += SampleAt(light, x, y) - sky;
    }
    CRect square(column - 5, row - 5, column + 6, row + 6);
    Position centre;
    light.GetCenterOfGravity(centre.x, centre.y, &square);
    double const squared = std::pow(place.x - 99.5, 2) + std::pow(place.y - 74.5, 2);
    double const sensitivity = 1.0 - 0.35 * squared / (99.5 * 99.5 + 74.5 * 74.5);
    double const expected = star.flux * night.Truth().frames[2].transparency * sensitivity;
    EXPECT_NEAR(expected, sum, 0.1 * expected);
    EXPECT_NEAR(place.x, centre.x, 0.2);
    EXPECT_NEAR(place.y, centre.y, 0.2);
    return;
  }
}

TEST(Simulation, HotPixelsStandInLightsAndDarksAlike) {
  Simulation const night(SmallNight());
  COrbImage const light = night.Light(0);
  COrbImage const dark = night.Dark(0);
  for (PixelExcess const& hot : night.Truth().hotPixels) {
    if (hot.excess < 1000.0) continue;
    EXPECT_GT(SampleAt(light, hot.x, hot.y), 1200.0f);
    EXPECT_GT(SampleAt(dark, hot.x, hot.y), 900.0f);
  }
}

TEST(Simulation, DarkLevelIsBiasAndDarkSignal) {
  Simulation const night(SmallNight());
  CRect const away(0, 0, 60, 60);
  EXPECT_NEAR(330.0, MeasureSky(night.Dark(0), 0, &away).level, 3.0);
  EXPECT_NEAR(300.6, MeasureSky(night.FlatDark(0), 0, &away).level, 1.1);
}

// Photon noise of the sky and the dark signal, the pixels' grain, read noise, rounding.
TEST(Simulation, NoiseIsThatOfPhotonsAndReading) {
  SimulationSettings settings = SmallNight();
  settings.stars = 0;
  settings.nebula = 0.0;
  settings.dustShadows = 0;
  settings.width = 800;  // the gradient within the rectangle is then small
  settings.height = 600;
  Simulation const night(settings);
  CRect const middle(380, 280, 420, 320);
  double const sky = 1200.0;
  double const electrons = (sky + 30.0) * settings.gain + settings.readNoise * settings.readNoise;
  double const variance = electrons / (settings.gain * settings.gain) + std::pow(0.01 * sky, 2) + std::pow(4.5, 2);
  EXPECT_NEAR(std::sqrt(variance), MeasureSky(night.Light(0), 0, &middle).noise, 2.0);
}

TEST(Simulation, FlatsShowTheVignetting) {
  SimulationSettings settings = SmallNight();
  settings.dustShadows = 0;
  COrbImage const flat = Simulation(settings).Flat(0);
  CRect const middle(90, 65, 110, 85);
  CRect const corner(0, 0, 10, 10);
  double const ratio = (MeasureSky(flat, 0, &corner).level - 300.0) / (MeasureSky(flat, 0, &middle).level - 300.0);
  EXPECT_NEAR(1.0 - 0.35 * 0.91, ratio, 0.02);
}

TEST(Simulation, TheTrailCrossesItsFrameOnly) {
  SimulationSettings settings = SmallNight();
  Simulation const with(settings);
  settings.trailFrame = -1;
  Simulation const without(settings);
  ASSERT_TRUE(with.Truth().trail);
  EXPECT_FALSE(without.Truth().trail);
  EXPECT_TRUE(SameBits(without.Light(0), with.Light(0)));
  COrbImage const trailed = with.Light(1);
  COrbImage const clean = without.Light(1);
  Position const from = with.Truth().trail->from;
  Position const to = with.Truth().trail->to;
  double sum = 0.0;
  for (int i = 1; i < 10; ++i) {
    int const x = static_cast<int>(from.x + (to.x - from.x) * i / 10 + 0.5);
    int const y = static_cast<int>(from.y + (to.y - from.y) * i / 10 + 0.5);
    sum += SampleAt(trailed, x, y) - SampleAt(clean, x, y);
  }
  EXPECT_NEAR(0.85 * with.Truth().trail->peak, sum / 9.0, 150.0);
}

TEST(Simulation, AStrayOfAnyLengthStaysInside) {
  SimulationSettings settings = SmallNight();
  settings.width = 33;
  settings.height = 21;
  settings.driftX = 1e12;
  settings.cosmicRays = 200;
  Simulation const night(settings);
  for (int i = 0; i < 3; ++i) {
    for (PixelExcess const& hit : night.Truth().frames[i].cosmicRays) {
      ASSERT_TRUE(hit.x >= 0 && hit.x < 33 && hit.y >= 0 && hit.y < 21);
    }
    EXPECT_EQ(33, night.Light(i).GetWidth());
  }
}

}  // namespace
}  // namespace orb::test
