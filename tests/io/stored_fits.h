// FITS files of every kind for tests, written by CFITSIO directly.
#pragma once

#include <fitsio.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace orb::test {

struct StoredFits {
  int bitpix = 16;
  std::vector<long> sizes{4, 3};
  double scale = 1.0;
  double zero = 0.0;
  bool hasBlank = false;
  long long blank = 0;
  int compression = 0;                    // of CFITSIO: RICE_1, GZIP_1 ...; 0 for none
  float quantize = 0.0f;                  // of compressed floats; 0: without loss
  bool isNullMarked = false;              // samples equal to the first have no value
  bool isInExtension = false;             // behind an empty primary
  std::vector<std::string> cards;         // of the image
  std::vector<std::string> primaryCards;  // where that is another unit

  // Samples as they are stored, in the machine's form of the type that `bitpix` names.
  template <typename Stored>
  void Write(std::string const& path, std::vector<Stored> const& stored) const;

 private:
  void WriteCards(fitsfile* file, std::vector<std::string> const& lines, int* status) const;
};

inline int MemoryType(int bitpix) {
  return bitpix == 8     ? TBYTE
         : bitpix == 16  ? TSHORT
         : bitpix == 32  ? TINT
         : bitpix == 64  ? TLONGLONG
         : bitpix == -32 ? TFLOAT
                         : TDOUBLE;
}

inline void StoredFits::WriteCards(fitsfile* file, std::vector<std::string> const& lines, int* status) const {
  for (std::string const& line : lines) fits_write_record(file, line.c_str(), status);
}

template <typename Stored>
void StoredFits::Write(std::string const& path, std::vector<Stored> const& stored) const {
  fitsfile* file = nullptr;
  int status = 0;
  fits_create_file(&file, ("!" + path).c_str(), &status);
  if (isInExtension) {
    fits_create_img(file, 8, 0, nullptr, &status);
    WriteCards(file, primaryCards, &status);
  }
  if (compression != 0) fits_set_compression_type(file, compression, &status);
  if (compression != 0) fits_set_quantize_level(file, quantize, &status);
  auto axes = sizes;
  fits_create_img(file, bitpix, static_cast<int>(axes.size()), axes.data(), &status);
  if (scale != 1.0 || zero != 0.0) {
    // As text: CFITSIO would round the numbers to 15 digits.
    for (auto const& [keyword, value] : {std::pair("BSCALE  ", scale), std::pair("BZERO   ", zero)}) {
      char card[81];
      std::snprintf(card, sizeof card, "%s= %.17g", keyword, value);
      fits_write_record(file, card, &status);
    }
  }
  long long blankKey = blank;
  if (hasBlank) fits_write_key(file, TLONGLONG, "BLANK", &blankKey, nullptr, &status);
  WriteCards(file, cards, &status);
  fits_set_bscale(file, 1.0, 0.0, &status);
  std::vector<Stored> copy(stored);
  Stored mark{};
  if (isNullMarked) mark = copy[0];
  fits_write_imgnull(file, MemoryType(bitpix), 1, static_cast<LONGLONG>(copy.size()), copy.data(),
                     isNullMarked ? &mark : nullptr, &status);
  fits_close_file(file, &status);
  if (status != 0) {
    fits_report_error(stderr, status);
    throw status;
  }
}

}  // namespace orb::test
