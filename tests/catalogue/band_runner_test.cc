// The band runner: the bits, the levels and the messages of one run, on any number of threads.
#include <set>
#include <stdexcept>

#include <hosts/catalogue/band_runner.h>
#include <tests/catalogue/trial.h>
#include <tests/support/recording_window.h>

namespace orb::test {
namespace {

using host::Bands;
using host::Invocation;
using host::OperatorEntry;
using host::RunInBands;

class BandRunner : public testing::TestWithParam<Way> {
 protected:
  OperatorEntry const& Entry() const { return *GetParam().entry; }

  Random random{29};

  void ExpectTheSameBits(int width, int height, CRect* rect, int threads) {
    Random other(random);
    Trial whole(GetParam(), random, width, height);
    Trial bands(GetParam(), other, width, height);
    if (Entry().takesRectangle) whole.call.rect = bands.call.rect = rect;
    whole.Run();
    EXPECT_EQ(1, RunInBands(Entry(), bands.call, threads));
    SCOPED_TRACE(testing::Message() << threads << ' ' << width << 'x' << height);
    ExpectSameOutcome(whole, bands);
  }
};

TEST_P(BandRunner, WholeEqualsBandsOnAnyNumberOfThreads) {
  for (int threads : {-1, 0, 1, 2, 3, 8}) ExpectTheSameBits(37, 29, nullptr, threads);
}

TEST_P(BandRunner, WholeEqualsBandsInEveryRectangle) {
  for (RectCase& c : RectCases(37, 29)) {
    SCOPED_TRACE(c.name);
    ExpectTheSameBits(37, 29, c.Pointer(), 3);
  }
}

TEST_P(BandRunner, WholeEqualsBandsInEverySize) {
  for (auto const& [width, height] : {std::pair(1, 1), std::pair(1, 3), std::pair(5, 1), std::pair(3, 200)}) {
    ExpectTheSameBits(width, height, nullptr, 3);
  }
}

TEST_P(BandRunner, ReportsAsOneRun) {
  for (int height : {40, 230}) {
    Random other(random);
    Trial whole(GetParam(), random, 20, height);
    Trial bands(GetParam(), other, 20, height);
    CRect rect(2, 3, 19, height - 5);
    if (Entry().takesRectangle) whole.call.rect = bands.call.rect = &rect;
    RecordingWindow expected;
    RecordingWindow actual;
    whole.image.SetProgressHandle(&expected);
    bands.image.SetProgressHandle(&actual);
    whole.call.progress = bands.call.progress = 1;
    whole.Run();
    RunInBands(Entry(), bands.call, 3);
    EXPECT_EQ(expected.starts, actual.starts);
    EXPECT_EQ(expected.positions, actual.positions);
    EXPECT_EQ(expected.polls, actual.polls);
    EXPECT_EQ(expected.ends, actual.ends);
    EXPECT_EQ(expected.texts, actual.texts);
  }
}

TEST_P(BandRunner, SilentWithoutProgressUnlessTheOperatorAlwaysReports) {
  Trial trial(GetParam(), random, 20, 40);
  RecordingWindow window;
  trial.image.SetProgressHandle(&window);
  RunInBands(Entry(), trial.call, 4);
  EXPECT_EQ(!Entry().DoesReport(trial.call), window.IsSilent());
}

class BandRunnerInPlace : public BandRunner {};

TEST_P(BandRunnerInPlace, EqualsOneRun) {
  Random other(random);
  Trial whole(GetParam(), random, 20, 40);
  Trial bands(GetParam(), other, 20, 40);
  whole.call.source = &whole.image;
  bands.call.source = &bands.image;
  whole.Run();
  RunInBands(Entry(), bands.call, 4);
  EXPECT_TRUE(SameBits(whole.image, bands.image));
}

bool HasBands(Way const& way) { return way.entry->bands != Bands::kNone; }

INSTANTIATE_TEST_SUITE_P(EveryOperator, BandRunner, testing::ValuesIn(WaysOf(HasBands)), NameOfWay);
INSTANTIATE_TEST_SUITE_P(EveryOperator, BandRunnerInPlace, testing::ValuesIn(WaysOf([](Way const& way) {
                           return HasBands(way) && way.entry->mayRunInPlace && way.planes == way.sourcePlanes;
                         })),
                         NameOfWay);

TEST(BandRunnerItself, RunsTheOthersAsOne) {
  for (Way const& way : WaysOf([](Way const& each) { return !HasBands(each); })) {
    SCOPED_TRACE(way.name);
    Random random(31);
    Random other(random);
    Trial whole(way, random, 19, 13);
    Trial bands(way, other, 19, 13);
    whole.Run();
    std::srand(1);  // as in Trial::Run
    EXPECT_EQ(1, RunInBands(*way.entry, bands.call, 4));
    ExpectSameOutcome(whole, bands);
  }
}

// An operator of the test's own, to see how the runner works.
OperatorEntry OwnEntry(int (*run)(Invocation const&)) {
  OperatorEntry entry;
  entry.name = "own";
  entry.sourceShape = host::SourceShape::kNone;
  entry.units = entry.ticks = host::Units::kRows;
  entry.message = 6124;
  entry.bands = Bands::kRectangle;
  entry.run = run;
  return entry;
}

thread_local bool isCallingThread = false;

TEST(BandRunnerItself, UsesOtherThreads) {
  isCallingThread = true;
  OperatorEntry const entry = OwnEntry([](Invocation const& call) {
    float const mark = isCallingThread ? 1.0f : 2.0f;
    for (int y = call.rect->top; y < call.rect->bottom; ++y) call.image->SetPixelGrayRaw(0, y, mark, 0);
    call.image->SetPixelGrayRaw(1, call.rect->top, 1.0f, 0);
    return 1;
  });
  COrbImage image(-32, 2, 64, 1, 1.0, 0.0, 1, nullptr, nullptr);
  RunInBands(entry, Invocation{&image, nullptr, nullptr, {}, nullptr, 0}, 4);
  int bands = 0;
  for (int y = 0; y < 64; ++y) {
    EXPECT_EQ(2.0f, image.GetPixelGrayRaw(0, y, 0));
    bands += image.GetPixelGrayRaw(1, y, 0) == 1.0f ? 1 : 0;
  }
  EXPECT_EQ(16, bands);
}

TEST(BandRunnerItself, CarriesExceptionsOver) {
  OperatorEntry const entry = OwnEntry([](Invocation const& call) -> int {
    if (call.rect->top >= 32) throw std::runtime_error("no memory, say");
    return 1;
  });
  RecordingWindow window;
  COrbImage image(-32, 2, 64, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetProgressHandle(&window);
  EXPECT_THROW(RunInBands(entry, Invocation{&image, nullptr, nullptr, {}, nullptr, 1}, 4), std::runtime_error);
  EXPECT_EQ(1u, window.starts.size());
  EXPECT_EQ(1u, window.ends.size());
}

TEST(BandRunnerItself, HandsFailureOn) {
  OperatorEntry const entry = OwnEntry([](Invocation const& call) { return call.rect->top == 0 ? 0 : 1; });
  COrbImage image(-32, 2, 64, 1, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_EQ(0, RunInBands(entry, Invocation{&image, nullptr, nullptr, {}, nullptr, 0}, 4));
}

class ThrowingWindow : public HostWindow {
 public:
  void OnPosition(int) override { throw std::runtime_error("interrupted"); }
};

TEST(BandRunnerItself, WindowsMayThrow) {
  OperatorEntry const& invert = *host::FindOperator("invert");
  Random random(1);
  COrbImage image = RandomImage(random, 50, 300, 3);
  COrbImage source = RandomImage(random, 50, 300, 3);
  ThrowingWindow window;
  image.SetProgressHandle(&window);
  EXPECT_THROW(RunInBands(invert, Invocation{&image, &source, nullptr, {}, nullptr, 1}, 4), std::runtime_error);
}

TEST(BandRunnerItself, BandsOfTheCatalogueAreAsListed) {
  std::set<std::string> names;
  for (OperatorEntry const& entry : host::Catalogue()) {
    if (entry.bands != Bands::kNone) names.insert(entry.name);
  }
  EXPECT_EQ((std::set<std::string>{"background-smooth",
                                   "balance",
                                   "blur-median",
                                   "bright",
                                   "calculate",
                                   "clip",
                                   "compose-cmy",
                                   "compose-lrgb",
                                   "compose-lrgb-mean",
                                   "compose-rgb",
                                   "composite",
                                   "contour",
                                   "curve",
                                   "custom",
                                   "dark",
                                   "digital-development",
                                   "disk-rank",
                                   "false-colour",
                                   "gaussian",
                                   "invert",
                                   "laplacian",
                                   "mean",
                                   "mean-off-edges",
                                   "median",
                                   "mosaic",
                                   "nebula-smooth",
                                   "noise-cut",
                                   "posterise",
                                   "rotational-gradient",
                                   "shape-median",
                                   "shape-rank",
                                   "shape-unsharp",
                                   "sharpen",
                                   "sharpen-edges",
                                   "sky-flat",
                                   "sky-ramp",
                                   "star-enhance",
                                   "star-sharp",
                                   "unsharp"}),
            names);
}

}  // namespace
}  // namespace orb::test
