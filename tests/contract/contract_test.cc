// The calling contract, on every operator of the catalogue.
#include <algorithm>

#include <tests/catalogue/trial.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>

namespace orb::test {
namespace {

using host::Invocation;
using host::OperatorEntry;

class Contract : public testing::TestWithParam<Way> {
 protected:
  OperatorEntry const& Entry() const { return *GetParam().entry; }

  Random random{17};
};

// Operators with a rectangle; those that also write samples; those that may run in place; those that take frames; those
// that change the size.
class RectangleContract : public Contract {};
class FramesContract : public Contract {};
class WritingContract : public Contract {};
class InPlaceContract : public Contract {};
class SizeContract : public Contract {};

// The positions that a run of `units` units sends in `ticks` ticks.
std::vector<int> PositionsOf(int units, int ticks) {
  std::vector<int> positions;
  int const step = std::max(units / 50, 1);
  int next = 0;
  for (int count = 1; count <= ticks; ++count) {
    if (count <= next) continue;
    positions.push_back(static_cast<int>(static_cast<double>(count) / units * 100.0));
    next += step;
  }
  return positions;
}

void ExpectRunsThatEnd(RecordingWindow const& window) {
  EXPECT_FALSE(window.starts.empty());
  EXPECT_FALSE(window.ends.empty());
  EXPECT_GT(window.polls, 0);
  EXPECT_TRUE(window.boxes.empty());
}

bool IsInside(CRect const* rect, int x, int y, COrbImage const& image) {
  Bounds const bounds = ClampRect(rect, image.GetWidth(), image.GetHeight());
  return x >= bounds.left && x < bounds.right && y >= bounds.top && y < bounds.bottom;
}

// Whether the call of a trial writes a sample, counted over all planes.
bool IsWritten(Trial const& trial, CRect const* rect, std::size_t sample) {
  std::size_t const width = static_cast<std::size_t>(trial.image.GetWidth());
  std::size_t const height = static_cast<std::size_t>(trial.image.GetHeight());
  return trial.entry.WritesPlane(trial.call, static_cast<int>(sample / width / height)) &&
         IsInside(rect, static_cast<int>(sample % width), static_cast<int>(sample / width % height), trial.image);
}

testing::AssertionResult SamePoints(COrbImage& expected, COrbImage& actual) {
  auto const isSame = [](CfPoint a, CfPoint b) { return a.x == b.x && a.y == b.y && a.fx == b.fx && a.fy == b.fy; };
  for (int n = 0; n < 2; ++n) {
    if (!isSame(expected.GetStdPt(n), actual.GetStdPt(n))) return testing::AssertionFailure() << "point " << n;
  }
  if (!isSame(expected.GetStdCtr(), actual.GetStdCtr())) return testing::AssertionFailure() << "centre";
  return testing::AssertionSuccess();
}

TEST_P(WritingContract, JunkOutsideTheRectangleStays) {
  for (RectCase& c : RectCases(40, 31)) {
    Trial trial(GetParam(), random, 40, 31);
    Bounds const bounds = ClampRect(c.Pointer(), 40, 31);
    CRect const mayChange(bounds.left, bounds.top, bounds.right + Entry().overdraw, bounds.bottom + Entry().overdraw);
    FillJunk(trial.image);
    COrbImage const before(trial.image);
    trial.call.rect = c.Pointer();
    trial.Run();
    auto const old = SamplesOf(before);
    auto const now = SamplesOf(trial.image);
    for (std::size_t i = 0; i < old.size(); ++i) {
      if (IsWritten(trial, &mayChange, i)) continue;
      ASSERT_EQ(old[i], now[i]) << c.name << " at " << i % 40 << ',' << i / 40 % 31;
    }
  }
}

TEST_P(WritingContract, WritesTheWholeRectangle) {
  Trial trial(GetParam(), random, 40, 31);
  FillJunk(trial.image);
  COrbImage const before(trial.image);
  CRect rect(3, 4, 38, 30);
  trial.call.rect = &rect;
  trial.Run();
  auto const old = SamplesOf(before);
  auto const now = SamplesOf(trial.image);
  for (std::size_t i = 0; i < old.size(); ++i) {
    if (IsWritten(trial, &rect, i)) {
      ASSERT_NE(old[i], now[i]) << i;
    }
  }
}

TEST_P(FramesContract, WritesEverySampleOfTheImage) {
  for (int width : {1, 2, 17, 40}) {
    Trial trial(GetParam(), random, width, 9);
    FillJunk(trial.image);
    std::vector<float> const junk = SamplesOf(trial.image);
    trial.Run();
    std::vector<float> const now = SamplesOf(trial.image);
    for (std::size_t i = 0; i < junk.size(); ++i) {
      ASSERT_EQ(IsWritten(trial, nullptr, i), junk[i] != now[i]) << width << ' ' << i;
    }
  }
}

TEST_P(RectangleContract, EmptyAndReversedRectanglesStartAndEndTheirRun) {
  for (CRect rect : {CRect(5, 5, 5, 5), CRect(9, 9, 2, 2), CRect(100, 100, 200, 200), CRect(-9, -9, -1, -1)}) {
    Trial trial(GetParam(), random, 20, 15);
    RecordingWindow window;
    trial.image.SetProgressHandle(&window);
    trial.call.rect = &rect;
    trial.call.progress = 1;
    COrbImage const before(trial.image);
    // In such a rectangle there is nothing to be found.
    if (Entry().results.empty()) {
      trial.Run();
    } else {
      Entry().run(trial.call);
    }
    EXPECT_TRUE(SameBits(before, trial.image));
    if (Entry().hasOwnRuns) {
      EXPECT_EQ(window.starts.size(), window.ends.size());
      continue;
    }
    std::size_t const runs = Entry().DoesReport(trial.call) ? 1 : 0;
    EXPECT_EQ(runs, window.starts.size());
    EXPECT_EQ(std::vector<std::string>(runs, "(null)"), window.ends);
  }
}

TEST_P(RectangleContract, NullIsTheWholeImage) {
  Random other(random);
  Trial whole(GetParam(), random, 33, 12);
  Trial full(GetParam(), other, 33, 12);
  CRect rect(0, 0, 33, 12);
  full.call.rect = &rect;
  whole.Run();
  full.Run();
  EXPECT_TRUE(SameBits(whole.image, full.image));
  EXPECT_TRUE(SameLevels(whole.image, full.image));
}

TEST_P(Contract, UnitsAndTicksAreAsListed) {
  for (int height : {7, 130}) {
    Trial trial(GetParam(), random, 9, height);
    CRect rect(1, 2, 8, height - 1);
    if (Entry().takesRectangle) trial.call.rect = &rect;
    RecordingWindow window;
    trial.image.SetProgressHandle(&window);
    trial.call.progress = 1;
    int const units = Entry().UnitsOf(trial.call);
    int const ticks = Entry().TicksOf(trial.call);
    bool const doesReport = Entry().DoesReport(trial.call);
    trial.Run();
    if (!doesReport) {
      EXPECT_TRUE(window.IsSilent());
      continue;
    }
    if (Entry().hasOwnRuns) {
      ExpectRunsThatEnd(window);
      continue;
    }
    auto const runs = static_cast<std::size_t>(Entry().RunsOf(trial.call));
    EXPECT_EQ(std::vector<std::string>(runs, LoadString(Entry().MessageOf(trial.call))), window.starts);
    EXPECT_EQ(std::vector<std::string>(runs, "(null)"), window.ends);
    EXPECT_TRUE(window.texts.empty());
    EXPECT_TRUE(window.boxes.empty());
    if (Entry().ticks == host::Units::kNone) {
      EXPECT_EQ(PositionsOf(units, 1)[0], window.positions.at(0));
      continue;
    }
    EXPECT_EQ(ticks, window.polls);
    EXPECT_EQ(PositionsOf(units, ticks), window.positions);
  }
}

TEST_P(Contract, SilentWithoutProgress) {
  Trial trial(GetParam(), random, 9, 7);
  RecordingWindow window;
  trial.image.SetProgressHandle(&window);
  for (COrbImage* each : trial.Inputs()) each->SetProgressHandle(&window);
  bool const doesReport = Entry().DoesReport(trial.call);
  trial.Run();
  EXPECT_EQ(!doesReport, window.IsSilent());
}

TEST_P(Contract, EscapeIsWithoutEffect) {
  if (Entry().stopsAtEscape) return;
  Random other(random);
  Trial quiet(GetParam(), random, 21, 14);
  Trial pressed(GetParam(), other, 21, 14);
  RecordingWindow window;
  window.escapeAtPoll = 2;
  pressed.image.SetProgressHandle(&window);
  pressed.call.progress = 1;
  quiet.Run();
  pressed.Run();
  ExpectSameOutcome(quiet, pressed);
}

TEST_P(Contract, EscapeLeavesTheImageWhereItStops) {
  if (!Entry().stopsAtEscape) return;
  Trial trial(GetParam(), random, 21, 14);
  COrbImage const before(trial.image);
  RecordingWindow window;
  window.escapeAtPoll = 1;
  trial.image.SetProgressHandle(&window);
  trial.call.progress = 1;
  EXPECT_EQ(0, Entry().run(trial.call));
  EXPECT_TRUE(SameBits(before, trial.image));
  EXPECT_EQ(1, window.polls);
  EXPECT_EQ(1u, window.boxes.size());
}

TEST_P(Contract, SourcesStayAsTheyAre) {
  Trial trial(GetParam(), random, 21, 14);
  std::vector<COrbImage> before;
  for (COrbImage* each : trial.Inputs()) before.push_back(*each);
  trial.Run();
  for (std::size_t i = 0; i < before.size(); ++i) {
    EXPECT_TRUE(SameBits(before[i], *trial.Inputs()[i])) << i;
    bool const isMoved = Entry().changes.sourceLevels && trial.Inputs()[i] == trial.call.source;
    EXPECT_EQ(!isMoved, static_cast<bool>(SameLevels(before[i], *trial.Inputs()[i]))) << i;
    EXPECT_TRUE(SamePoints(before[i], *trial.Inputs()[i])) << i;
  }
}

TEST_P(Contract, ChangesOnlyWhatIsListed) {
  Trial trial(GetParam(), random, 21, 14);
  COrbImage before(trial.image);
  host::ImageSize const size = Entry().SizeOf(trial.call);
  trial.Run();
  EXPECT_EQ(size.width, trial.image.GetWidth());
  EXPECT_EQ(size.height, trial.image.GetHeight());
  if (Entry().changes.points) {
    EXPECT_EQ(0, trial.image.GetStdPtNum());
  } else {
    EXPECT_TRUE(SamePoints(before, trial.image));
  }
  EXPECT_EQ(Entry().changes.planes, before.GetPlanes() != trial.image.GetPlanes());
  if (!Entry().changes.planes) {
    EXPECT_EQ(!Entry().ChangesLevels(trial.call), static_cast<bool>(SameLevels(before, trial.image)));
    EXPECT_EQ(!Entry().changes.samples, static_cast<bool>(SameBits(before, trial.image)));
  } else {
    EXPECT_EQ(before.GetLevelMin(0), trial.image.GetLevelMin(0));
    EXPECT_EQ(before.GetLevelMax(0), trial.image.GetLevelMax(0));
  }
}

TEST_P(SizeContract, WhatTheImageHeldBeforeIsWithoutEffect) {
  for (int width : {9, 40}) {
    Random other(random);
    Trial copy(GetParam(), random, width, 21);
    Trial junk(GetParam(), other, width, 21);
    FillJunk(junk.image);
    copy.Run();
    junk.Run();
    SCOPED_TRACE(width);
    ExpectSameOutcome(copy, junk);
  }
}

TEST_P(InPlaceContract, InPlaceEqualsCopy) {
  for (int width : {1, 2, 17, 40}) {
    Random other(random);
    Trial copy(GetParam(), random, width, 9);
    Trial inPlace(GetParam(), other, width, 9);
    copy.source.CopyImage(copy.image, nullptr, nullptr);
    inPlace.call.source = &inPlace.image;
    if (!copy.IsSound()) continue;
    ASSERT_TRUE(inPlace.IsSound());
    copy.Run();
    inPlace.Run();
    SCOPED_TRACE(width);
    ExpectSameOutcome(copy, inPlace);
  }
}

TEST_P(Contract, HoldsOnAHostileStore) {
  Random other(random);
  Trial kind(GetParam(), random, 26, 11);
  Trial hostile(GetParam(), other, 26, 11);
  for (COrbImage* each : hostile.Images()) MakeHostile(*each);
  kind.Run();
  hostile.Run();
  ExpectSameOutcome(kind, hostile);
  for (COrbImage* each : hostile.Images()) EXPECT_EQ(0, LocksLeft(*each));
}

TEST_P(Contract, ToleratesEverySizeAndEverySample) {
  float const special[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity(), -0.0f, std::numeric_limits<float>::max()};
  for (int width : {1, 2, 3, 8}) {
    for (int height : {1, 2, 5}) {
      Trial trial(GetParam(), random, width, height);
      if (!trial.IsSound()) continue;
      int n = 0;
      for (COrbImage* each : trial.Images()) {
        for (int p = 0; p < each->GetPlanes(); ++p) each->SetPixelGrayRaw(width / 2, 0, special[n++ % 5], p);
      }
      COrbImage const before(trial.image);
      for (RectCase& c : RectCases(width, height)) {
        if (Entry().sizeOfResult != nullptr) trial.image.CopyImage(before, nullptr, nullptr);  // as big as the source
        if (Entry().takesRectangle) trial.call.rect = c.Pointer();
        if (trial.image.GetPlanes() != GetParam().planes) continue;
        bool const isDone = Entry().run(trial.call) == 1;
        // Among such samples there need not be a result; an image comes out anyway.
        EXPECT_TRUE(isDone || !Entry().results.empty());
        if (!Entry().results.empty()) {
          EXPECT_EQ(isDone ? Entry().results.size() : 0, trial.results.size());
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryOperator, Contract, testing::ValuesIn(AllWays()), NameOfWay);
INSTANTIATE_TEST_SUITE_P(EveryOperator, RectangleContract,
                         testing::ValuesIn(WaysOf([](Way const& way) { return way.entry->takesRectangle; })),
                         NameOfWay);
INSTANTIATE_TEST_SUITE_P(EveryOperator, WritingContract, testing::ValuesIn(WaysOf([](Way const& way) {
                           return way.entry->takesRectangle && way.entry->changes.samples;
                         })),
                         NameOfWay);
INSTANTIATE_TEST_SUITE_P(EveryOperator, FramesContract,
                         testing::ValuesIn(WaysOf([](Way const& way) { return way.entry->TakesFrames(); })), NameOfWay);
INSTANTIATE_TEST_SUITE_P(EveryOperator, SizeContract,
                         testing::ValuesIn(WaysOf([](Way const& way) { return way.entry->sizeOfResult != nullptr; })),
                         NameOfWay);
INSTANTIATE_TEST_SUITE_P(EveryOperator, InPlaceContract, testing::ValuesIn(WaysOf([](Way const& way) {
                           return way.entry->mayRunInPlace && way.planes == way.sourcePlanes;
                         })),
                         NameOfWay);

}  // namespace
}  // namespace orb::test
