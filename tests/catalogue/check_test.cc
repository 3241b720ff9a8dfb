// The checks before a call: what is wrong, in one line.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/catalogue/check.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::CheckInvocation;
using host::Invocation;
using host::OperatorEntry;

class Check : public testing::Test {
 protected:
  // A sound call; `change` spoils it.
  template <typename Change>
  std::string Spoilt(std::string const& name, int planes, Change change) {
    OperatorEntry const& entry = *host::FindOperator(name);
    COrbImage image = RandomImage(random, 20, 10, planes);
    COrbImage source = RandomImage(random, 20, 10, planes);
    COrbImage second = RandomImage(random, 33, 44, planes);
    Invocation call{&image, &source, &second, entry.Defaults(), nullptr, 0};
    EXPECT_EQ("", CheckInvocation(entry, call));
    change(call);
    return CheckInvocation(entry, call);
  }
  static std::size_t Place(std::string const& name, std::string const& parameter) {
    return static_cast<std::size_t>(host::FindOperator(name)->Find(parameter));
  }

  Random random{3};
};

TEST_F(Check, MissingImages) {
  EXPECT_EQ("invert: the image is missing", Spoilt("invert", 1, [](Invocation& call) { call.image = nullptr; }));
  EXPECT_EQ("dark: the dark is missing", Spoilt("dark", 1, [](Invocation& call) { call.source = nullptr; }));
  EXPECT_EQ("composite: the second image is missing",
            Spoilt("composite", 1, [](Invocation& call) { call.second = nullptr; }));
}

