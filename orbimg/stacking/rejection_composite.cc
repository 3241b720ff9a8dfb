// The rejection mode of the composite: one of two frames for each pixel.
#include <algorithm>
#include <cmath>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/sampled_row_kernels.h>
#include <orbimg/stacking/composite.h>
#include <orbimg/stacking/composite_modes_internal.h>
#include <orbimg/stacking/rejection_composite_kernels.h>

namespace {

constexpr int kLargestRadius = 2;

struct RejectionSettings {
  double ratio;
  bool is256;
  double threshold;
  int radius;
};

// Bright is strictly above one bound for both frames on the 256-scale, but at or above a bound of its own with raw
// samples: the brightest sample of a frame is bright at a threshold of 1.
struct BrightBounds {
  double first;
  double second;
  bool strict;

  bool IsFirstBright(double v) const { return strict ? v > first : v >= first; }
  bool IsSecondBright(double v) const { return strict ? v > second : v >= second; }
};

BrightBounds BoundsOf(COrbImage& first, COrbImage& second, RejectionSettings const& settings) {
  if (settings.is256) return BrightBounds{settings.threshold * 255.0, settings.threshold * 255.0, true};
  // Intended: plane 0's extrema for every plane.
  return BrightBounds{settings.threshold * first.GetMaxPixel(0), settings.threshold * second.GetMaxPixel(0), false};
}

double Lower(double p, double q) { return p < q ? p : q; }

// What a row needs: the samples of both frames, where those of the second lie, and the largest of their windows.
struct RejectionRow {
  explicit RejectionRow(std::ptrdiff_t columns)
      : a(static_cast<std::size_t>(columns)),
        b(a.size()),
        sx(a.size()),
        sy(a.size()),
        largestFirst(a.size()),
        largestSecond(a.size()),
        windowRow(a.size() + 2 * kLargestRadius),
        rowOffsets(a.size()) {
    for (auto& tap : nearestColumns) tap.resize(a.size());
  }

  std::vector<double> a;
  std::vector<float> b;
  std::vector<double> sx;
  std::vector<double> sy;
  std::vector<double> largestFirst;
  std::vector<double> largestSecond;
  std::vector<double> windowRow;
  std::vector<int> nearestColumns[2 * kLargestRadius + 1];
  std::vector<std::ptrdiff_t> rowOffsets;
};

// The run over one pair of frames; `image` is the destination.
class Rejection {
 public:
  Rejection(COrbImage& destination, COrbImage& firstFrame, COrbImage& secondFrame, RejectionSettings const& given,
            orb::Bounds const& bounds, orb::SampledRow& sampledRow)
      : image(destination),
        first(firstFrame),
        second(secondFrame),
        settings(given),
        area(bounds),
        sampled(sampledRow),
        bright(BoundsOf(firstFrame, secondFrame, given)),
        from(orb::LevelOf(firstFrame, 0)),
        to(orb::LevelOf(destination, 0)),
        row(std::max(bounds.Columns(), 0)) {}

  // Intended: the levels of plane 0 serve every plane, for the pixel itself and for the result; the windows take the
  // plane's own.
  void JoinRow(int y, int plane) {
    orb::LockedRow const toRow(image, area.left, y, plane, false);
    orb::LockedRow const fromRow(first, area.left, y, plane, true);
    float* const dst = toRow.Address();
    ReadFirst(fromRow.Address());
    ReadSecond(y, plane);
    Write(dst, 0, begin);
    if (settings.radius == 0) {
      orb::LowerRow(row.a.data() + begin, row.b.data() + begin, settings.ratio, end - begin, row.a.data() + begin);
      Write(dst, begin, end);
    } else {
      ReadWindows(y, plane);
      for (std::ptrdiff_t i = begin; i < end; ++i) dst[i] = Out(Choose(i, y, plane));
    }
    Write(dst, end, area.Columns());
  }

 private:
  static std::size_t At(std::ptrdiff_t column) { return static_cast<std::size_t>(column); }

  int Pixel(std::ptrdiff_t column) const { return area.left + static_cast<int>(column); }

  float Out(double v) const { return static_cast<float>(settings.is256 ? to.ToRaw(v) : v); }

  void Write(float* dst, std::ptrdiff_t firstColumn, std::ptrdiff_t lastColumn) const {
    for (std::ptrdiff_t i = firstColumn; i < lastColumn; ++i) dst[i] = Out(row.a[At(i)]);
  }

  void ReadFirst(float const* src) {
    for (std::ptrdiff_t i = 0; i < area.Columns(); ++i) row.a[At(i)] = settings.is256 ? from.To256(src[i]) : src[i];
  }

  // Samples, positions, and the columns begin .. end - 1 that are not too near the edge of the second frame; as
  // positions never turn back along a row, they are one interval.
  void ReadSecond(int y, int plane) {
    sampled.Locate(y);
    if (settings.is256) {
      sampled.Sample256f(plane, 0.0, row.b.data());
    } else {
      sampled.SampleRaw(plane, 0.0, row.b.data());
    }
    begin = sampled.InsideBegin();
    end = sampled.InsideEnd();
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      row.sx[At(i)] = sampled.PositionX(i);
      row.sy[At(i)] = sampled.PositionY(i);
    }
    while (begin < end && IsNearEdge(begin)) ++begin;
    while (begin < end && IsNearEdge(end - 1)) --end;
  }

  bool IsNearEdge(std::ptrdiff_t i) const {
    double const sx = row.sx[At(i)];
    double const sy = row.sy[At(i)];
    return sx < 1.0 || second.GetWidth() - 1 <= sx || sy < 1.0 || second.GetHeight() - 1 <= sy;
  }

