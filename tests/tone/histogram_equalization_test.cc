// CImgHstEql: every sample its rank, chance among equals, classes and what falls between them, and its runs.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <orbimg/tone/rank_sorter_internal.h>
#include <tests/reference/histogram_equalization_reference.h>
#include <tests/support/point_operator_test.h>

namespace orb::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

// Ours into junk, against the plain form with the same seed; rand goes on alike after both.
void ExpectTheReferenceOf(COrbImage const& src, unsigned seed) {
  COrbImage source(src);
  COrbImage expectedSource(src);
  CImgHstEql dst;
  dst.Create(src, nullptr, nullptr);
  FillJunk(dst);
  COrbImage expected(dst);
  CImgHstEql hostile(dst);
  std::srand(seed);
  reference::Equalize(expected, expectedSource);
  int const next = std::rand();
  std::srand(seed);
  EXPECT_EQ(1, dst.Do(&source));
  EXPECT_EQ(next, std::rand());
  EXPECT_TRUE(SameBits(expected, dst));
  EXPECT_TRUE(SameLevels(expected, dst));
  EXPECT_TRUE(SameValues(src, source));
  EXPECT_TRUE(SameLevels(expectedSource, source));

  COrbImage movingSource(src);
  MakeHostile(hostile);
  MakeHostile(movingSource);
  std::srand(seed);
  hostile.Do(&movingSource);
  EXPECT_TRUE(SameBits(expected, hostile));
  EXPECT_EQ(0, LocksLeft(hostile) + LocksLeft(movingSource));
}

// A mono image of this width whose samples are drawn by `draw`.
template <typename Draw>
COrbImage Drawn(int width, int height, Draw draw) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) image.SetPixelGrayRaw(x, y, static_cast<float>(draw()), 0);
  }
  return image;
}

TEST(HistogramEqualization, EveryPixelGetsItsOwnRank) {
  int n = 0;
  COrbImage src = Drawn(64, 32, [&] { return n++ % 256 * 2.0 + 100.0; });
  CImgHstEql dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.Do(&src);
  std::vector<float> const values = SamplesOf(src);
  std::vector<float> const levels = SamplesOf(dst);
  std::vector<float> sorted = levels;
  std::sort(sorted.begin(), sorted.end());
  for (int k = 0; k < 2048; ++k)
    EXPECT_EQ(static_cast<float>(k * 510.0 / 2048 + 100.0), sorted[static_cast<std::size_t>(k)]);
  for (std::size_t i = 0; i < values.size(); ++i) {
    // Eight pixels of each value stand side by side.
    double const rank = (levels[i] - 100.0) / 510.0 * 2048.0;
    EXPECT_EQ(std::floor((values[i] - 100.0) / 2.0), std::floor(rank / 8.0 + 1e-3));
  }
}

TEST(HistogramEqualization, ChanceDecidesAmongEquals) {
  int n = 0;
  COrbImage const src = Drawn(32, 32, [&] { return n++ % 4; });
  auto const run = [&] {
    COrbImage source(src);
    CImgHstEql dst;
    dst.CopyImage(src, nullptr, nullptr);
    dst.Do(&source);
    return SamplesOf(dst);
  };
  std::srand(1);
  auto const first = run();
  EXPECT_NE(first, run());
  std::srand(1);
  EXPECT_EQ(first, run());
}

TEST(HistogramEqualization, EqualsThePlainFormOnEverySize) {
  Random random(1);
  for (int planes : {1, 3}) {
    for (int width : {2, 3, 17, 40}) {
      for (int height : {1, 2, 12}) {
        SCOPED_TRACE(testing::Message() << width << 'x' << height << 'x' << planes);
        ExpectTheReferenceOf(RandomImage(random, width, height, planes), random());
      }
    }
  }
}

// Enough samples for several buckets in a class, and for ties that are equal as floats.
TEST(HistogramEqualization, EqualsThePlainFormOnEveryDistribution) {
  Random random(2);
  std::uniform_real_distribution<double> even(0.0, 1.0);
  std::normal_distribution<double> noise(0.0, 3.0);
  ExpectTheReferenceOf(Drawn(200, 150, [&] { return random() % 5000 == 0 ? 60000.0 : 900.0 + 30.0 * even(random); }),
                       1);
  ExpectTheReferenceOf(Drawn(200, 150, [&] { return noise(random); }), 2);
  ExpectTheReferenceOf(Drawn(200, 150, [&] { return std::round(noise(random)); }), 3);
  ExpectTheReferenceOf(Drawn(200, 150, [&] { return std::max(noise(random), 0.0); }), 4);
  ExpectTheReferenceOf(Drawn(200, 150, [&] { return std::exp(5.0 * noise(random)); }), 5);
  ExpectTheReferenceOf(Drawn(300, 100, [&] { return random() % 3 == 0 ? 0.0 : random() % 2 == 0 ? -0.0 : 1.0; }), 6);
  ExpectTheReferenceOf(Drawn(60, 50, [&] { return random() % 2 == 0 ? 1e-40 * even(random) : -1e-40; }), 7);
  ExpectTheReferenceOf(Drawn(60, 50, [&] { return (even(random) - 0.5) * 6e38; }), 8);
  ExpectTheReferenceOf(Drawn(60, 50, [&] { return random() % 4 == 0 ? -1e30 : 1e14 * even(random); }), 9);
}

