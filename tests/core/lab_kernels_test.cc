// The fast colour model against CColor: one unit in the last place of a float, and the same bits for grays.
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/core/color.h>
#include <orbimg/core/lab_kernels.h>
#include <tests/support/float_units.h>

namespace orb::test {
namespace {

struct Three {
  double v[3];
};

using Colors = std::vector<Three>;

ColorBlock BlockOf(Colors const& colors, std::size_t begin, std::ptrdiff_t count) {
  ColorBlock block{};
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    Three const& c = colors[begin + static_cast<std::size_t>(i)];
    block.first[i] = c.v[0];
    block.second[i] = c.v[1];
    block.third[i] = c.v[2];
  }
  return block;
}

// Calls convert(block, count, begin) for blocks of every length.
template <typename Convert>
void EachBlockOf(Colors const& colors, Convert convert) {
  std::ptrdiff_t length = 1;
  for (std::size_t begin = 0; begin < colors.size();) {
    std::ptrdiff_t const left = static_cast<std::ptrdiff_t>(colors.size() - begin);
    std::ptrdiff_t const count = std::min(left, length);
    convert(BlockOf(colors, begin, count), count, begin);
    begin += static_cast<std::size_t>(count);
    length = length % kLabBlock + 1;
  }
}

void ExpectClose(double expected, double actual, Three const& of, char const* what) {
  ASSERT_TRUE(IsWithinOneUnit(static_cast<float>(expected), static_cast<float>(actual)))
      << what << ": expected " << expected << ", found " << actual << " of " << of.v[0] << ' ' << of.v[1] << ' '
      << of.v[2];
}

void ExpectLabLikeColor(Colors const& colors) {
  EachBlockOf(colors, [&](ColorBlock const& rgb, std::ptrdiff_t count, std::size_t begin) {
    ColorBlock lab;
    RgbToLab(rgb, count, lab);
    double lightness[kLabBlock];
    RgbToLightness(rgb, count, lightness);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      Three const& of = colors[begin + static_cast<std::size_t>(i)];
      CColor c;
      c.RgbToLab(of.v[0], of.v[1], of.v[2]);
      ExpectClose(c.GetL(), lab.first[i], of, "L");
      ExpectClose(c.GetL(), lightness[i], of, "L alone");
      ExpectClose(c.Geta(), lab.second[i], of, "a");
      ExpectClose(c.Getb(), lab.third[i], of, "b");
    }
  });
}

void ExpectRgbLikeColor(Colors const& colors) {
  EachBlockOf(colors, [&](ColorBlock const& lab, std::ptrdiff_t count, std::size_t begin) {
    ColorBlock rgb;
    LabToRgb(lab, count, rgb);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      Three const& of = colors[begin + static_cast<std::size_t>(i)];
      CColor c;
      c.LabToRgb(of.v[0], of.v[1], of.v[2]);
      ExpectClose(c.GetR(), rgb.first[i], of, "R");
      ExpectClose(c.GetG(), rgb.second[i], of, "G");
      ExpectClose(c.GetB(), rgb.third[i], of, "B");
    }
  });
}

// `chroma` as many as `lightness`.
void ExpectJoinLikeColor(Colors const& lightness, Colors const& chroma) {
  EachBlockOf(lightness, [&](ColorBlock const& first, std::ptrdiff_t count, std::size_t begin) {
    ColorBlock rgb;
    JoinLightnessAndChroma(first, BlockOf(chroma, begin, count), count, rgb);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      Three const& of = lightness[begin + static_cast<std::size_t>(i)];
      Three const& with = chroma[begin + static_cast<std::size_t>(i)];
      CColor l;
      l.RgbToLab(of.v[0], of.v[1], of.v[2]);
      CColor ab;
      ab.RgbToLab(with.v[0], with.v[1], with.v[2]);
      CColor c;
      c.LabToRgb(l.GetL(), ab.Geta(), ab.Getb());
      ExpectClose(c.GetR(), rgb.first[i], of, "joined R");
      ExpectClose(c.GetG(), rgb.second[i], of, "joined G");
      ExpectClose(c.GetB(), rgb.third[i], of, "joined B");
    }
  });
}

constexpr double kMost = 5000.0 / 255.0;

// Spread evenly over magnitudes from 1e-9 to the limit, now and then with a channel at 0 or at the limit, or like its
// neighbour.
Colors ColorsOfEveryMagnitude(Random& random, int count) {
  std::uniform_real_distribution<double> exponent(-9.0, std::log10(kMost));
  std::uniform_real_distribution<double> ratio(0.0, 1.0);
  std::uniform_int_distribution<int> kind(0, 19);
  Colors colors;
  for (int i = 0; i < count; ++i) {
    double const size = std::pow(10.0, exponent(random));
    Three c{{size, size * ratio(random), size * ratio(random)}};
    std::swap(c.v[0], c.v[i % 3]);
    for (double& v : c.v) {
      int const k = kind(random);
      if (k == 0) v = 0.0;
      if (k == 1) v = kMost;
      if (k == 2) v = c.v[0];
      if (k == 3) v = c.v[0] * (1.0 + 1e-8 * ratio(random));
    }
    colors.push_back(c);
  }
  return colors;
}

TEST(LabKernels, LabIsWithinAFloatsUnitOfColor) {
  Random random(41);
  ExpectLabLikeColor(ColorsOfEveryMagnitude(random, 300000));
}