TEST_F(Check, EmptyAndOddImages) {
  COrbImage empty;
  EXPECT_EQ("invert: the image is empty", Spoilt("invert", 1, [&](Invocation& call) { call.image = &empty; }));
  COrbImage two(-32, 20, 10, 2, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_EQ("invert: the image has 2 planes; an image has 1 or 3",
            Spoilt("invert", 1, [&](Invocation& call) { call.image = &two; }));
  COrbImage bytes(8, 20, 10, 1, 1.0, 0.0, 0, nullptr, nullptr);
  EXPECT_EQ("invert: the source does not hold 32-bit floats",
            Spoilt("invert", 1, [&](Invocation& call) { call.source = &bytes; }));
}

TEST_F(Check, Shapes) {
  COrbImage other = RandomImage(random, 21, 10, 3);
  EXPECT_EQ("dark: the dark is 21 x 10 x 3 planes, the image 20 x 10; both must have the same size",
            Spoilt("dark", 1, [&](Invocation& call) { call.source = &other; }));
  COrbImage colour = RandomImage(random, 20, 10, 3);
  EXPECT_EQ("invert: the source has 3 planes, the image 1",
            Spoilt("invert", 1, [&](Invocation& call) { call.source = &colour; }));
  EXPECT_EQ("", Spoilt("dark", 1, [&](Invocation& call) { call.source = &colour; }));
  EXPECT_EQ("gray: the image has one plane already",
            Spoilt("gray", 3, [&](Invocation& call) { call.image->ChangePlanes(1, nullptr, nullptr); }));
  EXPECT_EQ("colour: the image has three planes already",
            Spoilt("colour", 1, [&](Invocation& call) { call.image->ChangePlanes(3, nullptr, nullptr); }));
}

TEST_F(Check, InPlaceOnlyWhereItMay) {
  auto const inPlace = [](Invocation& call) { call.source = call.image; };
  EXPECT_EQ("", Spoilt("invert", 3, inPlace));
  EXPECT_EQ("", Spoilt("composite", 3, inPlace));
  EXPECT_EQ("rejection: the first image must be another image than the result", Spoilt("rejection", 3, inPlace));
  EXPECT_EQ("gray: the source must be another image than the result", Spoilt("gray", 3, inPlace));
  EXPECT_EQ("composite: the second image must be another one than the result",
            Spoilt("composite", 1, [](Invocation& call) { call.second = call.image; }));
}

TEST_F(Check, Rectangles) {
  CRect rect;
  auto const with = [&](int left, int top, int right, int bottom) {
    return [&rect, left, top, right, bottom](Invocation& call) {
      rect = CRect(left, top, right, bottom);
      call.rect = &rect;
    };
  };
  EXPECT_EQ("", Spoilt("invert", 1, with(-5, -5, 1, 1)));
  EXPECT_EQ("invert: the rectangle 5,5 to 5,9 is empty; right and bottom lie one past the last pixel",
            Spoilt("invert", 1, with(5, 5, 5, 9)));
  EXPECT_EQ("invert: the rectangle 20,0 to 30,9 lies outside the image of 20 x 10",
            Spoilt("invert", 1, with(20, 0, 30, 9)));
  EXPECT_EQ("dark: takes no rectangle: it works on the whole image", Spoilt("dark", 1, with(0, 0, 5, 5)));
  EXPECT_EQ("", Spoilt("crop", 3, with(0, 0, 20, 10)));
  EXPECT_EQ("crop: the rectangle 5,5 to 5,9 is empty; right and bottom lie one past the last pixel",
            Spoilt("crop", 1, with(5, 5, 5, 9)));
  EXPECT_EQ("crop: the rectangle 5,5 to 21,9 goes beyond the image of 20 x 10; it must lie within",
            Spoilt("crop", 1, with(5, 5, 21, 9)));
}

TEST_F(Check, Values) {
  auto const with = [](std::string const& name, std::string const& parameter, double value) {
    return [=](Invocation& call) { call.values[Place(name, parameter)] = value; };
  };
  EXPECT_EQ("rejection: radius is -1; it must be a whole number from 0 to 2 pixels",
            Spoilt("rejection", 1, with("rejection", "radius", -1)));
  EXPECT_EQ("rejection: radius is 0.5; it must be a whole number from 0 to 2 pixels",
            Spoilt("rejection", 1, with("rejection", "radius", 0.5)));
  EXPECT_EQ("rejection: threshold is 1.5; it must be a number from 0 to 1",
            Spoilt("rejection", 1, with("rejection", "threshold", 1.5)));
  EXPECT_EQ("composite: angle is nan; it must be a number from -360 to 360 degrees",
            Spoilt("composite", 1, with("composite", "angle", std::numeric_limits<double>::quiet_NaN())));
  EXPECT_EQ("composite: mode is 9; it must be a whole number from 0 to 8",
            Spoilt("composite", 1, with("composite", "mode", 9)));
  EXPECT_EQ("invert: 1 values for 0 parameters", Spoilt("invert", 1, [](Invocation& call) { call.values = {1.0}; }));
  EXPECT_EQ("level-area: low must be below high", Spoilt("level-area", 1, with("level-area", "low", 0.99)));
  EXPECT_EQ("level-mean: low-factor and high-factor leave no range between black and white",
            Spoilt("level-mean", 1, with("level-mean", "high-factor", -1.0)));
}

TEST_F(Check, LevelsWithoutARange) {
  auto const spoilSource = [](Invocation& call) { call.source->CImage::SetLevel(0, 7.0, 7.0); };
  EXPECT_EQ("invert: the levels of the source, plane 1, are 7 and 7; set them apart first",
            Spoilt("invert", 1, spoilSource));
  EXPECT_EQ("", Spoilt("composite", 1, spoilSource));
  EXPECT_EQ("composite: the levels of the second image, plane 1, are 7 and 7; set them apart first",
            Spoilt("composite", 1, [](Invocation& call) {
              call.values[Place("composite", "levels")] = 1.0;
              call.second->CImage::SetLevel(0, 7.0, 7.0);
            }));
}

TEST_F(Check, ThinFlats) {
  OperatorEntry const& flat = *host::FindOperator("flat");
  COrbImage image = RandomImage(random, 1, 9, 1);
  COrbImage frame = RandomImage(random, 1, 9, 1);
  EXPECT_EQ("flat: the flat is one pixel wide or high, so that its mean has no value",
            CheckInvocation(flat, Invocation{&image, &frame, nullptr, {}, nullptr, 0}));
}

}  // namespace
}  // namespace orb::test
