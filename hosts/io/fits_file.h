// Reading and writing FITS files by bands of rows, row 0 on top.
//
// A FITS file's first row is the bottom of the picture unless ROWORDER says TOP-DOWN; rows are flipped on reading and
// restored on writing (ROWORDER is carried on). Samples become floats through BSCALE and BZERO. Any BITPIX, .gz and .fz,
// one or three planes, the first image extension if the primary is empty.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <hosts/io/atomic_file.h>
#include <hosts/io/fits_header.h>
#include <orbimg/orbimg.h>

namespace orb::host {

struct Shape {
  int width = 0;
  int height = 0;
  int planes = 0;

  bool operator==(Shape const&) const = default;
  std::string Text() const;  // "1092 x 736" or "800 x 800 x 3 planes"
};

// A file opened once. Every failure is a HostError that names the file.
class FitsReader {
 public:
  explicit FitsReader(std::string const& path);
  FitsReader(FitsReader const&) = delete;
  FitsReader& operator=(FitsReader const&) = delete;
  ~FitsReader();

  std::string const& Path() const;
  orb::host::Shape Shape() const;
  int Bitpix() const;  // as stored: 8, 16, -32 ...; unsigned 16 bits show as 16
  std::string TypeName() const;  // "unsigned 16-bit integer", "32-bit float" ...
  FitsHeader const& Header() const;

  // `rows` rows from `top` on of one plane, into rows * width floats. Samples that are not finite are counted.
  void ReadRows(int plane, int top, int rows, float* samples);
  std::int64_t NonFinite() const;  // of all rows read so far

 private:
  struct Impl;
  std::unique_ptr<Impl> impl;
};

// A file that is written band by band and appears when committed. Samples are 32-bit floats.
class FitsWriter {
 public:
  FitsWriter(std::string const& path, Shape const& shape, FitsHeader const& header, Existing existing);
  FitsWriter(FitsWriter const&) = delete;
  FitsWriter& operator=(FitsWriter const&) = delete;
  ~FitsWriter();

  void WriteRows(int plane, int top, int rows, float const* samples);
  void Commit();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl;
};

// A whole image with its header. Levels become DATAMIN-independent display levels: CWHITE and CBLACK cards, if present,
// else smallest and largest finite sample.
struct Frame {
  COrbImage image;
  FitsHeader header;
  std::int64_t nonFinite = 0;
};

void ReadFits(std::string const& path, Frame& frame);
// Writes CBLACK and CWHITE (levels of plane 0) with the samples, and one pair a plane (CBLACK2 ...) for colour.
void WriteFits(std::string const& path, Frame const& frame, Existing existing);

}  // namespace orb::host
