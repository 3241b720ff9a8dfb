// CImgFilterSpecial::NebularSmootherFilter: a Gaussian that leaves edges and their surroundings alone.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/filters/convolution_kernels.h>
#include <orbimg/filters/disk_internal.h>
#include <orbimg/filters/edge_map_internal.h>
#include <orbimg/filters/filter_kernel.h>
#include <orbimg/filters/filter_special.h>
#include <orbimg/filters/star_filter_internal.h>

namespace {

constexpr int kMessage = 6174;
constexpr int kMostTruncated = 1 << 30;  // far beyond any kernel that there is memory for

int RadiusOf(double sigma) { return std::min(orb::TruncateToInt(sigma), kMostTruncated) + 1; }

std::vector<float> GaussianWeights(int radius, double sigma) {
  CFilterKernel kernel;
  kernel.MakeGaussian(radius, sigma);
  return std::vector<float>(kernel.values.get(), kernel.values.get() + kernel.count);
}

// The result of each column of a row, found for whole blocks of columns in the cheapest of three ways.
class NebulaSmoother {
 public:
  NebulaSmoother(COrbImage& src, double sigma, double clearRadius, orb::Bounds const& area)
      : radius(RadiusOf(sigma)),
        gaussian(GaussianWeights(radius, sigma)),
        disk(orb::DiskOfRadius(clearRadius)),
        map(src, radius, area),
        sums(static_cast<std::size_t>(area.Columns())),
        weights(static_cast<std::size_t>(area.Columns())) {
    // Order fixed, a float after each term: as for the columns that have edges.
    for (float weight : gaussian) wholeWeight += weight;
  }

  void Begin(int plane, double threshold) { map.Begin(plane, threshold); }

  // To the next row. Releases all locks of the source's store.
  void Advance() { map.Advance(); }

  // The row's result: `c` are the source's samples.
  void SmoothRow(float const* c, std::ptrdiff_t count, float* dst) {
    edgesUnder = map.FindEdgesUnder(disk);
    edgesAround = map.FindEdgesAround();
    for (std::ptrdiff_t x = 0, end = 0; x < count; x = end) {
      Way const way = WayOf(x, count);
      for (end = x + kBlock; end < count && WayOf(end, count) == way; end += kBlock) {
      }
      end = std::min(end, count);
      Sum(way, x, end);
      Store(way, c, x, end, dst);
    }
  }

 private:
  static constexpr std::ptrdiff_t kBlock = 64;

  enum class Way {
    kKeep,   // there is an edge near every column
    kWhole,  // no edge under the Gaussian of any column that is smoothed
    kMasked,
  };

  Way WayOf(std::ptrdiff_t begin, std::ptrdiff_t count) const {
    bool isSmoothed = false;
    bool isMasked = false;
    for (std::ptrdiff_t x = begin; x < std::min(begin + kBlock, count); ++x) {
      bool const isFree = edgesUnder[x] > 0;
      isSmoothed |= isFree;
      isMasked |= isFree & (edgesAround[x] <= 0);
    }
    return isMasked ? Way::kMasked : isSmoothed ? Way::kWhole : Way::kKeep;
  }

  void Sum(Way way, std::ptrdiff_t begin, std::ptrdiff_t end) {
    if (way == Way::kKeep) return;
    taps.clear();
    auto weight = gaussian.begin();
    for (int k = 0; k <= 2 * radius; ++k) {
      for (int dx = -radius; dx <= radius; ++dx) taps.push_back(orb::Tap{*weight++, map.Row(k) + begin + dx});
    }
    if (way == Way::kWhole) {
      orb::SumTapsNarrowRow(taps.data(), taps.size(), end - begin, sums.data());
      std::fill_n(weights.data(), end - begin, wholeWeight);
    } else {
      orb::SumUnmarkedRow(taps.data(), taps.size(), end - begin, sums.data(), weights.data());
    }
  }

  void Store(Way way, float const* c, std::ptrdiff_t begin, std::ptrdiff_t end, float* dst) const {
    std::ptrdiff_t const count = end - begin;
    if (way == Way::kKeep) {
      std::copy_n(c + begin, count, dst + begin);
    } else {
      orb::StoreMeansRow(sums.data(), weights.data(), edgesUnder + begin, c + begin, count, dst + begin);
    }
  }

  int radius;
  std::vector<float> gaussian;
  orb::Disk disk;
  float wholeWeight = 0.0f;
  orb::EdgeMap map;
  std::int32_t const* edgesUnder = nullptr;
  std::int32_t const* edgesAround = nullptr;
  std::vector<orb::Tap> taps;
  std::vector<float> sums;
  std::vector<float> weights;
};

}  // namespace

void CImgFilterSpecial::NebularSmootherFilter(double sigma, double threshold, double clearRadius, COrbImage* src,
                                              CRect* rect, int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows() * planes);
  if (area.IsEmpty() || RadiusOf(sigma) < 0) {
    run.EachRow(*src, [](orb::RowSpan const& row) {
      // There are no samples, or no weights to smooth them with.
      if (row.count > 0) std::copy_n(row.src, row.count, row.dst);
    });
    return run.End();
  }
  NebulaSmoother smoother(*src, sigma, clearRadius, area);
  for (int p = 0; p < planes; ++p) {
    smoother.Begin(p, orb::EdgeThreshold(*src, p, threshold));
    for (int y = area.top; y < area.bottom; ++y) {
      smoother.Advance();
      smoother.SmoothRow(src->GetImageAdr(area.left, y, p, 1, nullptr), area.Columns(),
                         GetImageAdr(area.left, y, p, 0, nullptr));
      run.Tick();
    }
  }
  run.End();
}
