#include <hosts/io/frame_reader.h>

#include <cstdlib>

#include <hosts/io/host_error.h>

namespace orb::host {

std::string Shape::Text() const {
  std::string const plane = std::to_string(width) + " x " + std::to_string(height);
  return planes == 1 ? plane : plane + " x " + std::to_string(planes) + " planes";
}

std::string FrameReader::Description() const {
  return facts.format == "FITS" ? facts.typeName : facts.typeName + ", " + facts.format;
}

void FrameReader::ReadRows(int plane, int top, int rows, float* samples) {
  if (plane < 0 || plane >= facts.shape.planes) {
    throw HostError(Exit::kFailed, facts.path + ": has no plane " + std::to_string(plane));
  }
  std::vector<float*> planes(static_cast<std::size_t>(facts.shape.planes), nullptr);
  planes[static_cast<std::size_t>(plane)] = samples;
  Read(top, rows, planes);
}

void FrameReader::ReadPlanes(int top, int rows, std::vector<float*> const& planes) {
  if (planes.size() != static_cast<std::size_t>(facts.shape.planes)) {
    throw HostError(Exit::kFailed, facts.path + ": has " + std::to_string(facts.shape.planes) + " planes, not " +
                                       std::to_string(planes.size()));
  }
  Read(top, rows, planes);
}

void FrameReader::Read(int top, int rows, std::vector<float*> const& planes) {
  if (top < 0 || rows < 0 || rows > facts.shape.height - top) {
    throw HostError(Exit::kFailed, facts.path + ": rows " + std::to_string(top) + " to " + std::to_string(top + rows) +
                                       " are not in it");
  }
  if (rows == 0) return;
  Converted const converted = DoRead(top, rows, planes);
  nonFinite += converted.nonFinite;
  inexact += converted.inexact;
}

}  // namespace orb::host
