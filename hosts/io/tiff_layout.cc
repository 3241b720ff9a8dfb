#include <algorithm>
#include <limits>

#include <hosts/io/host_error.h>
#include <hosts/io/tiff_layout_internal.h>

namespace orb::host {

namespace {

constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 40;  // of a plane; beyond any memory

[[noreturn]] void Fail(FrameFacts const& facts, std::string const& reason) {
  throw HostError(Exit::kInput, facts.path + ": " + reason);
}

std::uint16_t ShortOf(TIFF* tiff, std::uint32_t tag, std::uint16_t otherwise) {
  std::uint16_t value = 0;
  return TIFFGetField(tiff, tag, &value) == 1 ? value : otherwise;
}

std::uint16_t DefaultedShortOf(TIFF* tiff, std::uint32_t tag) {
  std::uint16_t value = 0;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

void SetSize(TIFF* tiff, FrameFacts const& facts, TiffLayout& layout) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
  if (width == 0 || height == 0) Fail(facts, "there is no image in it");
  constexpr std::uint32_t kMost = std::numeric_limits<int>::max();
  if (width > kMost || height > kMost || width > kMostSamples / height) Fail(facts, "the image is too large");
  layout.width = static_cast<int>(width);
  layout.height = static_cast<int>(height);
}

SampleType TypeOf(TIFF* tiff, FrameFacts const& facts) {
  int const bits = DefaultedShortOf(tiff, TIFFTAG_BITSPERSAMPLE);
  int const kind = DefaultedShortOf(tiff, TIFFTAG_SAMPLEFORMAT);
  bool const isUnsigned = kind == SAMPLEFORMAT_UINT || kind == SAMPLEFORMAT_VOID;
  if (isUnsigned && bits == 8) return SampleType::kUint8;
  if (isUnsigned && bits == 16) return SampleType::kUint16;
  if (isUnsigned && bits == 32) return SampleType::kUint32;
  if (kind == SAMPLEFORMAT_INT && bits == 8) return SampleType::kInt8;
  if (kind == SAMPLEFORMAT_INT && bits == 16) return SampleType::kInt16;
  if (kind == SAMPLEFORMAT_INT && bits == 32) return SampleType::kInt32;
  if (kind == SAMPLEFORMAT_IEEEFP && bits == 32) return SampleType::kFloat;
  if (kind == SAMPLEFORMAT_IEEEFP && bits == 64) return SampleType::kDouble;
  char const* const name = isUnsigned || kind == SAMPLEFORMAT_INT ? "integer"
                           : kind == SAMPLEFORMAT_IEEEFP          ? "float"
                                                                  : "complex number";
  Fail(facts, "its samples are of the type " + std::to_string(bits) + "-bit " + name +
                  "; save it with integers of 8, 16 or 32 bits or floats of 32 or 64");
}

std::string NameOfColours(int photometric) {
  switch (photometric) {
    case PHOTOMETRIC_PALETTE:
      return "a palette";
    case PHOTOMETRIC_MASK:
      return "a mask";
    case PHOTOMETRIC_SEPARATED:
      return "CMYK";
    case PHOTOMETRIC_YCBCR:
      return "YCbCr";
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_ITULAB:
      return "Lab";
    case PHOTOMETRIC_CFA:
      return "the mosaic of a camera; give it the ending of its raw format";
    default:
      return "the colours numbered " + std::to_string(photometric);
  }
}

struct Extras {
  int count = 0;
  bool hasAlpha = false;
};

Extras ExtrasOf(TIFF* tiff) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  Extras extras;
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1 || kinds == nullptr) return extras;
  extras.count = count;
  for (int i = 0; i < count; ++i) extras.hasAlpha = extras.hasAlpha || kinds[i] != EXTRASAMPLE_UNSPECIFIED;
  return extras;
}

// Three samples without a meaning count as colour: programs of science write planes so.
int PlanesOf(bool isGray, int samples, Extras const& extras, FrameFacts const& facts) {
  int const colours = samples - extras.count;
  if (!isGray && samples >= 3) return 3;
  if (isGray && (colours == 3 || (samples == 3 && !extras.hasAlpha))) return 3;
  if (isGray && (colours == 1 || (colours == 2 && samples == 2))) return 1;
  Fail(facts, "it has " + std::to_string(samples) + " samples a pixel; an image has 1 or 3, and alpha");
}

