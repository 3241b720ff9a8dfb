// Images for tests: random shapes and samples, junk, and exact comparison.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {

using Random = std::mt19937;

// Every sample NaN-free, between `low` and `high`, with some exact repeats.
void FillRandom(COrbImage& image, Random& random, double low = -100.0, double high = 400.0);

// Samples that no correct result leaves behind where it should have written.
void FillJunk(COrbImage& image);

// Another level pair for each plane, none of them 0 to 255; never degenerate.
void SetRandomLevels(COrbImage& image, Random& random);

// A mono (1) or colour (3) image of floats with random samples and levels.
COrbImage RandomImage(Random& random, int width, int height, int planes);

// Rectangles of every kind for an image: null (as an empty optional is awkward, `useRect` false), whole, inset by 0, 1
// and 13, partly and wholly outside, empty, reversed.
struct RectCase {
  std::string name;
  bool useRect;
  CRect rect;

  CRect* Pointer() { return useRect ? &rect : nullptr; }
};
std::vector<RectCase> RectCases(int width, int height);

// The samples of all planes.
std::vector<float> SamplesOf(COrbImage const& image);
void SetSamples(COrbImage& image, std::vector<float> const& samples);

// Equal bit for bit, so that NaN equals itself and -0.0 differs from 0.0. Names the first place that differs.
testing::AssertionResult SameBits(COrbImage const& expected, COrbImage const& actual);
testing::AssertionResult SameBits(std::vector<float> const& expected, std::vector<float> const& actual);
testing::AssertionResult SameLevels(COrbImage const& expected, COrbImage const& actual);

// A path under ORBIMG_SAMPLES, or an empty text where the variable is not set: skip the test then, saying so.
std::string SamplePath(std::string const& name);

}  // namespace orb::test
