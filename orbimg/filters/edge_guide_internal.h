// Mixes a convolution with the source by the strength of the edge at each sample.
#pragma once

#include <vector>

#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/filters/window_run_internal.h>

namespace orb {

// With e the convolution with MakeEdge(radius, range), t = e / levelRange held at 1.0 from above and a = t * t. Scratch
// memory: two rows of doubles.
class EdgeGuide {
 public:
  // `kernel` is what gets mixed in.
  EdgeGuide(CFilterKernel const& kernel, int radius, double range, int width, double levelRange);

  // destination = (1 - a) * convolution + a * c
  void MixOffEdges(WindowRow const& row);
  // destination = (1 - a) * c + a * convolution
  void MixAtEdges(WindowRow const& row);

 private:
  void Convolve(WindowRow const& row);

  RowConvolution mixed;
  RowConvolution edge;
  double levelRange;
  std::vector<double> mixedRow;
  std::vector<double> edgeRow;
};

}  // namespace orb
