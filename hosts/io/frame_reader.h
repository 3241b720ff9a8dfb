// Files of every kind that can be read, by bands of rows, row 0 on top.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <hosts/io/fits_header.h>
#include <hosts/io/sample_conversion.h>
#include <hosts/io/shape.h>

namespace orb::host {

// What is told of a file without reading its samples.
struct FrameFacts {
  std::string path;
  std::string format;  // "FITS", "TIFF", "PNG", "BMP", "camera raw"
  orb::host::Shape shape;
  SampleType type = SampleType::kFloat;  // of the numbers as they are meant, which may be stored otherwise
  bool isScaled = false;  // a scale or interpolation makes others of them, and `type` is no guide to the samples
  std::string typeName;   // "unsigned 16-bit integer", "scaled 16-bit integer" ...
  int bitpix = -32;       // as stored: 8, 16, -32 ...
  FitsHeader header;
  // What of the file is left out: "its alpha channel is left out" ...
  std::vector<std::string> notes;
};

// A file opened once. Every failure is a HostError that names the file. One object may be read from several threads.
class FrameReader {
 public:
  virtual ~FrameReader() = default;
  FrameReader(FrameReader const&) = delete;
  FrameReader& operator=(FrameReader const&) = delete;

  FrameFacts const& Facts() const { return facts; }
  std::string const& Path() const { return facts.path; }
  orb::host::Shape Shape() const { return facts.shape; }
  int Bitpix() const { return facts.bitpix; }
  std::string const& TypeName() const { return facts.typeName; }
  FitsHeader const& Header() const { return facts.header; }
  // "32-bit float", and "16-bit TIFF" for other formats than FITS.
  std::string Description() const;

  // `rows` rows from `top` on of one plane, into rows * width floats. Numbers that a float does not hold are rounded;
  // samples that are not finite are counted.
  void ReadRows(int plane, int top, int rows, float* samples);
  // The same of all planes, into a buffer each: files whose planes are interleaved are read once.
  void ReadPlanes(int top, int rows, std::vector<float*> const& planes);

  std::int64_t NonFinite() const { return nonFinite; }  // of all rows read so far
  std::int64_t Inexact() const { return inexact; }      // of all rows read so far, see Converted

 protected:
  FrameReader() = default;
  // Rows that are in the image; planes whose buffer is null are not wanted.
  virtual Converted DoRead(int top, int rows, std::vector<float*> const& planes) = 0;

  FrameFacts facts;

 private:
  void Read(int top, int rows, std::vector<float*> const& planes);

  std::atomic<std::int64_t> nonFinite{0};
  std::atomic<std::int64_t> inexact{0};
};

struct ReadOptions {
  bool mosaic = false;  // camera raw: the samples of the sensor as one plane, not debayered
};

// The kind of file is found out by its first bytes; camera raw, much of which is TIFF inside, by the ending.
std::unique_ptr<FrameReader> OpenFrame(std::string const& path, ReadOptions const& options = {});

}  // namespace orb::host