// A class of several buckets, once where some rows tell of it, and once where the rows looked at are unlike the others.
TEST(HistogramEqualization, EqualsThePlainFormInDividedClasses) {
  Random random(5);
  std::normal_distribution<double> noise(1000.0, 3.0);
  COrbImage sky = Drawn(400, 300, [&] { return random() % 5000 == 0 ? 60000.0 : noise(random); });
  ExpectTheReferenceOf(sky, 1);
  for (int y = 0; y < 300; ++y) {
    if (y % 9 != 0) continue;
    for (int x = 0; x < 400; ++x) sky.SetPixelGrayRaw(x, y, 40000.0f + static_cast<float>(x % 7), 0);
  }
  ExpectTheReferenceOf(sky, 2);
}

// s - min of 1.0 is below 1 and counts it in class 0, while the lower edge of class 1 is 1 exactly.
COrbImage BetweenFormulaAndEdges() {
  COrbImage image(-32, 40, 30, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(1200, 1.0f));
  image.SetPixelGrayRaw(0, 0, 0.75f * std::ldexp(1.0f, -53), 0);
  image.SetPixelGrayRaw(39, 29, 256.0f, 0);
  return image;
}

TEST(HistogramEqualization, AClassWithoutACountIsSkipped) {
  COrbImage const src = BetweenFormulaAndEdges();
  ExpectTheReferenceOf(src, 1);
  COrbImage source(src);
  CImgHstEql dst;
  dst.CopyImage(src, nullptr, nullptr);
  FillJunk(dst);
  COrbImage const junk(dst);
  dst.Do(&source);
  std::vector<float> const before = SamplesOf(junk);
  std::vector<float> const after = SamplesOf(dst);
  EXPECT_EQ(source.GetMinPixel(0), after[0]);
  for (std::size_t i = 1; i < 1199; ++i) EXPECT_EQ(before[i], after[i]);
  EXPECT_EQ(static_cast<float>(256.0 / 1200), after[1199]);
}

// s - min of 1.0 is below 1 and counts it in class 15, whose upper edge is 1 exactly: nothing is in it.
TEST(HistogramEqualization, AnEmptyClassWithACountTicks) {
  float const least = 0.75f * std::ldexp(1.0f, -53);
  COrbImage src = MonoRow({least, 1.0f, 16.0f});
  ExpectTheReferenceOf(src, 1);
  CImgHstEql dst;
  dst.CopyImage(MonoRow({7.0f, 7.0f, 7.0f}), nullptr, nullptr);
  RecordingWindow window;
  dst.SetProgressHandle(&window);
  dst.Do(&src);
  EXPECT_EQ((std::vector<float>{least, 7.0f, static_cast<float>(16.0 / 3)}), SamplesOf(dst));
  EXPECT_EQ(3, window.polls);
}

TEST(HistogramEqualization, AClassTakesAHundredMoreThanItsCount) {
  COrbImage src = BetweenFormulaAndEdges();
  src.SetPixelGrayRaw(20, 20, 1.5f, 0);
  ExpectTheReferenceOf(src, 2);
  CImgHstEql dst;
  dst.CopyImage(src, nullptr, nullptr);
  FillJunk(dst);
  COrbImage const junk(dst);
  dst.Do(&src);
  std::vector<float> const before = SamplesOf(junk);
  std::vector<float> const after = SamplesOf(dst);
  for (std::size_t i = 1; i < 1199; ++i) EXPECT_EQ(i > 101, before[i] == after[i]) << i;
}

// Intended: beyond 2^53 the last edge, max + 1, is max itself.
TEST(HistogramEqualization, AHugeMaximumGetsNoRank) {
  COrbImage src = MonoRow({0.0f, 1e18f, 3e17f, 1e18f});
  ExpectTheReferenceOf(src, 3);
  CImgHstEql dst;
  dst.CopyImage(MonoRow({7.0f, 7.0f, 7.0f, 7.0f}), nullptr, nullptr);
  dst.Do(&src);
  EXPECT_EQ((std::vector<float>{0.0f, 7.0f, 2.5e17f, 7.0f}), SamplesOf(dst));
}

TEST(HistogramEqualization, TheSourceGetsItsExtremaAsLevels) {
  Random random(3);
  COrbImage src = RandomImage(random, 20, 10, 3);
  COrbImage measured(src);
  measured.CalcMinMax();
  CImgHstEql dst;
  dst.CopyImage(src, nullptr, nullptr);
  SetRandomLevels(dst, random);
  COrbImage const before(dst);
  dst.Do(&src);
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(measured.GetMinPixel(p), src.GetMinPixel(p));
    EXPECT_EQ(measured.GetMaxPixel(p), src.GetMaxPixel(p));
    EXPECT_EQ(measured.GetMinPixel(p), src.GetLevelMin(p));
    EXPECT_EQ(measured.GetMaxPixel(p), src.GetLevelMax(p));
  }
  EXPECT_TRUE(SameLevels(before, dst));
}

