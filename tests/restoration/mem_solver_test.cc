// The maximum entropy solver: against its transcription bit for bit, its mathematics against definitions and finite
// differences, codes, progress and report.
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/mem_reference.h>
#include <tests/reference/real_transform_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

// Stars on a background, blurred and with noise.
struct Field {
  Field(int width, int height, Random& random, double background, double noiseSigma)
      : nx(width), ny(height), noise(noiseSigma), weight(Count(), 1.0f), psf(reference::MemGauss(1.2, 7, 7)) {
    std::uniform_int_distribution<std::size_t> place(0, Count() - 1);
    std::vector<float> truth(Count(), static_cast<float>(background));
    for (int i = 0; i < 6; ++i) truth[place(random)] += 400.0f * static_cast<float>(i + 1);
    std::normal_distribution<double> error(0.0, noise);
    for (double v : reference::ConvolveByDefinition(truth, psf, 3, 3, nx, ny, 1)) {
      y.push_back(static_cast<float>(v + error(random)));
    }
  }

  std::size_t Count() const { return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny); }

  int nx;
  int ny;
  double noise;
  std::vector<float> y;
  std::vector<float> weight;
  std::vector<float> psf;
  std::vector<float> start;
};

struct Solution {
  int code = 0;
  std::vector<float> x;
  std::vector<float> work;
  double limits[4] = {0.5, 1.0, 0.05, 0.0};
};

Solution Solve(Field const& field, double const* limits, ConvolveOperator const& op, double variance, int arrays = 5,
               int report = 0, COrbImage* progress = nullptr, int plane = 0) {
  Solution run;
  std::copy_n(limits, 4, run.limits);
  std::size_t const n = field.Count();
  run.x = field.start.empty() ? std::vector<float>(n, 999.0f) : field.start;
  run.work.assign(5 * n, 888.0f);
  std::vector<float> y = field.y;
  std::vector<float> weight = field.weight;
  std::vector<float> store(2 * n, 777.0f);
  std::vector<float> kernelWork(field.psf.size());
  run.code = MemSolve(run.x.data(), y.data(), weight.data(), run.work.data(), field.psf.data(), kernelWork.data(), op,
                      store.data(), run.limits, variance, arrays, field.nx, field.ny, 3, 3, report,
                      field.start.empty() ? 0 : 1, progress, plane);
  return run;
}

Solution Solve(Field const& field, double const* limits) {
  MemConvolve convolve;
  return Solve(field, limits, std::ref(convolve), field.noise * field.noise);
}

reference::SolverOutcome SolvePlainly(Field const& field, double const* limits) {
  MemConvolve convolve;
  return reference::Solve(field.y, field.weight, field.psf, std::ref(convolve), limits, field.noise * field.noise,
                          field.nx, field.ny, 3, 3, field.start);
}

constexpr double kNever[] = {0.0, 0.0, 0.0, 8.0};

bool IsSameNumber(double const* expected, double const* actual) {
  return std::equal(expected, expected + 4, actual,
                    [](double e, double a) { return e == a || (std::isnan(e) && std::isnan(a)); });
}

TEST(MemSolve, EqualsItsTranscriptionBitForBit) {
  Random random(1);
  bool hasStageOne = false;
  int sound = 0;
  bool hasCut = false;
  std::vector<int> codes;
  for (double background : {0.0, 1.0, 50.0}) {
    for (double noise : {0.3, 4.0, 60.0}) {
      for (int kind = 0; kind < 4; ++kind) {
        for (double iterations : {1.0, 2.0, 5.0, 14.0}) {
          Field field(32, 16, random, background, noise);
          if (kind == 1) {
            for (std::size_t i = 0; i < field.Count(); i += 7) field.weight[i] = i % 2 == 0 ? 0.0f : 0.5f;
          }
          if (kind == 2) {
            for (float v : field.y) field.start.push_back(std::fabs(v));
          }
          if (kind == 3) std::fill_n(field.weight.begin(), field.Count() / 2, 0.0f);
          double const limits[] = {0.0, 0.0, 0.0, iterations};
          reference::SolverOutcome const expected = SolvePlainly(field, limits);
          Solution const actual = Solve(field, limits);
          SCOPED_TRACE(testing::Message() << background << ' ' << noise << ' ' << kind << ' ' << iterations);
          ASSERT_EQ(expected.code, actual.code);
          EXPECT_TRUE(SameBits(CanonicalNans(expected.x), CanonicalNans(actual.x)));
          EXPECT_TRUE(IsSameNumber(expected.limits, actual.limits));
          sound += std::isfinite(actual.limits[0]) ? 1 : 0;
          codes.push_back(actual.code);
          for (int stage : expected.trace.stage) hasStageOne |= stage == 1;
          for (int iuch : expected.trace.iuch) hasCut |= iuch == 1;
        }
      }
    }
  }
  EXPECT_GT(sound, 100);
  EXPECT_TRUE(hasStageOne);
  EXPECT_TRUE(hasCut);
  for (int code : {0, 5, 56}) EXPECT_NE(0, std::count(codes.begin(), codes.end(), code)) << code;
}

