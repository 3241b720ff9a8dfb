#include <hosts/orbimg/star_finder.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include <hosts/orbimg/clean_frame.h>

namespace orb::host {
namespace {

constexpr double kRidge = 0.5;  // of the maximum, on two opposite sides
constexpr int kRidgeAxes = 8;
constexpr int kPeakRadius = 2;  // pixels: a maximum is the largest of 5 x 5
constexpr int kMaxRecentrings = 4;
constexpr double kSameStar = 2.0;  // pixels
constexpr double kPi = 3.14159265358979323846;

struct Peak {
  int x;
  int y;
};

float const* RowOf(COrbImage const& image, int y) { return image.GetImageAdr(0, y, 0, 1, nullptr); }

// Maxima of the smoothed frame.
class PeakSearch {
 public:
  PeakSearch(COrbImage const& initSmooth, StarFinderSettings const& settings)
      : smooth(initSmooth),
        width(initSmooth.GetWidth()),
        height(initSmooth.GetHeight()),
        threshold(settings.threshold) {
    margin = std::max(settings.radius, static_cast<int>(std::ceil(settings.aperture))) + 1;
    for (int i = 0; i < kRidgeAxes; ++i) {
      double const angle = kPi * i / kRidgeAxes;
      ridgeX[i] = static_cast<int>(std::lround(margin * std::cos(angle)));
      ridgeY[i] = static_cast<int>(std::lround(margin * std::sin(angle)));
    }
  }

  std::vector<Peak> Find(SkyMap const& sky) const {
    std::vector<Peak> peaks;
    std::vector<float> noise(width);
    std::vector<float> level(width);
    for (int y = margin; y < height - margin; ++y) {
      sky.NoiseRow(y, noise.data());
      sky.LevelRow(y, level.data());
      for (int x = margin; x < width - margin; ++x) {
        if (!(At(x, y) - level[x] > threshold * noise[x])) continue;
        if (IsLargest(x, y) && !IsOnRidge(x, y)) peaks.push_back(Peak{x, y});
      }
    }
    return peaks;
  }

 private:
  float At(int x, int y) const { return RowOf(smooth, y)[x]; }

  // Of equal samples the first counts.
  bool IsLargest(int x, int y) const {
    float const v = At(x, y);
    for (int j = -kPeakRadius; j <= kPeakRadius; ++j) {
      for (int i = -kPeakRadius; i <= kPeakRadius; ++i) {
        bool const earlier = j < 0 || (j == 0 && i < 0);
        if (earlier ? At(x + i, y + j) >= v : At(x + i, y + j) > v) return false;
      }
    }
    return true;
  }

  bool IsOnRidge(int x, int y) const {
    double const bound = kRidge * At(x, y);
    for (int i = 0; i < kRidgeAxes; ++i) {
      if (At(x + ridgeX[i], y + ridgeY[i]) > bound && At(x - ridgeX[i], y - ridgeY[i]) > bound) return true;
    }
    return false;
  }

