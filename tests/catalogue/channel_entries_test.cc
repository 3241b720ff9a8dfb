// The entries that join channels and take them apart: that every value reaches its argument.
#include <hosts/catalogue/band_runner.h>
#include <tests/catalogue/trial.h>
#include <tests/reference/channel_reference.h>
#include <tests/reference/mosaic_reference.h>
#include <tests/support/recording_window.h>

namespace orb::test {
namespace {

using host::CheckInvocation;
using host::Invocation;
using host::OperatorEntry;

void Set(OperatorEntry const& entry, Invocation& call, std::string const& name, double value) {
  call.values.at(static_cast<std::size_t>(entry.Find(name))) = value;
}

TEST(MosaicEntry, HandsItsValuesOn) {
  OperatorEntry const& entry = *host::FindOperator("mosaic");
  Random random(81);
  for (int const planes : {1, 3}) {
    COrbImage first = RandomImage(random, 14, 9, planes);
    COrbImage second = RandomImage(random, 12, 8, planes);
    second.SetStdCtr(6, 4);
    for (int mode = 0; mode < 5; ++mode) {
      for (int const flags : {0, 1, 2}) {
        COrbImage canvas = RandomImage(random, 24, 15, planes);
        for (int p = 0; p < planes; ++p) canvas.CImage::SetLevel(p, 0.0, 20000.0);  // so that keys match
        COrbImage expected(canvas);
        reference::MosaicArguments c{3, 2, 4.5, -1.25, 7.0, mode, {50, 80, 110}, 33.5f, flags == 1, flags == 2};
        reference::Mosaic(expected, first, second, c, nullptr);
        Invocation call{&canvas, &first, &second, entry.Defaults(), nullptr, 0};
        for (auto const& [name, value] : std::vector<std::pair<std::string, double>>{{"x", 3},
                                                                                     {"y", 2},
                                                                                     {"dx", 4.5},
                                                                                     {"dy", -1.25},
                                                                                     {"angle", 7},
                                                                                     {"mode", mode},
                                                                                     {"key-red", 50},
                                                                                     {"key-green", 80},
                                                                                     {"key-blue", 110},
                                                                                     {"outside", 33.5},
                                                                                     {"levels", c.to256},
                                                                                     {"average", c.average}}) {
          Set(entry, call, name, value);
        }
        EXPECT_EQ("", CheckInvocation(entry, call));
        entry.run(call);
        EXPECT_TRUE(SameBits(expected, canvas)) << mode << ' ' << flags;
      }
    }
  }
}

class ComposeEntries : public testing::Test {
 protected:
  Invocation Sound() {
    Invocation call;
    call.image = &image;
    call.frames = {{&frames[0], {0.0, 0.0, 0.0}}, {&frames[1], {1.5, -2.0, 10.0}}, {&frames[2], {-0.5, 0.25, 0.0}}};
    return call;
  }
  reference::Exposure ExposureOf(std::size_t i) {
    host::PlacedFrame const frame = Sound().frames[i];
    return {frame.image, frame.values[0], frame.values[1], frame.values[2]};
  }

