#include <orbimg/geometry/soft_binning.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <orbimg/core/truncate.h>
#include <orbimg/geometry/binning_kernels.h>
#include <orbimg/geometry/moved_rows_internal.h>

namespace {

constexpr int kMessage = 6132;

// -1, which no image has, where there is no bin.
int BinnedSize(int size, int bin, bool keepsPartial) {
  if (bin < 1) return -1;
  double const bins = static_cast<double>(size) / bin;
  double const whole = keepsPartial ? std::ceil(bins) : std::floor(bins);
  return orb::TruncateToInt(whole);
}

// The bins of a row: whole ones, and one that the source has only some pixels of.
class BinnedColumns {
 public:
  BinnedColumns(int initCount, int sourceWidth, int initBin)
      : count(initCount),
        bin(initBin),
        whole(std::min(initCount, sourceWidth / initBin)),
        rest(std::min(sourceWidth - whole * bin, bin)) {}

  bool ArePairs() const { return bin == 2 && whole == count; }
  void AddRow(float const* src, float* sums) const {
    orb::AddBinsRow(src, bin, sums, whole);
    if (whole < count) orb::AddBinsRow(src + std::ptrdiff_t{whole} * bin, rest, sums + whole, 1);
  }

 private:
  int count;
  int bin;
  int whole;
  int rest;
};

}  // namespace

int CImgSoftBinning::Do(int binX, int binY, int keepPartial, int scaleLevels, COrbImage* src, int progress) {
  InitStdPt();
  if (Resize(BinnedSize(width, binX, keepPartial != 0), BinnedSize(height, binY, keepPartial != 0), progress) == 0) {
    return 0;
  }
  BinnedColumns const columns(width, src->GetWidth(), binX);
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, planes * height);
  orb::EachLockedRow(*this, run, [&](float* row, int y, int p) {
    std::int64_t const top = std::int64_t{y} * binY;
    std::int64_t const bottom = std::min<std::int64_t>(top + binY, src->GetHeight());
    if (columns.ArePairs() && bottom - top == 2) {
      int const v = static_cast<int>(top);
      orb::SumPairsRow(src->GetImageAdr(0, v, p, 1, nullptr), src->GetImageAdr(0, v + 1, p, 1, nullptr), row, width);
      return;
    }
    std::fill(row, row + width, 0.0f);
    for (std::int64_t v = top; v < bottom; ++v) {
      columns.AddRow(src->GetImageAdr(0, static_cast<int>(v), p, 1, nullptr), row);
    }
  });
  if (scaleLevels != 0) {
    for (int p = 0; p < planes; ++p) SetLevel(p, GetLevelMin(p) * binX * binY, GetLevelMax(p) * binX * binY);
  }
  run.End();
  return 1;
}
