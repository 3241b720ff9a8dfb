// The entries on lightness and colour: that every value reaches its argument, and what is refused.
#include <memory>

#include <hosts/catalogue/band_runner.h>
#include <tests/catalogue/trial.h>
#include <tests/reference/color_reference.h>
#include <tests/reference/lab_color_enhance_reference.h>
#include <tests/reference/lrgb_composite_reference.h>
#include <tests/support/float_units.h>
#include <tests/support/recording_window.h>

namespace orb::test {
namespace {

using host::CheckInvocation;
using host::Invocation;
using host::OperatorEntry;

// Of the planes' own rounding to float, which is a few units of the result.
void ExpectNear(COrbImage const& expected, COrbImage const& actual) {
  std::vector<float> const e = SamplesOf(expected);
  std::vector<float> const a = SamplesOf(actual);
  ASSERT_EQ(e.size(), a.size());
  for (std::size_t i = 0; i < e.size(); ++i) EXPECT_NEAR(e[i], a[i], 1e-3 + 1e-5 * std::fabs(e[i])) << i;
}

TEST(LabEnhanceEntry, EnhancesAnRgbImage) {
  OperatorEntry const& entry = *host::FindOperator("lab-enhance");
  Random random(91);
  COrbImage source = RandomImage(random, 30, 20, 3);
  for (int p = 0; p < 3; ++p) source.CImage::SetLevel(p, -110.0, 410.0);
  COrbImage image(source);
  CRect rect(2, 3, 25, 19);
  COrbImage lab = reference::LabPlane(source);
  COrbImage expected(image);
  reference::LabColorEnhance(expected, lab, reference::LabGains{1.25, 0.75, 2.0, 0.5}, &rect);
  Invocation call{&image, &source, nullptr, {1.25, 0.75, 2.0, 0.5}, &rect, 0};
  ASSERT_EQ("", CheckInvocation(entry, call));
  ASSERT_EQ(1, entry.run(call));
  ExpectNear(expected, image);
  EXPECT_TRUE(SameLevels(expected, image));
}

TEST(LabEnhanceEntry, RefusesMonoImages) {
  OperatorEntry const& entry = *host::FindOperator("lab-enhance");
  COrbImage mono(-32, 4, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  Invocation call{&mono, &mono, nullptr, entry.Defaults(), nullptr, 0};
  EXPECT_EQ("lab-enhance: the image has 1 plane; it must have 3", CheckInvocation(entry, call));
}

class LrgbEntries : public testing::Test {
 protected:
  LrgbEntries() {
    for (COrbImage* each : {&luminance, &colour}) each->SetStdCtr(12.0, 9.0);
    call.image = &image;
    call.frames = {{&luminance, {1.5, -0.5, 2.0}}, {&colour, {-1.25, 0.75, -3.0}}};
    call.rect = &rect;
  }

  Random random{92};
  COrbImage image = RandomImage(random, 24, 18, 3);
  COrbImage luminance = RandomImage(random, 24, 18, 1);
  COrbImage colour = RandomImage(random, 26, 17, 3);
  CRect rect{1, 2, 23, 17};
  reference::Alignment const placeL{1.5, -0.5, 2.0, 1.0};
  reference::Alignment const placeC{-1.25, 0.75, -3.0, 0.8};
  Invocation call;
};

TEST_F(LrgbEntries, LrgbHandsItsValuesOn) {
  OperatorEntry const& entry = *host::FindOperator("compose-lrgb");
  call.values = {0.8};
  COrbImage expected(image);
  reference::LrgbComposite(expected, luminance, placeL, colour, placeC, &rect, 0);
  ASSERT_EQ("", CheckInvocation(entry, call));
  ASSERT_EQ(1, entry.run(call));
  EXPECT_TRUE(SameWithinOneUnitOfLevels(expected, image));
  EXPECT_TRUE(SameLevels(expected, image));
}

TEST_F(LrgbEntries, MeanHandsItsValuesOnAndNeverReports) {
  OperatorEntry const& entry = *host::FindOperator("compose-lrgb-mean");
  RecordingWindow window;
  image.SetProgressHandle(&window);
  call.values = {0.8};
  call.progress = 1;
  COrbImage expected(image);
  reference::LrgbComposite(expected, luminance, placeL, colour, placeC, &rect, 1);
  ASSERT_EQ("", CheckInvocation(entry, call));
  ASSERT_EQ(1, entry.run(call));
  EXPECT_TRUE(SameBits(expected, image));
  EXPECT_TRUE(SameLevels(expected, image));
  EXPECT_TRUE(window.IsSilent());
}

TEST_F(LrgbEntries, LabSamplesPlanes) {
  OperatorEntry const& entry = *host::FindOperator("compose-lab");
  for (double clip : {0.0, 1.0}) {
    call.values = {0.8, clip};
    COrbImage l = reference::LPlane(luminance);
    COrbImage ab = reference::AbPlane(colour, clip != 0.0 ? 1 : 0);
    COrbImage expected(image);
    reference::LabComposite(expected, l, placeL, ab, placeC, &rect);
    ASSERT_EQ("", CheckInvocation(entry, call));
    ASSERT_EQ(1, entry.run(call));
    ExpectNear(expected, image);
    EXPECT_TRUE(SameLevels(expected, image));
  }
}

TEST_F(LrgbEntries, RefuseWhatDoesNotFit) {
  OperatorEntry const& entry = *host::FindOperator("compose-lrgb");
  call.values = {0.0};
  EXPECT_EQ("compose-lrgb: scale is 0; it must be a number from 0.001 to 1000", CheckInvocation(entry, call));
  call.values = {1.0};
  luminance.CImage::SetLevel(0, 7.0, 7.0);
  EXPECT_EQ("compose-lrgb: the levels of the luminance frame, plane 1, are 7 and 7; set them apart first",
            CheckInvocation(entry, call));
  call.frames.pop_back();
  EXPECT_EQ("compose-lrgb: 1 frames; there must be 2: luminance, colour", CheckInvocation(entry, call));
}

}  // namespace
}  // namespace orb::test
