// The sample store: layout, locks, memory of the caller's, scratch files, images beyond two gigabytes.
#include <signal.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <platform/assert.h>
#include <tests/support/scratch_settings.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

TEST(Store, IsAlignedAndReadableBehindItsEnd) {
  for (int width : {1, 3, 16, 17, 1024}) {
    CVmImage const store(4, width, 3, 2);
    unsigned char* const base = store.GetImageAdr(0, 1, 0, nullptr);
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(base) % 64);
    float const* const end = reinterpret_cast<float const*>(base) + width * 3 * 2;
    EXPECT_EQ(0.0f, *end);
  }
}

TEST(Store, OffsetsAreRowsOfPlanes) {
  CVmImage const store(8, 5, 4, 3);
  unsigned char* const base = store.GetImageAdr(0, 1, 0, nullptr);
  EXPECT_EQ(base + ((4 * 2 + 3) * 5 + 1) * 8, store.GetImageAdr(1, 3, 2, 1, 0, nullptr));
  EXPECT_EQ(base + 77, store.GetImageAdr(77, 0, 0, nullptr));
}

TEST(Store, CopiesSamplesAndNoLocks) {
  CVmImage store(4, 5, 4, 1);
  *store.GetImageAdr(79, 0, 0, nullptr) = 42;
  void* token = nullptr;
  store.GetImageAdr(0, 1, 1, &token);
  CVmImage const copy(store, nullptr, nullptr);
  EXPECT_EQ(42, *copy.GetImageAdr(79, 1, 0, nullptr));
  EXPECT_NE(store.GetImageAdr(0, 1, 0, nullptr), copy.GetImageAdr(0, 1, 0, nullptr));
  EXPECT_EQ(0, copy.GetLockCount());
  EXPECT_EQ(1, store.Unlock(token));
}

TEST(Locks, AreCountedAndReleasedByTheirToken) {
  CVmImage store(4, 5, 4, 1);
  EXPECT_EQ(0, store.GetLockCount());
  void* first = nullptr;
  void* second = nullptr;
  unsigned char* const address = store.GetImageAdr(0, 0, 0, 1, 1, &first);
  EXPECT_EQ(address, store.GetImageAdr(0, 0, 0, 0, 2, &second));
  EXPECT_NE(first, second);
  EXPECT_NE(nullptr, first);
  EXPECT_EQ(2, store.GetLockCount());
  EXPECT_EQ(1, store.Unlock(first));
  EXPECT_EQ(1, store.GetLockCount());
  EXPECT_EQ(1, store.Unlock(second));
  EXPECT_EQ(0, store.GetLockCount());
}

TEST(Locks, WithoutATokenLastUntilUnlockAll) {
  CVmImage store(4, 5, 4, 1);
  void* token = nullptr;
  store.GetImageAdr(0, 0, 0, 1, 1, nullptr);
  store.GetImageAdr(0, 1, 0, 1, 1, nullptr);
  store.GetImageAdr(0, 2, 0, 1, 1, &token);
  EXPECT_EQ(3, store.GetLockCount());
  store.UnlockAll();
  EXPECT_EQ(0, store.GetLockCount());
  store.UnlockAll();
}

TEST(Locks, PlainAddressesTakeNone) {
  CVmImage store(4, 5, 4, 1);
  void* token = &store;
  store.GetImageAdr(0, 0, 0, 0, 0, &token);
  EXPECT_EQ(0, store.GetLockCount());
}

TEST(Locks, ManyAtOnceKeepTheirTokensApart) {
  CVmImage store(4, 5, 4, 1);
  std::vector<void*> tokens(300);
  for (void*& token : tokens) store.GetImageAdr(0, 1, 1, &token);
  EXPECT_EQ(300, store.GetLockCount());
  for (std::size_t i = 0; i < tokens.size(); i += 2) EXPECT_EQ(1, store.Unlock(tokens[i]));
  EXPECT_EQ(150, store.GetLockCount());
  for (std::size_t i = 1; i < tokens.size(); i += 2) EXPECT_EQ(1, store.Unlock(tokens[i]));
  EXPECT_EQ(0, store.GetLockCount());
}

void UnlockTwice() {
  CVmImage store(4, 5, 4, 1);
  void* token = nullptr;
  store.GetImageAdr(0, 1, 1, &token);
  store.Unlock(token);
  store.Unlock(token);
}

void UnlockStranger() {
  CVmImage store(4, 5, 4, 1);
  int stranger = 0;
  store.Unlock(&stranger);
}

TEST(LocksDeathTest, TokenThatIsNotHeldAbortsADebugBuild) {
  if (!kDebugBuild) {
    CVmImage store(4, 5, 4, 1);
    void* token = nullptr;
    store.GetImageAdr(0, 1, 1, &token);
    EXPECT_EQ(1, store.Unlock(token));
    EXPECT_EQ(0, store.Unlock(token));
    EXPECT_EQ(0, store.Unlock(&token));
    EXPECT_EQ(0, store.Unlock(nullptr));
    GTEST_SKIP() << "aborts in debug builds only; this one answers 0";
  }
  EXPECT_DEATH(UnlockTwice(), "");
  EXPECT_DEATH(UnlockStranger(), "");
}

