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

}  // namespace

int CImgSoftBinning::Do(int binX, int binY, int keepPartial, int scaleLevels, COrbImage* src, int progress) {
  InitStdPt();
  if (Resize(BinnedSize(width, binX, keepPartial != 0), BinnedSize(height, binY, keepPartial != 0), progress) == 0) {
    return 0;
  }
  int const wholeBins = std::min(width, src->GetWidth() / binX);
  int const rest = std::min(src->GetWidth() - wholeBins * binX, binX);  // pixels of a partial last bin
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, planes * height);
  orb::EachLockedRow(*this, run, [&](float* row, int y, int p) {
    std::fill(row, row + width, 0.0f);
    std::int64_t const top = std::int64_t{y} * binY;
    std::int64_t const bottom = std::min<std::int64_t>(top + binY, src->GetHeight());
    for (std::int64_t v = top; v < bottom; ++v) {
      float const* const from = src->GetImageAdr(0, static_cast<int>(v), p, 1, nullptr);
      orb::AddBinsRow(from, binX, row, wholeBins);
      if (wholeBins < width) orb::AddBinsRow(from + std::ptrdiff_t{wholeBins} * binX, rest, row + wholeBins, 1);
    }
  });
  if (scaleLevels != 0) {
    for (int p = 0; p < planes; ++p) SetLevel(p, GetLevelMin(p) * binX * binY, GetLevelMax(p) * binX * binY);
  }
  run.End();
  return 1;
}
