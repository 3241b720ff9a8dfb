// CImgMedianComposit and CLineData: the median of what covers a pixel, line by line.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>

#include <gtest/gtest.h>
#include <orbimg/core/selection_network_internal.h>
#include <orbimg/orbimg.h>
#include <tests/reference/median_composite_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/plain_images.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::RegisteredFrame;

void Stack(COrbImage& destination, std::vector<RegisteredFrame> const& frames) {
  CImgMedianComposit median(&destination);
  for (int y = 0; y < destination.GetHeight(); ++y) {
    for (RegisteredFrame const& f : frames) median.Store(f.image, y, f.dx, f.dy, f.angle);
    median.Calc();
  }
}

void ExpectPlainMedian(COrbImage const& shape, std::vector<RegisteredFrame> const& frames, std::string const& what) {
  COrbImage found(shape);
  FillJunk(found);
  COrbImage expected(found);
  for (int y = 0; y < expected.GetHeight(); ++y) reference::MedianLine(expected, frames, y);
  Stack(found, frames);
  EXPECT_TRUE(SameBits(expected, found)) << what;
  EXPECT_TRUE(SameLevels(expected, found)) << what;
}

// The median of one pixel that frames of one sample cover.
float MedianOf(std::vector<float> const& values) {
  std::vector<std::unique_ptr<COrbImage>> images;
  std::vector<RegisteredFrame> frames;
  for (float v : values) {
    images.push_back(std::make_unique<COrbImage>(Constant(2, 2, v)));
    frames.push_back({images.back().get(), 0.0, 0.0, 0.0});
  }
  COrbImage destination = Constant(1, 1, -7.0f);
  Stack(destination, frames);
  return destination.GetPixelGrayRaw(0, 0, 0);
}

// ---- The network

// A network of exchanges selects right for all inputs if it does so for all inputs of zeros and ones.
TEST(SelectionNetwork, SelectsEveryRankOfAllZerosAndOnes) {
  for (int n = 1; n <= 11; ++n) {
    for (int rank = 0; rank < n; ++rank) {
      SelectionNetwork const network(n, rank);
      for (unsigned bits = 0; bits < 1u << n; ++bits) {
        std::vector<int> v;
        for (int i = 0; i < n; ++i) v.push_back(static_cast<int>(bits >> i & 1u));
        std::vector<int> sorted(v);
        std::sort(sorted.begin(), sorted.end());
        for (Exchange const& e : network.Exchanges()) {
          int& a = v[static_cast<std::size_t>(e.lower)];
          int& b = v[static_cast<std::size_t>(e.upper)];
          int const smaller = std::min(a, b);
          int const larger = std::max(a, b);
          if (e.kind != Exchange::kLarger) a = smaller;
          if (e.kind != Exchange::kSmaller) b = larger;
        }
        ASSERT_EQ(sorted[static_cast<std::size_t>(rank)], v[static_cast<std::size_t>(rank)]) << n << ' ' << rank;
      }
    }
  }
}

// ---- Which value

TEST(MedianComposite, TakesTheUpperOfTheTwoMiddleValues) {
  EXPECT_EQ(5.0f, MedianOf({5.0f}));
  EXPECT_EQ(7.0f, MedianOf({5.0f, 7.0f}));
  EXPECT_EQ(7.0f, MedianOf({7.0f, 5.0f}));
  EXPECT_EQ(5.0f, MedianOf({9.0f, 5.0f, -1.0f}));
  EXPECT_EQ(3.0f, MedianOf({4.0f, 1.0f, 3.0f, 2.0f}));
  EXPECT_EQ(-1.0f, MedianOf({-1.0f, -5.0f}));
  EXPECT_EQ(-2.0f, MedianOf({-4.0f, -2.0f, -1.0f, -3.0f}));
}

TEST(MedianComposite, EveryCountOfFrames) {
  Random random(31);
  std::uniform_real_distribution<float> value(-1000.0f, 1000.0f);
  for (int n = 1; n <= 70; ++n) {
    std::vector<float> values;
    for (int i = 0; i < n; ++i) values.push_back(i % 7 == 3 ? values[static_cast<std::size_t>(i / 2)] : value(random));
    std::vector<float> sorted(values);
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted[static_cast<std::size_t>(n / 2)], MedianOf(values)) << n;
  }
}

