// Reading and writing FITS files by bands of rows, row 0 on top.
//
// A FITS file's first row is the bottom of the picture unless ROWORDER says TOP-DOWN; rows are flipped on reading and
// restored on writing (ROWORDER is carried on). Samples become floats through BSCALE and BZERO. Any BITPIX, .gz and
// .fz, one or three planes, the first image extension if the primary is empty.
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

// A file opened once. Every failure is a HostError that names the file; a file that ends too early is found on opening.
// One object may be read from several threads: they take turns at the file, and convert samples side by side. A .gz
// file is held in memory, unpacked, while it is open; others are read as rows are asked for.
class FitsReader {
 public:
  explicit FitsReader(std::string const& path);
  FitsReader(FitsReader const&) = delete;
  FitsReader& operator=(FitsReader const&) = delete;
  ~FitsReader();

  std::string const& Path() const;
  orb::host::Shape Shape() const;
  int Bitpix() const;            // as stored: 8, 16, -32 ...; unsigned 16 bits show as 16
  std::string TypeName() const;  // "unsigned 16-bit integer", "32-bit float" ...
  // Of the image's own unit; where that is an extension, the primary's cards come first, those that it repeats left
  // out.
  FitsHeader const& Header() const;

  // `rows` rows from `top` on of one plane, into rows * width floats: stored * BSCALE + BZERO in double, rounded once;
  // BLANK becomes not-a-number. Samples that are not finite are counted. Scratch memory: a quarter of a megabyte, or a
  // row.
  void ReadRows(int plane, int top, int rows, float* samples);
  std::int64_t NonFinite() const;  // of all rows read so far

 private:
  struct Impl;
  std::unique_ptr<Impl> impl;
};

// A file that is written band by band, in any order, and appears when committed. Samples are 32-bit floats. Without
// Commit nothing is left behind. One object may be written to from several threads, which take turns.
class FitsWriter {
 public:
  // Checks the place, the name (compressed names are refused) and the free space.
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

// A whole image with its header. The levels come from the cards CBLACK and CWHITE (planes 1 and 2: CBLACK2, CWHITE2,
// CBLACK3, CWHITE3, or else plane 0's), where CBLACK is below CWHITE; else they are the plane's smallest and largest
// finite sample, one unit apart where these are equal, and 0 to 255 where no sample is finite.
struct Frame {
  COrbImage image;
  FitsHeader header;
  std::int64_t nonFinite = 0;
};

void ReadFits(std::string const& path, Frame& frame);
// Writes CBLACK and CWHITE (levels of plane 0) with the samples, and one pair a plane (CBLACK2 ...) for colour.
void WriteFits(std::string const& path, Frame const& frame, Existing existing);

// Sets the levels of a plane from its own cards. False, and nothing changed, where they are missing or black is not
// below white.
bool SetLevelsFromCards(FitsHeader const& header, int plane, COrbImage& image);
// Sets the level cards of a header to the levels of an image.
void SetLevelCards(FitsHeader& header, COrbImage const& image);

}  // namespace orb::host
