// CImgFilterMisc::ContourFilter: lines of equal brightness.
#include <algorithm>
#include <optional>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/contour_kernels.h>
#include <orbimg/filters/filter_misc.h>

namespace {

constexpr int kMessage = 6171;
constexpr int kLeastLevels = 2;
constexpr int kColours = 3;
constexpr float kLevelsPer255 = 0.003921569f;

// The steps of brightness of a row of the source and of the row above it, from the column left of the area on.
class StepRows {
 public:
  StepRows(COrbImage const& image, orb::Bounds const& area, orb::StepScale const& stepScale)
      : source(image),
        left(area.left),
        count(static_cast<std::size_t>(area.Columns())),
        scale(stepScale),
        above(count + 1),
        row(count + 1) {
    for (int p = 0; p < kColours; ++p) levels[p] = orb::LevelOf(image, IsColour() ? p : 0);
    Load(std::max(area.top - 1, 0));
  }

  // To row y of the image, the one below the last: the first of the area at first.
  void MoveTo(int y) {
    above.swap(row);
    Load(y);
  }
  float const* Above() const { return above.data(); }
  float const* Row() const { return row.data(); }

 private:
  bool IsColour() const { return source.GetPlanes() >= kColours; }

  void Load(int y) {
    int const first = std::max(left - 1, 0);
    std::size_t const missing = left == 0 ? 1 : 0;  // the first column is its own neighbour
    auto const samples = static_cast<std::ptrdiff_t>(count + 1 - missing);
    auto const rowOf = [&](int plane) -> float const* { return source.GetImageAdr(first, y, plane, 1, nullptr); };
    if (IsColour()) {
      orb::StepsOfColourRow(rowOf(0), rowOf(1), rowOf(2), samples, levels, scale, row.data() + missing);
    } else {
      orb::StepsOfPlaneRow(rowOf(0), samples, levels[0], scale, row.data() + missing);
    }
    if (missing != 0) row[0] = row[1];
  }

  COrbImage const& source;
  int left;
  std::size_t count;
  orb::StepScale scale;
  orb::Level levels[kColours];
  std::vector<float> above;
  std::vector<float> row;
};

// For each row of an area that has columns, how often steps change around its samples.
class ChangeRows {
 public:
  ChangeRows(COrbImage const& source, orb::Bounds const& area, orb::StepScale const& scale)
      : steps(source, area, scale), changes(static_cast<std::size_t>(area.Columns())) {
    for (int x = area.left; x < area.right; ++x) {
      orb::GridShare const share = orb::GridShareAt(x);
      before.push_back(share.before);
      on.push_back(share.on);
    }
  }

  // Of the row below the last, the first of the area at first.
  float const* Next(int y) {
    steps.MoveTo(y);
    orb::CountChangesRow(steps.Above(), steps.Row(), static_cast<std::ptrdiff_t>(changes.size()), orb::GridShareAt(y),
                         before.data(), on.data(), changes.data());
    return changes.data();
  }

 private:
  StepRows steps;
  std::vector<float> before;  // shares of the grid's columns
  std::vector<float> on;
  std::vector<float> changes;
};

}  // namespace

void CImgFilterMisc::ContourFilter(int levels, int unbounded, COrbImage* src, CRect* rect, int progress) {
  orb::Run run(*this, rect);
  orb::Bounds const& area = run.Area();
  run.Start(progress, kMessage, run.Rows());
  auto const most = static_cast<float>(std::max(levels, kLeastLevels));
  orb::StepScale const scale{most, most * kLevelsPer255, unbounded == 0};
  int const drawn = IsColor() ? std::min(planes, kColours) : 1;
  std::optional<ChangeRows> changes;
  if (!area.IsEmpty()) changes.emplace(*src, area, scale);
  for (int y = area.top; y < area.bottom; ++y) {
    if (changes) {
      float const* const counts = changes->Next(y);
      for (int p = 0; p < drawn; ++p) {
        orb::DrawContourRow(counts, area.Columns(), orb::LevelOf(*this, p), GetImageAdr(area.left, y, p, 0, nullptr));
      }
    }
    run.Tick();
  }
  run.End();
}