TEST(MedianComposite, ExtremeValuesKeepTheirOrder) {
  float const inf = std::numeric_limits<float>::infinity();
  float const tiny = std::numeric_limits<float>::denorm_min();
  float const most = std::numeric_limits<float>::max();
  std::vector<float> const ordered = {-inf, -most, -1.0f, -tiny, -0.0f, 0.0f, tiny, 1.0f, most, inf};
  for (std::size_t i = 0; i + 2 < ordered.size(); ++i) {
    float const found = MedianOf({ordered[i + 2], ordered[i], ordered[i + 1]});
    EXPECT_EQ(ordered[i + 1], found);
    EXPECT_EQ(std::signbit(ordered[i + 1]), std::signbit(found));
  }
  float const nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(inf, MedianOf({nan, inf, 1.0f}));     // above all
  EXPECT_EQ(-inf, MedianOf({1.0f, -nan, -inf}));  // below all
  EXPECT_TRUE(std::isnan(MedianOf({nan})));
}

TEST(MedianComposite, CoverageDecidesOverTheCount) {
  COrbImage a = Constant(4, 1, 10.0f);
  COrbImage b = Constant(4, 1, 20.0f);
  COrbImage c = Constant(4, 1, -5.0f);
  COrbImage destination = Constant(6, 1, -7.0f);
  // Column   0 1 2 3 4 5
  // a        x x x x
  // b          x x x x
  // c            x x x
  COrbImage shortC = Constant(3, 1, -5.0f);
  Stack(destination, {{&a, 0.0, 0.0, 0.0}, {&b, 1.0, 0.0, 0.0}, {&shortC, 2.0, 0.0, 0.0}});
  EXPECT_EQ((std::vector<float>{10.0f, 20.0f, 10.0f, 10.0f, 20.0f, 0.0f}), SamplesOf(destination));
}

// Infinities outside their frame's reach do not matter, nor do the fillers of gaps.
TEST(MedianComposite, ThreeCoveringFramesGiveTheMiddleOneWhateverOthersHoldElsewhere) {
  float const inf = std::numeric_limits<float>::infinity();
  COrbImage a = Constant(70, 2, 1.0f);
  COrbImage b = Constant(70, 2, 2.0f);
  COrbImage c = Constant(70, 2, 3.0f);
  COrbImage far = Constant(70, 2, inf);
  COrbImage farToo = Constant(70, 2, -inf);
  COrbImage destination = Constant(70, 2, -7.0f);
  Stack(destination, {{&far, 70.0, 0.0, 0.0},
                      {&c, 0.0, 0.0, 0.0},
                      {&farToo, 0.0, -2.0, 0.0},
                      {&a, 0.0, 0.0, 0.0},
                      {&far, -70.0, 0.0, 0.0},
                      {&far, 0.0, 2.0, 0.0},
                      {&b, 0.0, 0.0, 0.0}});
  EXPECT_EQ(std::vector<float>(140, 2.0f), SamplesOf(destination));
}

// ---- Against the plain transcription

TEST(MedianComposite, EqualsThePlainMedian) {
  Random random(32);
  std::uniform_real_distribution<double> shift(-6.0, 6.0);
  std::uniform_int_distribution<int> side(1, 40);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 7, 16, 33, 40, 63, 64, 65, 150}) {
      for (int height : {1, 3, 9}) {
        for (int kind = 0; kind < 4; ++kind) {
          std::vector<std::unique_ptr<COrbImage>> images;
          std::vector<RegisteredFrame> frames;
          int const count = 1 + static_cast<int>(random() % 12);
          for (int i = 0; i < count; ++i) {
            bool const isSameSize = random() % 3 != 0;
            int const framePlanes = planes == 3 && random() % 3 == 0 ? 1 : planes;
            images.push_back(std::make_unique<COrbImage>(RandomImage(random, isSameSize ? width : side(random),
                                                                     isSameSize ? height : side(random), framePlanes)));
            images.back()->SetStdCtr(shift(random) + width / 2, shift(random) + height / 2);
            double const dx = kind == 0 ? std::floor(shift(random)) : shift(random);
            double const dy = kind == 0 ? std::floor(shift(random)) : shift(random);
            frames.push_back({images.back().get(), dx, dy,
                              kind < 2    ? 0.0
                              : kind == 2 ? shift(random)
                                          : shift(random) * 30.0});
          }
          COrbImage shape = Empty(width, height, planes);
          SetRandomLevels(shape, random);
          ExpectPlainMedian(shape, frames,
                            std::to_string(width) + 'x' + std::to_string(height) + " kind " + std::to_string(kind) +
                                " frames " + std::to_string(count));
        }
      }
    }
  }
}

