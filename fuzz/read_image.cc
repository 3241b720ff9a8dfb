// Any bytes as a picture file of any kind, or as camera raw: an image, or one line of error.
#include <fuzz/file_input.h>
#include <hosts/io/frame_reader.h>
#include <hosts/io/host_error.h>

#include <iterator>
#include <string>
#include <vector>

namespace {

void Read(std::string const& path, bool asMosaic) {
  // Larger pictures than this only make the runs slow.
  constexpr std::int64_t kMostSamples = 1 << 20;
  try {
    auto const reader = orb::host::OpenFrame(path, {asMosaic});
    orb::host::Shape const shape = reader->Shape();
    std::int64_t const samples = std::int64_t{shape.width} * shape.height * shape.planes;
    if (samples > kMostSamples) return;
    std::vector<float> image(static_cast<std::size_t>(samples));
    std::vector<float*> planes;
    for (int p = 0; p < shape.planes; ++p) planes.push_back(image.data() + samples / shape.planes * p);
    reader->ReadPlanes(0, shape.height, planes);
    reader->ReadRows(0, shape.height - 1, 1, image.data());
    reader->ReadRows(shape.planes - 1, 0, 1, image.data());
  } catch (orb::host::HostError const&) {
  }
}

struct Kind {
  std::string start;
  char const* ending;
};

Kind const kKinds[] = {{std::string("II\x2a\0", 4), ".tif"},
                       {std::string("MM\0\x2a", 4), ".tif"},
                       {std::string("II\x2b\0\x08\0\0\0", 8), ".tif"},
                       {"\x89PNG\r\n\x1a\n", ".png"},
                       {"BM", ".bmp"},
                       {std::string("II\x2a\0", 4), ".dng"},
                       {std::string("MM\0\x2a", 4), ".nef"},
                       {"", ".cr3"}};

}  // namespace

// The first byte chooses a kind of file, whose start the other bytes go on from.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size < 1) return 0;
  Kind const& kind = kKinds[data[0] % std::size(kKinds)];
  std::string const bytes = kind.start + std::string(reinterpret_cast<char const*>(data) + 1, size - 1);
  std::string const path =
      orb::fuzz::PathOf(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size(), kind.ending);
  Read(path, data[0] >= 128);
  return 0;
}
