// FitsReader: every stored type, scaling, row order, bands, units.
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>
#include <tests/io/stored_fits.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Exit;
using host::FitsReader;

constexpr int kWidth = 23;
constexpr int kHeight = 17;

std::vector<float> ReadAll(FitsReader& reader) {
  host::Shape const shape = reader.Shape();
  std::size_t const plane = static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height);
  std::vector<float> samples(plane * static_cast<std::size_t>(shape.planes));
  for (int p = 0; p < shape.planes; ++p) {
    reader.ReadRows(p, 0, shape.height, samples.data() + plane * static_cast<std::size_t>(p));
  }
  return samples;
}

// The file's first row is the bottom one.
std::vector<float> Flipped(std::vector<float> const& samples, int width, int height) {
  std::vector<float> result(samples.size());
  std::size_t const w = static_cast<std::size_t>(width);
  std::size_t const h = static_cast<std::size_t>(height);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    std::size_t const y = i / w % h;
    result[i + (h - 1 - y) * w - y * w] = samples[i];
  }
  return result;
}

template <typename Stored>
std::vector<Stored> RandomStored(Random& random, std::size_t count) {
  std::vector<Stored> stored(count);
  if constexpr (std::is_floating_point_v<Stored>) {
    std::normal_distribution<Stored> value(10, 1000);
    for (auto& v : stored) v = value(random);
  } else {
    std::uniform_int_distribution<std::int64_t> value(std::numeric_limits<Stored>::min(),
                                                      std::numeric_limits<Stored>::max());
    for (auto& v : stored) v = static_cast<Stored>(value(random));
    stored[0] = std::numeric_limits<Stored>::min();
    stored[1] = std::numeric_limits<Stored>::max();
  }
  return stored;
}

template <typename Stored>
float Physical(Stored stored, StoredFits const& file) {
  if (std::is_integral_v<Stored> && file.hasBlank && stored == static_cast<Stored>(file.blank)) {
    return std::numeric_limits<float>::quiet_NaN();
  }
  if constexpr (std::is_same_v<Stored, LONGLONG>) {
    return static_cast<float>(static_cast<long double>(stored) * file.scale + file.zero);
  }
  return static_cast<float>(static_cast<double>(stored) * file.scale + file.zero);
}

template <typename Stored>
void ExpectExactSamples(int bitpix, std::vector<std::pair<double, double>> const& scalings) {
  ScratchFolder folder;
  Random random(static_cast<unsigned>(bitpix + 100));
  for (auto const& [scale, zero] : scalings) {
    for (long planes : {1, 3}) {
      for (int compression : {0, GZIP_1, RICE_1}) {
        if (compression != 0 && bitpix == 64) continue;     // CFITSIO does not compress these
        if (compression == RICE_1 && bitpix < 0) continue;  // with loss only
        for (char const* ending : {".fits", ".fits.gz"}) {
          if (compression != 0 && std::strcmp(ending, ".fits.gz") == 0) continue;
          StoredFits file;
          file.bitpix = bitpix;
          file.scale = scale;
          file.zero = zero;
          file.compression = compression;
          file.sizes = planes == 1 ? std::vector<long>{kWidth, kHeight} : std::vector<long>{kWidth, kHeight, planes};
          auto const stored = RandomStored<Stored>(random, static_cast<std::size_t>(kWidth * kHeight * planes));
          std::string const path = folder / (std::string("a") + ending + (compression != 0 ? ".fz" : ""));
          file.Write(path, stored);
          std::vector<float> expected;
          for (Stored v : stored) expected.push_back(Physical(v, file));
          FitsReader reader(path);
          EXPECT_EQ((host::Shape{kWidth, kHeight, static_cast<int>(planes)}), reader.Shape());
          EXPECT_EQ(bitpix, reader.Bitpix());
          EXPECT_TRUE(SameBits(Flipped(expected, kWidth, kHeight), ReadAll(reader)))
              << path << ' ' << bitpix << ' ' << scale << ' ' << zero << ' ' << planes << ' ' << compression;
          EXPECT_EQ(0, reader.NonFinite());
        }
      }
    }
  }
}

