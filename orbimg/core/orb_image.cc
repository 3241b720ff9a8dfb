// Making, copying and changing an image.
#include <orbimg/core/orb_image.h>

#include <utility>

#include <orbimg/core/operator_run.h>

COrbImage::COrbImage() { Init(); }

COrbImage::COrbImage(int initBitsPixel, int initWidth, int initHeight, int initPlanes, double initBscale,
                     double initBzero, int initSigned, HWND wnd, char const* text)
    : CImage(initBitsPixel, initWidth, initHeight, initPlanes, initBscale, initBzero, initSigned, wnd, text) {
  Init();
}

COrbImage::COrbImage(COrbImage const& src, HWND wnd, char const* text)
    : CImage(src, wnd, text), stdPt{src.stdPt[0], src.stdPt[1]}, stdCtr(src.stdCtr), progressWnd(src.progressWnd) {}

COrbImage::~COrbImage() = default;

COrbImage& COrbImage::CopyImage(COrbImage const& src, HWND wnd, char const* text) {
  progressWnd = src.progressWnd;
  stdPt[0] = src.stdPt[0];
  stdPt[1] = src.stdPt[1];
  stdCtr = src.stdCtr;
  CImage::CopyImage(src, wnd, text);
  return *this;
}

COrbImage& COrbImage::operator=(COrbImage const& src) { return CopyImage(src, nullptr, nullptr); }

int COrbImage::Create(COrbImage const& src, HWND wnd, char const* text) {
  progressWnd = src.progressWnd;
  stdPt[0] = src.stdPt[0];
  stdPt[1] = src.stdPt[1];
  stdCtr = src.stdCtr;
  return CImage::Create(src, wnd, text);
}

void COrbImage::Init() {
  progressWnd = orb::MainWindow();
  for (int p = 0; p < 3; ++p) {
    minPixel[p] = 0.0;
    maxPixel[p] = 0.0;
  }
  InitStdPt();
  InitSelection();
}

void COrbImage::Swap(COrbImage* other) {
  std::swap(progressWnd, other->progressWnd);
  std::swap(stdPt[0], other->stdPt[0]);
  std::swap(stdPt[1], other->stdPt[1]);
  std::swap(stdCtr, other->stdCtr);
  CImage::Swap(other);
}

int COrbImage::AttachDIB(HDIB dib) {
  if (CImage::AttachDIB(dib) == 0) return 0;
  return ChangeBits(-32, 1, 1, nullptr, nullptr);
}

void COrbImage::NormalizeRect(CRect* rect, int& left, int& top, int& right, int& bottom) {
  orb::Bounds const bounds = orb::ClampRect(rect, width, height);
  left = bounds.left;
  top = bounds.top;
  right = bounds.right;
  bottom = bounds.bottom;
}
