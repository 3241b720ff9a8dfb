// COrbImage as an object: what a new image holds, what copies carry and what stays.
#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

void ExpectPoint(CfPoint const& point, double fx, double fy) {
  EXPECT_EQ(fx, point.fx);
  EXPECT_EQ(fy, point.fy);
  EXPECT_EQ(static_cast<int>(fx), point.x);
  EXPECT_EQ(static_cast<int>(fy), point.y);
}

void ExpectFresh(COrbImage& image, HWND window) {
  EXPECT_EQ(window, OrbTestAccess::ProgressWindowOf(image));
  ExpectPoint(image.GetStdPt(0), -1.0, -1.0);
  ExpectPoint(image.GetStdPt(1), -1.0, -1.0);
  ExpectPoint(image.GetStdCtr(), -1.0, -1.0);
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(0.0, image.GetMinPixel(p));
    EXPECT_EQ(0.0, image.GetMaxPixel(p));
  }
  CRect selection;
  EXPECT_EQ(0, image.GetSelection(&selection));
}

// An image whose every piece of state is set.
void Mark(COrbImage& image, int seed, HWND window) {
  image.SetProgressHandle(window);
  image.SetStdPt(0, CfPoint(seed + 0.5, seed + 1.5));
  image.SetStdPt(1, CfPoint(seed + 2, seed + 3));
  image.SetStdCtr(seed + 4.25, seed + 5.75);
  CRect selection(seed, seed, seed + 2, seed + 2);
  image.SetSelection(&selection);
  for (int p = 0; p < 3; ++p) OrbTestAccess::SetExtrema(image, p, seed - p, seed + p);
}

void ExpectCarried(COrbImage& image, int seed, HWND window) {
  EXPECT_EQ(window, OrbTestAccess::ProgressWindowOf(image));
  ExpectPoint(image.GetStdPt(0), seed + 0.5, seed + 1.5);
  ExpectPoint(image.GetStdPt(1), seed + 2, seed + 3);
  ExpectPoint(image.GetStdCtr(), seed + 4.25, seed + 5.75);
}

void ExpectOwn(COrbImage& image, int seed) {
  CRect selection;
  ASSERT_EQ(1, image.GetSelection(&selection));
  EXPECT_EQ(seed, selection.left);
  EXPECT_EQ(seed + 2, selection.bottom);
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(seed - p, image.GetMinPixel(p));
    EXPECT_EQ(seed + p, image.GetMaxPixel(p));
  }
}

TEST(Image, NewImageTakesTheThreadsMainWindow) {
  RecordingWindow window;
  COrbImage before;
  ExpectFresh(before, nullptr);
  SetMainWindow(&window);
  COrbImage empty;
  COrbImage sized(-32, 3, 2, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetMainWindow(nullptr);
  ExpectFresh(empty, &window);
  ExpectFresh(sized, &window);
  EXPECT_TRUE(window.IsSilent());
}

TEST(Image, SizedImageHasItsShapeAndUsableLevels) {
  COrbImage image(-32, 5, 4, 3, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_EQ(-32, image.GetBitsPixel());
  EXPECT_EQ(5, image.GetWidth());
  EXPECT_EQ(4, image.GetHeight());
  EXPECT_EQ(3, image.GetPlanes());
  EXPECT_EQ(3, image.GetDimension());
  EXPECT_EQ(1.0, image.GetBscale());
  EXPECT_EQ(0.0, image.GetBzero());
  EXPECT_EQ(1, image.IsSigned());
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(0.0, image.GetLevelMin(p));
    EXPECT_EQ(255.0, image.GetLevelMax(p));
    EXPECT_EQ(255.0, image.GetLevelRange(p));
  }
}

TEST(Image, PlanesDecideTheDimension) {
  COrbImage image;
  image.SetPlanes(1);
  EXPECT_EQ(2, image.GetDimension());
  EXPECT_EQ(0, image.IsColor());
  image.SetPlanes(2);
  EXPECT_EQ(3, image.GetDimension());
  EXPECT_EQ(1, image.IsColor());
  image.SetPlanes(3);
  EXPECT_EQ(3, image.GetDimension());
  image.SetPlanes(0);
  EXPECT_EQ(2, image.GetDimension());
}

TEST(Image, BytesFollowTheFormat) {
  COrbImage image;
  image.SetWidth(10);
  image.SetHeight(7);
  image.SetPlanes(3);
  EXPECT_EQ(210, image.GetPixelCount());
  struct Case {
    int bits;
    std::size_t bytes;
  };
  float samples[4] = {};
  for (Case c : {Case{-32, 4}, {-64, 8}, {8, 1}, {16, 2}, {32, 4}}) {
    image.SetBitsPixel(c.bits);
    EXPECT_EQ(static_cast<int>(c.bytes), image.GetBytesPixel());
    EXPECT_EQ(210u * c.bytes, image.GetImageSize());
    auto* const middle = reinterpret_cast<unsigned char*>(samples) + 8;
    EXPECT_EQ(middle + c.bytes, image.GetNextAdr(middle));
    EXPECT_EQ(middle - c.bytes, image.GetPrevAdr(middle));
  }
}

TEST(Image, CountsBeyondTwoGigabytesAreExact) {
  COrbImage image;
  image.SetWidth(100000);
  image.SetHeight(100000);
  image.SetPlanes(3);
  EXPECT_EQ(30000000000, image.GetPixelCount());
  EXPECT_EQ(120000000000u, image.GetImageSize());
}

TEST(Image, AddressesWalkRowsAndPlanes) {
  COrbImage image(-32, 5, 4, 3, 1.0, 0.0, 1, nullptr, nullptr);
  float* const first = image.GetImageAdr(0, 0, 0, 0, nullptr);
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 5; ++x) {
        EXPECT_EQ(first + (4 * p + y) * 5 + x, image.GetImageAdr(x, y, p, 1, nullptr));
        EXPECT_EQ(first + (4 * p + y) * 5 + x, image.GetImageAdr(x, y, p, 0, nullptr));
      }
    }
  }
}