TEST(FitsReader, UnsignedBytes) { ExpectExactSamples<std::uint8_t>(8, {{1, 0}, {1, -128}, {0.3, 1e-3}}); }

TEST(FitsReader, ShortIntegers) {
  ExpectExactSamples<std::int16_t>(16, {{1, 0}, {1, 32768}, {2.92273835509, 3713.66692596}});
}

TEST(FitsReader, LongIntegers) { ExpectExactSamples<std::int32_t>(32, {{1, 0}, {1, 2147483648.0}, {-1e-7, 0.25}}); }

TEST(FitsReader, VeryLongIntegers) {
  ExpectExactSamples<LONGLONG>(64, {{1, 0}, {1, 9223372036854775808.0}, {1e-9, -3}});
}

TEST(FitsReader, Floats) { ExpectExactSamples<float>(-32, {{1, 0}, {1.5, -2}}); }

TEST(FitsReader, Doubles) { ExpectExactSamples<double>(-64, {{1, 0}, {1.1, 0.1}}); }

TEST(FitsReader, VeryLongIntegersAreRoundedOnce) {
  ScratchFolder folder;
  StoredFits file;
  file.bitpix = 64;
  file.sizes = {1, 1};
  // Halfway between two floats but for the last bit, which a rounding to double on the way would lose.
  file.Write<LONGLONG>(folder / "a.fits", {(1LL << 62) + (1LL << 38) + 1});
  FitsReader reader(folder / "a.fits");
  float sample = 0.0f;
  reader.ReadRows(0, 0, 1, &sample);
  EXPECT_EQ(std::ldexp(1.0f, 62) + std::ldexp(1.0f, 39), sample);
}

TEST(FitsReader, FloatsComeBitForBit) {
  ScratchFolder folder;
  std::vector<float> const stored{-0.0f,
                                  0.0f,
                                  std::numeric_limits<float>::denorm_min(),
                                  std::numeric_limits<float>::infinity(),
                                  -std::numeric_limits<float>::infinity(),
                                  std::numeric_limits<float>::quiet_NaN(),
                                  std::numeric_limits<float>::max(),
                                  -1e-40f};
  StoredFits file;
  file.bitpix = -32;
  file.sizes = {8, 1};
  file.Write(folder / "a.fits", stored);
  FitsReader reader(folder / "a.fits");
  EXPECT_TRUE(SameBits(stored, ReadAll(reader)));
  EXPECT_EQ(3, reader.NonFinite());
}

TEST(FitsReader, DoublesBeyondFloatsAreInfiniteAndCounted) {
  ScratchFolder folder;
  StoredFits file;
  file.bitpix = -64;
  file.sizes = {4, 1};
  file.Write<double>(folder / "a.fits", {1e300, -1e300, 1e-300, std::numeric_limits<double>::quiet_NaN()});
  FitsReader reader(folder / "a.fits");
  auto const samples = ReadAll(reader);
  EXPECT_EQ(std::numeric_limits<float>::infinity(), samples[0]);
  EXPECT_EQ(-std::numeric_limits<float>::infinity(), samples[1]);
  EXPECT_EQ(0.0f, samples[2]);
  EXPECT_TRUE(std::isnan(samples[3]));
  EXPECT_EQ(3, reader.NonFinite());
}

TEST(FitsReader, BlankIntegersHaveNoValue) {
  ScratchFolder folder;
  for (int compression : {0, RICE_1}) {
    StoredFits file;
    file.hasBlank = true;
    file.blank = -32768;
    file.zero = 32768;
    file.compression = compression;
    file.sizes = {3, 1};
    file.Write<std::int16_t>(folder / "a.fits", {-32768, 0, 7});
    FitsReader reader(folder / "a.fits");
    auto const samples = ReadAll(reader);
    EXPECT_TRUE(std::isnan(samples[0]));
    EXPECT_EQ(32768.0f, samples[1]);
    EXPECT_EQ(32775.0f, samples[2]);
    EXPECT_EQ(1, reader.NonFinite());
  }
}

