// Any bytes as a device-independent bitmap: either refused with the image unchanged, or read within the block.
#include <orbimg/orbimg.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  orb::DibPtr const block(GlobalAlloc(GMEM_MOVEABLE, size));
  if (!block) return 0;
  if (size > 0) std::memcpy(GlobalLock(block.get()), data, size);
  GlobalUnlock(block.get());

  COrbImage image(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  if (image.AttachDIB(block.get()) == 0) {
    if (image.GetWidth() != 2 || image.GetHeight() != 2 || image.GetPlanes() != 1) std::abort();
    return 0;
  }
  for (int p = 0; p < image.GetPlanes(); ++p) {
    double min = 0.0;
    double max = 0.0;
    image.GetMinMax(p, &min, &max);
    if (!(min >= 0.0 && max <= 255.0)) std::abort();
  }
  return 0;
}
