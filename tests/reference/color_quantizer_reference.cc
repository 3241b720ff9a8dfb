#include <tests/reference/color_quantizer_reference.h>

#include <cmath>
#include <vector>

namespace orb::test::reference {

namespace {

constexpr int kCells = 32768;
constexpr double kPreference[8] = {20, 28, 37, 48, 45, 32, 20, 10};

int Red(int cell) { return cell / 1024 * 8 + 4; }
int Green(int cell) { return cell / 32 % 32 * 8 + 4; }
int Blue(int cell) { return cell % 32 * 8 + 4; }

int LightnessOf(int cell) {
  int smallest = Red(cell);
  if (Green(cell) < smallest) smallest = Green(cell);
  if (Blue(cell) < smallest) smallest = Blue(cell);
  int largest = Red(cell);
  if (Green(cell) > largest) largest = Green(cell);
  if (Blue(cell) > largest) largest = Blue(cell);
  return (smallest + largest) / 2;
}

int CellOf(COrbImage& image, int x, int y) {
  double const min = image.GetLevelMin(0);
  double const max = image.GetLevelMax(0);
  double const range = image.GetLevelRange(0);
  int const r = ByteOf(image.GetPixelGrayRaw(x, y, 0), min, max, range);
  int const g = ByteOf(image.GetPixelGrayRaw(x, y, 1), min, max, range);
  int const b = ByteOf(image.GetPixelGrayRaw(x, y, 2), min, max, range);
  return r / 8 * 1024 + g / 8 * 32 + b / 8;
}

int DistanceTo(unsigned char const* entry, int cell) {
  int const b = Blue(cell) - entry[0];
  int const g = Green(cell) - entry[1];
  int const r = Red(cell) - entry[2];
  return r * r + g * g + b * b;
}

void SetEntry(unsigned char* entry, int cell) {
  entry[0] = static_cast<unsigned char>(Blue(cell));
  entry[1] = static_cast<unsigned char>(Green(cell));
  entry[2] = static_cast<unsigned char>(Red(cell));
}

void CountColors(COrbImage& image, std::vector<int>& table) {
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      int& count = table[static_cast<std::size_t>(CellOf(image, x, y))];
      count = count + 1;
      if (count > 32000) count = 32000;
    }
  }
}

// Band k owns the palette indices slots[k] to slots[k + 1] - 1.
void DivideSlots(std::vector<int> const& table, int (&slots)[9]) {
  double a[8] = {};
  double b[8] = {};
  for (int cell = 0; cell < kCells; ++cell) {
    int const count = table[static_cast<std::size_t>(cell)];
    if (count == 0) continue;
    int const k = (255 - LightnessOf(cell)) / 32;
    a[k] += count;
    b[k] += 1;
  }
  double s = 0.0;
  for (double& weight : a) {
    weight = std::sqrt(weight);
    s += weight;
  }
  double v[8];
  double sum = 0.0;
  for (int k = 0; k < 8; ++k) {
    double const t = kPreference[k];
    v[k] = a[k] * t / s * 8.0;
    if (v[k] < 8.0) v[k] = 8.0;
    if (v[k] > b[k]) v[k] = b[k];
    if (v[k] > 1.5 * t) v[k] = 1.5 * t;
    sum += v[k];
  }
  double const factor = 240.0 / sum;
  for (double& share : v) share *= factor;
  double below = 0.0;
  for (int j = 0; j <= 8; ++j) {
    slots[j] = static_cast<int>(below + 0.5);
    if (j < 8) below += v[j];
  }
}

}  // namespace

unsigned char ByteOf(float v, double min, double max, double range) {
  if (min >= v) return 0;
  if (max <= v) return 255;
  double const scaled = (v - min) / range * 255.0;
  if (std::isnan(scaled) || scaled < 0.0 || scaled >= 256.0) return 0;
  return static_cast<unsigned char>(scaled);
}

void QuantizeColors(COrbImage& image, unsigned char* rows, std::size_t stride, unsigned char* palette) {
  std::vector<int> table(kCells, 0);
  CountColors(image, table);
  int slots[9];
  DivideSlots(table, slots);

  for (int k = 0; k < 8; ++k) {
    int const top = 256 - 32 * k;
    for (int p = slots[k]; p < slots[k + 1]; ++p) {
      int bestCount = 0;
      int bestCell = 0;
      for (int cell = 0; cell < kCells; ++cell) {
        int const count = table[static_cast<std::size_t>(cell)];
        int const lightness = LightnessOf(cell);
        if (count <= 0 || lightness < top - 32 || lightness > top) continue;
        if (count >= bestCount) {
          bestCount = count;
          bestCell = cell;
        }
      }
      SetEntry(palette + 4 * p, bestCell);
      table[static_cast<std::size_t>(bestCell)] = -p;
    }
  }

  for (int cell = 0; cell < kCells; ++cell) {
    int& entry = table[static_cast<std::size_t>(cell)];
    if (entry <= 0) continue;
    if (slots[8] <= 1) {
      entry = 65536;
      continue;
    }
    int smallest = 195075;
    for (int p = 0; p <= slots[8] - 2; ++p) {
      int const distance = DistanceTo(palette + 4 * p, cell);
      if (distance < smallest) smallest = distance;
    }
    entry = smallest > 65536 ? 65536 : smallest;
  }

  for (int p = slots[8]; p <= 255; ++p) {
    int farthest = 0;
    int winner = 0;
    for (int cell = 0; cell < kCells; ++cell) {
      int& entry = table[static_cast<std::size_t>(cell)];
      if (entry <= 0) continue;
      int distance = DistanceTo(palette + 4 * (p - 1), cell);
      if (distance > 65536) distance = 65536;
      if (distance < entry) entry = distance;
      if (entry > farthest) {
        farthest = entry;
        winner = cell;
      }
    }
    SetEntry(palette + 4 * p, winner);
    table[static_cast<std::size_t>(winner)] = -p;
  }

  for (int cell = 0; cell < kCells; ++cell) {
    int& entry = table[static_cast<std::size_t>(cell)];
    if (entry >= 1) {
      int smallest = 195075;
      int nearest = 0;
      for (int p = 0; p < 256; ++p) {
        int const distance = DistanceTo(palette + 4 * p, cell);
        if (distance < smallest) {
          smallest = distance;
          nearest = p;
        }
      }
      entry = nearest;
    } else if (entry < 0) {
      entry = -entry;
    }
  }

  for (int y = 0; y < image.GetHeight(); ++y) {
    unsigned char* row = rows + static_cast<std::size_t>(image.GetHeight() - 1 - y) * stride;
    for (int x = 0; x < image.GetWidth(); ++x) {
      row[x] = static_cast<unsigned char>(table[static_cast<std::size_t>(CellOf(image, x, y))] & 0xff);
    }
  }
}

}  // namespace orb::test::reference
