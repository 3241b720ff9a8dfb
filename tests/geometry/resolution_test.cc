// CImgResolution: both ways of sampling anew, against the plain formulas and by worked numbers.
#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/resolution_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using Operation = int (CImgResolution::*)(COrbImage*, int, int, int);
constexpr Operation kOperations[] = {&CImgResolution::ByLinear, &CImgResolution::ByCubic, &CImgResolution::Do};

struct Resampled : CImgResolution {
  explicit Resampled(COrbImage const& src) { CopyImage(src, nullptr, nullptr); }
  Resampled(COrbImage& src, Operation operation, int newWidth, int newHeight) : Resampled(src) {
    FillJunk(*this);
    EXPECT_EQ(1, (this->*operation)(&src, newWidth, newHeight, 0));
    EXPECT_EQ(newWidth, width);
    EXPECT_EQ(newHeight, height);
  }
};

COrbImage ImageOf(int width, int height, std::vector<float> const& samples) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

void ExpectPlainResults(COrbImage& src, int newWidth, int newHeight) {
  COrbImage expected(src);
  expected.ChangeSize(newWidth, newHeight, nullptr, nullptr);
  reference::ResolutionByLinear(expected, src);
  Resampled linear(src, &CImgResolution::ByLinear, newWidth, newHeight);
  EXPECT_TRUE(SameValues(expected, linear));
  EXPECT_TRUE(SameLevels(src, linear));
  reference::ResolutionByCubic(expected, src);
  Resampled cubic(src, &CImgResolution::ByCubic, newWidth, newHeight);
  EXPECT_TRUE(SameValues(expected, cubic));
  EXPECT_TRUE(SameLevels(src, cubic));
}

int Pick(Random& random, int least, int most) {
  return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
}

TEST(Resolution, EqualsThePlainFormulas) {
  Random random(81);
  for (int i = 0; i < 240; ++i) {
    int const width = Pick(random, 2, 40);
    int const height = Pick(random, 2, 12);
    int const newWidth = i % 4 == 0 ? width * Pick(random, 1, 3) : Pick(random, 1, 90);
    int const newHeight = i % 3 == 0 ? height * Pick(random, 1, 3) : Pick(random, 1, 30);
    COrbImage src = RandomImage(random, width, height, i % 2 == 0 ? 1 : 3);
    SCOPED_TRACE(testing::Message() << width << 'x' << height << " to " << newWidth << 'x' << newHeight);
    ExpectPlainResults(src, newWidth, newHeight);
  }
}

TEST(Resolution, EqualsThePlainFormulasAmongSpecialSamples) {
  Random random(82);
  for (int i = 0; i < 160; ++i) {
    int const width = Pick(random, 2, 40);
    int const height = Pick(random, 2, 12);
    int const newWidth = i % 4 == 0 ? width * Pick(random, 1, 2) : Pick(random, 1, 70);
    int const newHeight = i % 3 == 0 ? height * Pick(random, 1, 2) : Pick(random, 1, 30);
    COrbImage src = RandomImage(random, width, height, 1);
    StrewSpecialSamples(src, random, i % 2 == 0 ? 6 : 60);
    SCOPED_TRACE(testing::Message() << width << 'x' << height << " to " << newWidth << 'x' << newHeight);
    ExpectPlainResults(src, newWidth, newHeight);
  }
}

// Weights that are 0 only up to rounding weigh in where the sample itself is small or 0.
TEST(Resolution, EqualsThePlainFormulasForSmallBesideLarge) {
  Random random(83);
  for (int i = 0; i < 40; ++i) {
    COrbImage src = RandomImage(random, Pick(random, 60, 140), Pick(random, 2, 40), 1);
    for (int y = 0; y < src.GetHeight(); ++y) {
      for (int x = 0; x < src.GetWidth(); ++x) {
        unsigned const kind = random() % 3;
        if (kind == 0) src.SetPixelGrayRaw(x, y, 0.0f, 0);
        if (kind == 1) src.SetPixelGrayRaw(x, y, src.GetPixelGrayRaw(x, y, 0) * 1e30f, 0);
      }
    }
    ExpectPlainResults(src, Pick(random, 50, 300), Pick(random, 2, 60));
  }
}

TEST(Resolution, TheSameSizeGivesTheSourceBack) {
  Random random(84);
  COrbImage src = RandomImage(random, 17, 9, 3);
  src.SetPixelGrayRaw(3, 4, -0.0f, 0);
  src.SetPixelGrayRaw(8, 4, std::numeric_limits<float>::infinity(), 1);
  Resampled same(src, &CImgResolution::ByLinear, 17, 9);
  EXPECT_TRUE(SameBits(src, same));
}