void SetColours(TIFF* tiff, FrameFacts& facts, TiffLayout& layout) {
  layout.samplesPerPixel = DefaultedShortOf(tiff, TIFFTAG_SAMPLESPERPIXEL);
  int const photometric =
      ShortOf(tiff, TIFFTAG_PHOTOMETRIC, layout.samplesPerPixel < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  bool const isGray = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
  if (!isGray && photometric != PHOTOMETRIC_RGB) {
    Fail(facts, "its colours are " + NameOfColours(photometric) +
                    (photometric == PHOTOMETRIC_CFA ? "" : "; save it as gray or RGB"));
  }
  Extras const extras = ExtrasOf(tiff);
  layout.planes = PlanesOf(isGray, layout.samplesPerPixel, extras, facts);
  layout.whiteIsZero = photometric == PHOTOMETRIC_MINISWHITE;
  if (layout.whiteIsZero && (!IsInteger(layout.type) || IsSigned(layout.type))) {
    Fail(facts, "white is 0 in it, which has a meaning only for unsigned integers; save it with black at 0");
  }
  int const left = layout.samplesPerPixel - layout.planes;
  if (left == 1 && extras.hasAlpha) {
    facts.notes.emplace_back("its alpha channel is left out");
  } else if (left > 0) {
    facts.notes.push_back(std::to_string(left) + " further samples of each pixel are left out");
  }
}

void SetOrientation(TIFF* tiff, FrameFacts const& facts, TiffLayout& layout) {
  int const orientation = DefaultedShortOf(tiff, TIFFTAG_ORIENTATION);
  layout.flipsRows = orientation == ORIENTATION_BOTLEFT || orientation == ORIENTATION_BOTRIGHT;
  layout.flipsColumns = orientation == ORIENTATION_TOPRIGHT || orientation == ORIENTATION_BOTRIGHT;
  if (orientation >= ORIENTATION_TOPLEFT && orientation <= ORIENTATION_BOTLEFT) return;
  Fail(facts, "it lies on its side (orientation " + std::to_string(orientation) + "); save it upright");
}

void CheckCompression(TIFF* tiff, FrameFacts const& facts, TiffLayout& layout) {
  int const compression = DefaultedShortOf(tiff, TIFFTAG_COMPRESSION);
  layout.isCompressed = compression != COMPRESSION_NONE;
  bool const isKnown = compression == COMPRESSION_NONE || compression == COMPRESSION_PACKBITS ||
                       compression == COMPRESSION_LZW || compression == COMPRESSION_DEFLATE ||
                       compression == COMPRESSION_ADOBE_DEFLATE;
  if (isKnown && TIFFIsCODECConfigured(static_cast<std::uint16_t>(compression)) != 0) return;
  TIFFCodec const* const codec = TIFFFindCODEC(static_cast<std::uint16_t>(compression));
  Fail(facts, "its compression is " + (codec != nullptr ? std::string(codec->name) : std::to_string(compression)) +
                  "; save it with none, LZW or deflate");
}

void SetTiles(TIFF* tiff, FrameFacts const& facts, TiffLayout& layout) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
  TIFFGetField(tiff, TIFFTAG_TILELENGTH, &height);
  constexpr std::uint32_t kMost = 1u << 30;
  if (width == 0 || height == 0 || width > kMost || height > kMost) Fail(facts, "its tiles have no possible size");
  layout.tileWidth = static_cast<int>(width);
  layout.tileHeight = static_cast<int>(height);
}

}  // namespace

TiffLayout ReadTiffLayout(TIFF* tiff, FrameFacts& facts) {
  TiffLayout layout;
  SetSize(tiff, facts, layout);
  CheckCompression(tiff, facts, layout);
  layout.type = TypeOf(tiff, facts);
  SetColours(tiff, facts, layout);
  SetOrientation(tiff, facts, layout);
  layout.isInterleaved =
      layout.samplesPerPixel == 1 || DefaultedShortOf(tiff, TIFFTAG_PLANARCONFIG) != PLANARCONFIG_SEPARATE;
  layout.isTiled = TIFFIsTiled(tiff) != 0;
  if (layout.isTiled) {
    SetTiles(tiff, facts, layout);
  } else {
    std::uint32_t rows = 0;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
    layout.rowsPerStrip =
        static_cast<int>(std::clamp<std::uint32_t>(rows, 1, static_cast<std::uint32_t>(layout.height)));
  }
  return layout;
}

}  // namespace orb::host
