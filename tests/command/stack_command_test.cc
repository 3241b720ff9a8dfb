// orbimg stack against the library's operators on whole frames.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/output_check.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::AlignedFrame;
using host::AlignmentList;
using host::Exit;
using host::FrameTransform;

// Frames in files, with an alignment of shifts and turns.
class StackTest : public testing::Test {
 protected:
  void MakeFrames(int count, int planes, bool turned) {
    Random random(11);
    std::uniform_real_distribution<double> shift(-6.0, 6.0);
    std::uniform_real_distribution<double> angle(-3.0, 3.0);
    for (int i = 0; i < count; ++i) {
      images.emplace_back(-32, kWidth, kHeight, planes, 1.0, 0.0, 1, nullptr, nullptr);
      FillRandom(images.back(), random, 10.0, 400.0);
      AlignedFrame frame;
      frame.file = folder / ("f" + std::to_string(i) + ".fits");
      if (i > 0) {
        frame.transform = FrameTransform{shift(random), shift(random), turned ? angle(random) : 0.0, 20.5, 31.0};
        images.back().SetStdCtr(20.5, 31.0);
      }
      host::FitsHeader header;
      header.SetNumber("EXPTIME", 10.0 + i, "");
      header.SetText("OBJECT", "M 13", "");
      header.SetNumber("CBLACK", 5.0 + i, "");
      header.SetNumber("CWHITE", 300.0 + 10.0 * i, "");
      WriteFrame(frame.file, images.back(), header);
      list.frames.push_back(frame);
    }
    list.reference = list.frames.front().file;
    host::WriteTextFile(folder / "a.json", host::FormatAlignment(list, folder / "a.json"), host::Existing::kKeep);
  }