TEST(FitsReader, QuantizedFloatsKeepWhatHasNoValue) {
  ScratchFolder folder;
  Random random(5);
  std::normal_distribution<float> noise(100.0f, 5.0f);
  std::vector<float> stored(64 * 64);
  for (float& v : stored) v = noise(random);
  stored[0] = -1e30f;
  stored[130] = -1e30f;
  StoredFits file;
  file.bitpix = -32;
  file.sizes = {64, 64};
  file.compression = RICE_1;
  file.quantize = 16.0f;
  file.isNullMarked = true;
  file.Write(folder / "a.fits.fz", stored);
  FitsReader reader(folder / "a.fits.fz");
  auto const samples = Flipped(ReadAll(reader), 64, 64);
  EXPECT_EQ(2, reader.NonFinite());
  for (std::size_t i = 0; i < stored.size(); ++i) {
    if (i == 0 || i == 130) {
      EXPECT_TRUE(std::isnan(samples[i]));
    } else {
      EXPECT_NEAR(stored[i], samples[i], 5.0 / 16.0);
    }
  }
}

TEST(FitsReader, BandsEqualTheWhole) {
  ScratchFolder folder;
  Random random(7);
  for (int compression : {0, RICE_1}) {
    StoredFits file;
    file.compression = compression;
    file.sizes = {300, 211, 3};
    file.Write(folder / "a.fits", RandomStored<std::int16_t>(random, 300 * 211 * 3));
    FitsReader whole(folder / "a.fits");
    auto const expected = ReadAll(whole);
    FitsReader reader(folder / "a.fits");
    std::vector<float> samples(expected.size());
    for (int p = 2; p >= 0; --p) {
      for (int top = 0; top < 211; top += 13) {
        reader.ReadRows(p, top, std::min(13, 211 - top), samples.data() + (p * 211 + top) * 300);
      }
    }
    EXPECT_TRUE(SameBits(expected, samples));
  }
}

TEST(FitsReader, SeveralThreadsShareOneReader) {
  ScratchFolder folder;
  Random random(8);
  StoredFits file;
  file.sizes = {64, 96};
  file.Write(folder / "a.fits", RandomStored<std::int16_t>(random, 64 * 96));
  FitsReader whole(folder / "a.fits");
  auto const expected = ReadAll(whole);
  FitsReader reader(folder / "a.fits");
  std::vector<float> samples(expected.size());
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int y = t; y < 96; y += 4) reader.ReadRows(0, y, 1, samples.data() + y * 64);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_TRUE(SameBits(expected, samples));
}

TEST(FitsReader, RowOrderTopDownIsNotFlipped) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {1, 3};
  file.cards = {"ROWORDER= 'TOP-DOWN'"};
  file.Write<std::int16_t>(folder / "top.fits", {1, 2, 3});
  file.cards = {"ROWORDER= 'BOTTOM-UP'"};
  file.Write<std::int16_t>(folder / "bottom.fits", {1, 2, 3});
  FitsReader top(folder / "top.fits");
  FitsReader bottom(folder / "bottom.fits");
  EXPECT_TRUE(SameBits({1.0f, 2.0f, 3.0f}, ReadAll(top)));
  EXPECT_TRUE(SameBits({3.0f, 2.0f, 1.0f}, ReadAll(bottom)));
}