// A destination of one plane takes the first of a colour frame, not its brightness.
TEST(MedianComposite, PlanesGoByTheirNumber) {
  Random random(38);
  COrbImage color = RandomImage(random, 30, 5, 3);
  COrbImage mono = RandomImage(random, 30, 5, 1);
  ExpectPlainMedian(Empty(30, 5, 1), {{&color, 0.25, 0.5, 0.0}, {&mono, 1.0, 0.0, 0.0}}, "mono of colour");
  ExpectPlainMedian(Empty(30, 5, 3), {{&mono, 0.25, 0.5, 0.0}}, "colour of mono");
  COrbImage destination = Empty(30, 5, 1);
  Stack(destination, {{&color, 0.0, 0.0, 0.0}});
  std::vector<float> first = SamplesOf(color);
  first.resize(150);
  // The last row and column are interpolated, to the same.
  EXPECT_TRUE(SameBits(first, SamplesOf(destination)));
}

// Rows that are long, at one fraction from end to end, and that end anywhere.
TEST(MedianComposite, LongRowsOfOneFraction) {
  Random random(39);
  for (int width = 250; width < 270; ++width) {
    COrbImage a = RandomImage(random, width, 4, 1);
    COrbImage b = RandomImage(random, width + 7, 5, 1);
    ExpectPlainMedian(Empty(width, 4, 1), {{&a, 0.25, 0.5, 0.0}}, "one frame, width " + std::to_string(width));
    ExpectPlainMedian(Empty(width, 4, 1), {{&a, -3.5, 0.0, 0.0}, {&b, 2.75, -0.125, 0.0}, {&b, 0.0, 0.5, 0.0}},
                      "width " + std::to_string(width));
  }
}

// A line is taken when it is stored, so that a destination may be stacked with others onto itself.
TEST(MedianComposite, TheDestinationMayBeAFrame) {
  Random random(40);
  COrbImage found = RandomImage(random, 40, 12, 1);
  COrbImage other = RandomImage(random, 40, 12, 1);
  COrbImage expected(found);
  Stack(found, {{&found, 0.5, 1.25, 0.0}, {&other, 0.0, 0.0, 0.0}, {&found, -1.0, 2.0, 0.0}});
  for (int y = 0; y < 12; ++y) {
    reference::MedianLine(expected, {{&expected, 0.5, 1.25, 0.0}, {&other, 0.0, 0.0, 0.0}, {&expected, -1.0, 2.0, 0.0}},
                          y);
  }
  EXPECT_TRUE(SameBits(expected, found));
}

TEST(MedianComposite, HostileShiftsAndAngles) {
  Random random(33);
  COrbImage image = RandomImage(random, 9, 5, 1);
  COrbImage bounded = RandomImage(random, 9, 5, 1);
  double const inf = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  for (double v : {1e300, -1e300, inf, -inf, nan, 1e-300, -1e-17, 2147483648.0, -2147483649.0}) {
    ExpectPlainMedian(Empty(9, 5, 1), {{&image, v, 0.0, 0.0}, {&bounded, 0.0, 0.0, 0.0}}, "dx " + std::to_string(v));
    ExpectPlainMedian(Empty(9, 5, 1), {{&image, 0.0, v, 0.0}, {&bounded, 0.0, 0.0, 0.0}}, "dy " + std::to_string(v));
    ExpectPlainMedian(Empty(9, 5, 1), {{&image, 0.5, 0.5, v}, {&bounded, 0.0, 0.0, 0.0}}, "angle " + std::to_string(v));
  }
}

TEST(MedianComposite, LevelsPlayNoPart) {
  COrbImage a = Constant(3, 3, 500.0f);
  COrbImage b = Constant(3, 3, 600.0f);
  a.CImage::SetLevel(0, 400.0, 1000.0);
  b.CImage::SetLevel(0, 0.0, 10.0);
  COrbImage destination = Constant(3, 3, -7.0f);
  destination.CImage::SetLevel(0, 5.0, 6.0);
  Stack(destination, {{&a, 0.0, 0.0, 0.0}, {&b, 0.0, 0.0, 0.0}});
  EXPECT_EQ(std::vector<float>(9, 600.0f), SamplesOf(destination));
  EXPECT_EQ(5.0, destination.GetLevelMin(0));
  EXPECT_EQ(6.0, destination.GetLevelMax(0));
}

// ---- The calls

TEST(MedianComposite, MoreFramesThanTheStoreBeganWith) {
  Random random(34);
  for (int count : {10, 11, 20, 21, 35}) {
    std::vector<std::unique_ptr<COrbImage>> images;
    std::vector<RegisteredFrame> frames;
    for (int i = 0; i < count; ++i) {
      images.push_back(std::make_unique<COrbImage>(RandomImage(random, 30, 4, 1)));
      frames.push_back({images.back().get(), i % 3 - 1.0, 0.5, 0.0});
    }
    ExpectPlainMedian(Empty(30, 4, 1), frames, std::to_string(count));
  }
}

