#include <tests/command/synthetic_stars.h>

#include <cmath>
#include <random>

namespace orb::test {

using host::FrameTransform;
using host::Position;
using host::RigidMap;

std::vector<Position> RandomPositions(unsigned seed, int count, double width, double height) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> column(0.0, width - 1.0);
  std::uniform_real_distribution<double> row(0.0, height - 1.0);
  std::vector<Position> positions;
  for (int i = 0; i < count; ++i) {
    double const x = column(random);
    positions.push_back(Position{x, row(random)});
  }
  return positions;
}

std::vector<Position> MoveToFrame(std::vector<Position> const& reference, FrameTransform const& transform, double error,
                                  unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> off(0.0, 1.0);
  RigidMap const map(transform);
  std::vector<Position> positions;
  for (Position const& star : reference) {
    Position const place = map.ToFrame(star);
    double const offX = error * off(random);
    positions.push_back(Position{place.x + offX, place.y + error * off(random)});
  }
  return positions;
}

COrbImage SkyImage(int width, int height, double level, double noise, unsigned seed) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::mt19937 random(seed);
  std::normal_distribution<double> normal(0.0, 1.0);
  for (int y = 0; y < height; ++y) {
    float* row = image.GetImageAdr(0, y, 0, 0, nullptr);
    for (int x = 0; x < width; ++x) row[x] = static_cast<float>(level + noise * normal(random));
  }
  return image;
}

void AddGaussian(COrbImage& image, double x, double y, double peak, double fwhm) {
  double const variance = fwhm * fwhm / (8.0 * std::log(2.0));
  for (int j = 0; j < image.GetHeight(); ++j) {
    float* row = image.GetImageAdr(0, j, 0, 0, nullptr);
    for (int i = 0; i < image.GetWidth(); ++i) {
      double const squared = (i - x) * (i - x) + (j - y) * (j - y);
      row[i] += static_cast<float>(peak * std::exp(-squared / (2.0 * variance)));
    }
  }
}

}  // namespace orb::test
