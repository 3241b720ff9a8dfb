#include <orbimg/filters/median_selector_internal.h>

#include <vector>

#include <orbimg/core/exchange_kernels.h>
#include <orbimg/filters/disk_median_kernels.h>

namespace orb {

namespace {

constexpr TileShape kShape{512, 64};

class MedianSelector : public TileSelector {
 public:
  MedianSelector(Disk const& mask, MedianOfRows kernel)
      : disk(mask), medianOfRows(kernel), medians(static_cast<std::size_t>(kShape.columns)) {}

  TileShape Shape() const override { return kShape; }

  void Select(KeyTile const& tile, float* out, std::ptrdiff_t stride) override {
    for (int row = 0; row < tile.area.Rows(); ++row) {
      rows.clear();
      for (int dy = -disk.Above(); dy <= disk.Below(); ++dy) {
        std::int32_t const* const centre = &tile.keys[static_cast<std::size_t>(tile.Centre(row + dy))];
        for (int dx = -disk.HalfWidth(dy); dx <= disk.HalfWidth(dy); ++dx) rows.push_back(centre + dx);
      }
      medianOfRows(rows.data(), tile.area.Columns(), medians.data());
      StoreKeysRow(medians.data(), tile.area.Columns(), out + row * stride);
    }
  }

 private:
  Disk disk;
  MedianOfRows medianOfRows;
  std::vector<std::int32_t const*> rows;  // one a sample under the disk
  std::vector<std::int32_t> medians;
};

}  // namespace

std::unique_ptr<TileSelector> MakeMedianSelector(Disk const& disk) {
  MedianOfRows const kernel = FindMedianOfRows(disk.Count());
  if (kernel == nullptr) return nullptr;
  return std::make_unique<MedianSelector>(disk, kernel);
}

}  // namespace orb