// The last row and column come out of the interpolation, whose other samples spoil them where they are not finite.
TEST(Resolution, TheLastRowAndColumnAreInterpolated) {
  float const infinity = std::numeric_limits<float>::infinity();
  COrbImage src = ImageOf(3, 3, {1, 2, 3, 4, infinity, 6, 7, 8, 9});
  Resampled same(src, &CImgResolution::ByLinear, 3, 3);
  EXPECT_TRUE(std::isnan(same.GetPixelGrayRaw(2, 2, 0)));
  EXPECT_TRUE(std::isnan(same.GetPixelGrayRaw(2, 1, 0)));
  EXPECT_TRUE(std::isnan(same.GetPixelGrayRaw(1, 2, 0)));
  EXPECT_EQ(1.0f, same.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(infinity, same.GetPixelGrayRaw(1, 1, 0));
  EXPECT_EQ(4.0f, same.GetPixelGrayRaw(0, 1, 0));
}

TEST(Resolution, TwiceTheSizeLiesMidwayAndEndsInTwoEqualColumns) {
  COrbImage src = ImageOf(3, 2, {0, 10, 20, 100, 110, 120});
  std::vector<float> const expected{0,   5,   10,  15,  20,  20,  50,  55,  60,  65,  70,  70,
                                    100, 105, 110, 115, 120, 120, 100, 105, 110, 115, 120, 120};
  for (Operation const operation : kOperations) {
    EXPECT_EQ(expected, SamplesOf(Resampled(src, operation, 6, 4)));
  }
}

TEST(Resolution, HalfTheSizePicksEverySecondSample) {
  COrbImage src = ImageOf(4, 2, {1, 2, 3, 4, 5, 6, 7, 8});
  for (Operation const operation : kOperations) {
    EXPECT_EQ((std::vector<float>{1, 3}), SamplesOf(Resampled(src, operation, 2, 1)));
  }
}

TEST(Resolution, DoIsByLinear) {
  Random random(85);
  COrbImage src = RandomImage(random, 23, 11, 3);
  EXPECT_TRUE(SameBits(Resampled(src, &CImgResolution::ByLinear, 31, 7), Resampled(src, &CImgResolution::Do, 31, 7)));
}

// Intended: the cubic sum steps from real positions, where all weights but one are 0.
TEST(Resolution, ByCubicIsAllButByLinear) {
  Random random(86);
  COrbImage src = RandomImage(random, 40, 12, 1);
  for (int const scale : {2, 3, 7}) {
    Resampled linear(src, &CImgResolution::ByLinear, 40 * scale, 12 * scale);
    Resampled cubic(src, &CImgResolution::ByCubic, 40 * scale, 12 * scale);
    for (int y = 0; y < cubic.GetHeight(); ++y) {
      for (int x = 0; x < cubic.GetWidth(); ++x) {
        ASSERT_NEAR(linear.GetPixelGrayRaw(x, y, 0), cubic.GetPixelGrayRaw(x, y, 0), 1e-4);
      }
    }
  }
}

// Intended: weights of 0 are multiplied all the same.
TEST(Resolution, ByCubicSpreadsWhatIsNotFinite) {
  COrbImage src = ImageOf(16, 16, std::vector<float>(256, 1.0f));
  src.SetPixelGrayRaw(8, 8, std::numeric_limits<float>::infinity(), 0);
  Resampled cubic(src, &CImgResolution::ByCubic, 16, 16);
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 16; ++x) {
      bool const isReached = x >= 6 && x <= 9 && y >= 6 && y <= 9 && !(x == 8 && y == 8);
      EXPECT_EQ(isReached, std::isnan(cubic.GetPixelGrayRaw(x, y, 0))) << x << ' ' << y;
    }
  }
  EXPECT_EQ(std::numeric_limits<float>::infinity(), cubic.GetPixelGrayRaw(8, 8, 0));
}

TEST(Resolution, ByCubicHasNoNegativeZero) {
  COrbImage src = ImageOf(6, 6, std::vector<float>(36, -0.0f));
  Resampled linear(src, &CImgResolution::ByLinear, 6, 6);
  Resampled cubic(src, &CImgResolution::ByCubic, 6, 6);
  EXPECT_TRUE(std::signbit(linear.GetPixelGrayRaw(2, 2, 0)));
  EXPECT_FALSE(std::signbit(cubic.GetPixelGrayRaw(2, 2, 0)));
}

