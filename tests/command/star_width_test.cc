#include <hosts/orbimg/star_width.h>

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/star_table.h>
#include <tests/command/command_support.h>
#include <tests/command/synthetic_stars.h>
#include <tests/io/expect_host_error.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Exit;
using host::MeasureBlur;
using host::Star;
using host::StarWidth;

constexpr double kWidthOfSigma = 2.3548200450309493;

// Stars of one width on a noisy sky, peaks from 300 to 3000.
std::vector<Star> AddStars(COrbImage& image, double sigma, unsigned seed) {
  std::vector<Star> stars;
  double peak = 300.0;
  for (host::Position const& p : RandomPositions(seed, 30, image.GetWidth() - 60.0, image.GetHeight() - 60.0)) {
    Star star;
    star.x = p.x + 30.0;
    star.y = p.y + 30.0;
    AddGaussian(image, star.x, star.y, peak, kWidthOfSigma * sigma);
    stars.push_back(star);
    peak += 90.0;
  }
  return stars;
}

TEST(StarWidth, OfGaussiansIsTheirSigma) {
  for (double sigma : {0.9, 1.5, 2.5, 4.0}) {
    COrbImage image = SkyImage(400, 360, 500.0, 5.0, 3);
    std::vector<Star> const stars = AddStars(image, sigma, 7);
    StarWidth const width = host::MeasureStarWidth(image, stars);
    EXPECT_GE(width.stars, 15) << sigma;
    EXPECT_NEAR(sigma, width.sigma, 0.03 * sigma);
    EXPECT_DOUBLE_EQ(width.sigma * kWidthOfSigma, width.Fwhm());
  }
}

TEST(StarWidth, StarsNearTheBrightestPeakAreLeftOut) {
  COrbImage image = SkyImage(400, 360, 500.0, 5.0, 3);
  std::vector<Star> stars = AddStars(image, 1.5, 7);
  StarWidth const before = host::MeasureStarWidth(image, stars);
  for (double x : {60.0, 140.0, 220.0}) {  // as wide as a saturated star looks
    AddGaussian(image, x, 345.0 - 30.0, 20000.0, kWidthOfSigma * 5.0);
    stars.push_back(Star{x, 315.0, 0.0, 0.0});
  }
  StarWidth const after = host::MeasureStarWidth(image, stars);
  EXPECT_NEAR(before.sigma, after.sigma, 0.05);
}

TEST(StarWidth, OfFewStarsTheBrightestCounts) {
  COrbImage image = SkyImage(200, 200, 500.0, 1.0, 3);
  AddGaussian(image, 100.0, 100.0, 3000.0, kWidthOfSigma * 1.8);
  AddGaussian(image, 40.0, 40.0, 60.0, kWidthOfSigma * 4.0);
  StarWidth const width = host::MeasureStarWidth(image, {Star{40.0, 40.0, 0.0, 0.0}, Star{100.0, 100.0, 0.0, 0.0}});
  EXPECT_EQ(1, width.stars);
  EXPECT_EQ("1 star", width.StarsText());
  EXPECT_NEAR(1.8, width.sigma, 0.03);
}

TEST(StarWidth, GrainsOfAHaloAreNoStars) {
  COrbImage image = SkyImage(200, 200, 500.0, 0.1, 3);
  AddGaussian(image, 100.0, 100.0, 10000.0, kWidthOfSigma * 1.8);
  std::vector<Star> stars{Star{100.0, 100.0, 0.0, 0.0}};
  for (double const x : {30.0, 60.0, 90.0, 120.0, 150.0, 170.0}) {
    AddGaussian(image, x, 40.0, 150.0, kWidthOfSigma * 4.0);
    stars.push_back(Star{x, 40.0, 0.0, 0.0});
  }
  StarWidth const width = host::MeasureStarWidth(image, stars);
  EXPECT_EQ(1, width.stars);
  EXPECT_NEAR(1.8, width.sigma, 0.03);
}

TEST(StarWidth, PlacesOutsideTheImageAndEmptySkyAreNoStars) {
  COrbImage image = SkyImage(200, 200, 500.0, 0.0, 3);
  std::vector<Star> const stars{Star{-50.0, 1e9, 0.0, 0.0}, Star{100.0, 100.0, 0.0, 0.0}, Star{199.0, 0.0, 0.0, 0.0}};
  EXPECT_EQ(0, host::MeasureStarWidth(image, stars).stars);
  EXPECT_EQ(0, host::MeasureStarWidth(image, {}).stars);
}

class BlurTest : public testing::Test {
 protected:
  void SetUp() override {
    image = SkyImage(400, 360, 500.0, 5.0, 3);
    stars = AddStars(image, 1.7, 7);
    WriteFrame(folder / "stars.fits", image);
  }

  ScratchFolder folder;
  COrbImage image;
  std::vector<Star> stars;
};

TEST_F(BlurTest, ComesFromAnImageOrATableOfAnyKind) {
  CommandResult const json = RunLoudly({"stars", folder / "stars.fits", "--json"});
  WriteText(folder / "stars.json", json.out);
  WriteText(folder / "stars.txt", RunLoudly({"stars", folder / "stars.fits"}).out);
  std::string csv = "x,y,flux\n";
  for (Star const& s : stars) csv += std::to_string(s.x) + "," + std::to_string(s.y) + ",7.5\n";
  WriteText(folder / "stars.csv", csv);
  for (char const* from : {"stars.fits", "stars.json", "stars.txt", "stars.csv"}) {
    StarWidth const width = MeasureBlur(folder / from, image, "stars.fits");
    EXPECT_NEAR(1.7, width.sigma, 0.05) << from;
    EXPECT_GE(width.stars, 15) << from;
  }
}

TEST_F(BlurTest, TablesArePassedOverOrRefusedLineByLine) {
  WriteText(folder / "good.csv", "# of a night\n\nx;y\n1.5;\t2\n 3 4 5\r\n");
  std::vector<Star> const read = host::ReadStarText(folder / "good.csv");
  ASSERT_EQ(2u, read.size());
  EXPECT_EQ(1.5, read[0].x);
  EXPECT_EQ(2.0, read[0].y);
  EXPECT_EQ(4.0, read[1].y);
  WriteText(folder / "bad.csv", "1,2\n3\n");
  EXPECT_TRUE(FailsWith(Exit::kInput, "bad.csv: line 2", [&] { host::ReadStarText(folder / "bad.csv"); }));
  WriteText(folder / "nan.csv", "1,2\nnan,3\n");
  EXPECT_TRUE(FailsWith(Exit::kInput, "nan.csv: line 2", [&] { host::ReadStarText(folder / "nan.csv"); }));
  WriteText(folder / "empty.csv", "# x y\n");
  EXPECT_TRUE(FailsWith(Exit::kInput, "empty.csv: no line", [&] { host::ReadStarText(folder / "empty.csv"); }));
  EXPECT_TRUE(FailsWith(Exit::kInput, "none.csv", [&] { host::ReadStarText(folder / "none.csv"); }));
}

TEST_F(BlurTest, WithoutAStarIsRefused) {
  WriteConstant(folder / "empty.fits", 64, 64, 5.0f);
  EXPECT_TRUE(FailsWith(Exit::kFailed, "empty.fits", [&] { MeasureBlur(folder / "empty.fits", image, "stars.fits"); }));
}

}  // namespace
}  // namespace orb::test
