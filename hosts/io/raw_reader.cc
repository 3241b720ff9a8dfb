#include <algorithm>
#include <cctype>

#include <hosts/io/frame_file.h>
#include <hosts/io/host_error.h>
#include <hosts/io/input_check.h>
#include <hosts/io/one_line.h>
#include <hosts/io/raw_file.h>

#ifdef ORBIMG_HAS_LIBRAW
#include <libraw/libraw.h>

#include <ctime>
#include <mutex>
#include <numeric>
#include <vector>

#include <hosts/io/debayer.h>
#endif

namespace orb::host {

bool IsRawName(std::string const& path) {
  std::size_t const point = path.find_last_of('.');
  if (point == std::string::npos) return false;
  std::string ending = path.substr(point + 1);
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  static constexpr char const* kEndings[] = {"3fr", "arw", "cr2", "cr3", "crw", "dcr", "dng", "erf", "fff",
                                             "iiq", "kdc", "mef", "mos", "mrw", "nef", "nrw", "orf", "pef",
                                             "raf", "raw", "rw2", "rwl", "sr2", "srf", "srw", "x3f"};
  return std::find(std::begin(kEndings), std::end(kEndings), ending) != std::end(kEndings);
}

#ifndef ORBIMG_HAS_LIBRAW

bool CanReadRaw() { return false; }

std::unique_ptr<FrameReader> OpenRaw(std::string const& path, bool) {
  RequireReadableFile(path);
  throw HostError(Exit::kInput, path +
                                    ": this build does not read camera raw files; build it with LibRaw "
                                    "(libraw-dev), or convert them to TIFF or FITS first");
}

#else

bool CanReadRaw() { return true; }

namespace {

constexpr int kPeriod = ColourPattern::kPeriod;

class RawReader : public FrameReader {
 public:
  RawReader(std::string const& path, bool initAsMosaic) : asMosaic(initAsMosaic), raw(std::make_unique<LibRaw>()) {
    facts.path = path;
    RequireReadableFile(path);
    raw->set_dataerror_handler(OnDataError, this);  // else it writes to standard error
    Check(raw->open_file(path.c_str()));
    // Which of the two kinds of samples there are, and black and white, are known after unpacking only.
    Check(raw->unpack());
    if (isDamaged) Fail("its samples are damaged");
    Describe();
  }

 private:
  static void OnDataError(void* self, char const*, int) { static_cast<RawReader*>(self)->isDamaged = true; }

  [[noreturn]] void Fail(std::string const& reason) const {
    throw HostError(Exit::kInput, Path() + ": not a readable camera raw file: " + reason);
  }

  void Check(int status) const {
    if (status == LIBRAW_SUCCESS) return;
    if (status == LIBRAW_UNSUFFICIENT_MEMORY) {
      throw HostError(Exit::kResources, Path() + ": not enough memory to read it");
    }
    Fail(OneLine(libraw_strerror(status)));
  }

  void Describe();
  void SetColours();
  void SetBlack();
  void AddCards();
  double BlackAt(int x, int y) const;
  Converted DoRead(int top, int rows, std::vector<float*> const& planes) override;

