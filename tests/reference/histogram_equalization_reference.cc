#include <tests/reference/histogram_equalization_reference.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace orb::test::reference {

namespace {

struct RankEntry {
  int x;
  int y;
  float value;
  float tie;
};

class RankList {
 public:
  explicit RankList(int initCapacity) : capacity(initCapacity) {}

  void Add(int x, int y, float value, int random) {
    if (static_cast<int>(entries.size()) < capacity) {
      entries.push_back({x, y, value, static_cast<float>(random)});
    }
  }
  // A comparison of equals that says "less" leaves them in their order in a sort that merges.
  void Sort() {
    std::stable_sort(entries.begin(), entries.end(), [](RankEntry const& a, RankEntry const& b) {
      return a.value < b.value || (a.value == b.value && a.tie < b.tie);
    });
  }

  std::vector<RankEntry> entries;

 private:
  int capacity;
};

}  // namespace

void Equalize(COrbImage& dst, COrbImage& src) {
  int const width = dst.GetWidth();
  int const height = dst.GetHeight();
  int const n = width * height;
  for (int p = 0; p < src.GetPlanes(); ++p) {
    src.CalcMinMax();
    double const min = src.GetMinPixel(p);
    double const max = src.GetMaxPixel(p);
    double const range = max - min;
    src.SetLevel(p, min, max);
    std::vector<double> edge(258);
    for (int i = 0; i <= 256; ++i) edge[static_cast<std::size_t>(i)] = i * range * 0.00390625 + min;
    edge[257] = max + 1.0;
    std::vector<int> counts(258);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double const bin = (src.GetPixelGrayRaw(x, y, p) - min) / range * 256.0;
        if (!std::isnan(bin)) ++counts[static_cast<std::size_t>(std::clamp(bin, 0.0, 257.0))];
      }
    }
    dst.ShowProgressInit(1, 6177, 258);
    int k = 0;
    for (std::size_t b = 0; b + 1 < edge.size(); ++b) {
      if (counts[b] == 0) continue;
      RankList list(counts[b] + 100);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          float const v = src.GetPixelGrayRaw(x, y, p);
          if (edge[b] <= v && v < edge[b + 1]) list.Add(x, y, v, std::rand());
        }
      }
      list.Sort();
      for (RankEntry const& entry : list.entries) {
        dst.SetPixelGrayRaw(entry.x, entry.y, static_cast<float>(k * range / n + min), p);
        ++k;
      }
      dst.ShowProgress(1);
    }
    dst.ShowProgressEnd(static_cast<char const*>(nullptr));
  }
}

}  // namespace orb::test::reference
