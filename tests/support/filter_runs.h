// Runs of a filter and of its plain form on the same source.
#pragma once

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/test_images.h>

namespace orb::test {

// fast(destination, source, rectangle) against plain(destination, source, rectangle) into junk, in every rectangle.
template <typename Filter, typename Fast, typename Plain>
void ExpectEqualInEveryRectangle(Random& random, COrbImage& src, Fast fast, Plain plain) {
  for (RectCase& c : RectCases(src.GetWidth(), src.GetHeight())) {
    Filter dst;
    dst.Create(src, nullptr, nullptr);
    SetRandomLevels(dst, random);
    FillJunk(dst);
    COrbImage expected(dst);
    plain(expected, src, c.Pointer());
    fast(dst, src, c.Pointer());
    ASSERT_TRUE(SameValues(expected, dst))
        << c.name << ' ' << src.GetWidth() << 'x' << src.GetHeight() << 'x' << src.GetPlanes();
    EXPECT_TRUE(SameLevels(expected, dst));
  }
}

}  // namespace orb::test
