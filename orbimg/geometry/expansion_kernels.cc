#include <orbimg/geometry/expansion_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

// The products of AdToDc and RotateDc written out, in their order. A position that is not a number is held nowhere
// below and so is not shown.
ORB_ROW_KERNEL void LocateParallelRow(GlobeView const& view, Parallel parallel, double const* cosines,
                                      double const* sines, PlaneShape shape, std::ptrdiff_t count, double* fractionX,
                                      double* fractionY, std::ptrdiff_t* offsets, int* isShown) {
  GlobeView const v = view;
  double const lastX = shape.width - 1;
  double const lastY = shape.height - 1;
  int const lastColumnCell = shape.LastColumnCell();
  int const lastRowCell = shape.LastRowCell();
  std::ptrdiff_t const width = shape.width;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const x = parallel.cosine * cosines[i];
    double const y = parallel.cosine * sines[i];
    double const z = parallel.z;
    double const outZ = v.m[2][0] * x + v.m[2][1] * y + v.m[2][2] * z;
    bool const isPole = (outZ == 1.0) | (outZ == -1.0);
    double const outX = isPole ? 0.0 : v.m[0][0] * x + v.m[0][1] * y + v.m[0][2] * z;
    double const outY = isPole ? 0.0 : v.m[1][0] * x + v.m[1][1] * y + v.m[1][2] * z;
    double const px = outY * v.radius + v.cx;
    double const py = v.cy - outZ * v.radius;
    bool const isOn = (outX >= 0.0) & (px >= 0.0) & (px <= lastX) & (py >= 0.0) & (py <= lastY);
    double const heldX = isOn ? px : 0.0;
    double const heldY = isOn ? py : 0.0;
    int const column = std::min(static_cast<int>(heldX), lastColumnCell);
    int const row = std::min(static_cast<int>(heldY), lastRowCell);
    fractionX[i] = heldX - column;
    fractionY[i] = heldY - row;
    offsets[i] = row * width + column;
    isShown[i] = isOn ? 1 : 0;
  }
}

}  // namespace orb
