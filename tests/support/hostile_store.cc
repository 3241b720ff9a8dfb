#include <tests/support/hostile_store.h>

#include <cstring>
#include <memory>
#include <vector>

#include <tests/support/orb_test_access.h>

namespace orb::test {

namespace {

constexpr unsigned char kPoison = 0xff;  // floats of it are not-a-number

class HostileBlock : public SampleBlock {
 public:
  HostileBlock(unsigned char const* samples, std::size_t size) : bytes(size + sizeof(float)), current(bytes) {
    std::memcpy(current.data(), samples, size);
    std::memset(current.data() + size, 0, sizeof(float));
  }
  unsigned char* Data() override { return current.data(); }
  void OnLastUnlock() override {
    std::vector<unsigned char> moved(current);
    std::memset(current.data(), kPoison, bytes);
    graveyard.swap(current);  // stays allocated, so that a stale read meets the poison
    current.swap(moved);
  }

 private:
  std::size_t bytes;
  std::vector<unsigned char> current;
  std::vector<unsigned char> graveyard;
};

}  // namespace

void MakeHostile(CImage& image) {
  OrbTestAccess::ReplaceBlock(
      image, std::make_unique<HostileBlock>(image.GetImageAdr(0, 0, 0, 1, nullptr), image.GetImageSize()));
}

int LocksLeft(CImage& image) { return OrbTestAccess::StoreOf(image).GetLockCount(); }

}  // namespace orb::test
