// The maximum entropy solver and the road to it and back, written out in one piece, without progress.
#pragma once

#include <vector>

#include <orbimg/restoration/mem_solver.h>

class COrbImage;
struct CRect;

namespace orb::test::reference {

// What happened in a run of the solver, an entry for each main iteration.
struct SolverTrace {
  std::vector<double> a;
  std::vector<double> lag;
  std::vector<double> aLimit;
  std::vector<int> sub;
  std::vector<int> stage;
  std::vector<int> iuch;
};

struct SolverOutcome {
  int code = 0;
  std::vector<float> x;
  double limits[4] = {};
  SolverTrace trace;
};

// `start` empty: from 1.0.
SolverOutcome Solve(std::vector<float> y, std::vector<float> const& weight, std::vector<float> const& psf,
                    ConvolveOperator const& op, double const* limits, double variance, int nx, int ny, int halfX,
                    int halfY, std::vector<float> const& start);

std::vector<float> MemGauss(double sigma, int width, int height);

// CImgMem::Do on a window that lies within the image.
int Mem(COrbImage& image, double sigma, double noise, int iterations, CRect const* rect);

}  // namespace orb::test::reference