  COrbImage const& smooth;
  int width;
  int height;
  double threshold;
  int margin;  // pixels that every measurement around a star stays within
  std::array<int, kRidgeAxes> ridgeX;
  std::array<int, kRidgeAxes> ridgeY;
};

// The centroid of the square around a pixel, the square following it. Nothing if it leaves the star that it began with,
// or the frame.
std::optional<Position> FindCentre(COrbImage& smooth, Peak const& peak, int radius) {
  int column = peak.x;
  int row = peak.y;
  for (int i = 0; i < kMaxRecentrings; ++i) {
    CRect square(column - radius, row - radius, column + radius + 1, row + radius + 1);
    Position centre;
    smooth.GetCenterOfGravity(centre.x, centre.y, &square);
    int const nextColumn = static_cast<int>(centre.x + 0.5);
    int const nextRow = static_cast<int>(centre.y + 0.5);
    if (std::abs(nextColumn - peak.x) > radius || std::abs(nextRow - peak.y) > radius) return std::nullopt;
    bool const settled = nextColumn == column && nextRow == row;
    column = nextColumn;
    row = nextRow;
    if (settled || i + 1 == kMaxRecentrings) return centre;
  }
  return std::nullopt;
}

bool FitsInside(COrbImage const& clean, Position const& centre, double reach) {
  return centre.x >= reach && centre.y >= reach && centre.x <= clean.GetWidth() - 1 - reach &&
         centre.y <= clean.GetHeight() - 1 - reach;
}

double SumWithin(COrbImage const& clean, Position const& centre, double radius) {
  double sum = 0.0;
  int const left = static_cast<int>(std::ceil(centre.x - radius));
  int const right = static_cast<int>(std::floor(centre.x + radius));
  int const bottom = static_cast<int>(std::floor(centre.y + radius));
  for (int y = static_cast<int>(std::ceil(centre.y - radius)); y <= bottom; ++y) {
    float const* row = RowOf(clean, y);
    for (int x = left; x <= right; ++x) {
      if (SquaredDistance(centre, Position{static_cast<double>(x), static_cast<double>(y)}) <= radius * radius) {
        sum += row[x];
      }
    }
  }
  return sum;
}

// Largest sample of 3 x 3 around a position.
double LargestNear(COrbImage const& image, int plane, Position const& centre) {
  int const column = static_cast<int>(centre.x + 0.5);
  int const row = static_cast<int>(centre.y + 0.5);
  double largest = *image.GetImageAdr(column, row, plane, 1, nullptr);
  for (int y = row - 1; y <= row + 1; ++y) {
    for (int x = column - 1; x <= column + 1; ++x) {
      largest = std::max(largest, static_cast<double>(*image.GetImageAdr(x, y, plane, 1, nullptr)));
    }
  }
  return largest;
}

bool IsSaturated(COrbImage const& image, Position const& centre, std::optional<double> const& saturation) {
  if (!saturation) return false;
  for (int plane = 0; plane < image.GetPlanes(); ++plane) {
    if (LargestNear(image, plane, centre) >= *saturation) return true;
  }
  return false;
}

// Of stars that settled on one place the brightest stays. `stars` are sorted by falling flux.
void DropRepeats(std::vector<Star>& stars) {
  std::vector<std::size_t> byRow(stars.size());
  for (std::size_t i = 0; i < byRow.size(); ++i) byRow[i] = i;
  std::sort(byRow.begin(), byRow.end(), [&](std::size_t a, std::size_t b) { return stars[a].y < stars[b].y; });
  std::vector<bool> dropped(stars.size(), false);
  for (std::size_t i = 0; i < byRow.size(); ++i) {
    for (std::size_t j = i + 1; j < byRow.size() && stars[byRow[j]].y - stars[byRow[i]].y < kSameStar; ++j) {
      Star const& a = stars[byRow[i]];
      Star const& b = stars[byRow[j]];
      if (SquaredDistance({a.x, a.y}, {b.x, b.y}) < kSameStar * kSameStar) dropped[std::max(byRow[i], byRow[j])] = true;
    }
  }
  std::size_t kept = 0;
  for (std::size_t i = 0; i < stars.size(); ++i) {
    if (!dropped[i]) stars[kept++] = stars[i];
  }
  stars.resize(kept);
}

std::optional<Star> MeasureStar(COrbImage const& image, COrbImage const& clean, COrbImage& smooth, Peak const& peak,
                                StarFinderSettings const& settings) {
  std::optional<Position> const centre = FindCentre(smooth, peak, settings.radius);
  double const reach = std::max(static_cast<double>(settings.radius), settings.aperture);
  if (!centre || !FitsInside(clean, *centre, reach)) return std::nullopt;
  if (IsSaturated(image, *centre, settings.saturation)) return std::nullopt;
  Star const star{centre->x, centre->y, LargestNear(clean, 0, *centre), SumWithin(clean, *centre, settings.aperture)};
  if (!(star.flux > 0.0)) return std::nullopt;
  return star;
}

double WidthOf(COrbImage& clean, Star const& star) {
  PSF profile(&clean);
  double width = 0.0;
  if (profile.Add(CPoint(static_cast<int>(star.x + 0.5), static_cast<int>(star.y + 0.5))) == 0) return 0.0;
  return profile.GetMeanFWHM(&width) == 0 ? 0.0 : width;
}

}  // namespace

std::vector<Star> FindStars(COrbImage const& image, StarFinderSettings const& settings) {
  COrbImage clean = CleanFrame(image, settings.cellSide);
  COrbImage smooth = SmoothFrame(clean, settings.smoothing);
  SkyMap const sky = MapSky(smooth, settings.cellSide);
  PeakSearch const search(smooth, settings);
  std::vector<Star> stars;
  for (Peak const& peak : search.Find(sky)) {
    if (std::optional<Star> const star = MeasureStar(image, clean, smooth, peak, settings)) stars.push_back(*star);
  }
  auto const brighter = [](Star const& a, Star const& b) { return a.flux > b.flux; };
  std::stable_sort(stars.begin(), stars.end(), brighter);
  DropRepeats(stars);
  if (settings.maxStars > 0 && stars.size() > static_cast<std::size_t>(settings.maxStars)) {
    stars.resize(static_cast<std::size_t>(settings.maxStars));
  }
  for (Star& star : stars) star.width = WidthOf(clean, star);
  return stars;
}

std::vector<Position> PositionsOf(std::vector<Star> const& stars) {
  std::vector<Position> positions;
  positions.reserve(stars.size());
  for (Star const& star : stars) positions.push_back(Position{star.x, star.y});
  return positions;
}

}  // namespace orb::host
