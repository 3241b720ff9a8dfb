#include <orbimg/geometry/rotate.h>

#include <algorithm>
#include <cmath>

#include <orbimg/core/sampled_row_kernels.h>
#include <orbimg/core/truncate.h>
#include <orbimg/geometry/move_kernels.h>
#include <orbimg/geometry/moved_rows_internal.h>

namespace {

constexpr int kMessage = 6112;
constexpr int kBandRows = 128;  // of a quarter turn: source columns that are read together, eight cache lines a row

// The default centre, while this lives.
class DefaultCentre {
 public:
  explicit DefaultCentre(COrbImage& owner) : image(owner), before(owner.GetStdCtr()) { image.SetDefaultCenter(); }
  DefaultCentre(DefaultCentre const&) = delete;
  DefaultCentre& operator=(DefaultCentre const&) = delete;
  ~DefaultCentre() { image.SetStdCtr(before); }

 private:
  COrbImage& image;
  CfPoint const before;
};

struct Extent {
  int lowest = 0;  // Intended: the middle counts like a corner
  int highest = 0;

  void Add(double v) {
    int const cell = orb::TruncateToInt(std::ceil(v));
    lowest = std::min(lowest, cell);
    highest = std::max(highest, cell);
  }
  int Size() const { return orb::TruncateToInt(static_cast<double>(highest) - lowest + 1.0); }
};

// Rows `top` to `bottom` - 1 of the plane of an image that is turned to the left: columns of the source from the right.
void TurnLeft(COrbImage const& src, COrbImage& dst, int plane, int top, int bottom) {
  std::ptrdiff_t const srcStep = src.GetWidth();
  std::ptrdiff_t const dstStep = dst.GetWidth();
  orb::TransposeRows({src.GetImageAdr(src.GetWidth() - bottom, 0, plane, 1, nullptr), srcStep},
                     {dst.GetImageAdr(0, bottom - 1, plane, 0, nullptr), -dstStep}, dst.GetWidth(), bottom - top);
}

void TurnRight(COrbImage const& src, COrbImage& dst, int plane, int top, int bottom) {
  std::ptrdiff_t const srcStep = src.GetWidth();
  std::ptrdiff_t const dstStep = dst.GetWidth();
  orb::TransposeRows({src.GetImageAdr(top, src.GetHeight() - 1, plane, 1, nullptr), -srcStep},
                     {dst.GetImageAdr(0, top, plane, 0, nullptr), dstStep}, dst.GetWidth(), bottom - top);
}

}  // namespace

namespace orb {

// x' = x c - y s, y' = y c + x s for the corners about the middle
CSize FindTurnedSize(int width, int height, double angle) {
  double const s = std::sin(angle * kRadiansPerDegree);
  double const c = std::cos(angle * kRadiansPerDegree);
  Extent across;
  Extent down;
  for (int const x : {-(width / 2), width - width / 2 - 1}) {
    for (int const y : {height / 2, height / 2 - height + 1}) {
      across.Add(x * c - y * s);
      down.Add(y * c + x * s);
    }
  }
  return CSize(across.Size(), down.Size());
}

}  // namespace orb

int CImgRotate::Do(double angle, double* fill, COrbImage* src, int resize, int progress) {
  if (angle == 0.0) return 1;
  InitStdPt();
  SetStdCtr(width / 2, height / 2);
  double const s = std::sin(angle * orb::kRadiansPerDegree);
  double const c = std::cos(angle * orb::kRadiansPerDegree);
  if (resize != 0) {
    CSize const size = orb::FindTurnedSize(width, height, angle);
    if (Resize(size.cx, size.cy, progress) == 0) return 0;
  }
  double const dx = (width - src->GetWidth()) * 0.5;
  double const dy = (height - src->GetHeight()) * 0.5;
  DefaultCentre const centre(*src);
  orb::SampledRow sampled(*src, 0, width, dx, dy, s, c);
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, height * planes);
  orb::EachLockedRow(*this, run, [&](float* row, int y, int p) {
    sampled.Locate(y);
    sampled.SampleRaw(p, fill[p], row);
  });
  run.End();
  return 1;
}

int CImgRotate::Do90(int direction, COrbImage* src, int progress) {
  InitStdPt();
  if (Resize(height, width, progress) == 0) return 0;
  for (int p = 0; p < planes; ++p) SetLevel(p, src->GetLevelMin(p), src->GetLevelMax(p));
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, planes * height);
  for (int p = 0; p < planes; ++p) {
    for (int top = 0; top < height; top += kBandRows) {
      int const bottom = std::min(top + kBandRows, height);
      (direction == 0 ? TurnLeft : TurnRight)(*src, *this, p, top, bottom);
      for (int y = top; y < bottom; ++y) run.Tick();
    }
  }
  run.End();
  return 1;
}

void CImgRotate::Do180(COrbImage* src, int progress) {
  InitStdPt();
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, height * planes);
  orb::EachMovedRow(*this, run, [&](float* row, int y, int p) {
    orb::ReverseRow(src->GetImageAdr(0, height - 1 - y, p, 1, nullptr), row, width);
  });
  run.End();
}
