// Stacks two frames: marks two stars in each, fits shift and angle, averages, sets levels, writes a picture.
//
//   cmake -S . -B build && cmake --build build && build/stack stack.bmp
//
// The frames are made here, so that the example needs no files: two views of the same stars, noisy, the second one
// shifted by 12.3 and -7.6 pixels.
#include <cmath>
#include <cstdio>
#include <random>

#include "bitmap_file.h"

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr double kShiftX = 12.3;
constexpr double kShiftY = -7.6;

struct Star {
  double x;
  double y;
  double peak;
};
constexpr Star kStars[] = {{60.4, 70.2, 900.0}, {250.7, 150.9, 700.0}, {130.1, 180.6, 300.0}, {210.5, 40.3, 150.0}};

// Sky 100, noise 10, stars of sigma 1.8 pixels.
COrbImage MakeFrame(double shiftX, double shiftY, unsigned seed) {
  COrbImage frame(-32, kWidth, kHeight, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::mt19937 random(seed);
  std::normal_distribution<double> noise(100.0, 10.0);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      double value = noise(random);
      for (Star const& star : kStars) {
        double const dx = x - star.x - shiftX;
        double const dy = y - star.y - shiftY;
        value += star.peak * std::exp(-(dx * dx + dy * dy) / (2.0 * 1.8 * 1.8));
      }
      frame.SetPixelGrayRaw(x, y, static_cast<float>(value), 0);
    }
  }
  frame.SetLevel(0, 0.0, 1000.0);
  return frame;
}

// What a user does by drawing a box around a star: its centroid becomes standard point n.
void MarkStar(COrbImage& frame, int n, double x, double y) {
  CRect box(static_cast<int>(x) - 8, static_cast<int>(y) - 8, static_cast<int>(x) + 9, static_cast<int>(y) + 9);
  double centreX = 0.0;
  double centreY = 0.0;
  frame.GetCenterOfGravity(centreX, centreY, &box);
  frame.SetStdPt(n, CfPoint(centreX, centreY));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "stack: name the bitmap to write, for example stack.bmp\n");
    return 2;
  }
  COrbImage reference = MakeFrame(0.0, 0.0, 1);
  COrbImage second = MakeFrame(kShiftX, kShiftY, 2);
  for (int n : {0, 1}) {
    MarkStar(reference, n, kStars[n].x, kStars[n].y);
    MarkStar(second, n, kStars[n].x + kShiftX, kStars[n].y + kShiftY);
  }
  double dx = 0.0;
  double dy = 0.0;
  double angle = 0.0;
  if (reference.GetFitPrm(&second, dx, dy, angle) != 2) return 1;
  std::printf("shift %.2f %.2f, angle %.1f\n", dx, dy, angle);

  CImgComposit stack;
  stack.CopyImage(reference, nullptr, nullptr);
  stack.Do(&reference, &second, dx, dy, angle, 0, 0);  // mode 0: average, of raw samples

  CImgAutoLevel levelled;
  levelled.CopyImage(stack, nullptr, nullptr);
  levelled.DoByMedian(1.0, 6.0, 0, nullptr, 0.0);
  orb::DibPtr const bitmap(levelled.GetDib(24));
  if (bitmap == nullptr || !WriteBitmap(argv[1], bitmap.get())) {
    std::fprintf(stderr, "stack: %s: cannot be written\n", argv[1]);
    return 1;
  }
  bool const isFound = std::abs(std::abs(dx) - kShiftX) < 0.3 && std::abs(std::abs(dy) + kShiftY) < 0.3;
  return isFound ? 0 : 1;
}
