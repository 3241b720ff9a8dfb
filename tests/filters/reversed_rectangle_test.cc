// A rectangle without columns or rows: nothing is written, yet the run starts, walks what rows there are, and ends.
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <tests/filters/operator_trials.h>

namespace orb::test {
namespace {

template <typename Filter>
using Call = std::function<void(Filter&, COrbImage&, CRect*)>;

// `walks`: how often the filter goes over its rows.
template <typename Filter>
void ExpectNothingWritten(int walks, std::vector<Call<Filter>> const& calls) {
  Random random(93);
  COrbImage src = RandomImage(random, 9, 8, 3);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    Filter dst = JunkLike<Filter>(src, random);
    COrbImage const before(dst);
    for (CRect rect : {CRect(6, 1, 2, 5), CRect(2, 5, 6, 1)}) {
      RecordingWindow window;
      dst.SetProgressHandle(&window);
      calls[i](dst, src, &rect);
      EXPECT_TRUE(SameBits(before, dst)) << i;
      EXPECT_EQ(1u, window.starts.size()) << i;
      EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends) << i;
      EXPECT_EQ(rect.top < rect.bottom ? 4 * walks : 0, window.polls) << i;
    }
  }
}

TEST(ReversedRectangle, SmallFiltersWriteNothing) {
  ExpectNothingWritten<CImgFilter>(
      3, {[](CImgFilter& dst, COrbImage& src, CRect* rect) { dst.UnSharpMask(2.0, 1, 1.0, 0.0, &src, rect, 1); },
          [](CImgFilter& dst, COrbImage& src, CRect* rect) { dst.MedianFilter(2, &src, rect, 1); },
          [](CImgFilter& dst, COrbImage& src, CRect* rect) { dst.MinMaxFilter(0, 4, &src, rect, 1); },
          [](CImgFilter& dst, COrbImage& src, CRect* rect) { dst.LaplacianFilter(1, &src, rect, 1); }});
}

TEST(ReversedRectangle, BlursAndSharpenersWriteNothing) {
  ExpectNothingWritten<CImgFilterBlur>(
      3,
      {[](CImgFilterBlur& dst, COrbImage& src, CRect* rect) { dst.MeanFilter(2.0, 1.0, &src, rect, 1); },
       [](CImgFilterBlur& dst, COrbImage& src, CRect* rect) { dst.GaussianFilter(2.0, &src, rect, 1); },
       [](CImgFilterBlur& dst, COrbImage& src, CRect* rect) { dst.MedianFilter(2.0, &src, rect, 1); },
       [](CImgFilterBlur& dst, COrbImage& src, CRect* rect) { dst.MeanWithoutEdgeFilter(2.0, 1.0, &src, rect, 1); }});
  ExpectNothingWritten<CImgFilterSharp>(
      3, {[](CImgFilterSharp& dst, COrbImage& src, CRect* rect) { dst.SharpFilter(2.0, 1.0, &src, rect, 1); },
          [](CImgFilterSharp& dst, COrbImage& src, CRect* rect) { dst.SharpEdgeFilter(2.0, 1.0, &src, rect, 1); },
          [](CImgFilterSharp& dst, COrbImage& src, CRect* rect) { dst.UnSharpMask(2.0, 1.0, 0.0, &src, rect, 1); }});
}

TEST(ReversedRectangle, MiscellaneousFiltersWriteNothing) {
  ExpectNothingWritten<CImgFilterMisc>(
      1, {[](CImgFilterMisc& dst, COrbImage& src, CRect* rect) { dst.BkgSmooth(1e9, 2, 1.0, &src, rect, 1); },
          [](CImgFilterMisc& dst, COrbImage& src, CRect* rect) { dst.ContourFilter(8, 0, &src, rect, 1); }});
  ExpectNothingWritten<CImgFilterMisc>(
      3, {[](CImgFilterMisc& dst, COrbImage& src, CRect* rect) {
            std::vector<double> weights(9, 1.0);
            dst.Custom(1, weights.data(), &src, rect, 1);
          },
          [](CImgFilterMisc& dst, COrbImage& src, CRect* rect) { dst.NoiseCut(1.5, 1, 0.0, 1, 0.0, &src, rect, 1); },
          [](CImgFilterMisc& dst, COrbImage& src, CRect* rect) { dst.MinMaxFilter(1.5, 0, &src, rect, 1); }});
}

TEST(ReversedRectangle, FiltersForTheSkyWriteNothing) {
  ExpectNothingWritten<CImgFilterSpecial>(3, {[](CImgFilterSpecial& dst, COrbImage& src, CRect* rect) {
                                                dst.StarSharpFilter(2.0, 0.0, 0.0, 0, &src, rect, 1);
                                              },
                                              [](CImgFilterSpecial& dst, COrbImage& src, CRect* rect) {
                                                dst.StarEnhanceFilter(1.0, 1.0, 0.0, &src, rect, 1);
                                              },
                                              [](CImgFilterSpecial& dst, COrbImage& src, CRect* rect) {
                                                dst.NebularSmootherFilter(1.0, 9.0, 1.0, &src, rect, 1);
                                              },
                                              [](CImgFilterSpecial& dst, COrbImage& src, CRect* rect) {
                                                int from[] = {0, 1, 3};
                                                dst.DigitalDvlp(50.0, 1.0, &src, from, rect, 1);
                                              }});
  ExpectNothingWritten<CImgRttnGrdtn>(
      3, {[](CImgRttnGrdtn& dst, COrbImage& src, CRect* rect) { dst.Do(15.0, 2.0, 4.0, 4.0, &src, rect, 1); }});
}

}  // namespace
}  // namespace orb::test
