// MemSolve: the positive image of largest entropy that, convolved, fits the data to within the noise.
//
// It looks for the x that makes
//
//   Q(x) = (1/(2 sigma)) sum of w[i] (y[i] - (Hx)[i])^2 + lag sum of x[i] (ln x[i] - 1)
//
// smallest, by preconditioned conjugate gradients on positive images. H is convolution with the point-spread function,
// y the data scaled to a mean of about 1, w the weights (0: no datum), sigma the noise in those units. lag, the
// multiplier of the entropy, is found anew in each line search, so that the gradients of the two terms balance as the
// fit reaches one standard deviation a datum. The search has three steps an iteration: a direction (cut, where a step
// would bring a pixel down by more than 90 %), the limits of the step, and a search along the line, which needs no
// convolution, as chi-square is a parabola there and the gradient of chi-square a straight line.
//
// The residual is never rebuilt: chi-square and gradient are carried forward. Sums are running sums in double, vectors
// are floats, rounded on store.
#pragma once

#include <orbimg/restoration/mem_convolve.h>
#include <platform/export.h>

class COrbImage;

// Result codes. The first four are good endings.
//
//   0   stopped by a limit
//   5   the same, and the direction was cut in the last iteration
//   6   0, with the smallest value of x at the lower bound of 1e-10
//   56  5, the same
//   1   `variance` is not above 0
//   2   fewer than 4 work arrays
//   3   `op` reported an error
//   8   ESC was pressed
//
// x, y, weight: nx ny floats each. x is the result (and with useStart above 0 the start, which is
// scaled to a mean of 1; else the start is 1.0); y, the
// data, is destroyed. `work` holds 5 nx ny floats: gradient, scratch, curvature, the direction convolved, and that
// correlated. `psf` is (2 halfX + 1) x (2 halfY + 1) floats, `kernelWork` room for as many, `kernelStore` the store of
// `op`, 2 nx ny floats for MemConvolve.
//
// `limits`, in: the search stops when the root mean square step is at most [0], or the largest step at most [1], both
// in units of the data, or the root mean square change of the residual at most [2], in units of sigma, or [3] above 0
// and reached by the number of iterations. Without that number a step that is not one stops it too. Out: the two steps,
// the change of the residual, and the root of chi-square by the number of data.
//
// `variance` is that of the noise, in squared units of the data. `workArrays` is 5. `report` nonzero writes each
// iteration's figures to the standard output.
//
// `progress` null: nothing is reported, and nothing stops the search but its limits. Messages 6162 and, an iteration,
// 6160; with a plane number above 0, 6163 and 6161. Every way out ends the run.
//
// Nothing is done about data that sum to 0 or are not numbers; whatever comes of them is in x.
ORBIMG_API int MemSolve(float* x, float* y, float* weight, float* work, float const* psf, float* kernelWork,
                        ConvolveOperator op, float* kernelStore, double* limits, double variance, int workArrays,
                        int nx, int ny, int halfX, int halfY, int report, int useStart, COrbImage* progress,
                        int planeNumber);
