// The progress protocol: who is told what, when the queue is polled, how ESC comes back.
#include <climits>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/progress_reference.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>

namespace orb::test {
namespace {

class Progress : public testing::Test {
 protected:
  Progress() { image.SetProgressHandle(&window); }

  OrbTestAccess::Progress State() const { return OrbTestAccess::ProgressOf(image); }

  RecordingWindow window;
  COrbImage image;
};

using Texts = std::vector<std::string>;
using Numbers = std::vector<int>;

TEST_F(Progress, StepIsAFiftiethButAtLeastOne) {
  struct Case {
    int total, step;
  };
  for (Case c :
       {Case{49, 1}, {50, 1}, {99, 1}, {100, 2}, {1000, 20}, {0, 1}, {-7, 1}, {-5000, 1}, {INT_MAX, 42949672}}) {
    image.ShowProgressInit(1, "run", c.total);
    EXPECT_EQ(c.step, State().step) << c.total;
    EXPECT_EQ(c.total, State().total);
    EXPECT_EQ(0, State().count);
    EXPECT_EQ(0, State().next);
    EXPECT_EQ(1, State().on);
    EXPECT_EQ(0, State().percent);
  }
}

TEST_F(Progress, StartSendsTheText) {
  image.ShowProgressInit(1, "abc", 10);
  EXPECT_EQ(Texts{"abc"}, window.starts);
  EXPECT_EQ(0, window.polls);
}

TEST_F(Progress, StartByNumberLoadsTheText) {
  image.ShowProgressInit(1, 6107, 10);
  EXPECT_EQ(Texts{"コンポジット処理中..."}, window.starts);
}

TEST_F(Progress, UnknownNumberRunsOnWithAnEmptyText) {
  image.ShowProgressInit(1, 6145, 10);
  EXPECT_EQ(Texts{""}, window.starts);
  EXPECT_EQ(1, image.ShowProgress(1));
  EXPECT_EQ(Numbers{10}, window.positions);
}

TEST_F(Progress, OffIsSilentAndPollsNothing) {
  window.escapeAtPoll = 1;
  image.ShowProgressInit(0, 6107, 10);
  EXPECT_EQ(1, image.ShowProgress(1));
  EXPECT_EQ(1, image.ShowProgress(1000));
  image.ShowProgressEnd(static_cast<char const*>(nullptr));
  EXPECT_TRUE(window.IsSilent());
  EXPECT_EQ(0, State().count);
}

TEST_F(Progress, OffStillSetsTheCounters) {
  image.ShowProgressInit(1, "before", 500);
  image.ShowProgress(30);
  image.ShowProgressInit(0, "off", 200);
  EXPECT_EQ(0, State().on);
  EXPECT_EQ(200, State().total);
  EXPECT_EQ(4, State().step);
  EXPECT_EQ(0, State().count);
  EXPECT_EQ(0, State().next);
}

TEST_F(Progress, LongRunStartsAtZeroAndGoesOnAtCount21) {
  image.ShowProgressInit(1, "run", 1000);
  image.ShowProgress(1);
  EXPECT_EQ(Numbers{0}, window.positions);
  for (int i = 2; i <= 20; ++i) image.ShowProgress(1);
  EXPECT_EQ(1u, window.positions.size());
  image.ShowProgress(1);
  EXPECT_EQ((Numbers{0, 2}), window.positions);
  EXPECT_EQ(40, State().next);
}

TEST_F(Progress, ShortRunReportsEveryUnit) {
  image.ShowProgressInit(1, "run", 4);
  for (int i = 0; i < 4; ++i) image.ShowProgress(1);
  EXPECT_EQ((Numbers{25, 50, 75, 100}), window.positions);
}

// Intended: divided first, then multiplied and truncated.
TEST_F(Progress, PercentIsTruncatedAfterDividing) {
  image.ShowProgressInit(1, "run", 50);
  for (int i = 0; i < 29; ++i) image.ShowProgress(1);
  EXPECT_EQ(57, window.positions.back());
  image.ShowProgressInit(1, "run", 3);
  image.ShowProgress(2);
  EXPECT_EQ(66, window.positions.back());
}

// Intended: one step, however many units came at once.
TEST_F(Progress, NextGrowsByOneStepOnly) {
  image.ShowProgressInit(1, "run", 1000);
  image.ShowProgress(500);
  EXPECT_EQ(20, State().next);
  image.ShowProgress(1);
  EXPECT_EQ(40, State().next);
  image.ShowProgress(0);
  EXPECT_EQ((Numbers{50, 50, 50}), window.positions);
}

TEST_F(Progress, EqualsThePlainModel) {
  for (int total : {1, 2, 7, 49, 50, 51, 99, 100, 101, 333, 1000, 12345, -1, -60}) {
    for (int n : {0, 1, 2, 3, 17, 60}) {
      window.positions.clear();
      reference::ProgressModel model(total);
      image.ShowProgressInit(1, "run", total);
      for (int i = 0; i < 120; ++i) {
        model.Step(n);
        image.ShowProgress(n);
      }
      EXPECT_EQ(model.positions, window.positions) << total << " by " << n;
      EXPECT_EQ(model.count, State().count);
      EXPECT_EQ(model.next, State().next);
    }
  }
}

TEST_F(Progress, ZeroTotalIsPassedOnAndSurvivesATick) {
  image.ShowProgressInit(1, "run", 0);
  EXPECT_EQ(0, State().total);
  EXPECT_EQ(1, image.ShowProgress(1));
  EXPECT_EQ(1u, window.positions.size());
}

TEST_F(Progress, CountsBeyondAnIntegerSurvive) {
  image.ShowProgressInit(1, "run", 10);
  EXPECT_EQ(1, image.ShowProgress(INT_MAX));
  EXPECT_EQ(1, image.ShowProgress(INT_MAX));
  image.ShowProgressInit(1, "run", INT_MAX);
  for (int i = 0; i < 100; ++i) image.ShowProgress(INT_MAX / 2);
  EXPECT_EQ(102, window.polls);
}

TEST_F(Progress, DirectModeSendsNumbersAsTheyStand) {
  image.ShowProgressInit("direct");
  EXPECT_EQ(Texts{"direct"}, window.starts);
  EXPECT_EQ(1, State().on);
  EXPECT_EQ(1, State().percent);
  EXPECT_EQ(1, image.ShowProgress(37));
  EXPECT_EQ(1, image.ShowProgress(0));
  EXPECT_EQ(1, image.ShowProgress(-4));
  EXPECT_EQ(1, image.ShowProgress(1000));
  EXPECT_EQ((Numbers{37, 0, -4, 1000}), window.positions);
  EXPECT_EQ(4, window.polls);
  EXPECT_EQ(0, State().count);
}

TEST_F(Progress, DirectModeClearsTheCounters) {
  image.ShowProgressInit(1, "run", 500);
  image.ShowProgress(30);
  image.ShowProgressInit(6169);
  EXPECT_EQ("準備中...", window.starts.back());
  OrbTestAccess::Progress const state = State();
  EXPECT_EQ(0, state.total);
  EXPECT_EQ(0, state.step);
  EXPECT_EQ(0, state.count);
  EXPECT_EQ(0, state.next);
}

TEST_F(Progress, CountedRunLeavesDirectMode) {
  image.ShowProgressInit("direct");
  image.ShowProgressInit(1, "run", 10);
  image.ShowProgress(1);
  EXPECT_EQ(Numbers{10}, window.positions);
}

TEST_F(Progress, EscapeComesBackAsZeroAndTheRunStaysOn) {
  window.escapeAtPoll = 2;
  image.ShowProgressInit(1, "run", 10);
  EXPECT_EQ(1, image.ShowProgress(1));
  EXPECT_EQ(0, image.ShowProgress(1));
  EXPECT_EQ(1, image.ShowProgress(1));
  EXPECT_EQ((Numbers{10, 20, 30}), window.positions);
  EXPECT_EQ(1, State().on);
}

TEST_F(Progress, EveryTickPollsEvenWithoutAMessage) {
  image.ShowProgressInit(1, "run", 1000);
  for (int i = 0; i < 100; ++i) image.ShowProgress(1);
  EXPECT_EQ(100, window.polls);
  EXPECT_EQ(5u, window.positions.size());
}

TEST_F(Progress, TextGoesOutEvenWhenOff) {
  image.ShowProgressMsg("loose");
  image.ShowProgressMsg(6126);
  EXPECT_EQ((Texts{"loose", "フィルタ処理準備中..."}), window.texts);
  EXPECT_EQ(0, window.polls);
}

TEST_F(Progress, EndGoesOutOnce) {
  image.ShowProgressInit(1, "run", 10);
  image.ShowProgressEnd(static_cast<char const*>(nullptr));
  image.ShowProgressEnd(static_cast<char const*>(nullptr));
  EXPECT_EQ(Texts{"(null)"}, window.ends);
  EXPECT_EQ(0, State().on);
  EXPECT_EQ(1, image.ShowProgress(5));
  EXPECT_TRUE(window.positions.empty());
}

TEST_F(Progress, EndClearsOnlyTheSwitch) {
  image.ShowProgressInit(1, "run", 100);
  image.ShowProgress(3);
  image.ShowProgressEnd("done");
  EXPECT_EQ(Texts{"done"}, window.ends);
  EXPECT_EQ(100, State().total);
  EXPECT_EQ(3, State().count);
}

// Intended: the literal 0 is a message number, and there is no text of that number.
TEST_F(Progress, LiteralZeroEndsWithAnEmptyText) {
  image.ShowProgressInit(1, "run", 10);
  image.ShowProgressEnd(0);
  EXPECT_EQ(Texts{""}, window.ends);
}

TEST_F(Progress, EndByNumberLoadsTheText) {
  image.ShowProgressInit(1, "run", 10);
  image.ShowProgressEnd(6169);
  EXPECT_EQ(Texts{"準備中..."}, window.ends);
}

TEST_F(Progress, SecondStartNeedsNoEnd) {
  image.ShowProgressInit(1, "first", 10);
  image.ShowProgress(4);
  image.ShowProgressInit(1, "second", 20);
  EXPECT_EQ((Texts{"first", "second"}), window.starts);
  EXPECT_TRUE(window.ends.empty());
  EXPECT_EQ(0, State().count);
}

TEST_F(Progress, NoWindowMeansNoMessageAndNoEscape) {
  image.SetProgressHandle(nullptr);
  image.ShowProgressInit(1, 6107, 10);
  EXPECT_EQ(1, image.ShowProgress(1));
  image.ShowProgressMsg("text");
  image.ShowProgressEnd(static_cast<char const*>(nullptr));
  image.ShowProgressInit("direct");
  EXPECT_EQ(1, image.ShowProgress(1));
  EXPECT_TRUE(window.IsSilent());
}

}  // namespace
}  // namespace orb::test
