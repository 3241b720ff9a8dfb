#include <orbimg/stacking/lrgb_composite.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <orbimg/core/lab_kernels.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/sampled_row_kernels.h>
#include <platform/assert.h>

namespace {

constexpr int kMessage = 6103;
constexpr double kOutside = 0.0;

struct Placement {
  double dx;
  double dy;
  double angle;  // degrees
  double scale;
};

orb::SampledRow SampledBy(COrbImage& source, Placement const& place, orb::Bounds const& area) {
  double const radians = place.angle * orb::kRadiansPerDegree;
  return orb::SampledRow(source, area.left, area.right, place.dx, place.dy, std::sin(radians), std::cos(radians),
                         place.scale);
}

ORB_ROW_KERNEL void EncodeRow(double const* v, std::ptrdiff_t count, double* encoded) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) encoded[i] = orb::Encode256(v[i], orb::kMostEncoded256);
}

ORB_ROW_KERNEL void AverageRow(double const* first, double const* second, std::ptrdiff_t count, orb::Level to,
                               float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    dst[i] = static_cast<float>((first[i] + second[i]) * 0.5 * to.range * orb::kInverse255 + to.min);
  }
}

// A source's red, green and blue on the 256-scale, row by row; a mono source has one row for the three.
class SampledColors {
 public:
  SampledColors(COrbImage& source, Placement const& place, orb::Bounds const& area)
      : planes(source.IsColor() != 0 ? 3 : 1), row(SampledBy(source, place, area)) {
    for (int p = 0; p < planes; ++p) values[p].resize(static_cast<std::size_t>(area.Columns()));
  }

  void Locate(int y) {
    row.Locate(y);
    for (int p = 0; p < planes; ++p) row.SampleDouble256f(p, kOutside, values[p].data());
  }
  double const* Channel(int channel) const { return values[channel < planes ? channel : 0].data(); }

  // Encoded channels of the columns from `begin` on.
  void Encode(std::ptrdiff_t begin, std::ptrdiff_t count, orb::ColorBlock& rgb) const {
    EncodeRow(Channel(0) + begin, count, rgb.first);
    EncodeRow(Channel(1) + begin, count, rgb.second);
    EncodeRow(Channel(2) + begin, count, rgb.third);
  }

 private:
  int planes;
  orb::SampledRow row;
  std::vector<double> values[3];
};

// The rows of the destination. The samplers ask their images for addresses between the writes of a row, so these are
// locked meanwhile.
class LockedColors {
 public:
  LockedColors(COrbImage& destination, int x, int y)
      : image(destination), rows{{image, x, y, 0, false}, {image, x, y, 1, false}, {image, x, y, 2, false}} {}

  float* Address(int plane) const { return rows[plane].Address(); }
  orb::Level LevelOf(int plane) const { return orb::LevelOf(image, plane); }

  void Store(orb::ColorBlock const& rgb, std::ptrdiff_t begin, std::ptrdiff_t count) const {
    double const* const channels[] = {rgb.first, rgb.second, rgb.third};
    for (int p = 0; p < 3; ++p) orb::StoreEncodedRow(channels[p], count, LevelOf(p), Address(p) + begin);
  }

 private:
  COrbImage& image;
  orb::LockedRow rows[3];
};

// fill(begin, count, rgb) gives the encoded channels of a block of columns.
template <typename Fill>
void StoreBlocks(LockedColors const& to, std::ptrdiff_t columns, Fill fill) {
  orb::ColorBlock rgb;
  for (std::ptrdiff_t begin = 0; begin < columns; begin += orb::kLabBlock) {
    std::ptrdiff_t const count = std::min(orb::kLabBlock, columns - begin);
    fill(begin, count, rgb);
    to.Store(rgb, begin, count);
  }
}

void JoinRow(SampledColors const& luminance, SampledColors const& colour, std::ptrdiff_t columns,
             LockedColors const& to) {
  orb::ColorBlock lightness;
  orb::ColorBlock chroma;
  StoreBlocks(to, columns, [&](std::ptrdiff_t begin, std::ptrdiff_t count, orb::ColorBlock& rgb) {
    luminance.Encode(begin, count, lightness);
    colour.Encode(begin, count, chroma);
    orb::JoinLightnessAndChroma(lightness, chroma, count, rgb);
  });
}

