// CFilterKernel: the table and its builders.
#include <limits>
#include <new>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/filter_reference.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

std::vector<float> WeightsOf(CFilterKernel const& kernel) {
  std::vector<float> weights;
  for (int i = 0; i < kernel.count; ++i) weights.push_back(kernel.ValueAt(i));
  return weights;
}

TEST(FilterKernel, IsEmptyAtFirst) {
  CFilterKernel kernel;
  EXPECT_EQ(0, kernel.radius);
  EXPECT_EQ(0, kernel.size);
  EXPECT_EQ(0, kernel.count);
  EXPECT_EQ(0.0f, kernel.Value(0, 0));
  EXPECT_EQ(nullptr, kernel.Address(0, 0));
}

TEST(FilterKernel, CreateMakesATableOfZeros) {
  CFilterKernel kernel;
  EXPECT_EQ(1, kernel.Create(2, 25, 1));
  EXPECT_EQ(2, kernel.radius);
  EXPECT_EQ(5, kernel.size);
  EXPECT_EQ(25, kernel.count);
  EXPECT_EQ(std::vector<float>(25, 0.0f), WeightsOf(kernel));
}

TEST(FilterKernel, CreateRefusesMoreWeightsThanCells) {
  CFilterKernel kernel;
  EXPECT_EQ(0, kernel.Create(1, 10, 0));
  EXPECT_EQ(9, kernel.count);  // the table is there nevertheless
  EXPECT_EQ(1, kernel.Create(1, 9, 0));
  EXPECT_EQ(1, kernel.Create(1, -9, 0)) << "not more than the table holds";
  EXPECT_EQ(0, kernel.Create(-1, 0, 0));
  EXPECT_THROW(kernel.Create(23170, 0, 0), std::bad_alloc);
  EXPECT_THROW(kernel.Create(std::numeric_limits<int>::max(), 0, 0), std::bad_alloc);
}