// Without a blur each pixel is on its own, and a negative datum of the right size draws one that starts at the lower
// bound down again, but not by so much that the direction is cut.
TEST(MemSolve, EstimateAtTheLowerBoundGivesACodeThatEndsInSix) {
  Random random(17);
  Field field(8, 8, random, 50.0, 1.0);
  for (std::size_t i = 0; i < 64; ++i) field.y[i] = i % 2 == 0 ? 30.0f : 70.0f;
  field.start = std::vector<float>(64, 45.0f);
  field.start[0] = 0.0f;
  ConvolveOperator const identity = [](float* out, float const* in, float const*, float*, int nx, int ny, int, int,
                                       int* mode, COrbImage*, int, int) {
    std::copy_n(in, nx * ny, out);
    *mode = 0;
  };
  double const limits[] = {0.0, 0.0, 0.0, 1.0};
  int hits = 0;
  for (double datum = 0.1; datum < 3000.0; datum *= 1.005) {
    field.y[0] = static_cast<float>(-datum);
    Solution const solution = Solve(field, limits, identity, 100.0);
    float const least = *std::min_element(solution.x.begin(), solution.x.end());
    hits += solution.code == 6 ? 1 : 0;
    bool const isAtBound = solution.code == 6 || solution.code == 56;
    if (isAtBound) {
      EXPECT_LT(least, 1e-8f) << datum;
    } else {
      EXPECT_GT(least, 1e-9f) << datum;
    }
  }
  EXPECT_GT(hits, 0);
}

// Half the weighted square of the residual by sigma, at x, all in scaled units.
double ChiTerm(Field const& field, std::vector<float> const& x, double scale, double sigma) {
  std::vector<double> const model = reference::ConvolveByDefinition(x, field.psf, 3, 3, field.nx, field.ny, 1);
  double sum = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    double const r = field.y[i] * scale - model[i];
    sum += field.weight[i] * r * r;
  }
  return sum / (2.0 * sigma);
}

TEST(MemSolve, GradientAndCurvatureAgreeWithFiniteDifferences) {
  Random random(2);
  Field field(16, 16, random, 50.0, 4.0);
  for (std::size_t i = 0; i < field.Count(); i += 5) field.weight[i] = 0.25f;
  for (double iterations : {1.0, 3.0, 6.0}) {
    double const limits[] = {0.0, 0.0, 0.0, iterations};
    Solution const run = Solve(field, limits);
    double sum = 0.0;
    for (float v : field.y) sum += v;
    double const scale = static_cast<double>(field.Count()) / sum;
    double const sigma = field.noise * scale;
    std::vector<float> x = run.x;
    for (float& v : x) v = static_cast<float>(v * scale);
    double const largest = *std::max_element(run.work.begin(), run.work.begin() + 256);
    for (std::size_t i = 0; i < field.Count(); i += 37) {
      float const h = 0.5f;  // the term is a parabola: any step gives its derivatives
      std::vector<float> up = x;
      std::vector<float> down = x;
      up[i] += h;
      down[i] -= h;
      double const high = ChiTerm(field, up, scale, sigma);
      double const middle = ChiTerm(field, x, scale, sigma);
      double const low = ChiTerm(field, down, scale, sigma);
      EXPECT_NEAR((high - low) / (2.0 * h), run.work[i], 1e-4 * largest) << iterations << ' ' << i;
      double const second = (high - 2.0 * middle + low) / (h * h);
      EXPECT_NEAR(second, run.work[2 * 256 + i], 1e-4 * second) << iterations << ' ' << i;
    }
    // Chi-square, carried along as a parabola, is that of the estimate.
    double const chi = 2.0 * ChiTerm(field, x, scale, sigma) / sigma;
    EXPECT_NEAR(std::sqrt(chi / 256.0), run.limits[3], 1e-4 * run.limits[3]) << iterations;
  }
}

