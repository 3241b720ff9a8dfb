// A star field whose truth is known: what the sky is, what a telescope blurs it to, and what a camera makes of that.
//
// All sources are gaussians, so the blur, a gaussian too, is exact: it adds to their variances. Stars of the truth have
// a sigma of 0.7 pixels, as narrow as pixels show.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::bench {

struct SceneSettings {
  int side = 512;           // pixels
  double blur = 1.8;        // pixels, sigma
  double adu = 2.0;         // electrons a unit
  double readNoise = 8.0;   // electrons
  double sky = 100.0;       // units
  double starSigma = 0.7;   // pixels
  int stars = 80;           // on a field of 512 x 512
  double brightFlux = 3e5;  // units: the star that rings are looked for around
  unsigned seed = 4;
};

struct SceneSource {
  double x;  // pixels
  double y;
  double flux;  // units
  double sigmaX;
  double sigmaY;
};

class Scene {
 public:
  explicit Scene(SceneSettings const& initSettings);

  SceneSettings const& Settings() const { return settings; }
  std::vector<SceneSource> const& Stars() const { return stars; }  // the first is the bright one
  // Without blur, sampled `shift` pixels to the right and below each pixel.
  std::vector<float> Truth(double shift) const { return Render(0.0, shift); }
  std::vector<float> Blurred() const { return Render(settings.blur, 0.0); }
  // The same with the noise of photons and of reading.
  std::vector<float> Frame() const;

 private:
  std::vector<float> Render(double blur, double shift) const;
  bool IsFarFromBright(double x, double y) const;

  SceneSettings settings;
  std::vector<SceneSource> stars;
  std::vector<SceneSource> clouds;
};

// What is left between a restored image and the truth. Both have the scene's side and sky.
struct Fidelity {
  double rms;         // units, over all pixels farther than 16 from the edge
  double skyNoise;    // units, where no source is
  double sigma;       // pixels: median of stars
  double flux;        // share of the true light within 8 pixels: median of stars
  double fluxSpread;  // half of what lies between the 16th and the 84th of 100
  double ring;        // units below the sky: darkest mean ring around the bright star, 3 to 14 pixels from it
};

Fidelity Compare(Scene const& scene, std::vector<float> const& restored, double shift);

}  // namespace orb::bench
