// GetDib(8) of a colour image: which 256 colours are chosen, and which index each pixel gets.
#include <set>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/render_reference.h>
#include <tests/support/dib_view.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

struct Color {
  float red;
  float green;
  float blue;
};

// A colour image of one row after the other; the levels are 0 to 255.
COrbImage ImageOf(int width, std::vector<Color> const& pixels) {
  int const height = static_cast<int>(pixels.size()) / width;
  COrbImage image(-32, width, height, 3, 1.0, 0.0, 1, nullptr, nullptr);
  std::vector<float> samples;
  for (Color const& c : pixels) samples.push_back(c.red);
  for (Color const& c : pixels) samples.push_back(c.green);
  for (Color const& c : pixels) samples.push_back(c.blue);
  SetSamples(image, samples);
  return image;
}

Color ColorOfCell(int cell) {
  return Color{static_cast<float>(cell / 1024 * 8), static_cast<float>(cell / 32 % 32 * 8),
               static_cast<float>(cell % 32 * 8)};
}

// Blue, green, red of the cell's centre, and the reserved byte.
std::vector<int> EntryOfCell(int cell) { return {cell % 32 * 8 + 4, cell / 32 % 32 * 8 + 4, cell / 1024 * 8 + 4, 0}; }

int LightnessOfEntry(std::vector<int> const& entry) {
  return (std::min({entry[0], entry[1], entry[2]}) + std::max({entry[0], entry[1], entry[2]})) / 2;
}

void ExpectPlainResult(COrbImage& image, std::string const& what) {
  EXPECT_EQ(reference::GetDib(image, 8), DibView(image, 8).Bytes()) << what;
}

TEST(ColorQuantizer, EqualsThePlainSearchForFewColors) {
  Random random(21);
  for (int colors : {1, 2, 3, 7, 20, 100, 255, 256, 257}) {
    std::vector<Color> palette;
    for (int i = 0; i < colors; ++i) palette.push_back(ColorOfCell(static_cast<int>(random() % 32768)));
    std::vector<Color> pixels;
    for (int i = 0; i < 37 * 29; ++i) pixels.push_back(palette[random() % palette.size()]);
    COrbImage image = ImageOf(37, pixels);
    ExpectPlainResult(image, std::to_string(colors) + " colours");
  }
}

TEST(ColorQuantizer, EqualsThePlainSearchForManyColors) {
  Random random(22);
  for (int size : {40, 150}) {
    COrbImage image(-32, size, size, 3, 1.0, 0.0, 1, nullptr, nullptr);
    FillRandom(image, random, -40.0, 300.0);
    ExpectPlainResult(image, "noise of side " + std::to_string(size));
  }
}

TEST(ColorQuantizer, EqualsThePlainSearchForOddSizes) {
  Random random(23);
  for (int width : {1, 2, 3, 5, 17, 40}) {
    for (int height : {1, 7, 12}) {
      COrbImage image = RandomImage(random, width, height, 3);
      ExpectPlainResult(image, std::to_string(width) + "x" + std::to_string(height));
    }
  }
}

TEST(ColorQuantizer, EqualsThePlainSearchForGradients) {
  std::vector<Color> pixels;
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 96; ++x) {
      pixels.push_back(Color{x * 2.7f, y * 4.0f, static_cast<float>((x + y) % 256)});
    }
  }
  COrbImage colors = ImageOf(96, pixels);
  ExpectPlainResult(colors, "colours");
  for (Color& c : pixels) c = Color{c.red, c.red, c.red};
  COrbImage grays = ImageOf(96, pixels);
  ExpectPlainResult(grays, "grays");
}

