// The calling contract of every operator, written once.
//
// 1. The operator object is the destination; the caller gives it the shape of the source beforehand.
// 2. The source is only read. Point operators, which read each sample before they write the same position, may have the
//    destination as their source.
// 3. The rectangle limits what is written, never what is read. It is limited to the image and not normalised further:
//    an empty or reversed one changes no sample, yet its run starts and ends. Null is the whole image.
// 4. Progress starts right after the clamp with the operator's message and its number of units, ticks once after each
//    row and ends with a null text. The answer of a tick is ignored: operators run to their end.
// 5. Planes outermost, then rows, then columns.
// 6. A source sample comes to the 256-scale by the source's levels, and goes back by the destination's. Levels and
//    standard points of the destination stay. Results are not clamped.
//
// A point operator is a Run, one EachRow with its formula, and End():
//
//   orb::Run run(*this, rect);
//   run.Start(progress, 6124, run.Rows() * planes);
//   run.EachRow(*src, [&](orb::RowSpan const& row) {
//     InvertRow(row.src, row.dst, row.count, orb::LevelOf(*src, row.plane), orb::LevelOf(*this, row.plane));
//   });
//   run.End();
#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>

#include <orbimg/core/level.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/core/row_kernel.h>
#include <platform/rect.h>

namespace orb {

struct Bounds {
  int left;
  int top;
  int right;
  int bottom;

  int Columns() const { return Span(left, right); }
  int Rows() const { return Span(top, bottom); }
  bool IsEmpty() const { return left >= right || top >= bottom; }

 private:
  // Held at the range of int: a side that is limited on one side only may lie anywhere on the other.
  static int Span(int from, int to) {
    return static_cast<int>(std::max(static_cast<long long>(to) - from, static_cast<long long>(INT_MIN)));
  }
};

// All four sides limited to the image.
inline Bounds ClampRect(CRect const* rect, int width, int height) {
  if (rect == nullptr) return Bounds{0, 0, width, height};
  return Bounds{std::clamp(rect->left, 0, width), std::clamp(rect->top, 0, height), std::clamp(rect->right, 0, width),
                std::clamp(rect->bottom, 0, height)};
}

// Left and top limited from below only, right and bottom from above only: what the histogram and the centroid use.
inline Bounds ClampRectWeakly(CRect const* rect, int width, int height) {
  if (rect == nullptr) return Bounds{0, 0, width, height};
  return Bounds{std::max(rect->left, 0), std::max(rect->top, 0), std::min(rect->right, width),
                std::min(rect->bottom, height)};
}

// One row of one plane, from the left bound on. `count` is 0 or less where the rectangle has no columns.
struct RowSpan {
  float const* src;
  float* dst;
  std::ptrdiff_t count;
  int y;
  int plane;
};

// A row address that is locked while this lives.
class LockedRow {
 public:
  LockedRow(COrbImage& owner, int x, int y, int plane, bool read)
      : image(&owner), address(owner.GetImageAdr(x, y, plane, read ? 3u : 2u, &token)) {}
  LockedRow(LockedRow const&) = delete;
  LockedRow& operator=(LockedRow const&) = delete;
  ~LockedRow() { image->Unlock(token); }

  float* Address() const { return address; }

 private:
  COrbImage* image;
  void* token = nullptr;
  float* address;
};

class Run {
 public:
  Run(COrbImage& destination, CRect const* rect)
      : image(destination), bounds(ClampRect(rect, destination.GetWidth(), destination.GetHeight())) {}

  orb::Bounds const& Area() const { return bounds; }
  int Rows() const { return bounds.Rows(); }

  void Start(int progress, int messageId, int units) { image.ShowProgressInit(progress, messageId, units); }

  // Ends with a null text. Not done by a destructor: some runs end in ways of their own.
  void End() { image.ShowProgressEnd(static_cast<char const*>(nullptr)); }

  void Tick() { image.ShowProgress(1); }

  // Calls formula(RowSpan) for each plane and row, and ticks after each.
  template <typename Formula>
  void EachRow(COrbImage const& source, Formula formula) {
    for (int p = 0; p < image.GetPlanes(); ++p) {
      for (int y = bounds.top; y < bounds.bottom; ++y) {
        formula(RowSpan{source.GetImageAdr(bounds.left, y, p, 1, nullptr),
                        image.GetImageAdr(bounds.left, y, p, 0, nullptr), bounds.Columns(), y, p});
        Tick();
      }
    }
  }

 private:
  COrbImage& image;
  Bounds bounds;
};

}  // namespace orb