// Q along the line is at rest where the search ends: its derivative by finite differences is a small part of what the
// two terms pull with.
TEST(MemSolve, SearchEndsWhereTheObjectiveIsAtRestAlongItsDirection) {
  Random random(3);
  Field field(16, 16, random, 80.0, 4.0);
  double const once[] = {0.0, 0.0, 0.0, 3.0};
  reference::SolverOutcome const outcome = SolvePlainly(field, once);
  ASSERT_EQ(0, outcome.trace.stage.back());
  double const twice[] = {0.0, 0.0, 0.0, 2.0};
  Solution const before = Solve(field, twice);
  Solution const after = Solve(field, once);
  double sum = 0.0;
  for (float v : field.y) sum += v;
  double const scale = 256.0 / sum;
  double const lag = outcome.trace.lag.back();
  auto const objective = [&](double part) {
    std::vector<float> x(256);
    double entropy = 0.0;
    for (std::size_t i = 0; i < 256; ++i) {
      double const v = scale * (before.x[i] + part * (static_cast<double>(after.x[i]) - before.x[i]));
      x[i] = static_cast<float>(v);
      entropy += v * (std::log(v) - 1.0);
    }
    return ChiTerm(field, x, scale, field.noise * scale) + lag * entropy;
  };
  double const slopeAtStart = (objective(0.02) - objective(-0.02)) / 0.04;
  double const slopeAtEnd = (objective(1.02) - objective(0.98)) / 0.04;
  EXPECT_LT(slopeAtStart, 0.0);
  EXPECT_LT(std::fabs(slopeAtEnd), 0.02 * std::fabs(slopeAtStart));
}

TEST(MemSolve, BringsTheFitToTheNoise) {
  Random random(4);
  Field field(32, 32, random, 100.0, 5.0);
  double const limits[] = {1e-3, 0.0, 0.0, 60.0};
  Solution const run = Solve(field, limits);
  EXPECT_LT(run.limits[3], 1.1);
  EXPECT_GT(run.limits[3], 0.5);
  EXPECT_GT(*std::min_element(run.x.begin(), run.x.end()), 0.0f);
}

// Where the data do not pull, the start of 1 and a multiplier of 1e-10 put the first step at the foot of the parabola.
TEST(MemSolve, FirstIterationStepsToTheFootOfTheParabola) {
  Random random(5);
  Field field(16, 16, random, 500.0, 4.0);
  double const limits[] = {0.0, 0.0, 0.0, 1.0};
  reference::SolverOutcome const outcome = SolvePlainly(field, limits);
  EXPECT_EQ(2, outcome.trace.sub[0]);
  EXPECT_NEAR(outcome.trace.aLimit[0], outcome.trace.a[0], 1e-6 * std::fabs(outcome.trace.a[0]));
  EXPECT_TRUE(SameBits(outcome.x, Solve(field, limits).x));
}

TEST(MemSolve, ConstantImageStopsAtOnce) {
  Random random(6);
  Field field(32, 32, random, 0.0, 1.0);
  field.y.assign(field.Count(), 1000.0f);
  RecordingWindow window;
  COrbImage image;
  image.SetProgressHandle(&window);
  double const limits[] = {0.5, 1.0, 0.05, 0.0};
  MemConvolve convolve;
  double total = 0.0;
  for (float v : field.psf) total += v;
  for (float& v : field.psf) v = static_cast<float>(v / total);
  Solution const run = Solve(field, limits, std::ref(convolve), 1.0, 5, 0, &image);
  EXPECT_EQ(0, run.code);
  EXPECT_EQ(2u, window.starts.size());
  for (float v : run.x) EXPECT_NEAR(1000.0, v, 0.5);
}

TEST(MemSolve, WithoutALimitOfIterationsItStopsByTheTolerances) {
  Random random(7);
  Field field(32, 32, random, 100.0, 5.0);
  double const open[] = {0.5, 1.0, 0.05, 0.0};
  Solution const run = Solve(field, open);
  EXPECT_TRUE(run.limits[0] <= 0.5 || run.limits[1] <= 1.0 || run.limits[2] <= 0.05);
  for (int i = 0; i < 3; ++i) {
    double single[] = {0.0, 0.0, 0.0, 0.0};
    single[i] = i == 2 ? 0.05 : 1.0;
    Solution const by = Solve(field, single);
    EXPECT_LE(by.limits[i], single[i]) << i;
  }
}

