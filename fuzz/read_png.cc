// Any bytes as a PNG file: an image, or one line of error.
#include <fuzz/file_input.h>
#include <hosts/io/host_error.h>
#include <hosts/io/picture_file.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  COrbImage image;
  try {
    orb::host::ReadPng(orb::fuzz::PathOf(data, size, ".png"), image);
    double min = 0.0;
    double max = 0.0;
    for (int p = 0; p < image.GetPlanes(); ++p) image.GetMinMax(p, &min, &max);
  } catch (orb::host::HostError const&) {
  }
  return 0;
}