  bool asMosaic;
  bool isDamaged = false;
  std::unique_ptr<LibRaw> raw;
  Mosaic mosaic;                          // samples are null where each pixel has three of its own
  std::uint16_t const* pixels = nullptr;  // of three or four samples each
  std::ptrdiff_t pixelStride = 0;
  std::vector<double> black;  // of each plane
};

void RawReader::Describe() {
  libraw_image_sizes_t const& sizes = raw->imgdata.sizes;
  libraw_rawdata_t const& data = raw->imgdata.rawdata;
  bool const isInside = sizes.width > 0 && sizes.height > 0 && sizes.left_margin + sizes.width <= sizes.raw_width &&
                        sizes.top_margin + sizes.height <= sizes.raw_height && sizes.raw_pitch > 0;
  if (!isInside) Fail("its picture has no possible size");
  std::ptrdiff_t const pixelBytes = data.raw_image != nullptr ? 2 : data.color3_image != nullptr ? 6 : 8;
  std::ptrdiff_t const pitch = sizes.raw_pitch / pixelBytes;
  std::ptrdiff_t const start = sizes.top_margin * pitch + sizes.left_margin;
  mosaic.width = sizes.width;
  mosaic.height = sizes.height;
  mosaic.pitch = pitch;
  if (data.raw_image != nullptr) {
    mosaic.samples = data.raw_image + start;
  } else if (data.color3_image != nullptr || data.color4_image != nullptr) {
    pixelStride = pixelBytes / 2;
    pixels = (data.color3_image != nullptr ? &data.color3_image[0][0] : &data.color4_image[0][0]) + start * pixelStride;
    if (asMosaic) Fail("it holds no mosaic: each pixel has its three colours; leave out --mosaic");
  } else {
    Fail("its samples are floats, which are not read");
  }
  facts.format = "camera raw";
  facts.type = SampleType::kUint16;
  facts.typeName = NameOf(facts.type);
  facts.bitpix = BitpixOf(facts.type);
  bool const isMono = mosaic.samples != nullptr && (asMosaic || raw->imgdata.idata.colors == 1);
  facts.shape = orb::host::Shape{sizes.width, sizes.height, isMono ? 1 : 3};
  facts.isScaled = mosaic.samples != nullptr && !isMono;  // means are no whole numbers
  if (facts.isScaled) SetColours();
  SetBlack();
  AddCards();
}

void RawReader::SetColours() {
  std::string const letters = raw->imgdata.idata.cdesc;
  for (int y = 0; y < kPeriod; ++y) {
    for (int x = 0; x < kPeriod; ++x) {
      auto const index = static_cast<std::size_t>(raw->COLOR(y, x));
      std::size_t const plane = index < letters.size() ? std::string("RGB").find(letters[index]) : std::string::npos;
      if (plane == std::string::npos)
        Fail("its colours are " + OneLine(letters) + ", not red, green and blue; try --mosaic");
      mosaic.pattern.planes[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] =
          static_cast<std::uint8_t>(plane);
    }
  }
}

// A constant, one for each colour, and a pattern that repeats.
double RawReader::BlackAt(int x, int y) const {
  libraw_colordata_t const& color = raw->imgdata.color;
  double level = color.black;
  if (mosaic.samples != nullptr && raw->imgdata.idata.filters != 0) level += color.cblack[raw->COLOR(y, x) & 3];
  unsigned const rows = color.cblack[4];
  unsigned const columns = color.cblack[5];
  if (rows != 0 && columns != 0 && rows <= 48 && columns <= 48 && kPeriod % rows == 0 && kPeriod % columns == 0) {
    level += color.cblack[6 + (static_cast<unsigned>(y) % rows) * columns + static_cast<unsigned>(x) % columns];
  }
  return level;
}

void RawReader::SetBlack() {
  ColourPattern& pattern = mosaic.pattern;
  std::vector<double> sum(static_cast<std::size_t>(facts.shape.planes), 0.0);
  std::vector<double> count(sum.size(), 0.0);
  auto const planeAt = [&](int x, int y) {
    return facts.shape.planes == 1 ? std::size_t{0} : static_cast<std::size_t>(pattern.PlaneAt(x, y));
  };
  for (int y = 0; y < kPeriod; ++y) {
    for (int x = 0; x < kPeriod; ++x) {
      sum[planeAt(x, y)] += BlackAt(x, y);
      count[planeAt(x, y)] += 1.0;
    }
  }
  for (std::size_t p = 0; p < sum.size(); ++p) {
    black.push_back(count[p] > 0.0 ? sum[p] / count[p] : static_cast<double>(raw->imgdata.color.black));
  }
  if (facts.shape.planes == 1) return;  // the mosaic stays as it is
  for (int y = 0; y < kPeriod; ++y) {
    for (int x = 0; x < kPeriod; ++x) {
      pattern.excess[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] =
          static_cast<float>(BlackAt(x, y) - black[planeAt(x, y)]);
    }
  }
}

void RawReader::AddCards() {
  libraw_data_t const& data = raw->imgdata;
  FitsHeader& header = facts.header;
  std::string const camera = OneLine(std::string(data.idata.make) + " " + data.idata.model);
  if (!camera.empty()) header.SetText("INSTRUME", camera, "camera");
  if (data.other.shutter > 0.0f) header.SetNumber("EXPTIME", data.other.shutter, "[s] exposure");
  if (data.other.iso_speed > 0.0f) header.SetNumber("ISOSPEED", data.other.iso_speed, "ISO speed");
  if (data.other.aperture > 0.0f) header.SetNumber("FNUMBER", data.other.aperture, "focal ratio");
  if (data.other.focal_len > 0.0f) header.SetNumber("FOCALLEN", data.other.focal_len, "[mm] focal length");
  std::tm time{};
  char text[32] = "";
  if (data.other.timestamp > 0 && localtime_r(&data.other.timestamp, &time) != nullptr &&
      std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &time) != 0) {
    header.SetText("DATE-LOC", text, "by the clock of the camera");
  }
  double const white = std::max<double>(data.color.maximum, black[0] + 1.0);
  for (std::size_t p = 0; p < black.size(); ++p) {
    std::string const number = p == 0 ? "" : std::to_string(p + 1);
    header.SetNumber("CBLACK" + number, black[p], "black level of the sensor");
    header.SetNumber("CWHITE" + number, white, "white level of the sensor");
  }
  if (facts.shape.planes != 1 || data.idata.filters < 1000) return;  // less: no repeating square of 2 x 2
  std::string pattern;
  for (int i = 0; i < 4; ++i) {
    pattern += data.idata.cdesc[raw->COLOR(i / 2, i % 2) & 3];
  }
  header.SetText("BAYERPAT", pattern, "colours of the first two rows");
  header.SetText("ROWORDER", "TOP-DOWN", "the pattern counts from the first row");
}

Converted RawReader::DoRead(int top, int rows, std::vector<float*> const& planes) {
  std::int64_t const width = mosaic.width;
  for (std::size_t p = 0; p < planes.size(); ++p) {
    if (planes[p] == nullptr) continue;
    for (int i = 0; i < rows; ++i) {
      float* const row = planes[p] + i * width;
      std::ptrdiff_t const y = top + i;
      if (pixels != nullptr) {
        std::uint16_t const* const from = pixels + y * mosaic.pitch * pixelStride + static_cast<std::ptrdiff_t>(p);
        ConvertSamples(SampleType::kUint16, from, width, pixelStride, {}, row);
      } else if (planes.size() == 1) {
        ConvertSamples(SampleType::kUint16, mosaic.samples + y * mosaic.pitch, width, 1, {}, row);
      } else {
        DebayerRow(mosaic, static_cast<int>(p), top + i, row);
      }
    }
  }
  return {};
}

}  // namespace

std::unique_ptr<FrameReader> OpenRaw(std::string const& path, bool asMosaic) {
  return std::make_unique<RawReader>(path, asMosaic);
}

#endif

}  // namespace orb::host
