// Memory blocks behind handles.
#include <cstring>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

TEST(GlobalMemory, KeepsItsSizeAddressAndContent) {
  HGLOBAL const block = GlobalAlloc(GMEM_MOVEABLE, 1000);
  ASSERT_NE(nullptr, block);
  EXPECT_EQ(1000u, GlobalSize(block));
  void* const address = GlobalLock(block);
  ASSERT_NE(nullptr, address);
  std::memset(address, 0x5a, 1000);
  GlobalUnlock(block);
  EXPECT_EQ(address, GlobalLock(block));
  EXPECT_EQ(0x5a, static_cast<unsigned char*>(address)[999]);
  GlobalUnlock(block);
  EXPECT_EQ(nullptr, GlobalFree(block));
}

TEST(GlobalMemory, IsZeroOnRequest) {
  HGLOBAL const block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 4099);
  auto const* const bytes = static_cast<unsigned char const*>(GlobalLock(block));
  for (int i = 0; i < 4099; ++i) ASSERT_EQ(0, bytes[i]) << i;
  GlobalFree(block);
}

TEST(GlobalMemory, CountsLocks) {
  HGLOBAL const block = GlobalAlloc(0, 8);
  GlobalLock(block);
  GlobalLock(block);
  EXPECT_EQ(1, GlobalUnlock(block));
  EXPECT_EQ(0, GlobalUnlock(block));
  EXPECT_EQ(0, GlobalUnlock(block));
  GlobalLock(block);
  EXPECT_EQ(0, GlobalUnlock(block));
  GlobalFree(block);
}

TEST(GlobalMemory, AcceptsNullAndNoBytes) {
  EXPECT_EQ(nullptr, GlobalFree(nullptr));
  EXPECT_EQ(nullptr, GlobalLock(nullptr));
  EXPECT_EQ(0, GlobalUnlock(nullptr));
  EXPECT_EQ(0u, GlobalSize(nullptr));
  HGLOBAL const block = GlobalAlloc(0, 0);
  ASSERT_NE(nullptr, block);
  EXPECT_EQ(0u, GlobalSize(block));
  GlobalFree(block);
}

TEST(GlobalMemory, GivesNullWhenMemoryIsShort) {
  EXPECT_EQ(nullptr, GlobalAlloc(0, std::numeric_limits<std::size_t>::max()));
  EXPECT_EQ(nullptr, GlobalAlloc(GMEM_ZEROINIT, std::numeric_limits<std::size_t>::max() / 2));
}

TEST(GlobalMemory, IsFreedByItsOwner) {
  DibPtr first(GlobalAlloc(0, 16));
  DibPtr second = std::move(first);
  EXPECT_EQ(nullptr, first.get());
  EXPECT_EQ(16u, GlobalSize(second.get()));
}

}  // namespace
}  // namespace orb::test
