#include <orbimg/display/color_quantizer_internal.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <orbimg/display/byte_row_kernels.h>
#include <orbimg/display/color_distance_kernels.h>

namespace orb {

namespace {

constexpr int kCells = 32768;
constexpr int kLargestCount = 32000;
constexpr int kBands = 8;
constexpr int kBandWidth = 256 / kBands;
constexpr int kPaletteSize = 256;
constexpr int kSelected = 240;    // the rest of the palette is filled by distance
constexpr int kFarthest = 65536;  // greater distances count as this one
constexpr int kBeyondAll = 3 * 255 * 255;
constexpr double kPreference[kBands] = {20.0, 28.0, 37.0, 48.0, 45.0, 32.0, 20.0, 10.0};  // lightest band first

struct Center {
  int red;
  int green;
  int blue;
};

Center CenterOf(int cell) { return Center{(cell >> 10) * 8 + 4, (cell >> 5 & 31) * 8 + 4, (cell & 31) * 8 + 4}; }

int LightnessOf(int cell) {
  Center const c = CenterOf(cell);
  return (std::min({c.red, c.green, c.blue}) + std::max({c.red, c.green, c.blue})) / 2;
}

// Calls work(cells, count, x, y) for all pixels, in pieces of a row; `cells` are the pixels' colour cells.
template <typename Work>
void EachPiece(COrbImage const& image, Work work) {
  constexpr std::ptrdiff_t kPiece = 1024;
  unsigned char bytes[3][kPiece];
  std::uint16_t cells[kPiece];
  ByteRule const rule(ByteLevelOf(image, 0));
  for (int y = 0; y < image.GetHeight(); ++y) {
    float const* rows[3];
    for (int p = 0; p < 3; ++p) rows[p] = image.GetImageAdr(0, y, p, 1, nullptr);
    for (std::ptrdiff_t x = 0; x < image.GetWidth(); x += kPiece) {
      std::ptrdiff_t const count = std::min(kPiece, image.GetWidth() - x);
      for (int p = 0; p < 3; ++p) rule.ConvertRow(rows[p] + x, bytes[p], count);
      ColorCellRow(bytes[0], bytes[1], bytes[2], cells, count);
      work(cells, count, x, y);
    }
  }
}

bool HasPixels(COrbImage const& image) { return image.GetWidth() > 0 && image.GetHeight() > 0; }

class ColorQuantizer {
 public:
  explicit ColorQuantizer(RGBQUAD* entries) : palette(entries), table(kCells, 0) {}

  void CountColors(COrbImage const& image);
  void ShareSlots();
  void SelectFrequent();
  void FillAndMap();
  void WriteIndices(COrbImage const& image, unsigned char* rows, std::size_t stride) const;

 private:
  void SelectInBand(int band);
  void Choose(int index, int cell);
  void FillWithFarthest(int index);

  RGBQUAD* palette;
  std::vector<int> table;  // a cell's pixels; once it is chosen, minus its palette index; in the end, its palette index
  int slots[kBands + 1] = {};  // band k owns the palette indices slots[k] .. slots[k + 1] - 1
  std::vector<int> rest;       // the cells with pixels that no band chose
  ColorList restColors;
};

void ColorQuantizer::CountColors(COrbImage const& image) {
  EachPiece(image, [&](std::uint16_t const* cells, std::ptrdiff_t count, std::ptrdiff_t, int) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      int& pixels = table[cells[i]];
      pixels += pixels < kLargestCount ? 1 : 0;
    }
  });
}

// A band's share is the root of its pixels times its preference, not below 8, not above its number of colours nor one
// and a half times its preference; then all are stretched to a sum of 240.
void ColorQuantizer::ShareSlots() {
  double weight[kBands] = {};
  double colors[kBands] = {};
  for (int cell = 0; cell < kCells; ++cell) {
    if (table[cell] == 0) continue;
    int const band = (255 - LightnessOf(cell)) / kBandWidth;
    weight[band] += table[cell];
    colors[band] += 1.0;
  }
  double weights = 0.0;
  for (double& w : weight) {
    w = std::sqrt(w);
    weights += w;
  }
  if (weights == 0.0) return;  // no pixel: nothing is selected
  double share[kBands];
  double shares = 0.0;
  for (int k = 0; k < kBands; ++k) {
    double const v = std::max(weight[k] * kPreference[k] / weights * 8.0, 8.0);
    share[k] = std::min({v, colors[k], 1.5 * kPreference[k]});
    shares += share[k];
  }
  double const stretch = kSelected / shares;
  double below = 0.0;
  for (int k = 0; k < kBands; ++k) {
    below += share[k] * stretch;
    slots[k + 1] = static_cast<int>(below + 0.5);
  }
}