TEST(ColorQuantizer, EqualsThePlainSearchForADarkSky) {
  Random random(24);
  COrbImage image(-32, 120, 90, 3, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(image, random, -3.0, 30.0);
  for (int i = 0; i < 60; ++i) {
    for (int p = 0; p < 3; ++p) {
      image.SetPixelGrayRaw(static_cast<int>(random() % 120), static_cast<int>(random() % 90),
                            static_cast<float>(random() % 400), p);
    }
  }
  ExpectPlainResult(image, "dark sky");
}

TEST(ColorQuantizer, EqualsThePlainSearchForEveryCell) {
  std::vector<Color> pixels;
  for (int cell = 0; cell < 32768; ++cell) pixels.push_back(ColorOfCell(cell));
  COrbImage image = ImageOf(256, pixels);
  ExpectPlainResult(image, "every cell once");
}

TEST(ColorQuantizer, EqualsThePlainSearchForSamplesThatAreNoNumbers) {
  Random random(25);
  COrbImage image = RandomImage(random, 50, 20, 3);
  float const extremes[] = {INFINITY, -INFINITY, NAN, -0.0f, 3.4e38f};
  std::vector<float> samples = SamplesOf(image);
  for (std::size_t i = 0; i < samples.size(); i += 7) samples[i] = extremes[i / 7 % std::size(extremes)];
  SetSamples(image, samples);
  ExpectPlainResult(image, "extremes");
}

// Intended: the band of the one colour owns all 240 slots, and those it cannot fill take the darkest cell.
TEST(ColorQuantizer, OneColorIsFollowedByTheDarkestCell) {
  COrbImage image = ImageOf(4, std::vector<Color>(16, Color{200.0f, 100.0f, 50.0f}));
  DibView const dib(image, 8);
  EXPECT_EQ((std::vector<int>{52, 100, 204, 0}), dib.Entry(0));
  for (std::size_t i = 1; i < 256; ++i) EXPECT_EQ((std::vector<int>{4, 4, 4, 0}), dib.Entry(i)) << i;
  EXPECT_EQ((std::vector<int>{0, 0, 0, 0}), dib.Row(2));
  ExpectPlainResult(image, "one colour");
}

// Intended: black is chosen first, then chosen again for every slot that finds nothing; the last of them is its index.
TEST(ColorQuantizer, OnlyBlackHasTheLastIndex) {
  COrbImage image = ImageOf(4, std::vector<Color>(16, Color{0.0f, 0.0f, 0.0f}));
  DibView const dib(image, 8);
  for (std::size_t i = 0; i < 256; ++i) EXPECT_EQ((std::vector<int>{4, 4, 4, 0}), dib.Entry(i)) << i;
  EXPECT_EQ((std::vector<int>{255, 255, 255, 255}), dib.Row(0));
}

// The first two entries of an image of two neighbouring cells of one band with these numbers of pixels.
void ExpectOrder(int lowerPixels, int higherPixels, bool higherFirst) {
  int const lower = 20 * 1024 + 20 * 32 + 20;
  int const higher = lower + 1;
  std::vector<Color> pixels(static_cast<std::size_t>(lowerPixels), ColorOfCell(lower));
  pixels.insert(pixels.end(), static_cast<std::size_t>(higherPixels), ColorOfCell(higher));
  COrbImage image = ImageOf(static_cast<int>(pixels.size()), pixels);
  DibView const dib(image, 8);
  EXPECT_EQ(EntryOfCell(higherFirst ? higher : lower), dib.Entry(0)) << lowerPixels << ", " << higherPixels;
  EXPECT_EQ(EntryOfCell(higherFirst ? lower : higher), dib.Entry(1)) << lowerPixels << ", " << higherPixels;
  ExpectPlainResult(image, "two cells");
}

TEST(ColorQuantizer, TheMoreFrequentCellComesFirst) {
  ExpectOrder(31999, 31998, false);
  ExpectOrder(31998, 31999, true);
}

// Intended: counts stop at 32000, so two cells of different size tie, and then the higher cell comes first.
TEST(ColorQuantizer, CountsStopAt32000) {
  ExpectOrder(33200, 32001, true);
  ExpectOrder(32001, 32000, true);
  ExpectOrder(32000, 31999, false);
}

// Lightness 224 is counted in the lightest band, but the next band may take it too: both edges belong to a band.
TEST(ColorQuantizer, ACellOnABandsEdgeMayBeTakenByTheNextBand) {
  std::vector<Color> pixels;
  // Lightness 244, many: they take the one slot or more of the lightest band first.
  for (int blue = 24; blue < 32; ++blue) pixels.insert(pixels.end(), 40, ColorOfCell(31 * 1024 + 31 * 32 + blue));
  // Lightness 224, each once, and a frequent one of lightness 220.
  for (int d = 0; d < 3; ++d) pixels.push_back(ColorOfCell((31 - d) * 1024 + (24 + d) * 32 + 24 + d));
  pixels.insert(pixels.end(), 997, ColorOfCell(27 * 1024 + 27 * 32 + 27));
  pixels.resize(1360, ColorOfCell(0));
  COrbImage image = ImageOf(40, pixels);
  ExpectPlainResult(image, "edge");
}

TEST(ColorQuantizer, SelectedColorsGoFromLightToDark) {
  Random random(26);
  COrbImage image(-32, 200, 200, 3, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(image, random, 0.0, 256.0);
  DibView const dib(image, 8);
  int bandTop = 256;
  for (std::size_t i = 0; i < 240; ++i) {
    int const lightness = LightnessOfEntry(dib.Entry(i));
    EXPECT_LE(lightness, bandTop) << i;
    while (lightness < bandTop - 32) bandTop -= 32;
  }
  EXPECT_GE(LightnessOfEntry(dib.Entry(0)), 224);
  EXPECT_LE(LightnessOfEntry(dib.Entry(239)), 32);
}

TEST(ColorQuantizer, TheLast16AreNewColors) {
  Random random(27);
  COrbImage image(-32, 100, 100, 3, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(image, random, 0.0, 256.0);
  DibView const dib(image, 8);
  std::set<std::vector<int>> seen;
  for (std::size_t i = 0; i < 240; ++i) seen.insert(dib.Entry(i));
  for (std::size_t i = 240; i < 256; ++i) EXPECT_TRUE(seen.insert(dib.Entry(i)).second) << i;
}

// A single pixel of a colour unlike all others gets an entry of its own by the fill.
TEST(ColorQuantizer, ARareDistantColorIsFilledIn) {
  std::vector<Color> pixels;
  for (int i = 0; i < 4000; ++i) {
    pixels.push_back(Color{static_cast<float>(i % 50) + 100.0f, static_cast<float>(i % 40) + 100.0f,
                           static_cast<float>(i % 57) + 100.0f});
  }
  for (int blue = 0; blue < 32; ++blue) {
    for (int green = 20; green < 32; ++green)
      pixels.insert(pixels.end(), 3, ColorOfCell(12 * 1024 + green * 32 + blue));
  }
  pixels[17] = Color{255.0f, 0.0f, 255.0f};
  pixels.resize(5120, Color{110.0f, 110.0f, 110.0f});
  COrbImage image = ImageOf(64, pixels);
  DibView const dib(image, 8);
  EXPECT_EQ((std::vector<int>{252, 4, 252, 0}), dib.Entry(static_cast<std::size_t>(dib.Row(0)[17])));
  ExpectPlainResult(image, "rare colour");
}

// Intended: one pair of levels, that of plane 0, serves all three planes.
TEST(ColorQuantizer, PlaneZerosLevelsServeAllPlanes) {
  COrbImage image = ImageOf(1, {Color{50.0f, 120.0f, 90.0f}});
  image.CImage::SetLevel(0, 0.0, 100.0);
  image.CImage::SetLevel(1, 0.0, 1000.0);
  image.CImage::SetLevel(2, 80.0, 81.0);
  DibView const dib(image, 8);
  std::vector<int> const entry = dib.Entry(static_cast<std::size_t>(dib.Row(0)[0]));
  EXPECT_EQ((std::vector<int>{229 / 8 * 8 + 4, 252, 127 / 8 * 8 + 4, 0}), entry);
}

TEST(ColorQuantizer, PixelsOfOneCellShareTheirIndex) {
  Random random(28);
  COrbImage image(-32, 120, 120, 3, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(image, random, 0.0, 256.0);
  DibView const dib(image, 8);
  std::vector<int> indexOfCell(32768, -1);
  for (int y = 0; y < 120; ++y) {
    std::vector<int> const row = dib.Row(y);
    for (int x = 0; x < 120; ++x) {
      int const red = image.GetPixelGray256(x, y, 0) / 8;
      int const green = image.GetPixelGray256(x, y, 1) / 8;
      int const blue = image.GetPixelGray256(x, y, 2) / 8;
      int& index = indexOfCell[static_cast<std::size_t>(red * 1024 + green * 32 + blue)];
      if (index < 0) index = row[static_cast<std::size_t>(x)];
      EXPECT_EQ(index, row[static_cast<std::size_t>(x)]);
    }
  }
}

}  // namespace
}  // namespace orb::test
