#include <orbimg/stacking/mosaic.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/sampled_row_kernels.h>
#include <orbimg/stacking/mosaic_kernels.h>
#include <orbimg/stacking/mosaic_modes_internal.h>
#include <platform/assert.h>

namespace {

constexpr int kMosaicMessage = 6135;

// The tolerance of a key: a 256th of the range.
constexpr double k256th = 0.00390625;

struct Rules {
  orb::Overlap overlap;
  bool is256;
  bool isAverage;
  double outsideFirst;
  double outsideSecond;
};

orb::Overlap OverlapOf(COrbImage const& canvas, int mode, float const* key, bool is256) {
  orb::Overlap overlap{mode, {0.0, 0.0, 0.0}, is256 ? 1.0 : canvas.GetLevelRange(0) * k256th};
  for (int p = 0; mode == orb::kKeyed && p < (canvas.IsColor() != 0 ? 3 : 1); ++p) {
    overlap.key[p] = is256 ? orb::LevelOf(canvas, p).To256(key[p]) : key[p];
  }
  return overlap;
}

// A row of each plane that is joined.
template <typename Value>
class PlaneRows {
 public:
  PlaneRows(int planes, int columns) {
    for (int p = 0; p < planes; ++p) samples[p].resize(static_cast<std::size_t>(columns));
  }
  Value* From(int plane, std::ptrdiff_t column) { return samples[plane].data() + column; }

 private:
  std::vector<Value> samples[3];
};

void Merge(orb::Overlap const& overlap, PlaneRows<float>& second, std::ptrdiff_t begin, std::ptrdiff_t end,
           PlaneRows<float>& first) {
  orb::MergeRow(overlap, second.From(0, begin), end - begin, first.From(0, begin));
}

void Merge(orb::Overlap const& overlap, PlaneRows<double>& second, std::ptrdiff_t begin, std::ptrdiff_t end,
           PlaneRows<double>& first) {
  double const* const from[3] = {second.From(0, begin), second.From(1, begin), second.From(2, begin)};
  double* const to[3] = {first.From(0, begin), first.From(1, begin), first.From(2, begin)};
  orb::MergeColorRow(overlap, from, end - begin, to);
}

void Sample(orb::SampledRow& sampled, bool is256, int plane, double outside, float* row) {
  is256 ? sampled.Sample256f(plane, outside, row) : sampled.SampleRaw(plane, outside, row);
}

void Sample(orb::SampledRow& sampled, bool is256, int plane, double outside, double* row) {
  is256 ? sampled.SampleDouble256f(plane, outside, row) : sampled.SampleDouble(plane, outside, row);
}

// Samples of type Value: the single-value sampler of a mono canvas rounds to float, the three of a colour one are not
// rounded before they are joined.
template <typename Value>
class Paste {
 public:
  Paste(COrbImage& initCanvas, Rules const& initRules, orb::Bounds const& initArea)
      : canvas(initCanvas),
        rules(initRules),
        area(initArea),
        planes(canvas.IsColor() != 0 ? 3 : 1),
        a(planes, Columns()),
        b(planes, Columns()) {}

  void Row(int y, orb::SampledRow& first, orb::SampledRow& second) {
    SampleSource(first, y, rules.outsideFirst, a);
    SampleSource(second, y, rules.outsideSecond, b);
    if (!rules.isAverage) Join(first, second);
    for (int p = 0; p < planes; ++p) Store(y, p);
  }

 private:
  int Columns() const { return std::max(area.Columns(), 0); }

  void SampleSource(orb::SampledRow& source, int y, double outside, PlaneRows<Value>& rows) {
    source.Locate(y);
    for (int p = 0; p < planes; ++p) Sample(source, rules.is256, planes == 3 ? p : -1, outside, rows.From(p, 0));
  }

  // Leaves in `a` what shows. Each source covers one interval of columns.
  void Join(orb::SampledRow const& first, orb::SampledRow const& second) {
    std::ptrdiff_t const begin = std::clamp(first.InsideBegin(), second.InsideBegin(), second.InsideEnd());
    std::ptrdiff_t const end = std::clamp(first.InsideEnd(), begin, second.InsideEnd());
    TakeSecond(second.InsideBegin(), begin);
    Merge(rules.overlap, b, begin, end, a);
    TakeSecond(end, second.InsideEnd());
  }

  void TakeSecond(std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (int p = 0; p < planes; ++p) std::copy(b.From(p, begin), b.From(p, end), a.From(p, begin));
  }

  void Store(int y, int plane) {
    orb::LockedRow const row(canvas, area.left, y, plane, false);
    orb::Level const level = orb::LevelOf(canvas, plane);
    orb::Level const* const to = rules.is256 ? &level : nullptr;
    if (rules.isAverage) {
      orb::StoreMeanRow(a.From(plane, 0), b.From(plane, 0), Columns(), to, row.Address());
    } else {
      orb::StoreRow(a.From(plane, 0), Columns(), to, row.Address());
    }
  }

  COrbImage& canvas;
  Rules const& rules;
  orb::Bounds const area;
  int const planes;
  PlaneRows<Value> a;  // samples of the first source
  PlaneRows<Value> b;  // samples of the second
};

template <typename Value>
void PasteRows(COrbImage& canvas, Rules const& rules, orb::Run& run, orb::SampledRow& first, orb::SampledRow& second) {
  Paste<Value> paste(canvas, rules, run.Area());
  for (int y = run.Area().top; y < run.Area().bottom; ++y) {
    paste.Row(y, first, second);
    run.Tick();
  }
}

}  // namespace

void CImgMosic::Do(COrbImage* first, int ox, int oy, COrbImage* second, double dx, double dy, double angle, int mode,
                   float* const key, float* const outside, int to256, int average, CRect* rect, int progress) {
  ORB_ASSERT(planes != 2);
  orb::Run run(*this, rect);
  double const radians = angle * orb::kRadiansPerDegree;
  run.Start(progress, kMosaicMessage, run.Rows());
  bool const is256 = to256 != 0;
  double const outsideSecond = is256 ? static_cast<double>(outside[0]) : 0.0;
  // Intended: off the first source a colour canvas has 0 even on the 256-scale.
  Rules const rules{OverlapOf(*this, mode, key, is256), is256, average != 0, IsColor() != 0 ? 0.0 : outsideSecond,
                    outsideSecond};
  orb::Bounds const& area = run.Area();
  orb::SampledRow firstRow(*first, area.left, area.right, ox, oy, 0.0, 1.0);
  orb::SampledRow secondRow(*second, area.left, area.right, ox + dx, oy + dy, std::sin(radians), std::cos(radians));
  if (IsColor() != 0) {
    PasteRows<double>(*this, rules, run, firstRow, secondRow);
  } else {
    PasteRows<float>(*this, rules, run, firstRow, secondRow);
  }
  run.End();
}
