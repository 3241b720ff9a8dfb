// Order statistics under a disk: every way to them equals the sort.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <orbimg/core/truncate.h>
#include <orbimg/filters/disk_rank_internal.h>
#include <orbimg/orbimg.h>
#include <tests/reference/disk_rank_reference.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

// Rows mirror as the filters' do, and stay inside the image.
SourceRow MirroredRows(COrbImage const& image) {
  return [&image](int y) {
    int const height = image.GetHeight();
    int const row = y < 0 ? -y : y >= height ? 2 * height - y - 1 : y;
    return static_cast<float const*>(image.GetImageAdr(0, std::clamp(row, 0, height - 1), 0, 1, nullptr));
  };
}

int RadiusOf(double range) { return std::max(1, TruncateToInt(std::ceil(range))); }

// A field that a kind of sky may have: noise, whole numbers, a slope, one value, around zero, with every special one.
COrbImage Field(Random& random, int kind, int width, int height) {
  COrbImage image = RandomImage(random, width, height, 1);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      float const v = image.GetPixelGrayRaw(x, y, 0);
      float const of[] = {v,     std::round(v / 8.0f), 3.0f * static_cast<float>(x) - static_cast<float>(y),
                          -7.5f, v - 150.0f,           v};
      image.SetPixelGrayRaw(x, y, of[kind], 0);
    }
  }
  if (kind == 5) StrewSpecialSamples(image, random);
  return image;
}
constexpr int kFields = 6;

void ExpectRanksOfTheSort(COrbImage& image, double range, int index, Bounds const& area) {
  Disk const disk(RadiusOf(range), range);
  auto const rows = RankUnderDisk(disk, index, MirroredRows(image), image.GetWidth(), area);
  std::vector<float> expected;
  std::vector<float> actual;
  for (int y = area.top; y < area.bottom; ++y) {
    float const* const row = rows->Row(y);
    actual.insert(actual.end(), row, row + area.Columns());
    for (int x = area.left; x < area.right; ++x) {
      std::vector<float> const sorted = reference::SamplesUnderDisk(image, x, y, 0, RadiusOf(range), range);
      bool const isThere = index >= 0 && index < static_cast<int>(sorted.size());
      expected.push_back(isThere ? sorted[static_cast<std::size_t>(index)] : 0.0f);
    }
  }
  EXPECT_TRUE(SameBits(expected, actual))
      << image.GetWidth() << 'x' << image.GetHeight() << " range " << range << " index " << index;
}

Bounds WholeOf(COrbImage const& image) { return Bounds{0, 0, image.GetWidth(), image.GetHeight()}; }

TEST(DiskRank, DiskHasTheCellsWithinItsRange) {
  for (double range : {0.0, 0.5, 1.0, 1.5, 2.0, 2.9, 3.2, 4.0, 5.7, 8.0, 16.0, -2.0}) {
    Disk const disk(RadiusOf(range), range);
    EXPECT_EQ(reference::CountUnderDisk(RadiusOf(range), range), disk.Count()) << range;
    for (int dy = -disk.Above(); dy <= disk.Below(); ++dy) {
      for (int dx = -disk.Reach() - 1; dx <= disk.Reach() + 1; ++dx) {
        EXPECT_EQ(std::abs(dx) <= disk.HalfWidth(dy),
                  std::abs(dx) <= RadiusOf(range) && reference::IsUnderDisk(dx, dy, range))
            << range;
      }
    }
  }
  EXPECT_EQ(9, Disk(2, 1.5).Count());
  EXPECT_EQ(9, Disk(1, -2.0).Count()) << "the square of the range counts, within the radius";
  EXPECT_EQ(0, Disk(1, std::nan("")).Count());
  EXPECT_EQ(29, Disk(3, 3.0).Count());
  EXPECT_EQ(18, Disk(3, 3.0).UpperHalf().Count());
}

TEST(DiskRank, EveryRankOfSmallDisksOnEverySmallSize) {
  Random random(1);
  for (double range : {0.0, 1.0, 1.5, 2.0, 3.0, 3.2}) {
    int const count = Disk(RadiusOf(range), range).Count();
    for (int index : {-1, 0, 1, count / 2, count - 2, count - 1, count}) {
      int const width = 1 + static_cast<int>(random() % 40);
      int const height = 1 + static_cast<int>(random() % 12);
      COrbImage image = Field(random, static_cast<int>(random() % kFields), width, height);
      ExpectRanksOfTheSort(image, range, index, WholeOf(image));
    }
  }
}