TEST(HistogramEqualization, PlanesWithoutARangeAreCopied) {
  std::vector<std::vector<float>> const rows = {
      {5.0f, 5.0f, 5.0f}, {1.0f, kInfinity, 2.0f}, {-kInfinity, 0.0f, 1.0f}, {kNotANumber, 1.0f, 2.0f}, {3.0f}};
  for (std::vector<float> const& row : rows) {
    COrbImage src = MonoRow(row);
    CImgHstEql dst;
    dst.Create(src, nullptr, nullptr);
    RecordingWindow window;
    dst.SetProgressHandle(&window);
    EXPECT_EQ(1, dst.Do(&src));
    EXPECT_TRUE(SameBits(src, dst));
    EXPECT_EQ(1u, window.starts.size());
    EXPECT_EQ(1u, window.ends.size());
    EXPECT_EQ(0, window.polls);
  }
}

TEST(HistogramEqualization, WhatIsNotANumberKeepsTheDestination) {
  COrbImage src = MonoRow({1.0f, kNotANumber, 3.0f, 2.0f});
  CImgHstEql dst;
  dst.CopyImage(MonoRow({9.0f, 9.0f, 9.0f, 9.0f}), nullptr, nullptr);
  dst.Do(&src);
  EXPECT_EQ((std::vector<float>{1.0f, 9.0f, 2.0f, 1.5f}), SamplesOf(dst));
  Random random(4);
  COrbImage strewn = RandomImage(random, 40, 12, 1);
  for (int x = 1; x < 40; x += 3) strewn.SetPixelGrayRaw(x, x % 12, kNotANumber, 0);
  ExpectTheReferenceOf(strewn, 5);
}

// Two images over the same samples are still two images.
TEST(HistogramEqualization, SourceAndDestinationMayShareSamples) {
  Random random(7);
  COrbImage const src = RandomImage(random, 40, 30, 1);
  COrbImage source(src);
  COrbImage expected(src);
  std::srand(8);
  reference::Equalize(expected, source);
  for (std::ptrdiff_t offset : {0, 40}) {
    std::vector<float> samples(1200 + 40, 0.0f);
    std::vector<float> const values = SamplesOf(src);
    std::copy(values.begin(), values.end(), samples.begin());
    COrbImage wrapped;
    WrapSamples(wrapped, samples.data(), 40, 30, 1);
    CImgHstEql dst;
    WrapSamples(dst, samples.data() + offset, 40, 30, 1);
    std::srand(8);
    dst.Do(&wrapped);
    EXPECT_EQ(SamplesOf(expected), SamplesOf(dst)) << offset;
  }
}

TEST(HistogramEqualization, ReportsARunForEachPlaneAlways) {
  // Classes 0, 128 and 256 have a count.
  COrbImage src(-32, 3, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {0, 1, 2, 0, 1, 2, 0, 0, 2});
  CImgHstEql dst;
  dst.CopyImage(src, nullptr, nullptr);
  RecordingWindow window;
  window.escapeAtPoll = 1;
  dst.SetProgressHandle(&window);
  dst.Do(&src);
  EXPECT_EQ(std::vector<std::string>(3, "ヒストグラム・イコライゼーション処理中..."), window.starts);
  EXPECT_EQ(std::vector<std::string>(3, "(null)"), window.ends);
  EXPECT_EQ(258, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(3 + 3 + 2, window.polls);
}

TEST(RankSorter, EqualsAStableSort) {
  Random random(6);
  RankSorter sorter;
  for (std::size_t count : {0, 1, 2, 24, 25, 300, 5000, 20000}) {
    for (int bits : {0, 1, 8, 20, 40, 64}) {
      std::vector<std::uint64_t> keys(count);
      for (std::uint64_t& key : keys) {
        key = std::uint64_t{random()} << 32 | random();
        key = bits == 0 ? 77 : key >> (64 - bits);
        if (random() % 50 == 0) key = random() % 3;
      }
      std::vector<std::size_t> expected(count);
      for (std::size_t i = 0; i < count; ++i) expected[i] = i;
      std::stable_sort(expected.begin(), expected.end(),
                       [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
      sorter.Rank(keys.data(), count, 5);
      for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(i + 5, keys[expected[i]]) << count << ' ' << bits;
    }
  }
}

TEST(RankSorter, KeysOrderLikeValuesThenTies) {
  float const ascending[] = {-std::numeric_limits<float>::max(), -1.0f, -1e-45f, 0.0f, 1e-45f, 1.0f, 2e30f};
  for (std::size_t i = 1; i < std::size(ascending); ++i) {
    EXPECT_LT(RankKey(ascending[i - 1], 2147483648.0f), RankKey(ascending[i], 0.0f));
  }
  EXPECT_EQ(RankKey(-0.0f, 3.0f), RankKey(0.0f, 3.0f));
  EXPECT_LT(RankKey(1.0f, 2147483520.0f), RankKey(1.0f, 2147483648.0f));
}

}  // namespace
}  // namespace orb::test