  host::Frame Stack(std::vector<std::string> const& more) {
    std::vector<std::string> arguments{"stack", folder / "a.json", "-f", "-o", folder / "s.fits"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_TRUE(Succeeds(RunQuietly(arguments)));
    return ReadFrame(folder / "s.fits");
  }

  COrbImage ExpectedMedian() {
    COrbImage result(-32, kWidth, kHeight, images[0].GetPlanes(), 1.0, 0.0, 1, nullptr, nullptr);
    {
      CImgMedianComposit composite(&result);
      for (int y = 0; y < kHeight; ++y) {
        for (std::size_t i = 0; i < images.size(); ++i) {
          FrameTransform const& t = list.frames[i].transform;
          composite.Store(&images[i], y, t.dx, t.dy, t.angle);
        }
        composite.Calc();
      }
    }
    return result;
  }

  // Frame after frame with whole images, out of place.
  COrbImage ExpectedFold(int mode, double ratio, int clamp, double threshold, int radius) {
    COrbImage soFar(images[0]);
    for (std::size_t i = 1; i < images.size(); ++i) {
      FrameTransform const& t = list.frames[i].transform;
      CImgComposit next;
      next.CopyImage(soFar, nullptr, nullptr);
      soFar.CalcMinMax();
      images[i].CalcMinMax();
      next.Do(&soFar, &images[i], t.dx, t.dy, t.angle, mode, ratio, 0, clamp, threshold, radius, nullptr, 0, -1);
      soFar.CopyImage(next, nullptr, nullptr);
    }
    return soFar;
  }

  static constexpr int kWidth = 41;
  static constexpr int kHeight = 67;
  ScratchFolder folder;
  std::vector<COrbImage> images;
  AlignmentList list;
};

TEST_F(StackTest, MedianEqualsTheOperatorOnWholeFrames) {
  MakeFrames(5, 1, true);
  EXPECT_TRUE(SameBits(ExpectedMedian(), Stack({}).image));
}

TEST_F(StackTest, MedianOfColourFrames) {
  MakeFrames(4, 3, true);
  EXPECT_TRUE(SameBits(ExpectedMedian(), Stack({"--mode", "median"}).image));
}

TEST_F(StackTest, BandsAndThreadsDoNotChangeABit) {
  MakeFrames(6, 1, true);
  COrbImage const expected = ExpectedMedian();
  for (char const* memory : {"80K", "120K", "1M"}) {
    for (char const* threads : {"1", "3"}) {
      EXPECT_TRUE(SameBits(expected, Stack({"--memory", memory, "--threads", threads}).image)) << memory << threads;
    }
  }
  COrbImage const average = Stack({"--mode", "average", "--threads", "1"}).image;
  EXPECT_TRUE(SameBits(average, Stack({"--mode", "average", "--memory", "140K", "--threads", "5"}).image));
}

TEST_F(StackTest, TooLittleMemoryIsSaidBeforeAnything) {
  MakeFrames(3, 1, false);
  CommandResult const result =
      RunQuietly({"stack", folder / "a.json", "-o", folder / "s.fits", "--memory", "1K", "--threads", "1"});
  EXPECT_TRUE(FailsInOneLine(result, Exit::kResources, {"--memory", "give at least"}));
  EXPECT_EQ(folder.Names().size(), 4u);
}

TEST_F(StackTest, EveryPairwiseModeFoldsAsTheOperatorDoes) {
  MakeFrames(4, 1, true);
  struct Case {
    char const* name;
    int mode;
    double ratio;
  };
  for (Case const& c : {Case{"add", 1, 0.5}, Case{"weighted", 2, 0.5}, Case{"subtract", 3, 0.5},
                        Case{"multiply", 4, 0.5}, Case{"divide", 5, 0.5}, Case{"difference", 6, 0.5},
                        Case{"maximum", 7, 0.5}, Case{"minimum", 8, 0.5}, Case{"rejection", 9, 1.0}}) {
    EXPECT_TRUE(SameBits(ExpectedFold(c.mode, c.ratio, 0, 0.95, 0), Stack({"--mode", c.name}).image)) << c.name;
  }
}

TEST_F(StackTest, ArgumentsReachTheOperator) {
  MakeFrames(3, 1, false);
  EXPECT_TRUE(SameBits(ExpectedFold(2, 0.25, 0, 0.95, 0), Stack({"--mode", "weighted", "--ratio", "0.25"}).image));
  EXPECT_TRUE(SameBits(ExpectedFold(3, 0.5, 1, 0.95, 0), Stack({"--mode", "subtract", "--clamp"}).image));
  EXPECT_TRUE(SameBits(ExpectedFold(9, 0.9, 0, 0.5, 2),
                       Stack({"--mode", "rejection", "--ratio", "0.9", "--threshold", "0.5", "--radius", "2"}).image));
}

TEST_F(StackTest, RejectionOfColourFramesWithAWindow) {
  MakeFrames(3, 3, true);
  EXPECT_TRUE(SameBits(ExpectedFold(9, 1.0, 0, 0.6, 1),
                       Stack({"--mode", "rejection", "--threshold", "0.6", "--radius", "1"}).image));
}

TEST_F(StackTest, RejectionWithAWindowSaysWhatMemoryItNeeds) {
  MakeFrames(2, 1, false);
  CommandResult const result = RunQuietly(
      {"stack", folder / "a.json", "-o", folder / "s.fits", "--mode", "rejection", "--radius", "1", "--memory", "20K"});
  EXPECT_TRUE(FailsInOneLine(result, Exit::kResources, {"--memory", "3 whole frames", "--radius 0"}));
}

TEST_F(StackTest, Scale256UsesTheLevelsOfEachFrame) {
  MakeFrames(3, 1, false);
  COrbImage soFar(images[0]);
  soFar.SetLevel(0, 5.0, 300.0);
  for (int i = 1; i < 3; ++i) {
    images[static_cast<std::size_t>(i)].SetLevel(0, 5.0 + i, 300.0 + 10.0 * i);
    FrameTransform const& t = list.frames[static_cast<std::size_t>(i)].transform;
    CImgComposit next;
    next.CopyImage(soFar, nullptr, nullptr);
    next.Do(&soFar, &images[static_cast<std::size_t>(i)], t.dx, t.dy, t.angle, 4, 0.5, 1, 0, 0.95, 0, nullptr, 0, -1);
    soFar.CopyImage(next, nullptr, nullptr);
  }
  host::Frame const stack = Stack({"--mode", "multiply", "--scale", "256"});
  EXPECT_TRUE(SameBits(soFar, stack.image));
  EXPECT_EQ(stack.image.GetLevelMin(0), 5.0);
  EXPECT_EQ(stack.image.GetLevelMax(0), 300.0);
}

// The mean of the frames that reach a pixel, each read as the operator reads it.
TEST_F(StackTest, AverageOfManyIsTheTrueMeanUpToTheEdges) {
  MakeFrames(7, 1, true);
  COrbImage const average = Stack({"--mode", "average"}).image;
  bool sawEdge = false;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      double sum = 0.0;
      int count = 0;
      for (std::size_t i = 0; i < images.size(); ++i) {
        FrameTransform const& t = list.frames[i].transform;
        double const a = t.angle * 0.017453292519943295;
        int outside = 0;
        double const v = images[i].GetPixelGrayRaw(x, y, t.dx, t.dy, std::sin(a), std::cos(a), 1.0, 0, 0.0, 0, &outside,
                                                   nullptr, nullptr);
        sum += outside != 0 ? 0.0 : v;
        count += outside != 0 ? 0 : 1;
      }
      sawEdge = sawEdge || count < 7;
      double const mean = sum / count;
      ASSERT_NEAR(*average.GetImageAdr(x, y, 0, 1, nullptr), mean, 7 * 1.2e-7 * mean) << x << ", " << y;
    }
  }
  EXPECT_TRUE(sawEdge);
}