void ColorQuantizer::SelectFrequent() {
  for (int band = 0; band < kBands; ++band) SelectInBand(band);
}

// The band's most frequent cells, one for each slot; among equals the higher cell first.
// Intended: both edges belong to the band, unlike in ShareSlots, so that a cell on an edge may be taken by either.
// Intended: slots that find no cell left take cell 0 (near black), whatever it was.
void ColorQuantizer::SelectInBand(int band) {
  int const top = 256 - kBandWidth * band;
  std::vector<int> candidates;
  for (int cell = 0; cell < kCells; ++cell) {
    if (table[cell] <= 0) continue;
    int const lightness = LightnessOf(cell);
    if (top - kBandWidth <= lightness && lightness <= top) candidates.push_back(cell);
  }
  auto const slotCount = static_cast<std::size_t>(slots[band + 1] - slots[band]);
  std::size_t const found = std::min(slotCount, candidates.size());
  std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(found), candidates.end(),
                    [&](int a, int b) { return table[a] != table[b] ? table[a] > table[b] : a > b; });
  candidates.resize(slotCount, 0);
  for (std::size_t i = 0; i < slotCount; ++i) Choose(slots[band] + static_cast<int>(i), candidates[i]);
}

// Minus 0 is 0: a cell that is chosen as index 0 looks like an empty one, which also has index 0 in the end.
void ColorQuantizer::Choose(int index, int cell) {
  Center const c = CenterOf(cell);
  palette[index] = RGBQUAD{static_cast<std::uint8_t>(c.blue), static_cast<std::uint8_t>(c.green),
                           static_cast<std::uint8_t>(c.red), 0};
  table[cell] = -index;
}

// Goes through the palette once and keeps, for each cell of the rest, the nearest colour so far. When the selected
// colours end, each further entry is the cell that is then farthest from all before it. What is left at the end has its
// index.
void ColorQuantizer::FillAndMap() {
  for (int cell = 0; cell < kCells; ++cell) {
    if (table[cell] <= 0) continue;
    Center const c = CenterOf(cell);
    rest.push_back(cell);
    restColors.red.push_back(c.red);
    restColors.green.push_back(c.green);
    restColors.blue.push_back(c.blue);
  }
  restColors.nearest.assign(rest.size(), kBeyondAll * 256);
  for (int index = 0; index < kPaletteSize; ++index) {
    if (index >= slots[kBands]) FillWithFarthest(index);
    RGBQUAD const& entry = palette[index];
    LowerNearest(restColors, entry.rgbRed, entry.rgbGreen, entry.rgbBlue, index);
  }
  for (int& entry : table) entry = std::max(-entry, 0);
  for (std::size_t i = 0; i < rest.size(); ++i) {
    if (restColors.nearest[i] != 0) table[rest[i]] = restColors.nearest[i] % 256;
  }
}

// Intended: with no cell left the entry is cell 0.
void ColorQuantizer::FillWithFarthest(int index) {
  std::ptrdiff_t const winner = FindFarthest(restColors, kFarthest);
  if (winner < 0) return Choose(index, 0);
  Choose(index, rest[winner]);
  restColors.nearest[winner] = 0;
}

void ColorQuantizer::WriteIndices(COrbImage const& image, unsigned char* rows, std::size_t stride) const {
  std::vector<unsigned char> const indices(table.begin(), table.end());
  int const last = image.GetHeight() - 1;
  EachPiece(image, [&](std::uint16_t const* cells, std::ptrdiff_t count, std::ptrdiff_t x, int y) {
    unsigned char* const out = rows + static_cast<std::size_t>(last - y) * stride + x;
    for (std::ptrdiff_t i = 0; i < count; ++i) out[i] = indices[cells[i]];
  });
}

}  // namespace

void QuantizeColors(COrbImage const& image, unsigned char* rows, std::size_t stride, RGBQUAD* palette) {
  ColorQuantizer quantizer(palette);
  if (HasPixels(image)) quantizer.CountColors(image);
  quantizer.ShareSlots();
  quantizer.SelectFrequent();
  quantizer.FillAndMap();
  if (HasPixels(image)) quantizer.WriteIndices(image, rows, stride);
}

}  // namespace orb