TEST(Locks, LeftAtDestructionAreReportedByADebugBuild) {
  testing::internal::CaptureStderr();
  {
    CVmImage const store(4, 5, 4, 1);
    void* token = nullptr;
    store.GetImageAdr(0, 1, 1, &token);
    store.GetImageAdr(0, 1, 1, nullptr);
  }
  std::string const said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(kDebugBuild, said.find("2 locks left") != std::string::npos) << said;
}

TEST(Locks, ForwardThroughTheImage) {
  COrbImage image(-32, 5, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  void* token = nullptr;
  image.GetImageAdr(0, 0, 0, 3, &token);
  EXPECT_EQ(1, image.Unlock(token));
  image.GetImageAdr(0, 0, 0, 2, nullptr);
  image.UnlockAll();
}

TEST(WrappedSamples, AreReadAndWrittenInPlace) {
  std::vector<float> samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  {
    COrbImage image;
    WrapSamples(image, samples.data(), 3, 2, 2);
    EXPECT_EQ(-32, image.GetBitsPixel());
    EXPECT_EQ(3, image.GetWidth());
    EXPECT_EQ(2, image.GetHeight());
    EXPECT_EQ(2, image.GetPlanes());
    EXPECT_EQ(3, image.GetDimension());
    EXPECT_EQ(255.0, image.GetLevelMax(1));
    EXPECT_EQ(samples.data(), image.GetImageAdr(0, 0, 0, 0, nullptr));
    EXPECT_EQ(12.0f, image.GetPixelGrayRaw(2, 1, 1));
    image.SetPixelGrayRaw(2, 1, 99.0f, 1);
  }
  EXPECT_EQ(99.0f, samples[11]);
}

TEST(WrappedSamples, OperatorsWorkOnThem) {
  std::vector<float> samples = {0, 100, 255};
  CImgInvert image;
  WrapSamples(image, samples.data(), 3, 1, 1);
  image.Do(&image, nullptr, 0);
  EXPECT_EQ(255.0f, samples[0]);
  EXPECT_EQ(0.0f, samples[2]);
}

TEST(WrappedSamples, ReshapingSwitchesToMemoryOfItsOwn) {
  std::vector<float> const original = {1, 2, 3, 4};
  for (int way = 0; way < 4; ++way) {
    std::vector<float> samples = original;
    COrbImage image;
    WrapSamples(image, samples.data(), 2, 2, 1);
    if (way == 0) {
      ASSERT_NE(0, image.ChangeSize(3, 3, nullptr, nullptr));
    }
    if (way == 1) {
      ASSERT_NE(0, image.ChangePlanes(3, nullptr, nullptr));
    }
    if (way == 2) {
      ASSERT_NE(0, image.ChangeBits(-64, 1, 1, nullptr, nullptr));
    }
    if (way == 3) image.CopyImage(COrbImage(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
    auto const* const now = image.CImage::GetImageAdr(0, 0, 0, 0, nullptr);
    EXPECT_NE(reinterpret_cast<unsigned char const*>(samples.data()), now) << way;
    image.CImage::GetImageAdr(0, 0, 0, 0, nullptr)[0] = 0xff;
    EXPECT_EQ(original, samples) << way;
  }
}

TEST(WrappedSamples, CopiesOwnTheirMemory) {
  std::vector<float> samples = {1, 2, 3, 4};
  COrbImage image;
  WrapSamples(image, samples.data(), 2, 2, 1);
  COrbImage copy(image);
  copy.SetPixelGrayRaw(0, 0, 9.0f, 0);
  EXPECT_EQ(1.0f, samples[0]);
}

// Whether an address lies in a mapped file that is deleted already.
bool IsUnlinkedFile(void const* address) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    if (std::sscanf(line.c_str(), "%zx-%zx", &begin, &end) != 2) continue;
    auto const at = reinterpret_cast<std::uintptr_t>(address);
    if (begin <= at && at < end) return line.find('/') != std::string::npos && line.ends_with("(deleted)");
  }
  return false;
}

TEST(ScratchFile, IsNeverTheDefault) {
  COrbImage image(-32, 100, 100, 1, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_FALSE(IsUnlinkedFile(image.GetImageAdr(0, 0, 0, 1, nullptr)));
}

TEST(ScratchFile, HoldsStoresAboveTheLimitOnly) {
  ScratchSettings const settings(4000, nullptr);
  COrbImage small(-32, 10, 100, 1, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage large(-32, 10, 101, 1, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_FALSE(IsUnlinkedFile(small.GetImageAdr(0, 0, 0, 1, nullptr)));
  EXPECT_TRUE(IsUnlinkedFile(large.GetImageAdr(0, 0, 0, 1, nullptr)));
  EXPECT_EQ(0.0f, large.GetPixelGrayRaw(9, 100, 0));
  EXPECT_EQ(0.0f, large.GetImageAdr(9, 100, 0, 1, nullptr)[1]);
}

// A file that ends exactly with a page still has a readable sample behind it.
TEST(ScratchFile, IsReadableBehindAFullPage) {
  ScratchSettings const settings(0, nullptr);
  COrbImage image(-32, 1024, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  EXPECT_TRUE(IsUnlinkedFile(image.GetImageAdr(0, 0, 0, 1, nullptr)));
  EXPECT_EQ(0.0f, image.GetImageAdr(1023, 3, 0, 1, nullptr)[1]);
}

TEST(ScratchFile, WorksLikeMemory) {
  Random random(71);
  COrbImage src = RandomImage(random, 40, 30, 3);
  CImgInvert expected;
  expected.CopyImage(src, nullptr, nullptr);
  expected.Do(&src, nullptr, 0);
  std::string const folder = testing::TempDir();
  ScratchSettings const settings(1000, folder.c_str());
  CImgInvert image;
  image.CopyImage(src, nullptr, nullptr);
  ASSERT_TRUE(IsUnlinkedFile(image.GetImageAdr(0, 0, 0, 1, nullptr)));
  image.Do(&image, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, image));
  ASSERT_NE(0, image.ChangePlanes(1, nullptr, nullptr));
  ASSERT_NE(0, image.ChangeSize(60, 60, nullptr, nullptr));
  EXPECT_TRUE(IsUnlinkedFile(image.GetImageAdr(0, 0, 0, 1, nullptr)));
}

TEST(ScratchFile, MissingFolderIsLackOfMemory) {
  Random random(72);
  COrbImage image = RandomImage(random, 10, 10, 1);
  COrbImage const before(image);
  ScratchSettings const settings(1000, "/no/such/folder");
  EXPECT_THROW(COrbImage(-32, 100, 100, 1, 1.0, 0.0, 1, nullptr, nullptr), std::bad_alloc);
  EXPECT_EQ(0, image.ChangeSize(100, 100, nullptr, nullptr));
  EXPECT_TRUE(SameBits(before, image));
}

// A limit on the size of files stands for a full disk.
TEST(ScratchFile, FullFolderIsLackOfMemory) {
  rlimit before{};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &before));
  auto const oldHandler = signal(SIGXFSZ, SIG_IGN);
  rlimit small = before;
  small.rlim_cur = 8192;
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
  {
    ScratchSettings const settings(1000, nullptr);
    EXPECT_THROW(COrbImage(-32, 1000, 1000, 1, 1.0, 0.0, 1, nullptr, nullptr), std::bad_alloc);
  }
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &before));
  signal(SIGXFSZ, oldHandler);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// 2.8 GB of untouched zeros: only the pages of a few samples become real.
TEST(LargeImage, OffsetsAreExactBeyondTwoGigabytes) {
  if (kSanitized) GTEST_SKIP() << "needs lazily mapped memory";
  int const side = 15200;
  std::unique_ptr<float, void (*)(void*)> const samples(
      static_cast<float*>(std::calloc(static_cast<std::size_t>(side) * side * 3 + 16, sizeof(float))), std::free);
  if (samples == nullptr) GTEST_SKIP() << "needs 2.8 GB of address space";
  COrbImage image;
  WrapSamples(image, samples.get(), side, side, 3);
  std::ptrdiff_t const count = static_cast<std::ptrdiff_t>(side) * side * 3;
  EXPECT_EQ(count, image.GetPixelCount());
  EXPECT_EQ(static_cast<std::size_t>(count) * 4, image.GetImageSize());
  EXPECT_EQ(samples.get() + count - 1, image.GetImageAdr(side - 1, side - 1, 2, 1, nullptr));
  image.SetPixelGrayRaw(side - 1, side - 1, 7.0f, 2);
  EXPECT_EQ(7.0f, samples.get()[count - 1]);
  EXPECT_EQ(7.0f, image.GetPixelGrayRaw(side - 1.0, side - 1.0, 2));
  EXPECT_EQ(3.5f, image.GetPixelGrayRaw(side - 1.5, side - 1.0, 2));
  COrbImage target(-32, 2, 2, 3, 1.0, 0.0, 1, nullptr, nullptr);
  target.PixelBlt(0, 0, 2, 2, &image, side - 2, side - 2, 0);
  EXPECT_EQ(7.0f, target.GetPixelGrayRaw(1, 1, 2));
  CImgInvert corner;
  WrapSamples(corner, samples.get(), side, side, 3);
  CRect rect(side - 1, side - 1, side, side);
  corner.Do(&image, &rect, 0);
  EXPECT_EQ(248.0f, samples.get()[count - 1]);
}

}  // namespace
}  // namespace orb::test
