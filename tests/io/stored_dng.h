// A digital negative for tests, made by libtiff.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orb::test {

inline constexpr int kDngWidth = 64;
inline constexpr int kDngHeight = 48;

inline std::uint16_t DngSampleAt(int x, int y) { return static_cast<std::uint16_t>(300 + (x * 37 + y * 101) % 3000); }

// RGGB, black 256, white 4000.
inline void WriteDng(std::string const& path) {
  TIFF* const tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, 0);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kDngWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kDngHeight);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CFA);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kDngHeight);
  TIFFSetField(tiff, TIFFTAG_MAKE, "Maker");
  TIFFSetField(tiff, TIFFTAG_MODEL, "Maker Model 1");
  TIFFSetField(tiff, TIFFTAG_UNIQUECAMERAMODEL, "Maker Model 1");
  TIFFSetField(tiff, TIFFTAG_DNGVERSION, "\1\3\0\0");
  TIFFSetField(tiff, TIFFTAG_DNGBACKWARDVERSION, "\1\1\0\0");
  std::uint16_t const dimensions[] = {2, 2};
  std::uint8_t const pattern[] = {0, 1, 1, 2};
  TIFFSetField(tiff, TIFFTAG_CFAREPEATPATTERNDIM, dimensions);
  TIFFSetField(tiff, TIFFTAG_CFAPATTERN, 4, pattern);
  float const black[] = {256.0f};
  std::uint32_t const white[] = {4000};
  float const matrix[] = {1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f};
  TIFFSetField(tiff, TIFFTAG_BLACKLEVEL, 1, black);
  TIFFSetField(tiff, TIFFTAG_WHITELEVEL, 1, white);
  TIFFSetField(tiff, TIFFTAG_COLORMATRIX1, 9, matrix);
  std::vector<std::uint16_t> row(kDngWidth);
  for (int y = 0; y < kDngHeight; ++y) {
    for (int x = 0; x < kDngWidth; ++x) row[static_cast<std::size_t>(x)] = DngSampleAt(x, y);
    TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y));
  }
  TIFFClose(tiff);
}

}  // namespace orb::test
