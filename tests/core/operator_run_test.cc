// The calling contract's frame: both clamps, the order of a run, its ticks and its locks.
#include <climits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

testing::AssertionResult AreBounds(Bounds const& b, int left, int top, int right, int bottom) {
  if (b.left == left && b.top == top && b.right == right && b.bottom == bottom) return testing::AssertionSuccess();
  return testing::AssertionFailure() << b.left << ", " << b.top << ", " << b.right << ", " << b.bottom;
}

TEST(Clamp, NullIsTheWholeImage) {
  EXPECT_TRUE(AreBounds(ClampRect(nullptr, 7, 5), 0, 0, 7, 5));
  EXPECT_TRUE(AreBounds(ClampRectWeakly(nullptr, 7, 5), 0, 0, 7, 5));
}

TEST(Clamp, LimitsEverySide) {
  CRect rect(-3, -4, 100, 200);
  EXPECT_TRUE(AreBounds(ClampRect(&rect, 7, 5), 0, 0, 7, 5));
  rect = CRect(20, 30, 40, 50);
  EXPECT_TRUE(AreBounds(ClampRect(&rect, 7, 5), 7, 5, 7, 5));
  rect = CRect(-20, -30, -4, -5);
  EXPECT_TRUE(AreBounds(ClampRect(&rect, 7, 5), 0, 0, 0, 0));
  rect = CRect(6, 4, 2, 1);
  EXPECT_TRUE(AreBounds(ClampRect(&rect, 7, 5), 6, 4, 2, 1));
  EXPECT_EQ(-4, ClampRect(&rect, 7, 5).Columns());
  EXPECT_EQ(-3, ClampRect(&rect, 7, 5).Rows());
  EXPECT_TRUE(ClampRect(&rect, 7, 5).IsEmpty());
  rect = CRect(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
  EXPECT_TRUE(AreBounds(ClampRect(&rect, 7, 5), 0, 0, 7, 5));
}

// Intended: left and top only from below, right and bottom only from above.
TEST(Clamp, WeakFormLimitsEachSideOnce) {
  CRect rect(-3, -4, 100, 200);
  EXPECT_TRUE(AreBounds(ClampRectWeakly(&rect, 7, 5), 0, 0, 7, 5));
  rect = CRect(20, 30, 40, 50);
  EXPECT_TRUE(AreBounds(ClampRectWeakly(&rect, 7, 5), 20, 30, 7, 5));
  rect = CRect(-20, -30, -4, -5);
  EXPECT_TRUE(AreBounds(ClampRectWeakly(&rect, 7, 5), 0, 0, -4, -5));
}

TEST(Clamp, NormalizeRectIsTheSameClamp) {
  COrbImage image(-32, 7, 5, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (RectCase& c : RectCases(7, 5)) {
    int left = 99;
    int top = 99;
    int right = 99;
    int bottom = 99;
    image.NormalizeRect(c.Pointer(), left, top, right, bottom);
    EXPECT_TRUE(AreBounds(ClampRect(c.Pointer(), 7, 5), left, top, right, bottom)) << c.name;
  }
}

// Writes the order of a run down: its messages, and the rows between them.
class ScriptWindow : public HostWindow {
 public:
  explicit ScriptWindow(std::vector<std::string>& lines) : script(lines) {}
  void OnStart(char const* text) override { script.push_back(std::string("start ") + text); }
  void OnPosition(int percent) override { script.push_back("position " + std::to_string(percent)); }
  void OnEnd(char const* text) override { script.push_back(text == nullptr ? "end" : "end with text"); }
  bool PollEscape() override {
    script.push_back("poll");
    return true;  // ESC all the time: a run goes on
  }

 private:
  std::vector<std::string>& script;
};

TEST(OperatorRun, PlanesOutermostThenRowsEachWithItsTick) {
  std::vector<std::string> script;
  ScriptWindow window(script);
  COrbImage src(-32, 6, 4, 2, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage dst(src);
  dst.SetProgressHandle(&window);
  CRect rect(1, 1, 5, 3);
  orb::Run run(dst, &rect);
  EXPECT_TRUE(AreBounds(run.Area(), 1, 1, 5, 3));
  EXPECT_EQ(2, run.Rows());
  run.Start(1, 6124, run.Rows() * dst.GetPlanes());
  run.EachRow(src, [&](RowSpan const& row) {
    script.push_back("plane " + std::to_string(row.plane) + " row " + std::to_string(row.y));
    EXPECT_EQ(4, row.count);
    EXPECT_EQ(src.GetImageAdr(1, row.y, row.plane, 1, nullptr), row.src);
    EXPECT_EQ(dst.GetImageAdr(1, row.y, row.plane, 1, nullptr), row.dst);
  });
  run.End();
  std::vector<std::string> const expected = {
      "start 反転処理中...", "plane 0 row 1", "position 25", "poll",          "plane 0 row 2", "position 50", "poll",
      "plane 1 row 1",       "position 75",   "poll",        "plane 1 row 2", "position 100",  "poll",        "end"};
  EXPECT_EQ(expected, script);
}

TEST(OperatorRun, EmptyRectanglesStillRun) {
  for (RectCase& c : RectCases(6, 4)) {
    RecordingWindow window;
    Random random(51);
    COrbImage src = RandomImage(random, 6, 4, 3);
    CImgInvert dst;
    dst.CopyImage(src, nullptr, nullptr);
    FillJunk(dst);
    COrbImage const before(dst);
    dst.SetProgressHandle(&window);
    Bounds const area = ClampRect(c.Pointer(), 6, 4);
    dst.Do(&src, c.Pointer(), 1);
    EXPECT_EQ(1u, window.starts.size()) << c.name;
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends) << c.name;
    EXPECT_EQ(area.Rows() * 3, OrbTestAccess::ProgressOf(dst).total) << c.name;
    if (area.IsEmpty()) {
      EXPECT_TRUE(SameBits(before, dst)) << c.name;
    }
  }
}

TEST(OperatorRun, ReversedRectanglePassesItsNegativeCountOn) {
  RecordingWindow window;
  CImgInvert dst;
  dst.CopyImage(COrbImage(-32, 6, 4, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  dst.SetProgressHandle(&window);
  CRect rect(0, 3, 6, 1);
  dst.Do(&dst, &rect, 1);
  EXPECT_EQ(-6, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_TRUE(window.positions.empty());
  EXPECT_EQ(0, window.polls);
}

TEST(OperatorRun, ImageWithoutPlanesStartsAndEnds) {
  RecordingWindow window;
  CImgInvert dst;
  dst.SetProgressHandle(&window);
  dst.Do(&dst, nullptr, 1);
  EXPECT_EQ(std::vector<std::string>{"反転処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_TRUE(window.positions.empty());
}

TEST(OperatorRun, KeepsLevelsPointsAndSource) {
  Random random(52);
  COrbImage src = RandomImage(random, 6, 4, 3);
  src.SetStdPt(0, CfPoint(1, 2));
  COrbImage const before(src);
  CImgInvert dst;
  dst.CopyImage(src, nullptr, nullptr);
  SetRandomLevels(dst, random);
  COrbImage const levels(dst);
  dst.Do(&src, nullptr, 0);
  EXPECT_TRUE(SameLevels(levels, dst));
  EXPECT_TRUE(SameBits(before, src));
  EXPECT_TRUE(SameLevels(before, src));
  EXPECT_EQ(1, dst.GetStdPt(0).x);
}

TEST(LockedRow, IsReleasedWithItsScope) {
  COrbImage image(-32, 6, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetPixelGrayRaw(2, 3, 5.0f, 0);
  MakeHostile(image);
  {
    LockedRow const row(image, 2, 3, 0, true);
    EXPECT_EQ(1, LocksLeft(image));
    {
      LockedRow const other(image, 0, 0, 0, false);
      EXPECT_EQ(2, LocksLeft(image));
    }
    EXPECT_EQ(1, LocksLeft(image));
    EXPECT_EQ(5.0f, *row.Address());
  }
  EXPECT_EQ(0, LocksLeft(image));
}

}  // namespace
}  // namespace orb::test
