// TIFF files of every layout for tests, written by libtiff directly.
#pragma once

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace orb::test {

// Counts are of samples; rows follow from the size of `stored`, which has all samples of a pixel together whatever the
// layout in the file.
struct StoredTiff {
  int width = 5;
  int samplesPerPixel = 1;
  int bits = 8;
  int format = SAMPLEFORMAT_UINT;
  int photometric = PHOTOMETRIC_MINISBLACK;
  int planar = PLANARCONFIG_CONTIG;
  int compression = COMPRESSION_NONE;
  int predictor = PREDICTOR_NONE;
  int orientation = ORIENTATION_TOPLEFT;
  int tile = 0;  // side of square tiles; 0 for strips
  int rowsPerStrip = 2;
  std::string mode = "w";             // "w8": BigTIFF, "wb": big-endian
  std::vector<std::uint16_t> extras;  // kinds of the samples that are no colours
  std::string description;
  int images = 1;

  template <typename Stored>
  void Write(std::string const& path, std::vector<Stored> const& stored) const {
    TIFFSetWarningHandler(nullptr);  // of the old number of deflate
    TIFF* const tiff = TIFFOpen(path.c_str(), mode.c_str());
    for (int i = 0; i < images; ++i) {
      SetTags(tiff, static_cast<int>(stored.size()) / width / samplesPerPixel);
      if (tile != 0) {
        WriteTiles(tiff, stored);
      } else {
        WriteRows(tiff, stored);
      }
      TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
  }

 private:
  int Groups() const { return planar == PLANARCONFIG_SEPARATE ? samplesPerPixel : 1; }
  int Together() const { return planar == PLANARCONFIG_SEPARATE ? 1 : samplesPerPixel; }

  void SetTags(TIFF* tiff, int height) const {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samplesPerPixel);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, format);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planar);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
    if (predictor != PREDICTOR_NONE) TIFFSetField(tiff, TIFFTAG_PREDICTOR, predictor);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation);
    if (!extras.empty()) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(extras.size()), extras.data());
    if (!description.empty()) TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, description.c_str());
    if (tile != 0) {
      TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tile);
      TIFFSetField(tiff, TIFFTAG_TILELENGTH, tile);
    } else {
      TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    }
  }

  template <typename Stored>
  Stored SampleAt(std::vector<Stored> const& stored, int x, int y, int sample) const {
    return stored[static_cast<std::size_t>((y * width + x) * samplesPerPixel + sample)];
  }

  template <typename Stored>
  void WriteRows(TIFF* tiff, std::vector<Stored> const& stored) const {
    int const height = static_cast<int>(stored.size()) / width / samplesPerPixel;
    std::vector<Stored> row(static_cast<std::size_t>(width * Together()));
    for (int group = 0; group < Groups(); ++group) {
      for (int y = 0; y < height; ++y) {
        for (int i = 0; i < width * Together(); ++i) {
          row[static_cast<std::size_t>(i)] = SampleAt(stored, i / Together(), y, group + i % Together());
        }
        TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), static_cast<std::uint16_t>(group));
      }
    }
  }

  template <typename Stored>
  void WriteTiles(TIFF* tiff, std::vector<Stored> const& stored) const {
    int const height = static_cast<int>(stored.size()) / width / samplesPerPixel;
    for (int group = 0; group < Groups(); ++group) {
      for (int top = 0; top < height; top += tile) {
        for (int left = 0; left < width; left += tile) {
          std::vector<Stored> piece(static_cast<std::size_t>(tile * tile * Together()));
          for (int i = 0; i < tile * tile * Together(); ++i) {
            int const x = std::min(left + i / Together() % tile, width - 1);
            int const y = std::min(top + i / Together() / tile, height - 1);
            piece[static_cast<std::size_t>(i)] = SampleAt(stored, x, y, group + i % Together());
          }
          TIFFWriteTile(tiff, piece.data(), static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top), 0,
                        static_cast<std::uint16_t>(group));
        }
      }
    }
  }
};

}  // namespace orb::test
