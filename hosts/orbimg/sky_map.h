// The sky behind the stars, and its noise, as they change over a frame.
//
// The frame is divided into cells; level and noise of each are clipped statistics of every second sample of every
// second row. Cells that a star or a nebula has spoilt are mended by the median of 3 x 3 cells. Between the middles of
// cells values are interpolated, beyond them the slope goes on.
#pragma once

#include <vector>

namespace orb::host {

class SkyMap {
 public:
  // `plane` holds height * width samples; those that are not finite do not count. Cells are about `cellSide` pixels
  // wide.
  SkyMap(float const* plane, int width, int height, int cellSide);

  void LevelRow(int y, float* out) const { InterpolateRow(level, y, out); }
  void NoiseRow(int y, float* out) const { InterpolateRow(noise, y, out); }

 private:
  void MeasureCell(float const* plane, int column, int row);
  void InterpolateRow(std::vector<float> const& mesh, int y, float* out) const;

  int width;
  int height;
  int columns;
  int rows;
  std::vector<float> level;
  std::vector<float> noise;
};

}  // namespace orb::host
