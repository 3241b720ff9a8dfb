// A night at the telescope with everything known: raw frames of a star field over a nebula, with darks and flats.
//
// What a light contains, in ADU: bias + dark signal (with hot pixels and a glowing corner) + sensitivity x (sky with a
// gradient that grows over the night + transparency x (nebula + stars) + trail) + cosmic rays, with photon and read
// noise, rounded and held within 0 to 65535. Stars have a Moffat profile with an exponent of 3, integrated over pixels;
// their light is theirs before the sensitivity. The sensitivity has vignetting, dust shadows and a grain of pixels. A
// dark is bias + dark signal of the lights' exposure. A flat is an even lamp through the same sensitivity, plus bias
// and a fiftieth of the dark signal; a flat dark is that bias and dark signal alone.
//
// The same settings give the same bits on every machine, and each frame is made on its own, in any order.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <hosts/orbimg/frame_transform.h>
#include <orbimg/orbimg.h>

namespace orb::host {

struct SimulationSettings {
  std::uint64_t seed = 1;
  int width = 1024;  // pixels
  int height = 768;  // pixels
  int frames = 12;
  int stars = 400;         // around and in the field
  double driftX = 2.3;     // pixels a frame
  double driftY = -1.6;    // pixels a frame
  double dither = 3.0;     // pixels: largest random step on each axis
  double rotation = 0.03;  // degrees a frame; at most 45 over all frames
  double fwhm = 2.8;       // pixels: full width of a star at half its height, in a calm moment
  double sky = 1200.0;     // ADU
  double nebula = 500.0;   // ADU: about its brightest
  double gain = 1.5;       // electrons per ADU
  double readNoise = 8.0;  // electrons
  double bias = 300.0;     // ADU
  int hotPixels = 400;
  int dustShadows = 8;
  int cosmicRays = 6;  // hits a light
  int trailFrame = 5;  // the light that a satellite crosses; -1: none
};

struct SimulatedStar {
  double x;  // pixels of the reference
  double y;
  double flux;  // ADU before transparency and sensitivity
};

struct PixelExcess {
  int x;
  int y;
  double excess;  // ADU
};

struct SimulatedTrail {
  int frame;
  Position from;  // pixels of that frame
  Position to;
  double peak;  // ADU before sensitivity
};

struct SimulatedFrame {
  FrameTransform transform;  // about the middle of the frame
  double fwhm;               // pixels
  double transparency;       // 1 in a clear moment
  std::vector<PixelExcess> cosmicRays;
};

struct SimulationTruth {
  std::vector<SimulatedStar> stars;  // by falling flux
  std::vector<PixelExcess> hotPixels;
  std::optional<SimulatedTrail> trail;
  std::vector<SimulatedFrame> frames;  // the first is the reference: no shift, no angle
};

class Simulation {
 public:
  // Holds two float planes of the frames' size.
  explicit Simulation(SimulationSettings const& initSettings);

  SimulationSettings const& Settings() const { return settings; }
  SimulationTruth const& Truth() const { return truth; }

  COrbImage Light(int index) const;  // 0 to frames - 1
  COrbImage Dark(int index) const;   // any number: each index has noise of its own
  COrbImage Flat(int index) const;
  COrbImage FlatDark(int index) const;

 private:
  struct Cloud {
    double x, y, width, height, brightness;
  };

  void PlaceStars();
  void PlaceHotPixels();
  void PlaceNebula();
  void PlanFrames();
  std::vector<PixelExcess> PlanCosmicRays(int index) const;
  void PlanTrail();
  void MakeDarkSignal();
  void MakeSensitivity();
  void AddDust(double x, double y, double radius, double depth);
  double NebulaAt(Position const& reference) const;
  void AddSky(int index, std::vector<float>& scene) const;
  void AddStar(Position const& centre, double flux, double fwhm, std::vector<float>& scene) const;
  void AddTrail(std::vector<float>& scene) const;
  COrbImage Expose(std::vector<float> const& scene, double darkShare, std::uint64_t stream,
                   std::vector<PixelExcess> const& hits) const;

  SimulationSettings settings;
  SimulationTruth truth;
  std::vector<Cloud> clouds;
  std::vector<float> darkSignal;   // ADU in the exposure of a light
  std::vector<float> sensitivity;  // 1 where nothing shades
};

}  // namespace orb::host
