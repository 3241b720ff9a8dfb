#include <orbimg/filters/window_selector_internal.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace orb {

namespace {

constexpr int kSmallSide = 64;
constexpr int kMediumSide = 128;
constexpr int kMediumReach = 32;
// The widest tile whose ranks, with the words that are no samples', fit 16 bits.
constexpr int kShortRankSide = 254;
constexpr int kLargestSide = 256;

bool FitsShortRanks(int reach) { return reach <= (kShortRankSide - kSmallSide) / 2; }

// Tiles several times wider than the disk, so that sorting them costs little beside the sliding.
int SideOf(int reach) {
  if (reach <= kMediumReach) return kSmallSide;
  if (FitsShortRanks(reach)) return std::min(kMediumSide, kShortRankSide - 2 * reach);
  return std::min(2 * reach, kLargestSide);
}

// The cells that come and go when the disk moves by a column (step 1 or -1).
StepEdges ColumnStep(Disk const& disk, std::ptrdiff_t stride, int step) {
  StepEdges edges;
  for (int dy = -disk.Above(); dy <= disk.Below(); ++dy) {
    edges.enter.push_back(dy * stride + step * disk.HalfWidth(dy));
    edges.leave.push_back(dy * stride - step * disk.HalfWidth(dy));
  }
  return edges;
}

// The cells that come and go when the disk moves down a row.
StepEdges RowStep(Disk const& disk, std::ptrdiff_t stride) {
  StepEdges edges;
  for (int dx = -disk.Reach(); dx <= disk.Reach(); ++dx) {
    int const height = disk.HalfHeight(dx);
    edges.enter.push_back(std::min(height, disk.Below()) * stride + dx);
    edges.leave.push_back(-std::min(height, disk.Above()) * stride + dx);
  }
  return edges;
}

template <typename Rank>
class WindowSelector : public TileSelector {
 public:
  WindowSelector(Disk const& mask, std::unique_ptr<WishMaker> maker) : disk(mask), wishMaker(std::move(maker)) {}

  TileShape Shape() const override { return TileShape{SideOf(disk.Reach()), SideOf(disk.Reach())}; }

  void Select(KeyTile const& tile, float* out, std::ptrdiff_t stride) override {
    ranks.Build(tile);
    FollowStride(tile.stride);
    OpenWindow(tile);
    Bounds const& area = tile.area;
    auto const columns = static_cast<std::size_t>(area.Columns());
    wishes.index.resize(columns);
    wishes.zeros.resize(columns);
    std::ptrdiff_t const last = area.Columns() - 1;
    for (int row = 0; row < area.Rows(); ++row) {
      bool const isForth = row % 2 == 0;
      Rank const* const centre = ranks.Ranks() + tile.Centre(row) + (isForth ? 0 : last);
      if (row > 0) StepWindow(window, down, centre - tile.stride, centre);
      wishMaker->Make(area.top + row, area.left, area.right, wishes);
      SlideRow(window, isForth ? right : left, centre, RowPath{isForth ? 0 : last, last + 1, isForth ? 1 : -1}, wishes,
               ranks.Samples(), out + row * stride);
    }
  }

 private:
  void FollowStride(std::ptrdiff_t stride) {
    if (stride == edgeStride) return;
    edgeStride = stride;
    right = ColumnStep(disk, stride, 1);
    left = ColumnStep(disk, stride, -1);
    down = RowStep(disk, stride);
  }

  // Puts the mask at the first sample of the area.
  void OpenWindow(KeyTile const& tile) {
    window.words.assign(ranks.Words(), 0);
    window.zeroWord = ranks.ZeroWord();
    window.zeros = 0;
    window.pivot = 0;
    window.before = 0;
    Rank const* const centre = ranks.Ranks() + tile.Centre(0);
    for (int dy = -disk.Above(); dy <= disk.Below(); ++dy) {
      for (int dx = -disk.HalfWidth(dy); dx <= disk.HalfWidth(dy); ++dx) {
        std::size_t const rank = centre[dy * tile.stride + dx];
        window.words[rank / kWordBits] ^= std::uint64_t{1} << (rank % kWordBits);
      }
    }
  }

  Disk disk;
  std::unique_ptr<WishMaker> wishMaker;
  RankTile<Rank> ranks;
  RankWindow window;
  RowWishes wishes;
  std::ptrdiff_t edgeStride = 0;
  StepEdges right;
  StepEdges left;
  StepEdges down;
};

}  // namespace

std::unique_ptr<TileSelector> MakeWindowSelector(Disk const& disk, std::unique_ptr<WishMaker> wishes) {
  if (FitsShortRanks(disk.Reach())) {
    return std::make_unique<WindowSelector<std::uint16_t>>(disk, std::move(wishes));
  }
  return std::make_unique<WindowSelector<std::uint32_t>>(disk, std::move(wishes));
}

}  // namespace orb