  Random random{82};
  COrbImage image = RandomImage(random, 20, 10, 3);
  COrbImage frames[3] = {RandomImage(random, 20, 10, 1), RandomImage(random, 31, 8, 3), RandomImage(random, 21, 9, 1)};
};

TEST_F(ComposeEntries, RgbHandsItsValuesOn) {
  OperatorEntry const& entry = *host::FindOperator("compose-rgb");
  int const flags[4][3] = {{1, 1, 1}, {0, 1, 0}, {0, 0, 1}, {0, 1, 1}};
  for (int planes = 0; planes < 4; ++planes) {
    COrbImage expected(image);
    Invocation call = Sound();
    call.values = entry.Defaults();
    Set(entry, call, "outside", -77);
    Set(entry, call, "planes", planes);
    reference::RgbComposite(expected, ExposureOf(0), ExposureOf(1), ExposureOf(2), nullptr, -77, flags[planes]);
    EXPECT_EQ("", CheckInvocation(entry, call));
    entry.run(call);
    EXPECT_TRUE(SameBits(expected, image)) << planes;
    EXPECT_TRUE(SameLevels(expected, image));
    FillRandom(image, random);
  }
}

TEST_F(ComposeEntries, CmyHandsItsValuesOn) {
  OperatorEntry const& entry = *host::FindOperator("compose-cmy");
  COrbImage expected(image);
  reference::CmyComposite(expected, ExposureOf(0), ExposureOf(1), ExposureOf(2), nullptr, 55);
  Invocation call = Sound();
  call.values = {55.0};
  EXPECT_EQ("", CheckInvocation(entry, call));
  entry.run(call);
  EXPECT_TRUE(SameBits(expected, image));
  EXPECT_TRUE(SameLevels(expected, image));
}

// The levels of a band's own image must come back.
TEST_F(ComposeEntries, BandsLeaveTheLevelsOfOneRun) {
  for (char const* name : {"compose-rgb", "compose-cmy"}) {
    OperatorEntry const& entry = *host::FindOperator(name);
    Invocation call = Sound();
    call.values = entry.Defaults();
    COrbImage whole(image);
    call.image = &whole;
    entry.run(call);
    COrbImage bands(image);
    call.image = &bands;
    EXPECT_EQ(1, host::RunInBands(entry, call, 3));
    EXPECT_TRUE(SameLevels(whole, bands));
    EXPECT_FALSE(SameLevels(image, bands));
    EXPECT_TRUE(SameBits(whole, bands));
  }
}

TEST_F(ComposeEntries, NameTheirFrames) {
  OperatorEntry const& entry = *host::FindOperator("compose-cmy");
  Invocation call = Sound();
  call.values = entry.Defaults();
  call.frames[1].image = nullptr;
  EXPECT_EQ("compose-cmy: the magenta frame is missing", CheckInvocation(entry, call));
  call.frames.pop_back();
  EXPECT_EQ("compose-cmy: 2 frames; there must be 3: cyan, magenta, yellow", CheckInvocation(entry, call));
  call = Sound();
  call.values = entry.Defaults();
  call.frames[2].values[0] = 1e9;
  EXPECT_EQ("compose-cmy: the yellow frame: dx is 1000000000; it must be a number from -1000000 to 1000000 pixels",
            CheckInvocation(entry, call));
  call = Sound();
  call.values = entry.Defaults();
  call.frames[0].image = &image;
  EXPECT_EQ("compose-cmy: the cyan frame must be another image than the result", CheckInvocation(entry, call));
}

TEST_F(ComposeEntries, NeedAColourImage) {
  for (char const* name : {"compose-rgb", "compose-cmy"}) {
    OperatorEntry const& entry = *host::FindOperator(name);
    COrbImage mono = RandomImage(random, 20, 10, 1);
    Invocation call = Sound();
    call.values = entry.Defaults();
    call.image = &mono;
    EXPECT_EQ(std::string(name) + ": the image has 1 plane; it must have 3", CheckInvocation(entry, call));
  }
}

TEST(SeparateEntries, HandTheirChannelOn) {
  Random random(83);
  for (bool const isSum : {false, true}) {
    OperatorEntry const& entry = *host::FindOperator(isSum ? "separate-sum" : "separate");
    for (int channel = 0; channel < 6; ++channel) {
      COrbImage source = RandomImage(random, 9, 4, 3);
      COrbImage image = RandomImage(random, 9, 4, 1);
      COrbImage expected(image);
      reference::Separation(expected, source, channel, isSum);
      Invocation call{&image, &source, nullptr, {static_cast<double>(channel)}, nullptr, 0};
      EXPECT_EQ("", CheckInvocation(entry, call));
      entry.run(call);
      EXPECT_TRUE(SameBits(expected, image)) << channel;
      EXPECT_TRUE(SameLevels(expected, image)) << channel;
    }
  }
}

TEST(SeparateEntries, NameWhatIsWrong) {
  Random random(84);
  OperatorEntry const& entry = *host::FindOperator("separate");
  COrbImage mono = RandomImage(random, 9, 4, 1);
  COrbImage other = RandomImage(random, 9, 4, 1);
  COrbImage colour = RandomImage(random, 9, 4, 3);
  EXPECT_EQ("separate: the source has 1 plane; it must have 3",
            CheckInvocation(entry, Invocation{&mono, &other, nullptr, {0.0}, nullptr, 0}));
  EXPECT_EQ("separate: the image has 3 planes; it must have 1",
            CheckInvocation(entry, Invocation{&colour, &colour, nullptr, {0.0}, nullptr, 0}));
  COrbImage wide = RandomImage(random, 10, 4, 3);
  EXPECT_EQ("separate: the source is 10 x 4 x 3 planes, the image 9 x 4; both must have the same size",
            CheckInvocation(entry, Invocation{&mono, &wide, nullptr, {0.0}, nullptr, 0}));
}

}  // namespace
}  // namespace orb::test
