// What the tests of several filters share: destinations full of junk, and the progress of a run.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {

template <typename Operator>
Operator JunkLike(COrbImage const& src, Random& random) {
  Operator dst;
  dst.Create(src, nullptr, nullptr);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  return dst;
}

// Calls visit(source, rectangle, name) for images of many shapes with rectangles of every kind.
inline void EachShape(Random& random, std::function<void(COrbImage&, CRect*, std::string const&)> const& visit) {
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 9, 17, 40}) {
      for (int height : {1, 2, 7, 12}) {
        COrbImage src = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          std::string const shape = std::to_string(width) + "x" + std::to_string(height) + "x" + std::to_string(planes);
          visit(src, c.Pointer(), c.name + " " + shape);
        }
      }
    }
  }
}

// Runs do(destination, source, rectangle, progress) with and without progress on three planes, six rows of each.
template <typename Operator, typename Do>
void ExpectRowsOfEachPlane(char const* text, Do call) {
  Random random(91);
  COrbImage src = RandomImage(random, 5, 9, 3);
  CRect rect(1, 2, 4, 8);
  RecordingWindow window;
  Operator dst = JunkLike<Operator>(src, random);
  dst.SetProgressHandle(&window);
  call(dst, src, &rect, 0);
  EXPECT_TRUE(window.IsSilent());
  call(dst, src, &rect, 1);
  EXPECT_EQ(std::vector<std::string>{text}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(18, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(18, window.polls);
}

// The same call on a kind and on a hostile store.
template <typename Operator, typename Do>
void ExpectSameOnAHostileStore(Do call) {
  Random random(92);
  COrbImage src = RandomImage(random, 30, 14, 3);
  Operator kind = JunkLike<Operator>(src, random);
  Operator hostile(kind);
  CRect rect(2, 1, 29, 14);
  call(kind, src, &rect, 0);
  MakeHostile(hostile);
  MakeHostile(src);
  call(hostile, src, &rect, 0);
  EXPECT_TRUE(SameBits(kind, hostile));
  EXPECT_EQ(0, LocksLeft(hostile));
  EXPECT_EQ(0, LocksLeft(src));
}

inline COrbImage MonoImage(int width, int height, std::vector<float> const& samples) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

inline COrbImage FlatImage(int width, int height, float value) {
  return MonoImage(width, height, std::vector<float>(static_cast<std::size_t>(width * height), value));
}

}  // namespace orb::test