TEST(MemSolve, RefusesAVarianceThatIsNotAboveZeroAndTooFewArrays) {
  Random random(8);
  Field const field(8, 8, random, 10.0, 1.0);
  ConvolveOperator const none = [](auto...) { FAIL() << "the operator is not needed"; };
  for (double variance : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    RecordingWindow window;
    COrbImage image;
    image.SetProgressHandle(&window);
    EXPECT_EQ(1, Solve(field, kNever, none, variance, 5, 0, &image).code);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  }
  EXPECT_EQ(2, Solve(field, kNever, none, 1.0, 3).code);
  EXPECT_EQ(1, Solve(field, kNever, none, 0.0, 3).code);
}

TEST(MemSolve, OperatorErrorsAreThreeAndItsCancelIsEight) {
  Random random(9);
  Field const field(16, 16, random, 50.0, 1.0);
  for (auto const& [status, code] : {std::pair{1, 3}, {7, 3}, {8, 8}}) {
    for (int failing = 1; failing <= 7; ++failing) {
      MemConvolve convolve;
      int calls = 0;
      ConvolveOperator const op = [&](float* out, float const* in, float const* kernel, float* store, int nx, int ny,
                                      int halfX, int halfY, int* mode, COrbImage* progress, int from, int to) {
        convolve(out, in, kernel, store, nx, ny, halfX, halfY, mode, progress, from, to);
        if (++calls == failing) *mode = status;
      };
      RecordingWindow window;
      COrbImage image;
      image.SetProgressHandle(&window);
      EXPECT_EQ(code, Solve(field, kNever, op, 1.0, 5, 0, &image).code) << failing;
      EXPECT_EQ(failing, calls);
      EXPECT_EQ("(null)", window.ends.back());
      EXPECT_EQ(failing <= 3 ? 1u : 2u, window.ends.size());
    }
  }
}

TEST(MemSolve, ThreeConvolutionsAnIterationFourWhereTheDirectionIsCut) {
  Random random(10);
  Field const field(32, 16, random, 0.0, 0.3);
  MemConvolve convolve;
  int calls = 0;
  ConvolveOperator const op = [&](float* out, float const* in, float const* kernel, float* store, int nx, int ny,
                                  int halfX, int halfY, int* mode, COrbImage* progress, int from, int to) {
    ++calls;
    convolve(out, in, kernel, store, nx, ny, halfX, halfY, mode, progress, from, to);
  };
  Solve(field, kNever, op, 0.09);
  int expected = 3;
  for (int iuch : SolvePlainly(field, kNever).trace.iuch) expected += iuch == 1 ? 3 : 2;
  EXPECT_EQ(expected, calls);
}

std::vector<int> SetUpPositions() {
  return {2,  5,  7,  12, 15, 18, 21, 24, 27, 30, 33, 40, 42, 45, 48,
          51, 54, 57, 60, 65, 67, 70, 73, 76, 79, 82, 85, 90, 95, 100};
}

TEST(MemSolve, ReportsItsStages) {
  Random random(11);
  Field const field(16, 16, random, 50.0, 1.0);
  double const limits[] = {0.0, 0.0, 0.0, 2.0};
  for (int plane : {0, 3}) {
    RecordingWindow window;
    COrbImage image;
    image.SetProgressHandle(&window);
    MemConvolve convolve;
    Solve(field, limits, std::ref(convolve), 1.0, 5, 0, &image, plane);
    std::string const method = "最大エントロピー法(ESC：ｷｬﾝｾﾙ) - ";
    if (plane == 0) {
      EXPECT_EQ((std::vector<std::string>{method + "前処理中", method + "処理中 1回目", method + "処理中 2回目"}),
                window.starts);
    } else {
      EXPECT_EQ((std::vector<std::string>{method + "前処理中 プレーン 3", method + "処理中 プレーン 3 (1回目)",
                                          method + "処理中 プレーン 3 (2回目)"}),
                window.starts);
    }
    EXPECT_EQ((std::vector<std::string>{"(null)", "(null)"}), window.ends);
    std::vector<int> expected = SetUpPositions();
    for (int k = 0; k < 2; ++k) {
      for (int v : {0, 5, 10, 25, 28, 31, 34, 37, 40, 43, 50, 55, 70, 75, 95, 100}) expected.push_back(v);
    }
    EXPECT_EQ(expected, window.positions);
  }
}