TEST(MedianComposite, TheStoreGrowsByTenWhenFull) {
  COrbImage image = Constant(3, 1, 1.0f);
  COrbImage destination = Empty(3, 1, 1);
  CImgMedianComposit median(&destination);
  EXPECT_EQ(10u, OrbTestAccess::RoomForLines(median));
  for (int i = 0; i < 10; ++i) median.Store(&image, 0, 0.0, 0.0, 0.0);
  EXPECT_EQ(10u, OrbTestAccess::RoomForLines(median));
  median.Store(&image, 0, 0.0, 0.0, 0.0);
  EXPECT_EQ(20u, OrbTestAccess::RoomForLines(median));
  median.Calc();
  EXPECT_EQ(std::vector<float>(3, 1.0f), SamplesOf(destination));
}

// Frames come and go from line to line: other numbers of them, other orders, other transforms, other objects.
TEST(MedianComposite, EveryLineStandsAlone) {
  Random random(35);
  std::uniform_real_distribution<double> shift(-3.0, 3.0);
  COrbImage found = Empty(50, 40, 1);
  FillJunk(found);
  COrbImage expected(found);
  {
    CImgMedianComposit median(&found);
    for (int y = 0; y < 40; ++y) {
      std::vector<std::unique_ptr<COrbImage>> images;
      std::vector<RegisteredFrame> frames;
      for (int i = static_cast<int>(random() % 14); i >= 0; --i) {
        images.push_back(std::make_unique<COrbImage>(
            RandomImage(random, random() % 2 != 0u ? 50 : 31, random() % 2 != 0u ? 40 : 25, 1)));
        images.back()->SetStdCtr(static_cast<int>(random() % 2), 20);
        frames.push_back({images.back().get(), random() % 2 != 0u ? 1.0 : shift(random), 0.0,
                          random() % 2 != 0u ? 0.0 : shift(random)});
      }
      for (RegisteredFrame const& f : frames) median.Store(f.image, y, f.dx, f.dy, f.angle);
      median.Calc();
      reference::MedianLine(expected, frames, y);
    }
  }
  EXPECT_TRUE(SameBits(expected, found));
}

// A frame that changes its shape or its centre, at the same address, is sampled as it is now.
TEST(MedianComposite, AFrameMayChangeBetweenLines) {
  Random random(36);
  COrbImage frame = RandomImage(random, 30, 20, 1);
  COrbImage found = Empty(30, 6, 1);
  COrbImage expected(found);
  {
    CImgMedianComposit median(&found);
    for (int y = 0; y < 6; ++y) {
      if (y == 1) frame.SetStdCtr(3, 4);
      if (y == 3) frame = RandomImage(random, 17, 9, 1);
      if (y == 4) frame.SetStdCtr(0, 0);
      FillRandom(frame, random);
      std::vector<RegisteredFrame> const frames = {{&frame, 0.5, 0.25, 2.0}, {&frame, 1.0, 0.0, 0.0}};
      for (RegisteredFrame const& f : frames) median.Store(f.image, y, f.dx, f.dy, f.angle);
      median.Calc();
      reference::MedianLine(expected, frames, y);
    }
  }
  EXPECT_TRUE(SameBits(expected, found));
}

TEST(MedianComposite, TheLastStoreNamesTheLine) {
  COrbImage frame = Empty(2, 4, 1);
  SetSamples(frame, {0.0f, 0.0f, 1.0f, 1.0f, 2.0f, 2.0f, 3.0f, 3.0f});
  COrbImage destination = Constant(2, 4, -7.0f);
  {
    CImgMedianComposit median(&destination);
    median.Store(&frame, 1, 0.0, 0.0, 0.0);
    median.Store(&frame, 3, 0.0, 0.0, 0.0);
    median.Calc();
  }
  EXPECT_EQ((std::vector<float>{-7.0f, -7.0f, -7.0f, -7.0f, -7.0f, -7.0f, 3.0f, 3.0f}), SamplesOf(destination));
}

TEST(MedianComposite, CalcWithoutAStoreClearsTheLineOfTheLast) {
  COrbImage frame = Constant(2, 2, 4.0f);
  COrbImage destination = Constant(2, 2, -7.0f);
  {
    CImgMedianComposit median(&destination);
    median.Calc();  // names no line yet
    EXPECT_EQ(std::vector<float>(4, -7.0f), SamplesOf(destination));
    median.Store(&frame, 1, 0.0, 0.0, 0.0);
    median.Calc();
    EXPECT_EQ((std::vector<float>{-7.0f, -7.0f, 4.0f, 4.0f}), SamplesOf(destination));
    median.Calc();
  }
  EXPECT_EQ((std::vector<float>{-7.0f, -7.0f, 0.0f, 0.0f}), SamplesOf(destination));
}