TEST_F(StackTest, AverageOfWholeNumbersIsExact) {
  for (int i = 0; i < 10; ++i)
    WriteConstant(folder / ("c" + std::to_string(i) + ".fits"), 9, 8, 1000.0f + static_cast<float>(i * i));
  ASSERT_TRUE(Succeeds(RunQuietly({"stack", folder / "c*.fits", "--mode", "average", "-o", folder / "s.fits"})));
  host::Frame stack = ReadFrame(folder / "s.fits");
  EXPECT_EQ(stack.image.GetPixelGrayRaw(4, 4, 0), 1028.5f);
}

// Rows as long as pages: whatever is read beyond a band would not be there.
TEST_F(StackTest, WideFramesInThinBands) {
  Random random(4);
  for (char const* name : {"in1.fits", "in2.fits"}) {
    COrbImage image(-32, 5000, 23, 1, 1.0, 0.0, 1, nullptr, nullptr);
    FillRandom(image, random, 10.0, 400.0);
    WriteFrame(folder / name, image);
  }
  for (char const* mode : {"average", "median", "add", "maximum", "rejection"}) {
    std::vector<std::string> arguments{"stack", folder / "in*.fits", "--mode", mode, "-f"};
    std::vector<std::string> thin(arguments);
    thin.insert(thin.end(), {"-o", folder / "thin.fits", "--memory", "2200K", "--threads", "2"});
    arguments.insert(arguments.end(), {"-o", folder / "whole.fits"});
    ASSERT_TRUE(Succeeds(RunQuietly(thin))) << mode;
    ASSERT_TRUE(Succeeds(RunQuietly(arguments))) << mode;
    EXPECT_TRUE(SameBits(ReadFrame(folder / "whole.fits").image, ReadFrame(folder / "thin.fits").image)) << mode;
  }
}

TEST_F(StackTest, EqualSkyTakesOutADifferenceOfBrightness) {
  for (int i = 0; i < 3; ++i) {
    WriteConstant(folder / ("c" + std::to_string(i) + ".fits"), 9, 8, 1000.0f + 100.0f * static_cast<float>(i));
  }
  ASSERT_TRUE(
      Succeeds(RunQuietly({"stack", folder / "c*.fits", "--mode", "maximum", "--equal-sky", "-o", folder / "s.fits"})));
  EXPECT_EQ(ReadFrame(folder / "s.fits").image.GetPixelGrayRaw(4, 4, 0), 1000.0f);
}

TEST_F(StackTest, HeaderSaysHowManyAndHowLong) {
  MakeFrames(4, 1, false);
  host::Frame const median = Stack({"--mode", "median"});
  EXPECT_EQ(median.header.Number("STACKCNT"), 4.0);
  EXPECT_EQ(median.header.Number("EXPTIME"), 11.5);
  EXPECT_EQ(median.header.Number("EXPTOTAL"), 46.0);
  EXPECT_EQ(median.header.Text("OBJECT"), "M 13");
  host::Frame const sum = Stack({"--mode", "add"});
  EXPECT_EQ(sum.header.Number("EXPTIME"), 46.0);
  host::Frame const difference = Stack({"--mode", "subtract"});
  EXPECT_EQ(difference.header.Number("EXPTIME"), 10.0);
}