void AverageRows(SampledColors const& first, SampledColors const& second, std::ptrdiff_t columns,
                 LockedColors const& to) {
  for (int p = 0; p < 3; ++p) AverageRow(first.Channel(p), second.Channel(p), columns, to.LevelOf(p), to.Address(p));
}

// L, a and b of a row of planes that hold them.
class SampledLab {
 public:
  SampledLab(COrbImage& lPlane, Placement const& placeL, COrbImage& abPlane, Placement const& placeC,
             orb::Bounds const& area)
      : lightness(SampledBy(lPlane, placeL, area)),
        chroma(SampledBy(abPlane, placeC, area)),
        l(static_cast<std::size_t>(area.Columns())),
        a(l.size()),
        b(l.size()) {}

  void Locate(int y) {
    lightness.Locate(y);
    chroma.Locate(y);
    lightness.SampleRaw(0, kOutside, l.data());
    chroma.SampleDouble(0, kOutside, a.data());
    chroma.SampleDouble(1, kOutside, b.data());
  }

  void Copy(std::ptrdiff_t begin, std::ptrdiff_t count, orb::ColorBlock& lab) const {
    orb::WidenRow(l.data() + begin, count, lab.first);
    std::copy_n(a.data() + begin, count, lab.second);
    std::copy_n(b.data() + begin, count, lab.third);
  }

 private:
  orb::SampledRow lightness;
  orb::SampledRow chroma;
  std::vector<float> l;  // a single sample of L is rounded to float, those of a and b are not
  std::vector<double> a;
  std::vector<double> b;
};

// Intended: the luminance's levels of plane 0 for all planes, even where no sample is written.
void TakeLevels(COrbImage& image, COrbImage const& luminance) {
  double const min = luminance.GetLevelMin(0);
  double const max = luminance.GetLevelMax(0);
  for (int p = 0; p < 3; ++p) image.SetLevel(p, min, max);
}

}  // namespace

void CImgLrgbCmpst::DoLrgb(COrbImage* luminance, double dxL, double dyL, double angleL, COrbImage* colour, double dxC,
                           double dyC, double angleC, double scale, CRect* rect, int average, int progress) {
  ORB_ASSERT(planes >= 3 && luminance != this && colour != this);
  bool const isAverage = average != 0;
  orb::Run run(*this, rect);
  // Intended: the average reports nothing.
  run.Start(isAverage ? 0 : progress, kMessage, run.Rows());
  TakeLevels(*this, *luminance);
  orb::Bounds const& area = run.Area();
  if (!area.IsEmpty()) {
    SampledColors first(*luminance, Placement{dxL, dyL, angleL, 1.0}, area);
    SampledColors second(*colour, Placement{dxC, dyC, angleC, scale}, area);
    for (int y = area.top; y < area.bottom; ++y) {
      first.Locate(y);
      second.Locate(y);
      (isAverage ? AverageRows : JoinRow)(first, second, area.Columns(), LockedColors(*this, area.left, y));
      run.Tick();
    }
  }
  run.End();
}

void CImgLrgbCmpst::DoLab(COrbImage* lPlane, double dxL, double dyL, double angleL, COrbImage* abPlane, double dxC,
                          double dyC, double angleC, double scale, CRect* rect, int progress) {
  ORB_ASSERT(planes >= 3 && lPlane != this && abPlane != this);
  orb::Run run(*this, rect);
  run.Start(progress, kMessage, run.Rows());
  TakeLevels(*this, *lPlane);
  orb::Bounds const& area = run.Area();
  if (!area.IsEmpty()) {
    SampledLab sampled(*lPlane, Placement{dxL, dyL, angleL, 1.0}, *abPlane, Placement{dxC, dyC, angleC, scale}, area);
    orb::ColorBlock lab;
    for (int y = area.top; y < area.bottom; ++y) {
      sampled.Locate(y);
      StoreBlocks(LockedColors(*this, area.left, y), area.Columns(),
                  [&](std::ptrdiff_t begin, std::ptrdiff_t count, orb::ColorBlock& rgb) {
                    sampled.Copy(begin, count, lab);
                    orb::LabToRgb(lab, count, rgb);
                  });
      run.Tick();
    }
  }
  run.End();
}
