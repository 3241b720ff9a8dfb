#include <orbimg/filters/disk_rank_internal.h>

#include <algorithm>
#include <utility>

#include <orbimg/filters/extreme_selector_internal.h>
#include <orbimg/filters/median_selector_internal.h>
#include <orbimg/filters/network_selector_internal.h>
#include <orbimg/filters/window_selector_internal.h>

namespace orb {

namespace {

class OneRank : public WishMaker {
 public:
  explicit OneRank(int wanted) : index(wanted) {}

  void Make(int, int left, int right, RowWishes& wishes) override {
    std::fill_n(wishes.index.begin(), right - left, index);
    std::fill_n(wishes.zeros.begin(), right - left, 0);
  }

 private:
  std::int64_t index;
};

// The middle of the cells that lie inside the plane, those below the centre row being zeros.
class HalfDiskMiddle : public WishMaker {
 public:
  HalfDiskMiddle(Disk const& mask, int planeWidth, int planeHeight)
      : disk(mask), width(planeWidth), height(planeHeight) {}

  void Make(int y, int left, int right, RowWishes& wishes) override {
    Cells const inner = CellsAt(disk.Reach(), y, 2 * disk.Reach() + 1);
    for (int x = left; x < right; ++x) {
      bool const isInner = x >= disk.Reach() && x < width - disk.Reach();
      Cells const cells = isInner ? inner : CellsAt(x, y, width);
      auto const i = static_cast<std::size_t>(x - left);
      wishes.index[i] = cells.all / 2;
      wishes.zeros[i] = cells.below;
    }
  }

 private:
  struct Cells {
    std::int64_t all = 0;
    std::int64_t below = 0;
  };

  // Around column x of a plane of so many columns.
  Cells CellsAt(int x, int y, int columns) const {
    Cells cells;
    int const first = -std::min(disk.Above(), y);
    int const last = std::min(disk.Below(), height - 1 - y);
    for (int dy = first; dy <= last; ++dy) {
      int const half = disk.HalfWidth(dy);
      int const inside = std::min(half, columns - 1 - x) + std::min(half, x) + 1;
      cells.all += inside;
      if (dy > 0) cells.below += inside;
    }
    return cells;
  }

  Disk disk;
  int width;
  int height;
};

// A network where a tile has all its samples, a window over ranks at the sides of the plane.
class InnerAndOuter : public TileSelector {
 public:
  InnerAndOuter(Bounds const& innerArea, std::unique_ptr<TileSelector> inside, std::unique_ptr<TileSelector> outside)
      : inner(innerArea), insideSelector(std::move(inside)), outsideSelector(std::move(outside)) {}

  TileShape Shape() const override { return insideSelector->Shape(); }

  void Select(KeyTile const& tile, float* out, std::ptrdiff_t stride) override {
    Bounds const& area = tile.area;
    bool const isInside =
        area.left >= inner.left && area.top >= inner.top && area.right <= inner.right && area.bottom <= inner.bottom;
    (isInside ? insideSelector : outsideSelector)->Select(tile, out, stride);
  }

 private:
  Bounds inner;
  std::unique_ptr<TileSelector> insideSelector;
  std::unique_ptr<TileSelector> outsideSelector;
};

std::unique_ptr<TileSelector> SelectorOf(Disk const& disk, int index) {
  int const count = disk.Count();
  if (index < 0 || index >= count) return nullptr;
  if (index == 0) return MakeExtremeSelector(disk, Extreme::kLeast);
  if (index == count - 1) return MakeExtremeSelector(disk, Extreme::kLargest);
  if (index == count / 2) {
    if (auto selector = MakeMedianSelector(disk)) return selector;
  }
  if (count <= kMostNetworkInputs) return MakeNetworkSelector(disk, index, 0);
  return MakeWindowSelector(disk, std::make_unique<OneRank>(index));
}

// The end of a tile that begins at `begin`: it reaches neither across `end` nor across one of two lines.
int TileEnd(int begin, int side, int end, int firstLine, int secondLine) {
  int limit = std::min(end - begin, side) + begin;
  for (int line : {firstLine, secondLine}) {
    if (line > begin) limit = std::min(limit, line);
  }
  return limit;
}

}  // namespace

SelectedRows::SelectedRows(Disk const& mask, SourceRow rows, int width, OuterColumns outer, Bounds const& wantedArea,
                           Bounds const& innerArea, std::unique_ptr<TileSelector> rankSelector)
    : disk(mask),
      source(std::move(rows)),
      area(wantedArea),
      inner(innerArea),
      selector(std::move(rankSelector)),
      loader(mask, width, outer, selector ? selector->Shape().columns : 0),
      blockTop(area.top),
      blockEnd(area.top) {}

float const* SelectedRows::Row(int y) {
  auto const columns = static_cast<std::size_t>(std::max(area.Columns(), 0));
  if (!selector || columns == 0) {
    values.resize(columns);
    return values.data();
  }
  if (y >= blockEnd) ComputeBlock(y);
  return values.data() + static_cast<std::size_t>(y - blockTop) * columns;
}

void SelectedRows::ComputeBlock(int top) {
  TileShape const shape = selector->Shape();
  blockTop = top;
  blockEnd = TileEnd(top, shape.rows, area.bottom, inner.top, inner.bottom);
  std::ptrdiff_t const stride = area.Columns();
  values.resize(static_cast<std::size_t>((blockEnd - blockTop) * stride));
  sourceRows.clear();
  for (int y = top - disk.Above(); y < blockEnd + disk.Below(); ++y) sourceRows.push_back(source(y));
  for (int left = area.left, right; left < area.right; left = right) {
    right = TileEnd(left, shape.columns, area.right, inner.left, inner.right);
    loader.Load(Bounds{left, blockTop, right, blockEnd}, sourceRows.data());
    selector->Select(loader.Tile(), values.data() + (left - area.left), stride);
  }
}

std::unique_ptr<SelectedRows> RankUnderDisk(Disk const& disk, int index, SourceRow rows, int width,
                                            Bounds const& area) {
  return std::make_unique<SelectedRows>(disk, std::move(rows), width, OuterColumns::kClamped, area, area,
                                        SelectorOf(disk, index));
}

std::unique_ptr<SelectedRows> MedianUnderUpperHalf(Disk const& disk, SourceRow rows, int width, int height,
                                                   Bounds const& area) {
  Disk const half = disk.UpperHalf();
  Bounds const inner{disk.Reach(), disk.Above(), width - disk.Reach(), height - disk.Below()};
  auto const insidePlane = [height, source = std::move(rows)](int y) -> float const* {
    return y < 0 || y >= height ? nullptr : source(y);
  };
  std::unique_ptr<TileSelector> selector;
  if (disk.Count() > 0) {
    selector = MakeWindowSelector(half, std::make_unique<HalfDiskMiddle>(disk, width, height));
    if (half.Count() <= kMostNetworkInputs) {
      int const zeros = disk.Count() - half.Count();
      selector = std::make_unique<InnerAndOuter>(inner, MakeNetworkSelector(half, disk.Count() / 2, zeros),
                                                 std::move(selector));
    }
  }
  return std::make_unique<SelectedRows>(half, insidePlane, width, OuterColumns::kAbsent, area, inner,
                                        std::move(selector));
}

}  // namespace orb