TEST_F(StackTest, HeaderTellsOperatorAndParameters) {
  MakeFrames(2, 1, false);
  host::Frame const stack = Stack({"--mode", "weighted", "--ratio", "0.25"});
  std::string history;
  for (std::string const& card : stack.header.cards) {
    if (card.starts_with("HISTORY")) history += card;
  }
  EXPECT_NE(history.find("CImgComposit, mode 2 (weighted)"), std::string::npos) << history;
  EXPECT_NE(history.find("ratio 0.25"), std::string::npos) << history;
  EXPECT_NE(history.find("f1.fits dx"), std::string::npos) << history;
}

TEST_F(StackTest, AStackOfStacksCountsAllFrames) {
  MakeFrames(4, 1, false);
  Stack({});
  ASSERT_TRUE(Succeeds(RunQuietly({"stack", folder / "s.fits", folder / "f0.fits", "-o", folder / "t.fits"})));
  EXPECT_EQ(ReadFrame(folder / "t.fits").header.Number("STACKCNT"), 5.0);
}

TEST_F(StackTest, WithoutExposuresNoneIsClaimed) {
  WriteConstant(folder / "a.fits", 5, 5, 1.0f, 60.0);
  WriteConstant(folder / "b.fits", 5, 5, 1.0f);
  ASSERT_TRUE(Succeeds(RunQuietly({"stack", folder / "a.fits", folder / "b.fits", "-o", folder / "s.fits"})));
  host::Frame const stack = ReadFrame(folder / "s.fits");
  EXPECT_FALSE(stack.header.Has("EXPTIME"));
  EXPECT_FALSE(stack.header.Has("EXPTOTAL"));
}

TEST_F(StackTest, SubtractKeepsTheOrderThatWasGiven) {
  WriteConstant(folder / "b.fits", 5, 5, 10.0f);
  WriteConstant(folder / "a.fits", 5, 5, 3.0f);
  ASSERT_TRUE(Succeeds(
      RunQuietly({"stack", folder / "b.fits", folder / "a.fits", "--mode", "subtract", "-o", folder / "s.fits"})));
  EXPECT_EQ(ReadFrame(folder / "s.fits").image.GetPixelGrayRaw(2, 2, 0), 7.0f);
}

TEST_F(StackTest, TheReferenceOfAnAlignmentComesFirst) {
  WriteConstant(folder / "a.fits", 5, 5, 3.0f);
  WriteConstant(folder / "b.fits", 5, 5, 10.0f);
  list.reference = folder / "b.fits";
  list.frames = {AlignedFrame{folder / "a.fits", {}, "all stars", 3, 0.1},
                 AlignedFrame{folder / "b.fits", {}, "reference", 3, std::nullopt}};
  host::WriteTextFile(folder / "a.json", host::FormatAlignment(list, folder / "a.json"), host::Existing::kKeep);
  EXPECT_EQ(Stack({"--mode", "subtract"}).image.GetPixelGrayRaw(2, 2, 0), 7.0f);
}

TEST_F(StackTest, SamplesThatAreNotFiniteAreCountedOnce) {
  COrbImage image(-32, 9, 400, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(9 * 400, 5.0f));
  for (int const y : {0, 5, 6, 7, 399}) image.SetPixelGrayRaw(4, y, NAN, 0);
  WriteFrame(folder / "a.fits", image);
  WriteFrame(folder / "b.fits", image);
  CommandResult const result = RunQuietly({"stack", folder / "a.fits", folder / "b.fits", "--mode", "maximum",
                                           "--memory", "2K", "--threads", "1", "-o", folder / "s.fits"});
  EXPECT_EQ(result.status, Exit::kDone);
  EXPECT_NE(result.err.find("a.fits: 5 samples are not finite"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("b.fits: 5 samples are not finite"), std::string::npos) << result.err;
}

TEST_F(StackTest, PreviewIsAPicture) {
  MakeFrames(3, 1, false);
  Stack({"--preview", folder / "s.png"});
  EXPECT_TRUE(ReadText(folder / "s.png").starts_with("\x89PNG"));
}

}  // namespace
}  // namespace orb::test
