// Plain transcription of an aperture: a test of every pixel, and a list of all counts.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

class Aperture {
 public:
  Aperture(COrbImage& image, double cx, double cy, double outerX, double outerY, double innerX, double innerY);

  bool HasPixel(int x, int y) const;

  int num = 0;
  double sum = 0.0;
  double variance = 0.0;
  double deviation = 0.0;
  std::vector<int> outerRow, outerColumn, innerRow, innerColumn;

 private:
  void Draw(int p, int q, std::vector<int>& row, std::vector<int>& column) const;
  void Measure(COrbImage& image);

  double cx, cy, outerX, outerY, innerX, innerY;
};

int MeasureCount(COrbImage& image, int x, int y, double fwhm);
double MeasureExtent(COrbImage& image, int x, int y, double sky);

}  // namespace orb::test::reference
