// The work images of the filters: a copy in a mirrored border.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include <orbimg/core/level.h>
#include <orbimg/core/row_kernel.h>
#include <orbimg/filters/edge_rules_internal.h>
#include <orbimg/filters/filter.h>

namespace {

constexpr int kFilterMessage = 6126;
constexpr int kDigitalDevelopmentMessage = 6125;
constexpr int kDefaultRadius = 2;
constexpr int kColours = 3;
constexpr int kMeanPlane = 3;
constexpr double kThird = 0.3333333333333333;

// Null for lack of memory. The store does not report on its own work, so it gets no window.
std::unique_ptr<COrbImage> MakeWork(COrbImage const& image, int radius, int planes) {
  std::int64_t const width = image.GetWidth() + 2 * std::int64_t{radius};
  std::int64_t const height = image.GetHeight() + 2 * std::int64_t{radius};
  constexpr std::int64_t kMost = std::numeric_limits<int>::max();
  if (radius < 0 || width > kMost || height > kMost) return nullptr;
  try {
    return std::make_unique<COrbImage>(-32, static_cast<int>(width), static_cast<int>(height), planes, 1.0, 0.0, 1,
                                       nullptr, nullptr);
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

void CopyRow(COrbImage const& source, int y, int plane, int radius, COrbImage& work) {
  float const* const from = source.GetImageAdr(0, y, plane, 1, nullptr);
  std::copy_n(from, source.GetWidth(), work.GetImageAdr(radius, y + radius, plane, 0, nullptr));
}

// The samples of work row `row` that lie in the border: all, or those beside a copied row.
void FillBorderRow(COrbImage const& source, int row, int plane, int radius, COrbImage& work) {
  int const workWidth = work.GetWidth();
  int const y = orb::MirrorBorder(std::int64_t{row} - radius, source.GetHeight());
  float const* const from = source.GetImageAdr(0, y, plane, 1, nullptr);
  float* const to = work.GetImageAdr(0, row, plane, 0, nullptr);
  auto const fill = [&](int begin, int end) {
    for (int x = begin; x < end; ++x) to[x] = from[orb::MirrorBorder(std::int64_t{x} - radius, source.GetWidth())];
  };
  bool const isCopied = row >= radius && row < work.GetHeight() - radius;
  fill(0, isCopied ? radius : workWidth);
  if (isCopied) fill(workWidth - radius, workWidth);
}

template <typename Tick>
void FillPlane(COrbImage const& source, int plane, int radius, COrbImage& work, Tick tick) {
  work.CImage::SetLevel(plane, source.GetLevelMin(plane), source.GetLevelMax(plane));
  for (int y = 0; y < source.GetHeight(); ++y) {
    CopyRow(source, y, plane, radius, work);
    tick();
  }
}

template <typename Tick>
void FillBorder(COrbImage const& source, int plane, int radius, COrbImage& work, Tick tick) {
  bool const isEmpty = source.GetWidth() == 0 || source.GetHeight() == 0;
  for (int row = 0; row < work.GetHeight(); ++row) {
    if (!isEmpty) FillBorderRow(source, row, plane, radius, work);
    tick();
  }
}

// mean = ((p0 - min) / range * 255 + the same of p1 and p2) * (1 / 3) * range * (1 / 255) + min
ORB_ROW_KERNEL void MeanRow(float const* p0, float const* p1, float const* p2, std::ptrdiff_t count, orb::Level level,
                            float* mean) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const sum = level.To256(p0[x]) + level.To256(p1[x]) + level.To256(p2[x]);
    mean[x] = static_cast<float>(sum * kThird * level.range * orb::kInverse255 + level.min);
  }
}

// Intended: all three planes by the levels of plane 0.
void FillMeanRow(COrbImage& work, int row) {
  auto const address = [&](int plane, unsigned flags) { return work.GetImageAdr(0, row, plane, flags, nullptr); };
  MeanRow(address(0, 1), address(1, 1), address(2, 1), work.GetWidth(), orb::LevelOf(work, 0), address(kMeanPlane, 0));
}

}  // namespace

COrbImage* CImgFilter::MakeFilterWork(int radius, int progress) {
  if (radius == 0) radius = kDefaultRadius;
  auto work = MakeWork(*this, radius, planes);
  if (work == nullptr) return nullptr;
  auto const tick = [this] { ShowProgress(1); };
  ShowProgressInit(progress, kFilterMessage, planes * work->GetHeight() * 2);
  for (int p = 0; p < planes; ++p) FillPlane(*this, p, radius, *work, tick);
  for (int p = 0; p < planes; ++p) FillBorder(*this, p, radius, *work, tick);
  ShowProgressEnd(static_cast<char const*>(nullptr));
  return work.release();
}

COrbImage* CImgFilter::MakeDDWork(int radius, int progress) {
  if (radius == 0) radius = kDefaultRadius;
  bool const isColor = IsColor() != 0;
  auto work = MakeWork(*this, radius, isColor ? kMeanPlane + 1 : 1);
  if (work == nullptr) return nullptr;
  int const copied = std::min(planes, isColor ? kColours : 1);
  auto const tick = [this] { ShowProgress(1); };
  ShowProgressInit(progress, kDigitalDevelopmentMessage, work->GetHeight() * (copied * 2 + (isColor ? 1 : 0)));
  for (int p = 0; p < copied; ++p) FillPlane(*this, p, radius, *work, tick);
  for (int p = 0; p < copied; ++p) FillBorder(*this, p, radius, *work, tick);
  if (isColor) {
    work->CImage::SetLevel(kMeanPlane, GetLevelMin(0), GetLevelMax(0));
    for (int row = 0; row < work->GetHeight(); ++row) {
      FillMeanRow(*work, row);
      tick();
    }
  }
  ShowProgressEnd(static_cast<char const*>(nullptr));
  return work.release();
}
