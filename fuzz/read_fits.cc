// Any bytes as a FITS file: an image with its header, or one line of error.
#include <fuzz/file_input.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  // Larger pictures than this only make the runs slow.
  constexpr std::int64_t kMostSamples = 1 << 20;
  try {
    std::string const path = orb::fuzz::PathOf(data, size, ".fits");
    orb::host::FitsReader reader(path);
    orb::host::Shape const shape = reader.Shape();
    if (std::int64_t{shape.width} * shape.height * shape.planes > kMostSamples) return 0;
    std::vector<float> row(static_cast<std::size_t>(shape.width));
    for (int p = 0; p < shape.planes; ++p) {
      for (int y = 0; y < shape.height; ++y) reader.ReadRows(p, y, 1, row.data());
    }
  } catch (orb::host::HostError const&) {
  }
  return 0;
}