TEST(MedianComposite, LinesBesideTheDestinationWriteNothing) {
  COrbImage frame = Constant(2, 2, 4.0f);
  COrbImage destination = Constant(2, 2, -7.0f);
  CImgMedianComposit median(&destination);
  for (int y : {-1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    median.Store(&frame, y, 0.0, 0.0, 0.0);
    median.Calc();
  }
  EXPECT_EQ(std::vector<float>(4, -7.0f), SamplesOf(destination));
}

TEST(MedianComposite, LinesNeverCalculatedAreDropped) {
  COrbImage frame = Constant(2, 2, 4.0f);
  COrbImage destination = Constant(2, 2, -7.0f);
  {
    CImgMedianComposit median(&destination);
    for (int i = 0; i < 12; ++i) median.Store(&frame, 0, 0.0, 0.0, 0.0);
  }
  EXPECT_EQ(std::vector<float>(4, -7.0f), SamplesOf(destination));
}

TEST(MedianComposite, ItsOwnImageStaysEmpty) {
  COrbImage destination = Constant(2, 2, -7.0f);
  CImgMedianComposit median(&destination);
  EXPECT_EQ(0, median.GetWidth());
  EXPECT_EQ(0, median.GetHeight());
  EXPECT_EQ(0, median.GetPlanes());
}

TEST(MedianComposite, ProgressRunsOnTheDestinationFromFirstToLast) {
  RecordingWindow window;
  window.escapeAtPoll = 2;  // changes nothing
  COrbImage frame = Constant(5, 7, 4.0f);
  COrbImage destination = Constant(5, 7, -7.0f);
  destination.SetProgressHandle(&window);
  {
    CImgMedianComposit median(&destination);
    EXPECT_EQ(std::vector<std::string>{"中央値コンポジット処理中..."}, window.starts);
    EXPECT_EQ(7, OrbTestAccess::ProgressOf(destination).total);
    for (int y = 0; y < 7; ++y) {
      median.Store(&frame, y, 0.0, 0.0, 0.0);
      EXPECT_EQ(y, window.polls);
      median.Calc();
    }
    EXPECT_EQ(7, window.polls);
    EXPECT_EQ(7u, window.positions.size());
    EXPECT_TRUE(window.ends.empty());
  }
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(std::vector<float>(35, 4.0f), SamplesOf(destination));
}

TEST(MedianComposite, WorksOnAHostileStore) {
  Random random(37);
  COrbImage a = RandomImage(random, 30, 8, 3);
  COrbImage b = RandomImage(random, 30, 8, 3);
  COrbImage expected = Empty(30, 8, 3);
  COrbImage found(expected);
  std::vector<RegisteredFrame> const frames = {{&a, 0.5, 1.25, 0.0}, {&b, 1.0, 0.0, 3.0}, {&a, 2.0, 1.0, 0.0}};
  Stack(expected, frames);
  MakeHostile(a);
  MakeHostile(b);
  MakeHostile(found);
  Stack(found, frames);
  EXPECT_TRUE(SameBits(expected, found));
  EXPECT_EQ(0, LocksLeft(a));
  EXPECT_EQ(0, LocksLeft(b));
  EXPECT_EQ(0, LocksLeft(found));
}

// ---- CLineData

TEST(LineData, HoldsAsManyValuesAndFlagsAsAsked) {
  CLineData line(300);
  std::fill(line.value, line.value + 300, 1.5);
  std::fill(line.valid, line.valid + 300, 1);
  EXPECT_EQ(450.0, std::accumulate(line.value, line.value + 300, 0.0));
  EXPECT_EQ(300, std::accumulate(line.valid, line.valid + 300, 0));
}

TEST(LineData, IntendedCopiesShareTheArrays) {
  CLineData line(3);
  CLineData other(1);
  delete[] other.value;
  delete[] other.valid;
  CLineData copy(line);
  other = line;
  EXPECT_EQ(line.value, copy.value);
  EXPECT_EQ(line.valid, copy.valid);
  EXPECT_EQ(line.value, other.value);
  EXPECT_EQ(line.valid, other.valid);
  copy.value = other.value = nullptr;  // one owner only
  copy.valid = other.valid = nullptr;
}

}  // namespace
}  // namespace orb::test