TEST(FitsReader, FirstExtensionIfThePrimaryIsEmpty) {
  ScratchFolder folder;
  StoredFits file;
  file.isInExtension = true;
  file.sizes = {2, 1};
  file.primaryCards = {"OBSERVER= 'someone'", "OBJECT  = 'of the primary'", "HISTORY first"};
  file.cards = {"OBJECT  = 'M 13    '", "HISTORY second"};
  file.Write<std::int16_t>(folder / "a.fits", {5, 6});
  FitsReader reader(folder / "a.fits");
  EXPECT_TRUE(SameBits({5.0f, 6.0f}, ReadAll(reader)));
  EXPECT_EQ("someone", reader.Header().Text("OBSERVER"));
  EXPECT_EQ("M 13", reader.Header().Text("OBJECT"));
  auto const& cards = reader.Header().cards;
  EXPECT_EQ(4u, cards.size());
}

TEST(FitsReader, AxesOfOneEntryAddNothing) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {2, 2, 1, 1};
  file.Write<std::int16_t>(folder / "mono.fits", {1, 2, 3, 4});
  EXPECT_EQ((host::Shape{2, 2, 1}), FitsReader(folder / "mono.fits").Shape());
  file.sizes = {2, 1, 3, 1};
  file.Write<std::int16_t>(folder / "colour.fits", {1, 2, 3, 4, 5, 6});
  EXPECT_EQ((host::Shape{2, 1, 3}), FitsReader(folder / "colour.fits").Shape());
}

TEST(FitsReader, NamesItsType) {
  ScratchFolder folder;
  auto const nameOf = [&](int bitpix, double scale, double zero) {
    StoredFits file;
    file.bitpix = bitpix;
    file.scale = scale;
    file.zero = zero;
    file.sizes = {2, 1};
    std::string const path = folder / "a.fits";
    if (bitpix == 8) file.Write<std::uint8_t>(path, {1, 2});
    if (bitpix == 16) file.Write<std::int16_t>(path, {1, 2});
    if (bitpix == -64) file.Write<double>(path, {1, 2});
    return FitsReader(path).TypeName();
  };
  EXPECT_EQ("unsigned 8-bit integer", nameOf(8, 1, 0));
  EXPECT_EQ("signed 8-bit integer", nameOf(8, 1, -128));
  EXPECT_EQ("signed 16-bit integer", nameOf(16, 1, 0));
  EXPECT_EQ("unsigned 16-bit integer", nameOf(16, 1, 32768));
  EXPECT_EQ("scaled 16-bit integer", nameOf(16, 2, 32768));
  EXPECT_EQ("64-bit float", nameOf(-64, 1, 0));
}

TEST(FitsReader, OddNamesAreTakenLiterally) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {1, 1};
  file.Write<std::int16_t>(folder / "plain.fits", {42});
  for (std::string const name :
       {"a[1].fits", "b(2).fits", "c,d;e+1.fits", " blank.fits", "~tilde.fits", "!bang.fits"}) {
    std::filesystem::copy_file(folder / "plain.fits", folder / name);
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    EXPECT_NO_THROW({
      FitsReader reader(name);
      EXPECT_TRUE(SameBits({42.0f}, ReadAll(reader)));
    }) << name;
    std::filesystem::current_path(before);
  }
}

TEST(FitsReader, RowsOutsideAreRefused) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {2, 2};
  file.Write<std::int16_t>(folder / "a.fits", {1, 2, 3, 4});
  FitsReader reader(folder / "a.fits");
  float samples[8];
  EXPECT_TRUE(FailsWith(Exit::kFailed, "a.fits: rows 1 to 3", [&] { reader.ReadRows(0, 1, 2, samples); }));
  EXPECT_TRUE(FailsWith(Exit::kFailed, "plane 1", [&] { reader.ReadRows(1, 0, 1, samples); }));
  EXPECT_TRUE(FailsWith(Exit::kFailed, "rows -1", [&] { reader.ReadRows(0, -1, 1, samples); }));
  reader.ReadRows(0, 2, 0, samples);
}

}  // namespace
}  // namespace orb::test
