// What the tests of operators share that move samples or change the size: calls beside their plain transcription, on
// plain and hostile stores, and the messages of a run.
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

inline COrbImage ImageOf(int width, int height, std::vector<float> const& samples, int planes = 1) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

template <typename Operator>
Operator CopyOf(COrbImage const& src) {
  Operator image;
  image.CopyImage(src, nullptr, nullptr);
  return image;
}

inline void SetPoints(COrbImage& image) {
  image.SetStdPt(0, CfPoint(1.5, 0.25));
  image.SetStdPt(1, CfPoint(3.75, 2.5));
  image.SetStdCtr(0.75, 2.125);
}

inline bool IsSamePoint(CfPoint const& a, CfPoint const& b) {
  return a.x == b.x && a.y == b.y && a.fx == b.fx && a.fy == b.fy;
}

inline bool HasSamePoints(COrbImage& a, COrbImage& b) {
  return IsSamePoint(a.GetStdPt(0), b.GetStdPt(0)) && IsSamePoint(a.GetStdPt(1), b.GetStdPt(1)) &&
         IsSamePoint(a.GetStdCtr(), b.GetStdCtr());
}

inline void ExpectSameImage(COrbImage& expected, COrbImage& actual) {
  ASSERT_TRUE(SameValues(expected, actual));
  EXPECT_TRUE(SameLevels(expected, actual));
  EXPECT_TRUE(HasSamePoints(expected, actual));
}

// One call run(destination, source) beside expect(destination, source) on a random image of this shape.
template <typename Operator, typename Run, typename Expect>
void ExpectTheReferenceOn(Random& random, int width, int height, int planes, Run run, Expect expect) {
  SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + "x" + std::to_string(planes));
  COrbImage src = RandomImage(random, width, height, planes);
  if (random() % 3 == 0) StrewSpecialSamples(src, random);
  SetPoints(src);
  COrbImage srcBefore(src);
  Operator dst = CopyOf<Operator>(src);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  COrbImage expected(dst);
  Operator hostile = CopyOf<Operator>(dst);
  int const result = expect(expected, src);
  EXPECT_EQ(result, run(dst, src));
  ExpectSameImage(expected, dst);
  EXPECT_TRUE(SameBits(srcBefore, src));
  EXPECT_TRUE(SameLevels(srcBefore, src));
  EXPECT_TRUE(HasSamePoints(srcBefore, src));
  MakeHostile(hostile);
  MakeHostile(src);
  EXPECT_EQ(result, run(hostile, src));
  ExpectSameImage(expected, hostile);
  EXPECT_EQ(0, LocksLeft(hostile));
  EXPECT_EQ(0, LocksLeft(src));
}

// The same on mono and colour images of many shapes.
template <typename Operator, typename Run, typename Expect>
void ExpectTheReference(Random& random, Run run, Expect expect) {
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 7, 16, 33, 40}) {
      for (int height : {1, 2, 5, 12}) ExpectTheReferenceOn<Operator>(random, width, height, planes, run, expect);
    }
  }
}

// The messages of run(destination, source, progress) on an image of 5 x 4: one text, `total` units announced, `ticks`
// done; and none with progress off.
template <typename Operator, typename Run>
void ExpectProgress(char const* text, int total, int ticks, int planes, Run run) {
  Random random(7);
  COrbImage src = RandomImage(random, 5, 4, planes);
  RecordingWindow window;
  Operator dst = CopyOf<Operator>(src);
  dst.SetProgressHandle(&window);
  run(dst, src, 1);
  EXPECT_EQ(std::vector<std::string>{text}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_TRUE(window.texts.empty());
  EXPECT_EQ(total, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(ticks, window.polls);
  RecordingWindow silent;
  Operator quiet = CopyOf<Operator>(src);
  quiet.SetProgressHandle(&silent);
  src.SetProgressHandle(&silent);
  run(quiet, src, 0);
  EXPECT_TRUE(silent.IsSilent());
  EXPECT_TRUE(SameBits(dst, quiet));
}

}  // namespace orb::test
