// What the tests of point operators share: shapes, rectangles, special samples, runs in place and hostile stores
// against a plain transcription, and the messages of a run.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {

// A mono image of one row, with the levels 0 to 255.
inline COrbImage MonoRow(std::vector<float> const& samples) {
  COrbImage image(-32, static_cast<int>(samples.size()), 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

// A colour image of one pixel, with the levels 0 to 255.
inline COrbImage ColourPixel(float red, float green, float blue) {
  COrbImage image(-32, 1, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {red, green, blue});
  return image;
}

// One call run(destination, source, rectangle) against expect(destination, source, rectangle) on a random image of this
// shape: into junk, in place, and on hostile stores.
template <typename Operator, typename Run, typename Expect>
void ExpectTheReferenceOn(Random& random, int width, int height, int planes, RectCase& c, Run run, Expect expect) {
  SCOPED_TRACE(c.name + " " + std::to_string(width) + "x" + std::to_string(height) + "x" + std::to_string(planes));
  COrbImage src = RandomImage(random, width, height, planes);
  if (random() % 3 == 0) StrewSpecialSamples(src, random);
  Operator dst;
  dst.Create(src, nullptr, nullptr);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  COrbImage expected(dst);
  Operator hostile;
  hostile.CopyImage(dst, nullptr, nullptr);
  expect(expected, &src, c.Pointer());
  run(dst, &src, c.Pointer());
  EXPECT_TRUE(SameValues(expected, dst));
  EXPECT_TRUE(SameLevels(expected, dst));

  COrbImage movingSource(src);
  MakeHostile(hostile);
  MakeHostile(movingSource);
  run(hostile, &movingSource, c.Pointer());
  EXPECT_TRUE(SameValues(expected, hostile));
  EXPECT_EQ(0, LocksLeft(hostile) + LocksLeft(movingSource));

  COrbImage expectedInPlace(src);
  expect(expectedInPlace, &expectedInPlace, c.Pointer());
  Operator inPlace;
  inPlace.CopyImage(src, nullptr, nullptr);
  run(inPlace, &inPlace, c.Pointer());
  EXPECT_TRUE(SameValues(expectedInPlace, inPlace));
}

template <typename Operator, typename Run, typename Expect>
void ExpectTheReference(Random& random, Run run, Expect expect) {
  for (int planes : {1, 3}) {
    for (auto const& [width, height] :
         {std::pair(1, 1), std::pair(1 + static_cast<int>(random() % 40), 3), std::pair(40, 12), std::pair(300, 2)}) {
      for (RectCase& c : RectCases(width, height)) {
        ExpectTheReferenceOn<Operator>(random, width, height, planes, c, run, expect);
      }
    }
  }
}

// The run of an operator without planes, by run(destination, source, rectangle, progress), starts and ends.
template <typename Operator, typename Run>
void ExpectNothingButStartAndEnd(std::string const& text, Run run) {
  Operator dst;
  RecordingWindow window;
  dst.SetProgressHandle(&window);
  run(dst, &dst, nullptr, 1);
  EXPECT_EQ(std::vector<std::string>{text}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(0, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(0, window.polls);
}

// The messages of run(destination, source, rectangle, progress), one unit for each row of each plane: one start, a tick
// a row, one end, whatever the ESC key says; none without progress.
template <typename Operator, typename Run>
void ExpectRowsOfEveryPlane(std::string const& text, Run run) {
  for (int planes : {1, 3}) {
    COrbImage src(-32, 4, 6, planes, 1.0, 0.0, 1, nullptr, nullptr);
    Operator dst;
    dst.CopyImage(src, nullptr, nullptr);
    RecordingWindow window;
    window.escapeAtPoll = 2;
    dst.SetProgressHandle(&window);
    CRect rect(0, 1, 4, 5);
    run(dst, &src, &rect, 0);
    EXPECT_TRUE(window.IsSilent());
    run(dst, &src, &rect, 1);
    EXPECT_EQ(std::vector<std::string>{text}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(4 * planes, OrbTestAccess::ProgressOf(dst).total);
    EXPECT_EQ(4 * planes, window.polls);
    EXPECT_EQ(static_cast<std::size_t>(4 * planes), window.positions.size());
  }
  ExpectNothingButStartAndEnd<Operator>(text, run);
}

}  // namespace orb::test
