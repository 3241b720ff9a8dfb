// The entries of the stacking room that differ from the others: any number of frames, and numbers as results.
#include <algorithm>
#include <cmath>

#include <hosts/catalogue/band_runner.h>
#include <tests/catalogue/trial.h>
#include <tests/reference/median_composite_reference.h>
#include <tests/support/recording_window.h>

namespace orb::test {
namespace {

using host::CheckInvocation;
using host::Invocation;
using host::OperatorEntry;

class MedianEntry : public testing::Test {
 protected:
  OperatorEntry const& entry = *host::FindOperator("median");
  Random random{41};
  COrbImage image = RandomImage(random, 20, 10, 1);
  COrbImage first = RandomImage(random, 20, 10, 1);
  COrbImage second = RandomImage(random, 31, 8, 3);

  Invocation Sound() {
    Invocation call;
    call.image = &image;
    call.frames = {{&first, {0.0, 0.0, 0.0}}, {&second, {1.5, -2.0, 10.0}}};
    return call;
  }
};

TEST_F(MedianEntry, NamesWhatIsWrongWithItsFrames) {
  EXPECT_EQ("", CheckInvocation(entry, Sound()));
  Invocation call = Sound();
  call.frames.clear();
  EXPECT_EQ("median: there is no frame", CheckInvocation(entry, call));
  call = Sound();
  call.frames[1].image = nullptr;
  EXPECT_EQ("median: frame 2 is missing", CheckInvocation(entry, call));
  COrbImage empty;
  call.frames[1].image = &empty;
  EXPECT_EQ("median: frame 2 is empty", CheckInvocation(entry, call));
  COrbImage bytes(8, 20, 10, 1, 1.0, 0.0, 0, nullptr, nullptr);
  call.frames[1].image = &bytes;
  EXPECT_EQ("median: frame 2 does not hold 32-bit floats", CheckInvocation(entry, call));
  call.frames[1].image = &image;
  EXPECT_EQ("median: frame 2 must be another image than the result", CheckInvocation(entry, call));
}

TEST_F(MedianEntry, NamesWhatIsWrongWithItsPlacements) {
  Invocation call = Sound();
  call.frames[0].values = {0.0};
  EXPECT_EQ("median: frame 1: 1 values for 3 parameters", CheckInvocation(entry, call));
  call = Sound();
  call.frames[1].values[2] = 361.0;
  EXPECT_EQ("median: frame 2: angle is 361; it must be a number from -360 to 360 degrees",
            CheckInvocation(entry, call));
  call.frames[1].values[2] = std::nan("");
  EXPECT_NE("", CheckInvocation(entry, call));
}

TEST_F(MedianEntry, TakesNoRectangle) {
  Invocation call = Sound();
  CRect rect(0, 0, 5, 5);
  call.rect = &rect;
  EXPECT_EQ("median: takes no rectangle: it works on the whole image", CheckInvocation(entry, call));
}

TEST_F(MedianEntry, OthersTakeNoFrames) {
  Invocation call;
  call.image = &image;
  call.frames = Sound().frames;
  EXPECT_EQ("clip: takes no frames", CheckInvocation(*host::FindOperator("clip"), call));
}

TEST_F(MedianEntry, HandsEveryPlacementOn) {
  Invocation const call = Sound();
  std::vector<reference::RegisteredFrame> frames;
  for (host::PlacedFrame const& frame : call.frames) {
    frames.push_back({frame.image, frame.values[0], frame.values[1], frame.values[2]});
  }
  COrbImage expected(image);
  for (int y = 0; y < expected.GetHeight(); ++y) reference::MedianLine(expected, frames, y);
  EXPECT_EQ(1, entry.run(call));
  EXPECT_TRUE(SameBits(expected, image));
}

TEST_F(MedianEntry, ReportsWithoutBeingAsked) {
  Invocation const call = Sound();
  for (int threads : {1, 3}) {
    RecordingWindow window;
    image.SetProgressHandle(&window);
    host::RunInBands(entry, call, threads);
    EXPECT_EQ(std::vector<std::string>{LoadString(6141)}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(10, window.polls);
    EXPECT_EQ((std::vector<int>{10, 20, 30, 40, 50, 60, 70, 80, 90, 100}), window.positions);
  }
}

class MatchEntry : public testing::Test {
 protected:
  OperatorEntry const& entry = *host::FindOperator("match");
  Random random{43};
  COrbImage image = RandomImage(random, 60, 50, 1);
  COrbImage other = RandomImage(random, 60, 50, 1);
  std::vector<double> results;

  // The other image shows at a pixel what the image has `dx`, `dy` further on.
  void Shift(int dx, int dy) {
    for (int y = 0; y < 50; ++y) {
      for (int x = 0; x < 60; ++x) {
        if (x + dx < 60 && y + dy < 50) other.SetPixelGrayRaw(x, y, image.GetPixelGrayRaw(x + dx, y + dy, 0), 0);
      }
    }
  }

  Invocation Sound(double dx, double dy, int range, double fine) {
    Invocation call;
    call.image = &image;
    call.source = &other;
    call.values = {dx, dy, static_cast<double>(range), fine};
    call.results = &results;
    EXPECT_EQ("", CheckInvocation(entry, call));
    return call;
  }
};

TEST_F(MatchEntry, FindsTheShift) {
  Shift(5, 2);
  EXPECT_EQ(1, entry.run(Sound(4.0, 0.0, 8, 0.0)));
  EXPECT_EQ((std::vector<double>{5.0, 2.0}), results);
}

TEST_F(MatchEntry, SearchesAroundTheEstimateOnly) {
  Shift(5, 2);
  EXPECT_EQ(1, entry.run(Sound(-8.0, -8.0, 8, 0.0)));
  ASSERT_EQ(2u, results.size());
  EXPECT_LE(results[0], -3.0);
  EXPECT_LE(results[1], -3.0);
}

TEST_F(MatchEntry, FineGoesOnToTenths) {
  for (int y = 0; y < 50; ++y) {
    for (int x = 0; x < 60; ++x) {
      double const wave = 100.0 + 50.0 * std::sin(0.21 * x) + 30.0 * std::cos(0.17 * y);
      double const moved = 100.0 + 50.0 * std::sin(0.21 * (x + 0.4)) + 30.0 * std::cos(0.17 * y);
      image.SetPixelGrayRaw(x, y, wave, 0);
      other.SetPixelGrayRaw(x, y, moved, 0);
    }
  }
  EXPECT_EQ(1, entry.run(Sound(0.0, 0.0, 4, 0.0)));
  EXPECT_EQ((std::vector<double>{0.0, 0.0}), results);
  EXPECT_EQ(1, entry.run(Sound(0.0, 0.0, 4, 1.0)));
  ASSERT_EQ(2u, results.size());
  EXPECT_NEAR(0.4, results[0], 0.11);
  EXPECT_NEAR(0.0, results[1], 0.11);
  EXPECT_NE(std::floor(results[0]), results[0]);
}

TEST_F(MatchEntry, LeavesNoResultWhereThereIsNone) {
  results = {1.0, 2.0, 3.0};
  EXPECT_EQ(0, entry.run(Sound(5000.0, 0.0, 8, 1.0)));
  EXPECT_TRUE(results.empty());
}

TEST_F(MatchEntry, NamesWhatIsWrong) {
  Invocation call = Sound(0.0, 0.0, 8, 0.0);
  call.results = nullptr;
  EXPECT_EQ("match: there is no place for its results", CheckInvocation(entry, call));
  call = Sound(0.0, 0.0, 8, 0.0);
  call.source = nullptr;
  EXPECT_EQ("match: the other image is missing", CheckInvocation(entry, call));
  COrbImage thin = RandomImage(random, 1, 50, 1);
  call.source = &thin;
  EXPECT_EQ("match: the other image is one pixel wide or high, so that its mean has no value",
            CheckInvocation(entry, call));
  call.source = &image;
  EXPECT_EQ("", CheckInvocation(entry, call));
  call.values[2] = -1.0;
  EXPECT_EQ("match: range is -1; it must be a whole number from 0 to 1000 pixels", CheckInvocation(entry, call));
}

// Every tick: one for each whole shift, six for each fractional one.
TEST_F(MatchEntry, AnnouncesAQuarterOfTheRangeSquared) {
  for (int range : {0, 1, 7, 16}) {
    for (int fine : {0, 1}) {
      RecordingWindow window;
      image.SetProgressHandle(&window);
      Invocation call = Sound(0.0, 0.0, range, fine);
      call.progress = 1;
      int const units = range * range / 4 + (fine != 0 ? 297 : 9);
      EXPECT_EQ(units, entry.UnitsOf(call));
      entry.run(call);
      int const wholeShifts = (range / 2 + 1) * (range / 2 + 1) + 8;
      EXPECT_EQ(fine != 0, window.polls > wholeShifts);
      std::vector<int> expected;
      int count = 0;
      int next = 0;
      for (int poll = 0; poll < window.polls; ++poll) {
        count += poll < wholeShifts ? 1 : 6;
        if (count <= next) continue;
        expected.push_back(static_cast<int>(static_cast<double>(count) / units * 100.0));
        next += std::max(units / 50, 1);
      }
      EXPECT_EQ(expected, window.positions) << range << ' ' << fine;
    }
  }
}

}  // namespace
}  // namespace orb::test
