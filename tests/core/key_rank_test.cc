// One order statistic by the keys of floats.
#include <orbimg/core/key_rank_kernels.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

std::int32_t KeyAt(std::vector<float> const& samples, std::int64_t rank) {
  std::vector<std::int32_t> keys(samples.size());
  KeyRange range;
  auto const half = static_cast<std::ptrdiff_t>(samples.size() / 2);
  KeysOfRow(samples.data(), half, keys.data(), range);
  KeysOfRow(samples.data() + half, std::ssize(samples) - half, keys.data() + half, range);
  return KeyAtRank(keys.data(), std::ssize(keys), rank, range);
}

TEST(KeyRank, EveryRankIsThatOfTheSortedSamples) {
  Random random(1);
  for (int count : {1, 2, 3, 7, 16, 33, 100}) {
    COrbImage image = RandomImage(random, count, 1, 1);
    if (count > 3) StrewSpecialSamples(image, random);
    std::vector<float> const samples = SamplesOf(image);
    std::vector<float> sorted;
    std::copy_if(samples.begin(), samples.end(), std::back_inserter(sorted), [](float v) { return !std::isnan(v); });
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t rank = 0; rank < samples.size(); ++rank) {
      std::int32_t const key = KeyAt(samples, static_cast<std::int64_t>(rank));
      if (rank < sorted.size()) {
        EXPECT_EQ(sorted[rank], SampleOf(key)) << count << ' ' << rank;
      } else {
        EXPECT_EQ(kHighestKey, key) << count << ' ' << rank;
      }
    }
  }
}

TEST(KeyRank, WhatIsNoNumberComesLastWhateverItsSign) {
  float const nan = std::numeric_limits<float>::quiet_NaN();
  float const infinity = std::numeric_limits<float>::infinity();
  std::vector<float> const samples{std::copysign(nan, -1.0f), infinity, nan, -infinity, 5.0f};
  EXPECT_EQ(-infinity, SampleOf(KeyAt(samples, 0)));
  EXPECT_EQ(5.0f, SampleOf(KeyAt(samples, 1)));
  EXPECT_EQ(infinity, SampleOf(KeyAt(samples, 2)));
  EXPECT_EQ(kHighestKey, KeyAt(samples, 3));
  EXPECT_EQ(kHighestKey, KeyAt(samples, 4));
}

}  // namespace
}  // namespace orb::test
