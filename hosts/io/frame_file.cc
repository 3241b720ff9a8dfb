#include <cmath>
#include <limits>
#include <new>

#include <hosts/io/fits_file.h>
#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/plain_image_internal.h>

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

void SetRecords(FrameReader const& reader, COrbImage& image) {
  FitsHeader const& header = reader.Header();
  image.SetOrgFileName(reader.Path().c_str());
  image.SetOrgFileFormat(reader.Facts().format.c_str());
  image.SetOrgBitsPixel(reader.Bitpix());
  image.SetOrgPlanes(reader.Shape().planes);
  image.SetCameraModel(header.Text("INSTRUME").value_or("").c_str());
  image.SetExposureShutterSpeed(header.Text("EXPTIME").value_or("").c_str());
}

FitsHeader WithLevelCards(Frame const& frame, WriteSettings const& settings, SampleType type) {
  FitsHeader header = frame.header;
  SetLevelCards(header, frame.image);
  if (settings.mapsLevels) SetLevelCards(header, IsInteger(type) ? HighestOf(type) : 1.0);
  return header;
}

}  // namespace

bool SetLevelsFromCards(FitsHeader const& header, int plane, COrbImage& image) {
  auto const black = header.Number(LevelKeyword("CBLACK", plane));
  auto const white = header.Number(LevelKeyword("CWHITE", plane));
  if (!black || !white || !(*black < *white)) return false;
  image.CImage::SetLevel(plane, *black, *white);
  return true;
}

std::int64_t ReadSamples(FrameReader& reader, COrbImage& image) {
  std::int64_t const before = reader.NonFinite();
  Shape const shape = reader.Shape();
  COrbImage fresh(-32, shape.width, shape.height, shape.planes, 1.0, 0.0, 1, nullptr, nullptr);
  std::vector<float*> planes;
  for (int p = 0; p < shape.planes; ++p) planes.push_back(fresh.GetImageAdr(0, 0, p, 0, nullptr));
  reader.ReadPlanes(0, shape.height, planes);
  image.Swap(&fresh);
  return reader.NonFinite() - before;
}

void ReadFrameFile(FrameReader& reader, Frame& frame) {
  std::int64_t const inexact = reader.Inexact();
  try {
    frame.nonFinite = ReadSamples(reader, frame.image);
    SetLevels(reader.Header(), frame.image);
    SetRecords(reader, frame.image);
  } catch (std::bad_alloc const&) {
    throw HostError(Exit::kResources, reader.Path() + ": not enough memory for an image of " + reader.Shape().Text());
  }
  frame.header = reader.Header();
  frame.inexact = reader.Inexact() - inexact;
}

void ReadFrameFile(std::string const& path, Frame& frame, ReadOptions const& options) {
  ReadFrameFile(*OpenFrame(path, options), frame);
}

void ReadFits(std::string const& path, Frame& frame) {
  FitsReader reader(path);
  ReadFrameFile(reader, frame);
}

void SetLevelCards(FitsHeader& header, COrbImage const& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    std::string const of = image.GetPlanes() == 1 ? std::string() : " of plane " + std::to_string(p + 1);
    header.SetNumber(LevelKeyword("CBLACK", p), image.GetLevelMin(p), "black level" + of);
    header.SetNumber(LevelKeyword("CWHITE", p), image.GetLevelMax(p), "white level" + of);
  }
}

void SetLevelCards(FitsHeader& header, double white) {
  for (char const* keyword : {"CBLACK2", "CWHITE2", "CBLACK3", "CWHITE3"}) header.Remove(keyword);
  header.SetNumber("CBLACK", 0.0, "black level");
  header.SetNumber("CWHITE", white, "white level");
}

WriteReport WriteFits(std::string const& path, Frame const& frame, WriteSettings const& settings, Existing existing) {
  COrbImage const& image = frame.image;
  SampleType const type = ChooseType(FileFormat::kFits, settings, image.GetOrgBitsPixel(), path);
  std::vector<SampleMapping> mappings;
  for (int p = 0; p < image.GetPlanes(); ++p) mappings.push_back(MappingOf(settings, type, image, p));
  Shape const shape{image.GetWidth(), image.GetHeight(), image.GetPlanes()};
  FitsWriter writer(path, shape, WithLevelCards(frame, settings, type), existing, type, mappings);
  for (int p = 0; p < shape.planes; ++p) writer.WriteRows(p, 0, shape.height, image.GetImageAdr(0, 0, p, 1, nullptr));
  writer.Commit();
  return writer.Report();
}

WriteReport WriteFrameFile(std::string const& path, Frame const& frame, WriteSettings const& settings,
                           Existing existing) {
  FileFormat const format = FormatOf(path);
  if (format == FileFormat::kFits) return WriteFits(path, frame, settings, existing);
  SampleType const type = ChooseType(format, settings, frame.image.GetOrgBitsPixel(), path);
  return WritePlainImage(path, frame.image, WithLevelCards(frame, settings, type), settings, existing);
}

}  // namespace orb::host