TEST(Image, CopyConstructionCarriesSamplesWindowAndPoints) {
  Random random(11);
  RecordingWindow window;
  COrbImage src = RandomImage(random, 6, 5, 3);
  Mark(src, 20, &window);
  COrbImage copy(src);
  EXPECT_TRUE(SameBits(src, copy));
  EXPECT_TRUE(SameLevels(src, copy));
  ExpectCarried(copy, 20, &window);
  CRect selection;
  EXPECT_EQ(0, copy.GetSelection(&selection));
  copy.SetPixelGrayRaw(0, 0, 1e9f, 0);
  EXPECT_NE(1e9f, src.GetPixelGrayRaw(0, 0, 0));
}

TEST(Image, CopyImageAndAssignmentLeaveExtremaAndSelection) {
  Random random(12);
  RecordingWindow window;
  COrbImage src = RandomImage(random, 6, 5, 3);
  Mark(src, 20, &window);
  COrbImage byCall = RandomImage(random, 2, 9, 1);
  Mark(byCall, 70, nullptr);
  EXPECT_EQ(&byCall, &byCall.CopyImage(src, nullptr, nullptr));
  COrbImage byAssignment;
  Mark(byAssignment, 70, nullptr);
  EXPECT_EQ(&byAssignment, &(byAssignment = src));
  for (COrbImage* copy : {&byCall, &byAssignment}) {
    EXPECT_TRUE(SameBits(src, *copy));
    EXPECT_TRUE(SameLevels(src, *copy));
    ExpectCarried(*copy, 20, &window);
    ExpectOwn(*copy, 70);
  }
}

TEST(Image, SelfAssignmentKeepsEverything) {
  Random random(13);
  COrbImage image = RandomImage(random, 6, 5, 3);
  Mark(image, 20, nullptr);
  COrbImage const before(image);
  COrbImage& alias = image;
  image = alias;
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
  ExpectCarried(image, 20, nullptr);
  ExpectOwn(image, 20);
}

TEST(Image, CreateTakesShapeWindowAndPoints) {
  Random random(14);
  RecordingWindow window;
  COrbImage src = RandomImage(random, 6, 5, 3);
  Mark(src, 20, &window);
  COrbImage made = RandomImage(random, 2, 9, 1);
  Mark(made, 70, nullptr);
  EXPECT_NE(0, made.Create(src, nullptr, nullptr));
  EXPECT_EQ(6, made.GetWidth());
  EXPECT_EQ(5, made.GetHeight());
  EXPECT_EQ(3, made.GetPlanes());
  EXPECT_EQ(-32, made.GetBitsPixel());
  ExpectCarried(made, 20, &window);
  ExpectOwn(made, 70);
  for (int p = 0; p < 3; ++p) EXPECT_NE(0.0, made.GetLevelRange(p));
}

TEST(Image, SwapExchangesAllButExtremaAndSelection) {
  Random random(15);
  RecordingWindow window;
  COrbImage a = RandomImage(random, 6, 5, 3);
  COrbImage b = RandomImage(random, 2, 9, 1);
  Mark(a, 20, &window);
  Mark(b, 70, nullptr);
  COrbImage const oldA(a);
  COrbImage const oldB(b);
  a.Swap(&b);
  EXPECT_TRUE(SameBits(oldB, a));
  EXPECT_TRUE(SameLevels(oldB, a));
  EXPECT_TRUE(SameBits(oldA, b));
  EXPECT_TRUE(SameLevels(oldA, b));
  ExpectCarried(a, 70, nullptr);
  ExpectCarried(b, 20, &window);
  ExpectOwn(a, 20);
  ExpectOwn(b, 70);
}