TEST(MemSolve, EscapeAtAnyPollIsEight) {
  Random random(12);
  Field const field(16, 16, random, 50.0, 1.0);
  double const limits[] = {0.0, 0.0, 0.0, 2.0};
  int const polls = static_cast<int>(SetUpPositions().size()) + 2 * 16;
  for (int poll = 1; poll <= polls; ++poll) {
    RecordingWindow window;
    window.escapeAtPoll = poll;
    COrbImage image;
    image.SetProgressHandle(&window);
    MemConvolve convolve;
    EXPECT_EQ(8, Solve(field, limits, std::ref(convolve), 1.0, 5, 0, &image).code) << poll;
    EXPECT_EQ(poll, window.polls);
    EXPECT_EQ("(null)", window.ends.back());
    EXPECT_EQ(poll <= 30 ? 1u : 2u, window.ends.size());
  }
}

TEST(MemSolve, WritesItsReportOnDemand) {
  Random random(13);
  Field const field(16, 8, random, 50.0, 1.0);
  double const limits[] = {0.0, 0.0, 0.0, 2.0};
  MemConvolve convolve;
  testing::internal::CaptureStdout();
  Solution const run = Solve(field, limits, std::ref(convolve), 1.0, 5, 1);
  std::string const text = testing::internal::GetCapturedStdout();
  EXPECT_EQ(0u, text.find("maximum entropy restoration\n\n"
                          "array dimension                  128\n"
                          "number of data                   128\n"
                          "number of unknowns               128\n"
                          "number of work-arrays              5\n"
                          "factor to o(1)-scale "));
  EXPECT_EQ(text.find("maximum entropy"), text.rfind("maximum entropy"));
  EXPECT_NE(std::string::npos, text.find("\nmain iter                    1     g function "));
  EXPECT_NE(std::string::npos, text.find("\nsub  iter                  2.0     a value    "));
  std::size_t const last = text.find("\nmain iter                    2     g function ");
  ASSERT_NE(std::string::npos, last);
  std::string const lastPart = text.substr(last);
  std::size_t place = 0;
  for (char const* word : {"sub  iter", "a value    ", "sdir iuch", "a limit    ", "rms step  ", "low limit  ",
                           "max step  ", "lagpar     ", "rms res   ", "nsd        "}) {
    place = lastPart.find(word, place);
    EXPECT_NE(std::string::npos, place) << word;
  }
  char nsd[64];
  std::snprintf(nsd, sizeof(nsd), "nsd        %20.12e\n", run.limits[3]);
  EXPECT_NE(std::string::npos, lastPart.find(nsd));
}

TEST(MemSolve, IsSilentWithoutTheReport) {
  Random random(14);
  Field const field(8, 8, random, 50.0, 1.0);
  testing::internal::CaptureStdout();
  Solve(field, kNever);
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

// Statistics that are no numbers do not cut a given number of iterations short.
TEST(MemSolve, DataThatAreNoNumbersTakeAllIterations) {
  Random random(18);
  Field field(16, 8, random, 50.0, 1.0);
  field.y[17] = std::numeric_limits<float>::quiet_NaN();
  MemConvolve convolve;
  int calls = 0;
  auto const counted = [&](float* out, float const* in, float const* kernel, float* store, int nx, int ny, int halfX,
                           int halfY, int* mode, COrbImage* progress, int from, int to) {
    ++calls;
    convolve(out, in, kernel, store, nx, ny, halfX, halfY, mode, progress, from, to);
  };
  double const three[] = {0.5, 1.0, 0.05, 3.0};
  Solve(field, three, counted, 1.0);
  EXPECT_EQ(3 + 3 * 2, calls);  // in the setup, and along and across in each iteration
}

// Whatever comes of them, the search ends.
TEST(MemSolve, DataThatAreNoNumbersOrSumToNothingEndTheSearch) {
  Random random(15);
  for (float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), -1e30f}) {
    Field field(16, 8, random, 50.0, 1.0);
    field.y[17] = bad;
    double const open[] = {0.5, 1.0, 0.05, 0.0};
    int const code = Solve(field, open).code;
    EXPECT_TRUE(code == 0 || code == 5 || code == 6 || code == 56) << code;
  }
  Field empty(16, 8, random, 0.0, 1.0);
  empty.y.assign(empty.Count(), 0.0f);
  double const open[] = {0.5, 1.0, 0.05, 0.0};
  EXPECT_NE(8, Solve(empty, open).code);
}

}  // namespace
}  // namespace orb::test
