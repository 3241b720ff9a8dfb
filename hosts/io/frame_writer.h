// Files of every kind that can be written. What a kind cannot hold is counted, never dropped in silence.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <hosts/io/atomic_file.h>
#include <hosts/io/fits_header.h>
#include <hosts/io/sample_encoding.h>
#include <hosts/io/shape.h>
#include <orbimg/orbimg.h>

namespace orb::host {

enum class FileFormat { kFits, kTiff, kPng, kBmp };
enum class Compression { kNone, kLzw, kDeflate };

// From the ending, whatever its case: .fits .fit .fts, each with .gz or .fz behind it or not, .tif .tiff, .png, .bmp. A
// HostError (Exit::kUsage) for any other.
FileFormat FormatOf(std::string const& path);
std::string NameOf(FileFormat format);

struct WriteSettings {
  // Floats where this is not given and the format has them; else 16 bits, or 8 for BMP and for images that came from 8.
  std::optional<SampleType> type;
  // Black to white of each plane become the full range of an integer type, or 0 to 1 of floats; else samples stay the
  // numbers that they are.
  bool mapsLevels = false;
  bool planar = false;                           // TIFF: plane after plane, not pixel after pixel
  bool bigTiff = false;                          // TIFF: with 64-bit offsets though 32 bits suffice
  Compression compression = Compression::kNone;  // TIFF
};

// The type that a format takes. A HostError that names `path` if it does not take the one that is asked for.
SampleType ChooseType(FileFormat format, WriteSettings const& settings, int orgBitsPixel, std::string const& path);

// Where nothing but range is asked for: of plane `plane`.
SampleMapping MappingOf(WriteSettings const& settings, SampleType type, COrbImage const& image, int plane);

struct WriteReport {
  SampleType type = SampleType::kFloat;
  SampleLosses samples;
  int cards = 0;        // cards that the format has no place for, those of the levels not counted
  bool levels = false;  // levels that it has no place for
  // One line without a path, such as "3 samples above 65535 became 65535; 12 header cards are not kept"; empty if the
  // file holds everything.
  std::string Text() const;
};

// A file that is written band by band, in any order, and appears when committed. Without Commit nothing is left behind.
// One object may be written to from several threads, which take turns.
class FrameWriter {
 public:
  virtual ~FrameWriter() = default;
  FrameWriter(FrameWriter const&) = delete;
  FrameWriter& operator=(FrameWriter const&) = delete;

  virtual void WriteRows(int plane, int top, int rows, float const* samples) = 0;
  virtual void Commit() = 0;
  WriteReport const& Report() const { return report; }  // whole after Commit

 protected:
  FrameWriter() = default;
  WriteReport report;
};

// Checks the place and the name. FITS files are written as the rows come; the others through a scratch file, since
// their rows have an order.
std::unique_ptr<FrameWriter> MakeFrameWriter(std::string const& path, Shape const& shape, FitsHeader const& header,
                                             Existing existing);

}  // namespace orb::host