TEST(LabKernels, LabIsWithinAFloatsUnitWhereTheRootBegins) {
  Random random(42);
  std::uniform_real_distribution<double> off(-1e-6, 1e-6);
  std::uniform_int_distribution<int> power(0, 10);
  Colors colors;
  for (int i = 0; i < 30000; ++i) {
    // The gray whose t is the limit: t = v^2.2.
    double const v = std::pow(0.008856, 1 / 2.2) * (1.0 + off(random) * std::pow(10.0, -power(random)));
    colors.push_back(Three{{v, i % 3 == 0 ? v : v * (1.0 + off(random)), i % 2 == 0 ? v : v * (1.0 + off(random))}});
  }
  ExpectLabLikeColor(colors);
}

TEST(LabKernels, GraysHaveExactlyTheColourThatColorFinds) {
  Colors grays;
  for (int i = 0; i <= 5000; ++i) grays.push_back(Three{{i * kInverse255, i * kInverse255, i * kInverse255}});
  for (double v = 1e-9; v < kMost; v *= 1.0017) grays.push_back(Three{{v, v, v}});
  EachBlockOf(grays, [&](ColorBlock const& rgb, std::ptrdiff_t count, std::size_t) {
    ColorBlock lab;
    RgbToLab(rgb, count, lab);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      CColor c;
      c.RgbToLab(rgb.first[i], rgb.second[i], rgb.third[i]);
      EXPECT_EQ(c.Geta(), lab.second[i]) << rgb.first[i];
      EXPECT_EQ(c.Getb(), lab.third[i]) << rgb.first[i];
      EXPECT_NEAR(0.0, lab.second[i], 1e-11);
      EXPECT_NEAR(0.0, lab.third[i], 1e-11);
    }
    ColorBlock back;
    JoinLightnessAndChroma(rgb, rgb, count, back);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      // Darker ones lie on the linear branch, whose offset leaves the channels few digits to agree in.
      if (rgb.first[i] < 0.001) continue;
      EXPECT_EQ(static_cast<float>(back.first[i]), static_cast<float>(back.second[i])) << rgb.first[i];
      EXPECT_EQ(static_cast<float>(back.first[i]), static_cast<float>(back.third[i])) << rgb.first[i];
    }
  });
}

TEST(LabKernels, RgbIsWithinAFloatsUnitOfColor) {
  Random random(43);
  std::uniform_real_distribution<double> lightness(-10.0, 150.0);
  std::uniform_real_distribution<double> chroma(-1.0, 1.0);
  std::uniform_int_distribution<int> kind(0, 9);
  Colors colors;
  for (int i = 0; i < 300000; ++i) {
    double const size = std::pow(10.0, 2.5 - kind(random));
    double l = lightness(random);
    if (kind(random) == 0) l = 7.999536239999999 + chroma(random) * std::pow(10.0, -kind(random) - 2);
    if (kind(random) == 0) l = chroma(random) * std::pow(10.0, -kind(random));
    if (kind(random) == 0) l = std::pow(10.0, 4.0 * chroma(random));
    colors.push_back(Three{{l, size * chroma(random), kind(random) == 0 ? 0.0 : size * chroma(random)}});
  }
  ExpectRgbLikeColor(colors);
}

// Colours with a channel of exactly 0 come back with one near 0, of either sign.
TEST(LabKernels, RgbIsWithinAFloatsUnitAtTheBorderOfTheColours) {
  Random random(44);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  Colors colors;
  for (int i = 0; i < 100000; ++i) {
    Three rgb{{unit(random), unit(random), unit(random)}};
    rgb.v[i % 3] = i % 2 == 0 ? 0.0 : std::pow(10.0, -16.0 * unit(random));
    if (i % 5 == 0) rgb.v[(i + 1) % 3] = 0.0;
    CColor c;
    c.RgbToLab(rgb.v[0], rgb.v[1], rgb.v[2]);
    colors.push_back(Three{{c.GetL(), c.Geta(), c.Getb()}});
  }
  ExpectRgbLikeColor(colors);
}

TEST(LabKernels, JoinedColoursAreWithinAFloatsUnitOfColor) {
  Random random(45);
  Colors const lightness = ColorsOfEveryMagnitude(random, 300000);
  ExpectJoinLikeColor(lightness, ColorsOfEveryMagnitude(random, 300000));
  ExpectJoinLikeColor(lightness, lightness);
}

TEST(LabKernels, JoinedColoursOfOrdinaryImagesAreWithinAFloatsUnit) {
  Random random(46);
  std::uniform_real_distribution<double> unit(0.0, 1.2);
  Colors lightness;
  Colors chroma;
  for (int i = 0; i < 300000; ++i) {
    double const gray = unit(random);
    lightness.push_back(Three{{gray, gray, gray}});
    chroma.push_back(Three{{unit(random), unit(random), unit(random)}});
  }
  ExpectJoinLikeColor(lightness, chroma);
}

TEST(LabKernels, NumbersThatAreNoneGoThroughColor) {
  using Limits = std::numeric_limits<double>;
  double const specials[] = {0.0,
                             -0.0,
                             1.0,
                             -1.0,
                             1e-320,
                             1e3,
                             -1e3,
                             1e38,
                             -1e38,
                             1e300,
                             Limits::infinity(),
                             -Limits::infinity(),
                             Limits::quiet_NaN()};
  Colors colors;
  Colors limited;
  for (double r : specials) {
    for (double g : specials) {
      for (double b : specials) {
        colors.push_back(Three{{r, g, b}});
        Three const unit{{Encode256(r, kMostEncoded256), Encode256(g, kMostEncoded256), Encode256(b, kMostEncoded256)}};
        limited.push_back(unit);
      }
    }
  }
  ExpectRgbLikeColor(colors);
  ExpectLabLikeColor(limited);
  Colors const reversed(limited.rbegin(), limited.rend());
  ExpectJoinLikeColor(limited, reversed);
}

}  // namespace
}  // namespace orb::test
