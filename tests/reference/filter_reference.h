// Plain transcriptions of the kernels, of the row window and of the filters on them, sample by sample.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// Indices outside an image, by the rules of the filters.
int MirroredRow(int y, int height);
int ClampedColumn(int x, int width);

struct Kernel {
  int radius = 0;
  std::vector<float> weights;

  float At(int dx, int dy) const {
    return weights[static_cast<std::size_t>((dy + radius) * (2 * radius + 1) + dx + radius)];
  }
};

Kernel GaussianKernel(int radius, double sigma);
Kernel MeanKernel(int radius, double range, double weight);
Kernel SharpKernel(double range, double weight);
Kernel EdgeKernel(int radius, double range);

// A window of `radius` around row y.
double Convolve(COrbImage& src, int plane, int radius, int x, int y, Kernel const& kernel);
float ConvolveClip(COrbImage& src, int plane, int radius, int x, int y, Kernel const& kernel, float lo, float hi);

// One entry a plane.
using PerPlane = std::vector<double>;
void MeanFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect);
void GaussianFilter(COrbImage& dst, COrbImage& src, PerPlane const& sigma, CRect* rect);
void BlurMedianFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, CRect* rect);
void MeanWithoutEdgeFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect);
void SharpFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect);
void SharpEdgeFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect);
void UnSharpMask(COrbImage& dst, COrbImage& src, PerPlane const& sigma, PerPlane const& strength,
                 PerPlane const& threshold, CRect* rect);

}  // namespace orb::test::reference
