// COrbImage::GetDib: the layout of the block, and each sample's byte.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/display/bitmap_layout_internal.h>
#include <orbimg/orbimg.h>
#include <tests/reference/render_reference.h>
#include <tests/support/dib_view.h>
#include <tests/support/hostile_store.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

COrbImage ImageOf(int width, int height, int planes, std::vector<float> const& samples) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

// The bytes that a row of samples gets at 8 bits.
std::vector<int> BytesOf(std::vector<float> const& samples, double min, double max) {
  COrbImage image = ImageOf(static_cast<int>(samples.size()), 1, 1, samples);
  image.CImage::SetLevel(0, min, max);
  std::vector<int> row = DibView(image, 8).Row(0);
  row.resize(samples.size());
  return row;
}

void MakeSomeExtreme(COrbImage& image, Random& random) {
  std::vector<float> samples = SamplesOf(image);
  float const extremes[] = {kInfinity, -kInfinity, kNan, -kNan, -0.0f, 0.0f, 3.4e38f, -3.4e38f, 1e-45f};
  for (float& sample : samples) {
    if (random() % 8 == 0) sample = extremes[random() % std::size(extremes)];
  }
  SetSamples(image, samples);
}

TEST(Render, HeaderOf8Bits) {
  COrbImage const image(-32, 3, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  DibView const dib(image, 8);
  BITMAPINFOHEADER const header = dib.Header();
  EXPECT_EQ(40u, header.biSize);
  EXPECT_EQ(3, header.biWidth);
  EXPECT_EQ(2, header.biHeight);
  EXPECT_EQ(1, header.biPlanes);
  EXPECT_EQ(8, header.biBitCount);
  EXPECT_EQ(0u, header.biCompression);
  EXPECT_EQ(8u, header.biSizeImage);
  EXPECT_EQ(0, header.biXPelsPerMeter);
  EXPECT_EQ(0, header.biYPelsPerMeter);
  EXPECT_EQ(0u, header.biClrUsed);
  EXPECT_EQ(0u, header.biClrImportant);
  EXPECT_EQ(40u + 1024u + 8u, dib.Bytes().size());
}

TEST(Render, StrideIsAMultipleOfFour) {
  for (int planes : {1, 3}) {
    COrbImage const three(-32, 3, 2, planes, 1.0, 0.0, 1, nullptr, nullptr);
    EXPECT_EQ(40u + 1024u + 2u * 4u, DibView(three, 8).Bytes().size());
    EXPECT_EQ(40u + 2u * 12u, DibView(three, 24).Bytes().size());
    EXPECT_EQ(2u * 12u, DibView(three, 24).Header().biSizeImage);
    COrbImage const five(-32, 5, 2, planes, 1.0, 0.0, 1, nullptr, nullptr);
    EXPECT_EQ(40u + 2u * 16u, DibView(five, 24).Bytes().size());
  }
}

TEST(Render, PaddingIsZero) {
  std::vector<float> const white(5 * 3, 1000.0f);
  EXPECT_EQ(0, DibView(ImageOf(5, 1, 1, std::vector<float>(5, 1000.0f)), 24).Row(0)[15]);
  EXPECT_EQ(0, DibView(ImageOf(5, 1, 3, white), 24).Row(0)[15]);
  EXPECT_EQ((std::vector<int>{255, 255, 255, 255, 255, 0, 0, 0}),
            DibView(ImageOf(5, 1, 1, std::vector<float>(5, 1000.0f)), 8).Row(0));
  std::vector<int> const indices = DibView(ImageOf(5, 1, 3, white), 8).Row(0);
  EXPECT_EQ((std::vector<int>{0, 0, 0}), std::vector<int>(indices.begin() + 5, indices.end()));
}

TEST(Render, LevelsAreTheEndsOfTheBytesInAllForms) {
  for (int planes : {1, 3}) {
    std::vector<float> samples;
    for (int p = 0; p < planes; ++p) samples.insert(samples.end(), {100.0f, 500.0f});
    COrbImage image = ImageOf(2, 1, planes, samples);
    for (int p = 0; p < planes; ++p) image.CImage::SetLevel(p, 100.0, 500.0);
    EXPECT_EQ((std::vector<int>{0, 0, 0, 255, 255, 255, 0, 0}), DibView(image, 24).Row(0));
  }
  EXPECT_EQ((std::vector<int>{0, 255}), BytesOf({100.0f, 500.0f}, 100.0, 500.0));
  // The quantiser keeps five bits of them: the centres of the darkest and of the lightest cell.
  COrbImage image = ImageOf(2, 1, 3, {100.0f, 500.0f, 100.0f, 500.0f, 100.0f, 500.0f});
  image.CImage::SetLevel(0, 100.0, 500.0);
  DibView const dib(image, 8);
  EXPECT_EQ((std::vector<int>{4, 4, 4, 0}), dib.Entry(static_cast<std::size_t>(dib.Row(0)[0])));
  EXPECT_EQ((std::vector<int>{252, 252, 252, 0}), dib.Entry(static_cast<std::size_t>(dib.Row(0)[1])));
}

TEST(Render, FirstRowLiesAtTheHighestAddress) {
  COrbImage image = ImageOf(4, 3, 1, {10, 10, 10, 10, 20, 20, 20, 20, 30, 30, 30, 30});
  std::vector<unsigned char> const bytes = DibView(image, 8).Bytes();
  EXPECT_EQ(30, bytes[1064]);
  EXPECT_EQ(20, bytes[1064 + 4]);
  EXPECT_EQ(10, bytes[1064 + 8]);
}

TEST(Render, OtherDepthsGiveNull) {
  COrbImage const image(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int bitCount : {16, 0, 1, 4, 32, -8, 7, 65536 + 8}) EXPECT_TRUE(DibView(image, bitCount).IsNull()) << bitCount;
}

TEST(Render, MonoPaletteIsAGrayRamp) {
  COrbImage const image(-32, 1, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  DibView const dib(image, 8);
  for (int i = 0; i < 256; ++i) EXPECT_EQ((std::vector<int>{i, i, i, 0}), dib.Entry(static_cast<std::size_t>(i)));
}

TEST(Render, BlueComesFirst) {
  COrbImage image = ImageOf(1, 1, 3, {255.0f, 0.0f, 0.0f});
  EXPECT_EQ((std::vector<int>{0, 0, 255, 0}), DibView(image, 24).Row(0));
}

TEST(Render, EachPlaneOf24BitsHasItsOwnLevels) {
  COrbImage image = ImageOf(1, 1, 3, {150.0f, 150.0f, 150.0f});
  image.CImage::SetLevel(0, 100.0, 200.0);
  image.CImage::SetLevel(1, 0.0, 300.0);
  image.CImage::SetLevel(2, 150.0, 200.0);
  EXPECT_EQ((std::vector<int>{0, 127, 127, 0}), DibView(image, 24).Row(0));
}

TEST(Render, HalfWayIsTruncated) { EXPECT_EQ((std::vector<int>{127, 254}), BytesOf({127.9f, 254.99f}, 0.0, 255.0)); }

TEST(Render, EqualAndInvertedLevelsTestTheLowerOneFirst) {
  EXPECT_EQ((std::vector<int>{0, 0, 255}), BytesOf({49.0f, 50.0f, 51.0f}, 50.0, 50.0));
  EXPECT_EQ((std::vector<int>{0, 0, 0, 255}), BytesOf({10.0f, 50.0f, 100.0f, 101.0f}, 100.0, 20.0));
}

TEST(Render, WhatNoByteCanHoldIsBlackOrWhite) {
  EXPECT_EQ((std::vector<int>{0, 0, 0, 255, 255}),
            BytesOf({kNan, -kInfinity, -3.4e38f, 3.4e38f, kInfinity}, 100.0, 200.0));
  double const nan = std::numeric_limits<double>::quiet_NaN();
  double const infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ((std::vector<int>{0, 0}), BytesOf({5.0f, kNan}, nan, nan));
  EXPECT_EQ((std::vector<int>{0, 255}), BytesOf({5.0f, 20.0f}, nan, 10.0));
  EXPECT_EQ((std::vector<int>{0, 255}), BytesOf({5.0f, kInfinity}, 0.0, infinity));
  EXPECT_EQ((std::vector<int>{0, 255}), BytesOf({5.0f, 20.0f}, -infinity, 10.0));
  EXPECT_EQ((std::vector<int>{0, 0, 0}), BytesOf({5.0f, 1e38f, kNan}, -1e308, 1e308));
}

TEST(Render, EqualsThePlainRenderingEverywhere) {
  Random random(11);
  for (int planes : {1, 3}) {
    for (int width = 1; width <= 40; width += width < 8 ? 1 : 5) {
      for (int height : {1, 2, 5, 12}) {
        COrbImage image = RandomImage(random, width, height, planes);
        if (width % 2 == 0) MakeSomeExtreme(image, random);
        EXPECT_EQ(reference::GetDib(image, 24), DibView(image, 24).Bytes()) << width << 'x' << height << 'x' << planes;
        if (planes == 3) continue;  // the quantiser has tests of its own
        EXPECT_EQ(reference::GetDib(image, 8), DibView(image, 8).Bytes()) << width << 'x' << height;
      }
    }
  }
}

TEST(Render, RowsLongerThanAPieceEqualThePlainRendering) {
  Random random(12);
  for (int width : {255, 256, 257, 1023, 1024, 1025, 2600}) {
    for (int planes : {1, 3}) {
      COrbImage image = RandomImage(random, width, 2, planes);
      MakeSomeExtreme(image, random);
      EXPECT_EQ(reference::GetDib(image, 24), DibView(image, 24).Bytes()) << width << 'x' << planes;
      if (planes == 3) continue;
      EXPECT_EQ(reference::GetDib(image, 8), DibView(image, 8).Bytes()) << width;
    }
  }
}

// The floats around every one of the 255 steps, where a form of the rule that is a hair off would show.
std::vector<float> SamplesAroundTheSteps(double min, double max) {
  std::vector<float> samples;
  for (int k = 0; k <= 256; ++k) {
    float below = static_cast<float>(min + (max - min) * (k / 255.0));
    for (int i = 0; i < 4; ++i) below = std::nextafter(below, -kInfinity);
    for (int i = 0; i < 9; ++i) {
      samples.push_back(below);
      below = std::nextafter(below, kInfinity);
    }
  }
  return samples;
}

void ExpectPlainBytes(double min, double max) {
  std::vector<float> const samples = SamplesAroundTheSteps(min, max);
  COrbImage image = ImageOf(static_cast<int>(samples.size()), 1, 1, samples);
  image.CImage::SetLevel(0, min, max);
  EXPECT_EQ(reference::GetDib(image, 8), DibView(image, 8).Bytes()) << min << " to " << max;
}

TEST(Render, StepsLieAtTheSameFloatsForOrdinaryLevels) {
  Random random(13);
  std::uniform_real_distribution<double> value(-70000.0, 70000.0);
  for (int i = 0; i < 200; ++i) {
    double const a = value(random);
    double const b = i % 2 == 0 ? value(random) : a + std::abs(value(random)) / 100.0;
    ExpectPlainBytes(std::min(a, b), std::max(a, b));
    ExpectPlainBytes(std::floor(std::min(a, b)), std::ceil(std::max(a, b)));
  }
  for (double range : {255.0, 256.0, 510.0, 600.0, 1000.0, 1275.0, 4095.0, 65535.0}) {
    for (double min : {0.0, -1.0, -100.0, 900.0, 32768.0}) ExpectPlainBytes(min, min + range);
  }
}

TEST(Render, StepsLieAtTheSameFloatsForOddLevels) {
  struct {
    double min, max;
  } const levels[] = {{60000.0, 60000.01},  {0.0, 1e-40},    {1.0, 1.0 + 1e-15}, {-1e-44, 1e-44}, {0.0, 1e-320},
                      {-3e38, 3e38},        {1e38, 3.4e38},  {0.0, 1e300},       {1e39, 1e40},    {-1e300, 0.5},
                      {0.1, 0.10000001490}, {-127.5, 127.5}, {-1e-8, 254.0},     {1e10, 1e10 + 1}};
  for (auto const& level : levels) ExpectPlainBytes(level.min, level.max);
}

// A step at 0.0 has floats on both sides that are far closer than the rounding of sample minus level.
TEST(Render, StepsAtZeroLieAtTheSameFloats) {
  std::vector<float> samples;
  for (double size = 1e-18; size < 1e-10; size *= 1.003) {
    samples.push_back(static_cast<float>(size));
    samples.push_back(static_cast<float>(-size));
  }
  for (double min : {-1.0, -3.0, -7.0, -10.0, -50.0, -100.0, -127.0, -200.0, -254.0}) {
    for (double factor : {1.0, 0.1, 3.0, 100.0, 1.7}) {
      COrbImage image = ImageOf(static_cast<int>(samples.size()), 1, 1, samples);
      image.CImage::SetLevel(0, min * factor, (min + 255.0) * factor);
      EXPECT_EQ(reference::GetDib(image, 8), DibView(image, 8).Bytes()) << min << " times " << factor;
    }
  }
}

TEST(Render, ASizeBeyond32BitsIsLeftOut) {
  EXPECT_EQ(0xfffffff0u, BitmapLayout(16, 0x0fffffff, 8).SizeField());
  EXPECT_EQ(0u, BitmapLayout(16, 0x10000000, 8).SizeField());
  EXPECT_EQ(0x100000000u + 1064u, BitmapLayout(16, 0x10000000, 8).BlockSize());
}

TEST(Render, NoRowsIsHeaderAndPaletteOnly) {
  COrbImage const empty;
  EXPECT_EQ(40u, DibView(empty, 24).Bytes().size());
  EXPECT_EQ(1064u, DibView(empty, 8).Bytes().size());
  EXPECT_EQ((std::vector<int>{4, 4, 4, 0}), DibView(empty, 8).Entry(77));
  COrbImage const flat(-32, 5, 0, 1, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_EQ(1064u, DibView(flat, 8).Bytes().size());
  EXPECT_EQ(5, DibView(flat, 24).Header().biWidth);
  EXPECT_EQ(40u, DibView(flat, 24).Bytes().size());
  EXPECT_EQ(0u, DibView(flat, 24).Header().biSizeImage);
}

TEST(Render, TwoPlanesGiveNull) {
  COrbImage const image(-32, 4, 4, 2, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_TRUE(DibView(image, 8).IsNull());
  EXPECT_TRUE(DibView(image, 24).IsNull());
}

TEST(Render, LackOfMemoryGivesNull) {
  float sample = 0.0f;
  int const huge = std::numeric_limits<int>::max();
  for (int planes : {1, 3}) {
    COrbImage image;
    WrapSamples(image, &sample, huge, huge, planes);
    EXPECT_TRUE(DibView(image, 8).IsNull());
    EXPECT_TRUE(DibView(image, 24).IsNull());
  }
}

TEST(Render, ImageStaysAndNothingIsReported) {
  Random random(14);
  for (int planes : {1, 3}) {
    RecordingWindow window;
    COrbImage image = RandomImage(random, 9, 7, planes);
    image.SetProgressHandle(&window);
    COrbImage const before(image);
    for (int bitCount : {8, 24}) EXPECT_FALSE(DibView(image, bitCount).IsNull());
    EXPECT_TRUE(SameBits(before, image));
    EXPECT_TRUE(SameLevels(before, image));
    EXPECT_TRUE(window.IsSilent());
  }
}

TEST(Render, WorksOnAHostileStore) {
  Random random(15);
  for (int planes : {1, 3}) {
    COrbImage image = RandomImage(random, 13, 6, planes);
    for (int bitCount : {8, 24}) {
      std::vector<unsigned char> const expected = DibView(image, bitCount).Bytes();
      MakeHostile(image);
      EXPECT_EQ(expected, DibView(image, bitCount).Bytes());
      EXPECT_EQ(0, LocksLeft(image));
    }
  }
}

TEST(Render, BitmapComesBackAsTheSameBytes) {
  Random random(16);
  COrbImage const image = RandomImage(random, 21, 8, 3);
  DibView const dib(image, 24);
  DibPtr const block(image.GetDib(24));
  COrbImage back;
  ASSERT_EQ(1, back.AttachDIB(block.get()));
  EXPECT_EQ(dib.Bytes(), DibView(back, 24).Bytes());
}

}  // namespace
}  // namespace orb::test
