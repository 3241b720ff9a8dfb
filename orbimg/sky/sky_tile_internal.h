// The records of the selection of sky and of the sky flat. They live for one call.
#pragma once

#include <vector>

struct CSkyTile {
  virtual ~CSkyTile() = default;

  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  double median = 0.0;  // of the samples in plane 0
  double stddev = 0.0;
};

using CSkyTileArray = std::vector<CSkyTile>;

struct CSkyFlatTile {
  virtual ~CSkyFlatTile() = default;

  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  double median = 0.0;  // of the measured image's samples in plane 0
  double stddev = 0.0;
  int value = 0;   // painted; 0: a hole
  int filled = 0;  // 1: made from neighbours
};
