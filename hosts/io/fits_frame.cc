#include <cmath>
#include <limits>
#include <new>

#include <hosts/io/fits_file.h>
#include <hosts/io/host_error.h>

namespace orb::host {

namespace {

// CBLACK for plane 0, CBLACK2 for plane 1 ...
std::string LevelKeyword(char const* stem, int plane) {
  return plane == 0 ? std::string(stem) : stem + std::to_string(plane + 1);
}

void SetLevelsFromSamples(COrbImage& image, int plane) {
  float smallest = std::numeric_limits<float>::infinity();
  float largest = -smallest;
  for (int y = 0; y < image.GetHeight(); ++y) {
    float const* const row = image.GetImageAdr(0, y, plane, 1, nullptr);
    for (int x = 0; x < image.GetWidth(); ++x) {
      if (!std::isfinite(row[x])) continue;
      if (row[x] < smallest) smallest = row[x];
      if (row[x] > largest) largest = row[x];
    }
  }
  if (smallest > largest) {
    image.CImage::SetLevel(plane, 0.0, 255.0);
  } else {
    image.CImage::SetLevel(plane, smallest, smallest < largest ? largest : smallest + 1.0);
  }
}

void SetLevels(FitsHeader const& header, COrbImage& image) {
  bool const hasCards = SetLevelsFromCards(header, 0, image);
  if (!hasCards) SetLevelsFromSamples(image, 0);
  for (int p = 1; p < image.GetPlanes(); ++p) {
    if (SetLevelsFromCards(header, p, image)) continue;
    if (hasCards) {
      image.CImage::SetLevel(p, image.GetLevelMin(0), image.GetLevelMax(0));
    } else {
      SetLevelsFromSamples(image, p);
    }
  }
}

void SetRecords(FitsReader const& reader, COrbImage& image) {
  FitsHeader const& header = reader.Header();
  image.SetOrgFileName(reader.Path().c_str());
  image.SetOrgFileFormat("FITS");
  image.SetOrgBitsPixel(reader.Bitpix());
  image.SetOrgPlanes(reader.Shape().planes);
  image.SetCameraModel(header.Text("INSTRUME").value_or("").c_str());
  image.SetExposureShutterSpeed(header.Text("EXPTIME").value_or("").c_str());
}

}  // namespace

bool SetLevelsFromCards(FitsHeader const& header, int plane, COrbImage& image) {
  auto const black = header.Number(LevelKeyword("CBLACK", plane));
  auto const white = header.Number(LevelKeyword("CWHITE", plane));
  if (!black || !white || !(*black < *white)) return false;
  image.CImage::SetLevel(plane, *black, *white);
  return true;
}

void ReadFits(std::string const& path, Frame& frame) {
  FitsReader reader(path);
  Shape const shape = reader.Shape();
  try {
    COrbImage image(-32, shape.width, shape.height, shape.planes, 1.0, 0.0, 1, nullptr, nullptr);
    for (int p = 0; p < shape.planes; ++p) reader.ReadRows(p, 0, shape.height, image.GetImageAdr(0, 0, p, 0, nullptr));
    SetLevels(reader.Header(), image);
    SetRecords(reader, image);
    frame.image.Swap(&image);
  } catch (std::bad_alloc const&) {
    throw HostError(Exit::kResources, path + ": not enough memory for an image of " + shape.Text());
  }
  frame.header = reader.Header();
  frame.nonFinite = reader.NonFinite();
}

void SetLevelCards(FitsHeader& header, COrbImage const& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    std::string const of = image.GetPlanes() == 1 ? std::string() : " of plane " + std::to_string(p + 1);
    header.SetNumber(LevelKeyword("CBLACK", p), image.GetLevelMin(p), "black level" + of);
    header.SetNumber(LevelKeyword("CWHITE", p), image.GetLevelMax(p), "white level" + of);
  }
}

void WriteFits(std::string const& path, Frame const& frame, Existing existing) {
  Shape const shape{frame.image.GetWidth(), frame.image.GetHeight(), frame.image.GetPlanes()};
  FitsHeader header = frame.header;
  SetLevelCards(header, frame.image);
  FitsWriter writer(path, shape, header, existing);
  for (int p = 0; p < shape.planes; ++p) {
    writer.WriteRows(p, 0, shape.height, frame.image.GetImageAdr(0, 0, p, 1, nullptr));
  }
  writer.Commit();
}

}  // namespace orb::host
