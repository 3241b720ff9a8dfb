// Charts: lines over two axes with ticks and numbers, drawn by the library's own lines and letters.
#pragma once

#include <string>
#include <vector>

#include <orbimg/orbimg.h>

namespace orb::host {

struct PlotSeries {
  std::vector<double> x;
  std::vector<double> y;  // of the same count; points that are not finite break the line
  COLORREF color = RGB(0, 0, 0);
};

struct Plot {
  int width = 960;  // pixels
  int height = 600;
  std::string title;
  std::string xLabel;
  bool logarithmic = false;  // y; values below 1 lie on the axis
  std::vector<PlotSeries> series;
  std::vector<double> marks;  // x of thin upright lines, left out where they are off the chart
};

// An image of three planes, 0 to 255, white where nothing is. The axes reach over all finite points. HostError where no
// font is installed.
void DrawPlot(Plot const& plot, COrbImage& image);

// Where ticks stand: multiples of 1, 2 or 5 times a power of ten within low .. high, about `wanted` of them.
std::vector<double> FindTicks(double low, double high, int wanted);

}  // namespace orb::host