  // Intended: the search for the largest of the second frame begins with b, not with bs.
  void ReadWindows(int y, int plane) {
    std::copy(row.a.begin() + begin, row.a.begin() + end, row.largestFirst.begin() + begin);
    std::copy(row.b.begin() + begin, row.b.begin() + end, row.largestSecond.begin() + begin);
    int const reach = std::clamp(settings.radius, -1, kLargestRadius);  // -1: an empty window
    for (int tapX = -reach; tapX <= reach; ++tapX) {
      orb::NearestColumnsRow(row.sx.data() + begin, Pixel(begin), tapX, second.GetWidth() - 1, end - begin,
                             row.nearestColumns[tapX + kLargestRadius].data() + begin);
    }
    for (int tapY = std::max(-reach, -y); tapY <= std::min(reach, image.GetHeight() - 1 - y); ++tapY) {
      ReadWindowRow(y, tapY, reach, plane);
    }
  }

  // One row of all windows. They end at the destination's edges.
  void ReadWindowRow(int y, int tapY, int reach, int plane) {
    if (begin == end) return;
    int const left = std::max(Pixel(begin) - reach, 0);
    int const right = std::min(Pixel(end) + reach, image.GetWidth());
    orb::ConvertRow(first.GetImageAdr(left, y + tapY, plane, 1, nullptr), orb::LevelOf(first, plane), settings.is256,
                    right - left, row.windowRow.data());
    int const secondPlane = second.IsColor() ? plane : 0;
    float const* const samples = second.GetImageAdr(0, 0, secondPlane, 1, nullptr);
    orb::NearestRowsRow(row.sy.data() + begin, y, tapY, second.GetHeight() - 1, second.GetWidth(), end - begin,
                        row.rowOffsets.data() + begin);
    for (int tapX = -reach; tapX <= reach; ++tapX) {
      std::ptrdiff_t const low = std::max<std::ptrdiff_t>(begin, -tapX - area.left);
      std::ptrdiff_t const high = std::min<std::ptrdiff_t>(end, image.GetWidth() - tapX - area.left);
      if (low >= high) continue;
      orb::RaiseRow(row.windowRow.data() + (Pixel(low) + tapX - left), high - low, row.largestFirst.data() + low);
      orb::RaiseToNearestRow(samples, row.rowOffsets.data() + low,
                             row.nearestColumns[tapX + kLargestRadius].data() + low, orb::LevelOf(second, secondPlane),
                             settings.is256, high - low, row.largestSecond.data() + low);
    }
  }

  double Choose(std::ptrdiff_t i, int y, int plane) const {
    double const a = row.a[At(i)];
    double const b = row.b[At(i)];
    double const bs = b * settings.ratio;
    bool const isFirstNearBright = bright.IsFirstBright(row.largestFirst[At(i)]);
    bool const isSecondNearBright = bright.IsSecondBright(row.largestSecond[At(i)]);
    if (!isFirstNearBright && !isSecondNearBright) return Lower(a, bs);
    if (!isFirstNearBright) return Lower(a, row.largestSecond[At(i)] * settings.ratio);
    if (!isSecondNearBright) return Lower(row.largestFirst[At(i)], bs);
    if (bright.IsFirstBright(a) && bright.IsSecondBright(b)) return Lower(a, bs);
    return CloserToNeighbours(a, bs, Pixel(i), y, plane);
  }

  // Intended: in the first column or row a neighbour is the pixel itself, not yet written.
  double CloserToNeighbours(double a, double bs, int x, int y, int plane) const {
    int const left = std::max(x - 1, 0);
    int const above = std::max(y - 1, 0);
    double sumA = 0.0;
    double sumB = 0.0;
    for (float const* neighbour :
         {image.GetImageAdr(left, above, plane, 1, nullptr), image.GetImageAdr(x, above, plane, 1, nullptr),
          image.GetImageAdr(left, y, plane, 1, nullptr)}) {
      double const v = settings.is256 ? to.To256(*neighbour) : *neighbour;
      sumA += std::fabs(a - v);
      sumB += std::fabs(bs - v);
    }
    return sumA < sumB ? a : bs;
  }

  COrbImage& image;
  COrbImage& first;
  COrbImage& second;
  RejectionSettings settings;
  orb::Bounds area;
  orb::SampledRow& sampled;
  BrightBounds bright;
  orb::Level from;
  orb::Level to;
  RejectionRow row;
  std::ptrdiff_t begin = 0;
  std::ptrdiff_t end = 0;
};

}  // namespace

void CImgComposit::Abr(COrbImage* first, COrbImage* second, double dx, double dy, double angle, int /*mode*/,
                       double ratio, int to256, int /*clamp*/, double threshold, int radius, CRect* rect, int progress,
                       int messageId) {
  orb::Run run(*this, rect);
  // Intended: a cosine that is never negative mirrors angles beyond a right angle.
  double const s = std::sin(angle * orb::kRadiansPerDegree);
  double const c = std::sqrt(1 - s * s);
  orb::Bounds const& area = run.Area();
  // Intended: rows are counted once although every plane ticks for each.
  run.Start(progress, orb::CompositeMessage(messageId), run.Rows());
  if (area.top < area.bottom) {
    orb::SampledRow sampled(*second, area.left, area.right, dx, dy, s, c);
    Rejection rejection(*this, *first, *second, RejectionSettings{ratio, to256 != 0, threshold, radius}, area, sampled);
    for (int p = 0; p < planes; ++p) {
      for (int y = area.top; y < area.bottom; ++y) {
        rejection.JoinRow(y, p);
        run.Tick();
      }
    }
  }
  run.End();
}
