#include <hosts/orbimg/line_join.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace orb::host {
namespace {

constexpr int kColumns = 64;
constexpr double kWinsorBound = 1.5;     // deviations
constexpr double kWinsorFactor = 1.134;  // makes up for the bound where the values are normal
constexpr double kSettled = 0.0001;      // relative change of the deviation
constexpr int kMostPasses = 100;

using Sums = std::array<double, kColumns>;

}  // namespace

struct LineJoiner::Block {
  std::span<FrameLineView const> lines;
  float const* medians;
  int left;
  int columns;

  // Calls work(v, keep) with the values of a frame in the block and its marks.
  template <typename Work>
  void EachFrame(std::vector<double>& kept, Work work) const {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      work(lines[i].values + left, kept.data() + i * kColumns, lines[i].weight);
    }
  }
};

void LineJoiner::Join(std::span<FrameLineView const> lines, float const* medians, int width, float* out) {
  kept.resize(lines.size() * kColumns);
  for (int left = 0; left < width; left += kColumns) {
    JoinBlock(Block{lines, medians, left, std::min(kColumns, width - left)}, out + left);
  }
}

void LineJoiner::JoinBlock(Block const& block, float* out) {
  KeepWhatCovers(block);
  if (rule.rejection == JoinRule::Rejection::kSigma) RejectBySigma(block);
  if (rule.rejection == JoinRule::Rejection::kWinsorised) RejectWinsorised(block);
  WriteMean(block, out);
}

void LineJoiner::KeepWhatCovers(Block const& block) {
  for (std::size_t i = 0; i < block.lines.size(); ++i) {
    FrameLineView const& line = block.lines[i];
    double* const keep = kept.data() + i * kColumns;
    for (int c = 0; c < block.columns; ++c) {
      int const x = block.left + c;
      bool const isThere = line.begin <= x && x < line.end && std::isfinite(line.values[x]);
      keep[c] = isThere ? 1.0 : 0.0;
      count.values += isThere ? 1 : 0;
    }
  }
}

void LineJoiner::RejectBySigma(Block const& block) {
  bool isChanged = true;
  while (isChanged) {  // each pass but the last takes something out
    Sums n{}, mean{}, deviation{};
    block.EachFrame(kept, [&](float const* v, double const* keep, double) {
      for (int c = 0; c < block.columns; ++c) {
        n[c] += keep[c];
        mean[c] += keep[c] != 0.0 ? v[c] : 0.0;
      }
    });
    for (int c = 0; c < block.columns; ++c) mean[c] /= n[c];
    block.EachFrame(kept, [&](float const* v, double const* keep, double) {
      for (int c = 0; c < block.columns; ++c) {
        double const off = v[c] - mean[c];
        deviation[c] += keep[c] != 0.0 ? off * off : 0.0;
      }
    });
    for (int c = 0; c < block.columns; ++c) deviation[c] = std::sqrt(deviation[c] / n[c]);
    isChanged = Reject(block, mean.data(), deviation.data());
  }
}

void LineJoiner::RejectWinsorised(Block const& block) {
  Sums n{}, centre{}, deviation{};
  for (int c = 0; c < block.columns; ++c) centre[c] = block.medians[block.left + c];
  block.EachFrame(kept, [&](float const* v, double const* keep, double) {
    for (int c = 0; c < block.columns; ++c) {
      double const off = v[c] - centre[c];
      n[c] += keep[c];
      deviation[c] += keep[c] != 0.0 ? off * off : 0.0;
    }
  });
  for (int c = 0; c < block.columns; ++c) deviation[c] = std::sqrt(deviation[c] / n[c]);
  std::array<bool, kColumns> isSettled{};
  bool areAllSettled = false;
  for (int pass = 0; pass < kMostPasses && !areAllSettled; ++pass) {
    Sums squares{};
    block.EachFrame(kept, [&](float const* v, double const* keep, double) {
      for (int c = 0; c < block.columns; ++c) {
        double const bound = kWinsorBound * deviation[c];
        double const off = std::clamp(v[c] - centre[c], -bound, bound);
        squares[c] += keep[c] != 0.0 ? off * off : 0.0;
      }
    });
    areAllSettled = true;
    for (int c = 0; c < block.columns; ++c) {
      if (isSettled[c]) continue;  // whatever its neighbours still need
      double const next = kWinsorFactor * std::sqrt(squares[c] / n[c]);
      isSettled[c] = !(std::abs(next - deviation[c]) > kSettled * deviation[c]);
      areAllSettled = areAllSettled && isSettled[c];
      deviation[c] = next;
    }
  }
  Reject(block, centre.data(), deviation.data());
}

bool LineJoiner::Reject(Block const& block, double const* centre, double const* deviation) {
  std::int64_t low = 0;
  std::int64_t high = 0;
  block.EachFrame(kept, [&](float const* v, double* keep, double) {
    for (int c = 0; c < block.columns; ++c) {
      bool const isLow = keep[c] != 0.0 && v[c] < centre[c] - rule.low * deviation[c];
      bool const isHigh = keep[c] != 0.0 && v[c] > centre[c] + rule.high * deviation[c];
      low += isLow ? 1 : 0;
      high += isHigh ? 1 : 0;
      if (isLow || isHigh) keep[c] = 0.0;
    }
  });
  count.low += low;
  count.high += high;
  return low + high > 0;
}

void LineJoiner::WriteMean(Block const& block, float* out) const {
  Sums sum{}, weights{};
  for (std::size_t i = 0; i < block.lines.size(); ++i) {
    float const* const v = block.lines[i].values + block.left;
    double const* const keep = kept.data() + i * kColumns;
    for (int c = 0; c < block.columns; ++c) {
      double const w = keep[c] * block.lines[i].weight;
      sum[c] += w != 0.0 ? w * v[c] : 0.0;
      weights[c] += w;
    }
  }
  for (int c = 0; c < block.columns; ++c) out[c] = weights[c] > 0.0 ? static_cast<float>(sum[c] / weights[c]) : 0.0f;
}

}  // namespace orb::host
