#include <orbimg/geometry/resize.h>

#include <algorithm>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>

namespace {

constexpr int kMessage = 6111;

// One direction of the picture on its canvas, in pixels: canvas `begin` to `end` - 1 show the source from `source` on.
struct Placement {
  int begin;
  int end;
  int source;

  int Count() const { return end - begin; }
};

// `anchor`: 0 in front, 1 in the middle, 2 behind.
Placement Place(int anchor, int newSize, int oldSize) {
  int d = 0;
  if (anchor == 1) d = (newSize - oldSize) / 2;
  if (anchor == 2) d = newSize - oldSize;
  Placement place{std::max(d, 0), 0, std::max(-d, 0)};
  place.end = std::min(newSize, oldSize - place.source + place.begin);
  return place;
}

}  // namespace

int CImgResize::Do(int newWidth, int newHeight, int anchor, float* const fill, COrbImage* src, int progress) {
  InitStdPt();
  if (Resize(newWidth, newHeight, progress) == 0) return 0;
  int const cell = anchor >= 0 && anchor <= 8 ? anchor : 0;
  Placement const columns = Place(cell % 3, width, src->GetWidth());
  Placement const rows = Place(cell / 3, height, src->GetHeight());
  orb::Run run(*this, nullptr);
  run.Start(progress, kMessage, orb::TruncateToInt((static_cast<double>(height) + rows.Count()) * planes));
  // What the copy is going to cover is left to it.
  for (int p = 0; p < planes; ++p) {
    float const raw = static_cast<float>(orb::LevelOf(*this, 0).ToRaw(fill[p]));
    for (int y = 0; y < height; ++y) {
      float* const row = GetImageAdr(0, y, p, 0, nullptr);
      bool const isCovered = y >= rows.begin && y < rows.end;
      std::fill(row, row + (isCovered ? columns.begin : width), raw);
      if (isCovered) std::fill(row + columns.end, row + width, raw);
      run.Tick();
    }
  }
  for (int p = 0; p < planes; ++p) {
    for (int y = rows.begin; y < rows.end; ++y) {
      float const* const from = src->GetImageAdr(columns.source, y - rows.begin + rows.source, p, 1, nullptr);
      std::copy(from, from + columns.Count(), GetImageAdr(columns.begin, y, p, 0, nullptr));
      run.Tick();
    }
  }
  run.End();
  return 1;
}
