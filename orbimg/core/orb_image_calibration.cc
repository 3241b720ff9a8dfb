// Dark and flat, in place.
#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>
#include <platform/assert.h>

namespace {

constexpr int kFlat = 6105;
constexpr int kDark = 6106;

// raw * a / f where f > 0
ORB_ROW_KERNEL void FlatRow(float const* flat, float* row, std::ptrdiff_t count, double a) {
  orb::EachBlock(flat, row, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      double const f = flat[x];
      float const divided = static_cast<float>(row[x] * a / f);
      row[x] = f > 0.0 ? divided : row[x];
    }
  });
}

// t = raw - d where that is above 0, otherwise 0. In float: a difference of two floats that is rounded to a double
// first and then to a float is the same, because a double has more than twice the digits of a float and two more.
ORB_ROW_KERNEL void DarkRow(float const* dark, float* row, std::ptrdiff_t count) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const t = row[x] - dark[x];
    row[x] = t > 0.0f ? t : 0.0f;
  }
}

// The plane of a calibration frame that serves a plane of the image: a mono frame serves all.
int PlaneFor(COrbImage const& frame, int plane) { return frame.IsColor() ? plane : 0; }

}  // namespace

void COrbImage::FlatClbrtn(COrbImage* flat, int progress) {
  ORB_ASSERT(flat->width == width && flat->height == height && (!flat->IsColor() || flat->planes >= planes));
  // Intended: the mean of the flat's plane 0, rounded to a float, serves all planes, also of a colour flat.
  float const a = flat->GetAvrGrayRaw(0);
  orb::Run run(*this, nullptr);
  run.Start(progress, kFlat, height * planes);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      FlatRow(flat->GetImageAdr(0, y, PlaneFor(*flat, p), 1, nullptr), GetImageAdr(0, y, p, 0, nullptr), width, a);
      run.Tick();
    }
  }
  run.End();
}

void COrbImage::DarkClbrtn(COrbImage* dark, int progress) {
  ORB_ASSERT(dark->width == width && dark->height == height && (!dark->IsColor() || dark->planes >= planes));
  orb::Run run(*this, nullptr);
  run.Start(progress, kDark, height * planes);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      {
        orb::LockedRow const row(*this, 0, y, p, false);
        DarkRow(dark->GetImageAdr(0, y, PlaneFor(*dark, p), 1, nullptr), row.Address(), width);
      }
      run.Tick();
    }
  }
  run.End();
}