TEST(FilterKernel, SetValuesTakesAllOrAFew) {
  double const list[9] = {1.1, 2.2, 3.3, 4.4, 5.5, 6.6, 7.7, 8.8, 9.9};
  CFilterKernel all(1, list, 0);
  EXPECT_EQ(1.1f, all.Value(-1, -1));
  EXPECT_EQ(9.9f, all.Value(1, 1));
  CFilterKernel few(1, list, 4);
  EXPECT_EQ(4.4f, few.ValueAt(3));
  float const floats[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  CFilterKernel kernel(1, floats, 9);
  EXPECT_EQ(9.0f, kernel.ValueAt(8));
  EXPECT_EQ(0, kernel.SetValues(1, floats, 10));
  EXPECT_EQ(0.0f, kernel.ValueAt(8));
  EXPECT_EQ(1, kernel.SetValues(1, floats, -1));
  EXPECT_EQ(0.0f, kernel.ValueAt(0));
}

TEST(FilterKernel, OnlyThePlaceInTheTableIsLookedAt) {
  float const list[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  CFilterKernel kernel(1, list, 9);
  EXPECT_EQ(7.0f, kernel.Value(2, 0));  // the first cell of the next row
  EXPECT_EQ(3.0f, kernel.Value(-2, 0));
  EXPECT_EQ(0.0f, kernel.Value(2, 1));
  EXPECT_EQ(0.0f, kernel.Value(-2, -1));
  EXPECT_EQ(nullptr, kernel.Address(2, 1));
  EXPECT_EQ(&kernel.values[6], kernel.Address(2, 0));
  EXPECT_EQ(0.0f, kernel.ValueAt(9));
  EXPECT_EQ(0.0f, kernel.ValueAt(-1));
  EXPECT_EQ(0.0f, kernel.Value(std::numeric_limits<int>::max(), std::numeric_limits<int>::max()));
}

TEST(FilterKernel, ASumOfZeroStaysUnscaled) {
  float const list[9] = {-1, -1, -1, -1, 8, -1, -1, -1, -1};
  CFilterKernel kernel(1, list, 9);
  kernel.Normalize();
  EXPECT_EQ(8.0f, kernel.Value(0, 0));
  float const other[9] = {0, 1, 0, 1, 4, 1, 0, 1, 0};
  kernel.SetValues(1, other, 9);
  kernel.Normalize();
  EXPECT_EQ(0.5f, kernel.Value(0, 0));
  EXPECT_EQ(0.125f, kernel.Value(1, 0));
}

TEST(FilterKernel, WorkedMeans) {
  CFilterKernel kernel;
  EXPECT_EQ(1, kernel.MakeMean(1, 1.0, 1.0));
  EXPECT_EQ((std::vector<float>{0, 0.2f, 0, 0.2f, 0.2f, 0.2f, 0, 0.2f, 0}), WeightsOf(kernel));
  kernel.MakeMean(2, 2.0, 0.5);  // compared with the squared distance: 3 x 3 in a table of 5 x 5
  EXPECT_EQ(0.0f, kernel.Value(2, 0));
  EXPECT_EQ(0.1f, kernel.Value(1, 1));
  EXPECT_EQ(0.2f, kernel.Value(0, 0));
  kernel.MakeMean(2, 4.0, 1.0);  // the disk of radius 2
  EXPECT_EQ(static_cast<float>(1.0 / 13), kernel.Value(2, 0));
  EXPECT_EQ(0.0f, kernel.Value(2, 1));
  kernel.MakeMean(3, 3.0, 0.0);
  EXPECT_EQ(1.0f, kernel.Value(0, 0));
  EXPECT_EQ(0.0f, kernel.Value(1, 0));
}

TEST(FilterKernel, WorkedGaussian) {
  CFilterKernel kernel;
  EXPECT_EQ(1, kernel.MakeGaussian(1, 1.0));
  EXPECT_NEAR(0.20418, kernel.Value(0, 0), 5e-6);
  for (int i : {1, 3, 5, 7}) EXPECT_NEAR(0.12384, kernel.ValueAt(i), 5e-6);
  for (int i : {0, 2, 6, 8}) EXPECT_NEAR(0.07511, kernel.ValueAt(i), 5e-6);
}

TEST(FilterKernel, WorkedSharpKernels) {
  CFilterKernel kernel;
  EXPECT_EQ(1, kernel.MakeSharp(1.0, 1.0));
  EXPECT_EQ((std::vector<float>{0, -0.25f, 0, -0.25f, 2, -0.25f, 0, -0.25f, 0}), WeightsOf(kernel));
  kernel.MakeSharp(2.0, 1.0);
  EXPECT_EQ(2, kernel.radius);
  EXPECT_EQ(2.0f, kernel.Value(0, 0));
  EXPECT_EQ(-0.125f, kernel.Value(1, -1));
  EXPECT_EQ(0.0f, kernel.Value(2, 0));
  kernel.MakeSharp(1.0, 2.0);  // sums to 0 and stays as it is
  EXPECT_EQ(8.0f, kernel.Value(0, 0));
  EXPECT_EQ(-2.0f, kernel.Value(0, 1));
  kernel.MakeSharp(0.5, 1.0);
  EXPECT_EQ(1, kernel.radius);
  EXPECT_EQ(std::vector<float>(9, 0.0f), WeightsOf(kernel));
}

TEST(FilterKernel, WorkedEdgeAndDisk) {
  CFilterKernel kernel;
  EXPECT_EQ(1, kernel.MakeEdge(1, 1.0));
  EXPECT_EQ((std::vector<float>{0, -1, 0, -1, 4, -1, 0, -1, 0}), WeightsOf(kernel));
  EXPECT_EQ(9, kernel.MakeDisk(2, 1.5));
  EXPECT_EQ(1.0f, kernel.Value(1, 1));
  EXPECT_EQ(0.0f, kernel.Value(2, 0));
  EXPECT_EQ(13, kernel.MakeDisk(2, 2.0));
  EXPECT_EQ(0, kernel.MakeDisk(2, std::numeric_limits<double>::quiet_NaN()));
}

TEST(FilterKernel, MinusOneStandsForTheRadius) {
  CFilterKernel named;
  CFilterKernel plain;
  named.MakeGaussian(3, -1.0);
  plain.MakeGaussian(3, 3.0);
  EXPECT_EQ(WeightsOf(plain), WeightsOf(named));
  named.MakeMean(3, -1.0, 0.5);
  plain.MakeMean(3, 3.0, 0.5);
  EXPECT_EQ(WeightsOf(plain), WeightsOf(named));
  named.MakeSharp(-1.0, 0.5);
  plain.MakeSharp(1.0, 0.5);
  EXPECT_EQ(WeightsOf(plain), WeightsOf(named));
  named.MakeEdge(3, -1.0);
  plain.MakeEdge(3, 3.0);
  EXPECT_EQ(WeightsOf(plain), WeightsOf(named));
  EXPECT_EQ(named.MakeDisk(3, -1.0), plain.MakeDisk(3, 3.0));
  EXPECT_EQ(WeightsOf(plain), WeightsOf(named));
  // Only exactly that: the centre alone is left.
  named.MakeMean(3, -1.5, 0.5);
  EXPECT_EQ(1.0f, named.Value(0, 0));
  EXPECT_EQ(0.0f, named.Value(1, 0));
}

TEST(FilterKernel, BuildersEqualThePlainFormulas) {
  for (double range : {0.3, 1.0, 1.9, 2.5, 4.0, 9.5, 30.25}) {
    for (int radius : {1, 2, 4, 7}) {
      CFilterKernel kernel;
      kernel.MakeGaussian(radius, range);
      EXPECT_EQ(reference::GaussianKernel(radius, range).weights, WeightsOf(kernel)) << radius << ' ' << range;
      kernel.MakeMean(radius, range, 0.7);
      EXPECT_EQ(reference::MeanKernel(radius, range, 0.7).weights, WeightsOf(kernel)) << radius << ' ' << range;
      kernel.MakeEdge(radius, range);
      EXPECT_EQ(reference::EdgeKernel(radius, range).weights, WeightsOf(kernel)) << radius << ' ' << range;
    }
    CFilterKernel kernel;
    kernel.MakeSharp(range, 0.7);
    EXPECT_EQ(reference::SharpKernel(range, 0.7).weights, WeightsOf(kernel)) << range;
  }
}

}  // namespace
}  // namespace orb::test
