// MemConvolve: circular convolution and correlation of a real image with a kernel, by the packed real spectrum.
//
//   convolution   out[y][x] = sum over u, v of k(u, v) in[y - v][x - u]
//   correlation   out[y][x] = sum over u, v of k(u, v) in[y + v][x + u]
//
// with u, v counted from the centre of the kernel and indices taken modulo the size. Sizes are powers of two, bounded
// by memory alone.
#pragma once

#include <functional>

#include <orbimg/restoration/real_transform.h>
#include <platform/export.h>

class COrbImage;

// What the maximum entropy solver asks of a convolution; see MemConvolve::operator() for its arguments.
using ConvolveOperator =
    std::function<void(float* out, float const* in, float const* kernel, float* store, int nx, int ny, int halfX,
                       int halfY, int* mode, COrbImage* progress, int percentFrom, int percentTo)>;

// Lays a kernel of (2 halfX + 1) x (2 halfY + 1) floats around the origin of a cleared nx x ny array: element
// (halfX + u, halfY + v) goes to place (u mod nx, v mod ny). Where a kernel is larger than the array and several
// elements have one place, the last one in reading order stays.
ORBIMG_API void KernelWrap(float const* kernel, float* target, int halfX, int halfY, int nx, int ny);

// One run: from a reset (or its making) to the next, for one size and one main kernel.
class ORBIMG_API MemConvolve {
 public:
  // `mode` says what to do and becomes the status:
  //
  //   negative   reset: forget size and kernels
  //   1          convolve with the main kernel
  //   2          correlate with the main kernel
  //   3          convolve with a one-off kernel; where this is the first call of a run, the next call brings the main
  //   one
  //
  // `kernel` is read until the main kernel's spectrum stands; later calls reuse the spectrum and ignore the argument.
  // `store` holds 2 nx ny floats, the kernel's spectrum first, and stays the same array through a run. `in` and `out`
  // may be the same. With `progress`, six positions between percentFrom and percentTo are reported.
  //
  // Status: 0 done; 1 another mode, or a size that is no power of two; 8 ESC was pressed, `out` may be incomplete.
  void operator()(float* out, float const* in, float const* kernel, float* store, int nx, int ny, int halfX, int halfY,
                  int* mode, COrbImage* progress, int percentFrom, int percentTo);

 private:
  void Reset();
  bool Start(int nx, int ny, int mode);
  void TransformKernel(float const* kernel, float* store, int nx, int ny, int halfX, int halfY);

  RealFft fft;
  bool isStarted = false;
  bool isOneOffReady = false;
  bool isMainReady = false;
  int log2x = -1;
  int log2y = -1;
};
