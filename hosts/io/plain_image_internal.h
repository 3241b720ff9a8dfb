// Whole images into the formats that are no FITS.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <hosts/io/frame_writer.h>

namespace orb::host {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// An image as the numbers of a type, row by row, the losses being counted.
class EncodedRows {
 public:
  EncodedRows(COrbImage const& initImage, SampleType initType, WriteSettings const& settings);

  int Width() const { return image.GetWidth(); }
  int Height() const { return image.GetHeight(); }
  int Planes() const { return image.GetPlanes(); }
  SampleType Type() const { return type; }
  // Row y of one plane, or of all planes pixel after pixel. Valid until the next call.
  unsigned char* PlaneRow(int y, int plane);
  unsigned char* PixelRow(int y);
  SampleLosses const& Losses() const { return losses; }

 private:
  void Encode(int y, int plane, int offset, int stride);

  COrbImage const& image;
  SampleType type;
  std::vector<SampleMapping> mappings;
  std::vector<unsigned char> row;
  SampleLosses losses;
};

// TIFF, PNG or BMP, by the ending. `header` holds the level cards of what is written.
WriteReport WritePlainImage(std::string const& path, COrbImage const& image, FitsHeader const& header,
                            WriteSettings const& settings, Existing existing);

// Each writes to `output`, which is not committed yet; failures are HostErrors.
void WriteTiffRows(AtomicFile& output, EncodedRows& rows, FitsHeader const& header, WriteSettings const& settings);
void WritePngRows(AtomicFile& output, EncodedRows& rows);
void WriteBmpRows(AtomicFile& output, EncodedRows& rows);

}  // namespace orb::host