// Outside the contract, but inside the image.
TEST(Resolution, OneColumnOrRowStandsForItsNeighbour) {
  COrbImage row = ImageOf(3, 1, {1, 2, 3});
  COrbImage column = ImageOf(1, 2, {5, 7});
  for (Operation const operation : kOperations) {
    EXPECT_EQ((std::vector<float>{1, 2, 3}), SamplesOf(Resampled(row, operation, 3, 1)));
    EXPECT_EQ((std::vector<float>{5, 5, 5}), SamplesOf(Resampled(column, operation, 3, 1)));
  }
  EXPECT_EQ((std::vector<float>{1, 1.5, 2, 2.5, 3, 3}), SamplesOf(Resampled(row, &CImgResolution::ByLinear, 6, 1)));
}

TEST(Resolution, ASourceWithoutSamplesLeavesZeros) {
  for (Operation const operation : kOperations) {
    COrbImage src = ImageOf(40, 0, {});
    EXPECT_EQ((std::vector<float>{0, 0, 0, 0}), SamplesOf(Resampled(src, operation, 2, 2)));
  }
}

TEST(Resolution, ClearsPointsAndCentre) {
  for (Operation const operation : kOperations) {
    COrbImage src = ImageOf(2, 2, {1, 2, 3, 4});
    src.SetStdPt(0, CfPoint(1, 0));
    src.SetStdCtr(1, 1);
    Resampled image(src);
    (image.*operation)(&src, 3, 3, 0);
    EXPECT_EQ(0, image.GetStdPtNum());
    EXPECT_EQ(0, image.IsValidStdCtr());
    EXPECT_EQ(1, src.GetStdPtNum());
  }
}

TEST(Resolution, WithoutMemoryTheImageStays) {
  for (Operation const operation : kOperations) {
    RecordingWindow window;
    COrbImage src = ImageOf(2, 2, {1, 2, 3, 4});
    Resampled image(src);
    image.SetProgressHandle(&window);
    EXPECT_EQ(0, (image.*operation)(&src, INT_MAX, INT_MAX, 1));
    EXPECT_EQ(0, (image.*operation)(&src, 4, -1, 1));
    EXPECT_TRUE(SameBits(src, image));
    EXPECT_EQ(2, image.GetWidth());
    EXPECT_TRUE(window.IsSilent());
  }
}

TEST(Resolution, ToNothing) {
  COrbImage src = ImageOf(2, 2, {1, 2, 3, 4});
  for (Operation const operation : kOperations) {
    EXPECT_EQ(0, Resampled(src, operation, 0, 5).GetPixelCount());
    EXPECT_EQ(0, Resampled(src, operation, 5, 0).GetPixelCount());
  }
}

TEST(Resolution, ProgressCountsTheNewRowsOfEveryPlane) {
  Random random(87);
  COrbImage src = RandomImage(random, 4, 5, 3);
  for (Operation const operation : kOperations) {
    RecordingWindow window;
    window.escapeAtPoll = 2;
    Resampled image(src);
    image.SetProgressHandle(&window);
    EXPECT_EQ(1, (image.*operation)(&src, 7, 6, 1));
    EXPECT_EQ(std::vector<std::string>{"解像度変更処理中..."}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(18, OrbTestAccess::ProgressOf(image).total);
    EXPECT_EQ(18, window.polls);
    EXPECT_TRUE(SameBits(Resampled(src, operation, 7, 6), image));
    window = RecordingWindow();
    (image.*operation)(&src, 7, 6, 0);
    EXPECT_TRUE(window.IsSilent());
  }
}

TEST(Resolution, WorksOnAHostileStore) {
  Random random(88);
  for (Operation const operation : kOperations) {
    COrbImage src = RandomImage(random, 9, 7, 3);
    Resampled const expected(src, operation, 12, 15);
    Resampled image(src);
    MakeHostile(image);
    MakeHostile(src);
    (image.*operation)(&src, 12, 15, 0);
    EXPECT_TRUE(SameBits(expected, image));
    EXPECT_EQ(0, LocksLeft(image));
    EXPECT_EQ(0, LocksLeft(src));
  }
}

TEST(Resolution, IsAnOperatorThatCopies) {
  Random random(89);
  Resampled const a(RandomImage(random, 5, 4, 3));
  CImgResolution const b(a);
  CImgResolution c;
  c = b;
  EXPECT_TRUE(SameBits(a, b));
  EXPECT_TRUE(SameBits(a, c));
}

}  // namespace
}  // namespace orb::test
