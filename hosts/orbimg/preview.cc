#include <hosts/orbimg/preview.h>

#include <fmt/format.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/picture_file.h>
#include <hosts/orbimg/frame_statistics.h>

namespace orb::host {
namespace {
constexpr double kNoiseBelowSky = 2.0;   // black lies this many times the noise below the sky
constexpr double kNoiseAboveSky = 20.0;  // white lies this many times the noise above it
}  // namespace

void SetViewLevels(COrbImage& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    SampleStatistics const sky = MeasureSky(image, p, nullptr);
    if (sky.noise <= 0.0) continue;
    image.CImage::SetLevel(p, sky.level - kNoiseBelowSky * sky.noise, sky.level + kNoiseAboveSky * sky.noise);
  }
}

void WriteRendering(std::string const& path, COrbImage const& image, int bits, Existing existing) {
  DibPtr const dib(image.GetDib(bits));
  if (!dib) throw HostError(Exit::kResources, fmt::format("{}: no memory for a bitmap of {} bits", path, bits));
  WritePicture(path, dib.get(), existing);
}

void WritePreview(std::string const& file, std::string const& picture, Existing existing) {
  Frame frame;
  ReadFrameFile(file, frame);
  SetViewLevels(frame.image);
  WriteRendering(picture, frame.image, 24, existing);
}

}  // namespace orb::host