TEST(DiskRank, EveryWidthAndHeight) {
  Random random(2);
  for (int width = 1; width <= 40; width += 3) {
    for (int height = 1; height <= 12; height += 2) {
      double const range = std::vector<double>{1.0, 2.3, 3.0, 4.0, 5.5}[random() % 5];
      int const count = Disk(RadiusOf(range), range).Count();
      COrbImage image = Field(random, static_cast<int>(random() % kFields), width, height);
      ExpectRanksOfTheSort(image, range, static_cast<int>(random() % static_cast<unsigned>(count)), WholeOf(image));
    }
  }
}

TEST(DiskRank, AcrossTilesOfEveryField) {
  Random random(3);
  for (int field = 0; field < kFields; ++field) {
    COrbImage image = Field(random, field, 150, 70);
    ExpectRanksOfTheSort(image, 5.0, 40, Bounds{3, 1, 149, 70});
    ExpectRanksOfTheSort(image, 5.0, 7, Bounds{0, 64, 150, 67});
  }
}

TEST(DiskRank, ExtremesAcrossTiles) {
  Random random(4);
  COrbImage image = Field(random, 5, 270, 140);
  int const last = Disk(6, 6.0).Count() - 1;
  ExpectRanksOfTheSort(image, 6.0, 0, Bounds{1, 0, 270, 140});
  ExpectRanksOfTheSort(image, 6.0, last, Bounds{0, 2, 269, 139});
}

// Wider than the image on all sides, and with ranks beyond 16 bits.
TEST(DiskRank, DisksWiderThanTheImage) {
  Random random(5);
  COrbImage image = Field(random, 0, 9, 4);
  for (double range : {20.0, 33.0, 100.0}) {
    int const count = Disk(RadiusOf(range), range).Count();
    ExpectRanksOfTheSort(image, range, 0, WholeOf(image));
    ExpectRanksOfTheSort(image, range, count / 2, WholeOf(image));
    ExpectRanksOfTheSort(image, range, count - 1, WholeOf(image));
  }
}

void ExpectHalfDiskMedians(COrbImage& image, double range, Bounds const& area) {
  int const radius = std::max(1, TruncateToInt(range));
  auto const rows =
      MedianUnderUpperHalf(Disk(radius, range), MirroredRows(image), image.GetWidth(), image.GetHeight(), area);
  std::vector<float> expected;
  std::vector<float> actual;
  for (int y = area.top; y < area.bottom; ++y) {
    float const* const row = rows->Row(y);
    actual.insert(actual.end(), row, row + area.Columns());
    for (int x = area.left; x < area.right; ++x) {
      expected.push_back(reference::MedianUnderUpperHalf(image, x, y, 0, radius, range));
    }
  }
  EXPECT_TRUE(SameBits(expected, actual)) << image.GetWidth() << 'x' << image.GetHeight() << " range " << range;
}

TEST(DiskRank, HalfDiskMediansOnEverySize) {
  Random random(6);
  for (int width = 1; width <= 40; width += 3) {
    for (int height = 1; height <= 12; height += 2) {
      double const range = std::vector<double>{0.5, 1.0, 2.3, 3.0, 4.9, 6.0, -3.0}[random() % 7];
      COrbImage image = Field(random, static_cast<int>(random() % kFields), width, height);
      ExpectHalfDiskMedians(image, range, WholeOf(image));
    }
  }
}

TEST(DiskRank, HalfDiskMediansAcrossTilesOfEveryField) {
  Random random(7);
  for (int field = 0; field < kFields; ++field) {
    COrbImage image = Field(random, field, 150, 75);
    ExpectHalfDiskMedians(image, 3.0, WholeOf(image));
    ExpectHalfDiskMedians(image, 7.0, Bounds{3, 1, 149, 73});
  }
}

TEST(DiskRank, HalfDiskWithoutCellsGivesZero) {
  Random random(8);
  COrbImage image = Field(random, 0, 5, 5);
  ExpectHalfDiskMedians(image, std::nan(""), WholeOf(image));
}

}  // namespace
}  // namespace orb::test
