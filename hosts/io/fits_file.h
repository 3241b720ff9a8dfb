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
#include <hosts/io/frame_file.h>
#include <hosts/io/frame_reader.h>
#include <hosts/io/frame_writer.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// A file that ends too early is found on opening. Threads take turns at the file, and convert samples side by side. A
// .gz file is held in memory, unpacked, while it is open; others are read as rows are asked for. The header is that of
// the image's own unit; where that is an extension, the primary's cards come first, those that it repeats left out.
// Samples: stored * BSCALE + BZERO in double, rounded once; BLANK becomes not-a-number. Scratch memory: a quarter of a
// megabyte, or a row.
class FitsReader : public FrameReader {
 public:
  explicit FitsReader(std::string const& path);
  ~FitsReader() override;

 private:
  Converted DoRead(int top, int rows, std::vector<float*> const& planes) override;

  struct Impl;
  std::unique_ptr<Impl> impl;
};

// Samples are 32-bit floats, or integers with BZERO where FITS has no such type. A name that ends with .gz or .fz gets
// a compressed file: gzip of the whole (through a plain file beside it), or compressed tiles that keep every bit. With
// a mapping for each plane the samples are taken through it.
class FitsWriter : public FrameWriter {
 public:
  // Checks the place and the free space.
  FitsWriter(std::string const& path, Shape const& shape, FitsHeader const& header, Existing existing,
             SampleType type = SampleType::kFloat, std::vector<SampleMapping> const& mappings = {});
  ~FitsWriter() override;

  void WriteRows(int plane, int top, int rows, float const* samples) override;
  void Commit() override;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl;
};

// A FITS file whole, whatever its ending; see frame_file.h.
void ReadFits(std::string const& path, Frame& frame);
WriteReport WriteFits(std::string const& path, Frame const& frame, WriteSettings const& settings, Existing existing);
inline void WriteFits(std::string const& path, Frame const& frame, Existing existing) {
  WriteFits(path, frame, {}, existing);
}

}  // namespace orb::host
