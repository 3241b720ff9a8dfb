#include <hosts/orbimg/image_file.h>

#include <hosts/io/picture_file.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_set.h>

namespace orb::host {

bool IsPngFile(std::string const& path) { return EndingOf(path) == ".png"; }

std::string ReadImage(std::string const& path, Frame& frame) {
  if (IsPngFile(path)) {
    ReadPng(path, frame.image);
    return frame.image.GetLevelMax(0) > 255.0 ? "16-bit PNG" : "8-bit PNG";
  }
  ReadFits(path, frame);
  return FitsReader(path).TypeName();
}

void ReadForWork(std::string const& path, Frame& frame, Environment& environment) {
  ReadImage(path, frame);
  WarnOfNonFinite(environment, path, frame.nonFinite, kGoIntoResult);
}

}  // namespace orb::host
