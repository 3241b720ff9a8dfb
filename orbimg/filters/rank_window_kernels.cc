#include <orbimg/filters/rank_window_kernels.h>

#include <bit>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr int kWordShift = 6;
constexpr std::size_t kBitMask = 63;

// The window with its parts in registers.
class Slider {
 public:
  [[gnu::always_inline]] explicit Slider(RankWindow& moved)
      : window(moved),
        words(moved.words.data()),
        zeroWord(moved.zeroWord),
        zeros(moved.zeros),
        pivot(moved.pivot),
        before(moved.before) {}

  [[gnu::always_inline]] void Save() {
    window.zeros = zeros;
    window.pivot = pivot;
    window.before = before;
  }

  template <typename Rank>
  [[gnu::always_inline]] void Step(StepEdges const& edges, Rank const* from, Rank const* to) {
    std::ptrdiff_t const* const enter = edges.enter.data();
    std::ptrdiff_t const* const leave = edges.leave.data();
    std::size_t const count = edges.enter.size();
    std::size_t const limit = pivot;
    std::int64_t sum = before;
    for (std::size_t i = 0; i < count; ++i) {
      std::size_t const in = to[enter[i]];
      std::size_t const out = from[leave[i]];
      words[in >> kWordShift] ^= std::uint64_t{1} << (in & kBitMask);
      words[out >> kWordShift] ^= std::uint64_t{1} << (out & kBitMask);
      sum += (in >> kWordShift) < limit;
      sum -= (out >> kWordShift) < limit;
    }
    before = sum;
  }

  // The rank at `index`, the zeros' word being counted as `wantedZeros` bits.
  [[gnu::always_inline]] std::size_t Find(std::int64_t index, std::int64_t wantedZeros) {
    if (pivot > zeroWord) before += wantedZeros - zeros;
    zeros = wantedZeros;
    while (before > index) before -= CountOf(--pivot);
    for (std::int64_t n = CountOf(pivot); before + n <= index; n = CountOf(pivot)) {
      before += n;
      ++pivot;
    }
    if (pivot == zeroWord) return pivot << kWordShift;
    std::uint64_t bits = words[pivot];
    for (std::int64_t i = index - before; i > 0; --i) bits &= bits - 1;
    return (pivot << kWordShift) + static_cast<std::size_t>(std::countr_zero(bits));
  }

 private:
  [[gnu::always_inline]] std::int64_t CountOf(std::size_t word) const {
    return word == zeroWord ? zeros : std::popcount(words[word]);
  }

  RankWindow& window;
  std::uint64_t* words;
  std::size_t zeroWord;
  std::int64_t zeros;
  std::size_t pivot;
  std::int64_t before;
};

template <typename Rank>
[[gnu::always_inline]] inline void Step(RankWindow& window, StepEdges const& edges, Rank const* from, Rank const* to) {
  Slider slider(window);
  slider.Step(edges, from, to);
  slider.Save();
}

template <typename Rank>
[[gnu::always_inline]] inline void Slide(RankWindow& window, StepEdges const& edges, Rank const* centre,
                                         RowPath const& path, RowWishes const& wishes, float const* samples,
                                         float* out) {
  Slider slider(window);
  std::int64_t const* const index = wishes.index.data();
  std::int64_t const* const zeros = wishes.zeros.data();
  std::ptrdiff_t x = path.first;
  for (std::ptrdiff_t i = 0; i < path.count; ++i, x += path.step) {
    if (i > 0) {
      slider.Step(edges, centre, centre + path.step);
      centre += path.step;
    }
    out[x] = samples[slider.Find(index[x], zeros[x])];
  }
  slider.Save();
}

}  // namespace

void StepWindow(RankWindow& window, StepEdges const& edges, std::uint16_t const* from, std::uint16_t const* to) {
  Step(window, edges, from, to);
}

void StepWindow(RankWindow& window, StepEdges const& edges, std::uint32_t const* from, std::uint32_t const* to) {
  Step(window, edges, from, to);
}

ORB_ROW_KERNEL void SlideRow(RankWindow& window, StepEdges const& edges, std::uint16_t const* centre,
                             RowPath const& path, RowWishes const& wishes, float const* samples, float* out) {
  Slide(window, edges, centre, path, wishes, samples, out);
}

ORB_ROW_KERNEL void SlideRow(RankWindow& window, StepEdges const& edges, std::uint32_t const* centre,
                             RowPath const& path, RowWishes const& wishes, float const* samples, float* out) {
  Slide(window, edges, centre, path, wishes, samples, out);
}

}  // namespace orb