TEST(Image, SwapWithItselfChangesNothing) {
  Random random(16);
  COrbImage image = RandomImage(random, 6, 5, 3);
  Mark(image, 20, nullptr);
  COrbImage const before(image);
  image.Swap(&image);
  EXPECT_TRUE(SameBits(before, image));
  ExpectCarried(image, 20, nullptr);
}

TEST(Image, InitMayBeCalledAgainAndLeavesTheSamples) {
  Random random(17);
  RecordingWindow window;
  COrbImage image = RandomImage(random, 6, 5, 3);
  COrbImage const before(image);
  Mark(image, 20, nullptr);
  SetMainWindow(&window);
  image.Init();
  SetMainWindow(nullptr);
  ExpectFresh(image, &window);
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
}

TEST(Image, OperatorsAreImages) {
  Random random(18);
  COrbImage src = RandomImage(random, 6, 5, 1);
  CImgInvert first;
  first.CopyImage(src, nullptr, nullptr);
  Mark(first, 20, nullptr);
  CImgInvert second(first);
  EXPECT_TRUE(SameBits(src, second));
  ExpectCarried(second, 20, nullptr);
  CImgInvert third;
  EXPECT_EQ(&third, &(third = second));
  EXPECT_TRUE(SameBits(src, third));
  ExpectCarried(third, 20, nullptr);
}

TEST(Image, RecordsKeepTheirTexts) {
  COrbImage image;
  {
    std::string text = "M31.fits";
    image.SetOrgFileName(text.c_str());
    text = "overwritten";
  }
  image.SetOrgFileFormat("FITS");
  image.SetOrgBitsPixel(16);
  image.SetOrgPlanes(3);
  image.SetCameraMaker("maker");
  image.SetCameraModel("model");
  image.SetExposureShutterSpeed("1/60");
  image.SetExposureFNumber("2.8");
  image.SetOwnLevel(1);
  image.SetSaveableFormat(1);
  image.SetSaveableFile(1);
  image.SetBscale(2.5);
  image.SetBzero(-3.0);
  image.SetSigned(0);
  COrbImage const copy(image);
  EXPECT_STREQ("M31.fits", copy.GetOrgFileName());
  EXPECT_STREQ("FITS", copy.GetOrgFileFormat());
  EXPECT_EQ(16, copy.GetOrgBitsPixel());
  EXPECT_EQ(3, copy.GetOrgPlanes());
  EXPECT_STREQ("maker", copy.GetCameraMaker());
  EXPECT_STREQ("model", copy.GetCameraModel());
  EXPECT_STREQ("1/60", copy.GetExposureShutterSpeed());
  EXPECT_STREQ("2.8", copy.GetExposureFNumber());
  EXPECT_EQ(1, copy.HasOwnLevel());
  EXPECT_EQ(1, copy.IsSaveableFormat());
  EXPECT_EQ(1, copy.IsSaveableFile());
  EXPECT_EQ(2.5, copy.GetBscale());
  EXPECT_EQ(-3.0, copy.GetBzero());
  EXPECT_EQ(0, copy.IsSigned());
}

TEST(Image, NewRecordsAreEmpty) {
  COrbImage const image;
  EXPECT_STREQ("", image.GetOrgFileName());
  EXPECT_STREQ("", image.GetCameraMaker());
  EXPECT_EQ(0, image.HasOwnLevel());
}

TEST(Image, EmptyImagesCopyAndSwap) {
  COrbImage empty;
  COrbImage copy(empty);
  EXPECT_EQ(0, copy.GetPixelCount());
  COrbImage full(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  full.CopyImage(empty, nullptr, nullptr);
  EXPECT_EQ(0, full.GetWidth());
  COrbImage other(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  other.Swap(&empty);
  EXPECT_EQ(2, empty.GetWidth());
  EXPECT_EQ(0, other.GetWidth());
}

TEST(VmRecords, BlocksStartUnassigned) {
  CVmBlock const block;
  EXPECT_EQ(0, block.type);
  EXPECT_EQ(-1, block.slotIndex);
}

TEST(VmRecords, HandleCountsAndKeepsItsBlocks) {
  CVmHandle handle(3);
  EXPECT_EQ(3, handle.GetBlockCount());
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(0, handle.GetType(i));
    EXPECT_EQ(-1, handle.GetSlotIndex(i));
  }
  handle.Set(1, 7, 42);
  EXPECT_EQ(7, handle.GetType(1));
  EXPECT_EQ(42, handle.GetSlotIndex(1));
  EXPECT_EQ(-1, handle.GetSlotIndex(2));
  EXPECT_EQ(0, CVmHandle(0).GetBlockCount());
}

TEST(VmRecords, HandleThatCannotBeMadeIsLackOfMemory) { EXPECT_THROW(CVmHandle(-1), std::bad_alloc); }

TEST(VmRecords, MemoryRecordStartsUnassigned) {
  CVmMemory const memory;
  int const expected[8] = {0, -1, -1, 0, -1, -1, 0, 0};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(expected[i], memory.fields[i]) << i;
}

}  // namespace
}  // namespace orb::test
