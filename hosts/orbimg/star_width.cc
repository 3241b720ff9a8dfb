#include <hosts/orbimg/star_width.h>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/clean_frame.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/star_table.h>

namespace orb::host {
namespace {

constexpr std::size_t kMostStars = 50;
constexpr std::size_t kLeastStars = 5;   // of fewer the brightest alone is taken
constexpr double kNearSaturation = 0.7;  // of the brightest peak
constexpr double kFaint = 0.02;          // of the brightest peak: fainter ones may be grains of its halo
constexpr double kFirstSigma = 1.5;      // pixels
constexpr double kLeastSigma = 0.3;      // pixels: less is a single sample
constexpr double kMostSigma = 20.0;      // pixels: more is no star
constexpr double kReach = 4.0;           // sigmas of the weight
constexpr double kSettled = 1e-5;        // pixels
constexpr int kMostSteps = 100;

struct Profile {
  Position centre;
  double sigma;
};

// First and second moments under the weight exp(-r r/(2 sigma^2)) about the centre.
struct Moments {
  double sum = 0.0;
  double x = 0.0;  // mean distance from the centre
  double y = 0.0;
  double r2 = 0.0;  // mean squared distance on one axis
};

std::optional<Moments> MomentsAbout(COrbImage const& clean, Profile const& weight) {
  double const reach = kReach * weight.sigma;
  int const left = static_cast<int>(std::ceil(weight.centre.x - reach));
  int const right = static_cast<int>(std::floor(weight.centre.x + reach));
  int const top = static_cast<int>(std::ceil(weight.centre.y - reach));
  int const bottom = static_cast<int>(std::floor(weight.centre.y + reach));
  if (left < 0 || top < 0 || right >= clean.GetWidth() || bottom >= clean.GetHeight()) return std::nullopt;
  Moments m;
  for (int y = top; y <= bottom; ++y) {
    float const* const row = clean.GetImageAdr(0, y, 0, 1, nullptr);
    double const dy = y - weight.centre.y;
    for (int x = left; x <= right; ++x) {
      double const dx = x - weight.centre.x;
      double const r2 = dx * dx + dy * dy;
      double const light = std::exp(-r2 / (2.0 * weight.sigma * weight.sigma)) * row[x];
      m.sum += light;
      m.x += light * dx;
      m.y += light * dy;
      m.r2 += light * r2;
    }
  }
  if (!(m.sum > 0.0)) return std::nullopt;
  m.x /= m.sum;
  m.y /= m.sum;
  m.r2 /= 2.0 * m.sum;
  return m;
}

// A table of the stars' places says nothing of their peaks.
void SetPeaks(COrbImage const& clean, std::vector<Star>& stars) {
  for (Star& star : stars) {
    auto const x = static_cast<int>(std::lround(std::clamp(star.x, 0.0, clean.GetWidth() - 1.0)));
    auto const y = static_cast<int>(std::lround(std::clamp(star.y, 0.0, clean.GetHeight() - 1.0)));
    star.peak = *clean.GetImageAdr(x, y, 0, 1, nullptr);
  }
}

std::vector<Star> ChooseStars(COrbImage const& clean, std::vector<Star> stars) {
  SetPeaks(clean, stars);
  std::stable_sort(stars.begin(), stars.end(), [](Star const& a, Star const& b) { return a.peak > b.peak; });
  if (!stars.empty()) {
    double const least = kFaint * stars.front().peak;
    std::erase_if(stars, [&](Star const& s) { return s.peak < least; });
  }
  if (stars.size() < kLeastStars) {
    stars.resize(std::min<std::size_t>(stars.size(), 1));
    return stars;
  }
  double const limit = kNearSaturation * stars.front().peak;
  auto const firstSafe = std::find_if(stars.begin(), stars.end(), [&](Star const& s) { return s.peak <= limit; });
  if (static_cast<std::size_t>(stars.end() - firstSafe) >= kLeastStars) stars.erase(stars.begin(), firstSafe);
  if (stars.size() > kMostStars) stars.resize(kMostStars);
  return stars;
}

bool IsTextTable(std::string const& path) {
  std::string const ending = EndingOf(path);
  return ending == ".csv" || ending == ".txt";
}

}  // namespace

// A gaussian star of width s under a gaussian weight of width w is a gaussian of 1/(1/s^2 + 1/w^2), and the moments
// about a centre that is off by d show half of d where w = s.
std::optional<double> MeasureSigma(COrbImage const& clean, Position const& star) {
  Profile profile{star, kFirstSigma};
  for (int step = 0; step < kMostSteps; ++step) {
    std::optional<Moments> const m = MomentsAbout(clean, profile);
    if (!m || !(m->r2 > 0.0)) return std::nullopt;
    double const inverse = 1.0 / m->r2 - 1.0 / (profile.sigma * profile.sigma);
    if (!(inverse > 0.0)) return std::nullopt;
    double const sigma = 1.0 / std::sqrt(inverse);
    if (sigma < kLeastSigma || sigma > kMostSigma) return std::nullopt;
    bool const isSettled = std::abs(sigma - profile.sigma) < kSettled;
    // Half of the way: light of neighbours can make the full step swing.
    profile.sigma = 0.5 * (profile.sigma + sigma);
    profile.centre.x += m->x;
    profile.centre.y += m->y;
    if (SquaredDistance(profile.centre, star) > sigma * sigma) return std::nullopt;
    if (isSettled) return sigma;
  }
  return std::nullopt;
}

StarWidth MeasureStarWidth(COrbImage const& image, std::vector<Star> const& stars) {
  COrbImage const clean = CleanFrame(image, StarFinderSettings().cellSide);
  std::vector<double> sigmas;
  for (Star const& star : ChooseStars(clean, stars)) {
    if (std::optional<double> const sigma = MeasureSigma(clean, {star.x, star.y})) sigmas.push_back(*sigma);
  }
  if (sigmas.empty()) return {};
  auto const quarter = sigmas.begin() + static_cast<std::ptrdiff_t>(sigmas.size() / 4);
  std::nth_element(sigmas.begin(), quarter, sigmas.end());
  return {*quarter, static_cast<int>(sigmas.size())};
}

StarWidth MeasureBlur(std::string const& from, COrbImage const& image, std::string const& imageFile) {
  StarWidth width;
  if (EndingOf(from) == ".json") {
    width = MeasureStarWidth(image, ReadStarTable(from, imageFile));
  } else if (IsTextTable(from)) {
    width = MeasureStarWidth(image, ReadStarText(from));
  } else {
    Frame frame;
    ReadFrameFile(from, frame);
    width = MeasureStarWidth(frame.image, FindStars(frame.image, {}));
  }
  if (width.stars > 0) return width;
  throw HostError(Exit::kFailed,
                  fmt::format("--psf-from {}: no star whose width can be measured; give the width of the blur", from));
}

}  // namespace orb::host
