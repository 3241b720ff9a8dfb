#include <orbimg/filters/network_selector_internal.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include <orbimg/core/exchange_kernels.h>

namespace orb {

namespace {

constexpr TileShape kShape{kKeyColumns, 64};

struct alignas(64) Keys {
  KeyRow row;
};

class NetworkSelector : public TileSelector {
 public:
  NetworkSelector(Disk const& mask, int index, int zeros)
      : disk(mask),
        withZerosBelow(mask.Count(), index - zeros),
        withZerosAbove(mask.Count(), index),
        hasZeros(zeros > 0),
        keys(static_cast<std::size_t>(mask.Count())) {}

  TileShape Shape() const override { return kShape; }

  void Select(KeyTile const& tile, float* out, std::ptrdiff_t stride) override {
    auto const columns = static_cast<std::size_t>(tile.area.Columns());
    for (int row = 0; row < tile.area.Rows(); ++row) {
      KeyRow& found = Run(withZerosBelow, tile, row);
      if (hasZeros && *std::min_element(found, found + columns) < kZeroKey) SeatZeros(tile, row, found);
      StoreKeysRow(found, tile.area.Columns(), out + row * stride);
    }
  }

 private:
  static constexpr std::int32_t kZeroKey = 0;

  KeyRow& Run(SelectionNetwork const& network, KeyTile const& tile, int row) {
    Gather(tile, row);
    ExchangeRows(network.Exchanges(), &keys.front().row, {});
    return keys[static_cast<std::size_t>(network.Rank())].row;
  }

  void Gather(KeyTile const& tile, int row) {
    Keys* key = keys.data();
    for (int dy = -disk.Above(); dy <= disk.Below(); ++dy) {
      std::int32_t const* const centre = &tile.keys[static_cast<std::size_t>(tile.Centre(row + dy))];
      for (int dx = -disk.HalfWidth(dy); dx <= disk.HalfWidth(dy); ++dx) {
        std::copy_n(centre + dx, tile.area.Columns(), (key++)->row);
      }
    }
  }

  // With zeros between the samples, the wanted value is the one found with all of them below it where that is above
  // 0.0, the one found with all of them above it where that is below 0.0, and otherwise 0.0.
  void SeatZeros(KeyTile const& tile, int row, KeyRow& found) {
    KeyRow below;
    std::copy(std::begin(found), std::end(found), below);
    KeyRow const& above = Run(withZerosAbove, tile, row);
    for (int x = 0; x < kKeyColumns; ++x) below[x] = std::max(below[x], std::min(above[x], kZeroKey));
    std::copy(std::begin(below), std::end(below), found);
  }

  Disk disk;
  SelectionNetwork withZerosBelow;
  SelectionNetwork withZerosAbove;
  bool hasZeros;
  std::vector<Keys> keys;
};

}  // namespace

std::unique_ptr<TileSelector> MakeNetworkSelector(Disk const& disk, int index, int zeros) {
  return std::make_unique<NetworkSelector>(disk, index, zeros);
}

}  // namespace orb
