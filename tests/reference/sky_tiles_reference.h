// Plain transcription of the tiles of sky: how they are laid and measured, which one is found, and the model made of
// them. Statistics and blur are those of CImgPixelInfo and CImgFilterBlur, which have transcriptions of their own.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct Tile {
  int x;
  int y;
  int width;
  int height;
  double median;
  double stddev;
  int value;
  int filled;
};

// What a tile has beyond the image is not measured.
std::vector<Tile> MeasureTiles(COrbImage& image, int size, CRect* rect);

double DeviationMedian(std::vector<Tile> const& tiles);
// Null where there is none.
Tile const* FirstTileWithin(std::vector<Tile> const& tiles, double threshold);

void SkyFlat(COrbImage& dst, COrbImage& src, int size);

}  // namespace orb::test::reference
