#include <orbimg/filters/extreme_selector_internal.h>

#include <algorithm>
#include <bit>
#include <vector>

#include <orbimg/core/exchange_kernels.h>
#include <orbimg/filters/extreme_kernels.h>

namespace orb {

namespace {

constexpr TileShape kShape{256, 128};

class ExtremeSelector : public TileSelector {
 public:
  ExtremeSelector(Disk const& mask, Extreme wanted) : disk(mask), isLargest(wanted == Extreme::kLargest) {}

  TileShape Shape() const override { return kShape; }

  void Select(KeyTile const& tile, float* out, std::ptrdiff_t stride) override {
    columns = tile.area.Columns();
    int const rows = tile.area.Rows();
    runs.resize(static_cast<std::size_t>(std::bit_width(static_cast<unsigned>(2 * disk.Reach() + 1))));
    for (auto& run : runs) run.resize(static_cast<std::size_t>(tile.Columns()));
    chord.resize(static_cast<std::size_t>(columns));
    minima.assign(static_cast<std::size_t>(rows * columns), kHighestKey);
    for (int row = -disk.Above(); row < rows + disk.Below(); ++row) {
      FindRuns(tile.Row(row + disk.Above()), tile.Columns());
      JoinChords(row, rows);
    }
    for (int row = 0; row < rows; ++row) {
      std::int32_t* const found = Minima(row);
      if (isLargest) ComplementKeysRow(found, columns, found);
      StoreKeysRow(found, columns, out + row * stride);
    }
  }

 private:
  std::int32_t* Minima(int row) { return &minima[static_cast<std::size_t>(row * columns)]; }

  // runs[p][x] is the least of the 2^p keys from x on.
  void FindRuns(std::int32_t const* keys, int count) {
    if (isLargest) {
      ComplementKeysRow(keys, count, runs[0].data());
    } else {
      std::copy_n(keys, count, runs[0].data());
    }
    for (std::size_t p = 1; p < runs.size(); ++p) {
      std::ptrdiff_t const half = std::ptrdiff_t{1} << (p - 1);
      std::int32_t const* const run = runs[p - 1].data();
      LesserKeysRow(run, run + half, count - 2 * half + 1, runs[p].data());
    }
  }

  // The chords of a row of the source go to all results that have the row under their disk.
  void JoinChords(int row, int rows) {
    int width = -1;
    for (int dy = disk.Below(); dy >= -disk.Above(); --dy) {
      if (row - dy < 0 || row - dy >= rows) continue;
      if (disk.HalfWidth(dy) != width) FindChord(width = disk.HalfWidth(dy));
      std::int32_t* const joined = Minima(row - dy);
      LesserKeysRow(joined, chord.data(), columns, joined);
    }
  }

  void FindChord(int halfWidth) {
    auto const length = static_cast<unsigned>(2 * halfWidth + 1);
    auto const& run = runs[static_cast<std::size_t>(std::bit_width(length) - 1)];
    std::int32_t const* const first = run.data() + (disk.Reach() - halfWidth);
    LesserKeysRow(first, first + (length - std::bit_floor(length)), columns, chord.data());
  }

  Disk disk;
  bool isLargest;
  std::ptrdiff_t columns = 0;
  std::vector<std::vector<std::int32_t>> runs;
  std::vector<std::int32_t> chord;
  std::vector<std::int32_t> minima;
};

}  // namespace

std::unique_ptr<TileSelector> MakeExtremeSelector(Disk const& disk, Extreme extreme) {
  return std::make_unique<ExtremeSelector>(disk, extreme);
}

}  // namespace orb
