// COrbImage: the image that every operator is, works on and reads from.
//
// Samples are 32-bit floats in planes (1 mono; 3 colour: red, green, blue), row 0 on top. An operator derives from
// COrbImage, and the operator object is the destination. The rules that all operators share stand in operator_run.h.
//
// Scales. Raw is the stored float. Gray is raw - levelMin. The 256-scale is (raw - levelMin) / levelRange * 255.0, not
// clamped; its byte form is 0 where levelMin >= raw, otherwise 255 where levelMax <= raw, otherwise truncated. The way
// back is levelRange * v * 0.00392156862745098 + levelMin. Everything is computed in double and rounded once, on return
// or on store. Brightness of a colour is 0.299 R + 0.587 G + 0.114 B on the 256-scale of each plane.
//
// Coordinates and planes are pixels and indices, and are not checked unless said.
#pragma once

#include <orbimg/core/constants.h>
#include <orbimg/core/float_point.h>
#include <orbimg/core/image.h>
#include <platform/export.h>
#include <platform/global_memory.h>
#include <platform/host_window.h>
#include <platform/rect.h>

struct BITMAPINFOHEADER;

class ORBIMG_API COrbImage : public CImage {
 public:
  // ---- Making, copying, changing
  COrbImage();
  COrbImage(int bitsPixel, int width, int height, int planes, double bscale, double bzero, int isSigned, HWND wnd,
            char const* text);
  // Copies samples, shape, levels, progress window and points; extrema, selection and the progress run start at zero.
  COrbImage(COrbImage const& src, HWND wnd, char const* text);
  COrbImage(COrbImage const& src) : COrbImage(src, nullptr, nullptr) {}
  ~COrbImage() override;

  // Extrema and selection stay as they were in this image.
  COrbImage& CopyImage(COrbImage const& src, HWND wnd, char const* text);
  COrbImage& operator=(COrbImage const& src);
  // Takes shape, progress window and points of `src`. 0 on failure.
  int Create(COrbImage const& src, HWND wnd, char const* text);
  // Progress window from the thread's main window, extrema 0, points unset, selection empty. Samples stay.
  void Init();
  // Exchanges samples, shape, levels, records, progress window and points. Extrema, selection and a progress run stay.
  void Swap(COrbImage* other);
  // CImage::AttachDIB, then converted to floats. 0 on failure.
  int AttachDIB(HDIB dib);
  void SetProgressHandle(HWND wnd) { progressWnd = wnd; }

  float* GetImageAdr(int x, int y, int plane, unsigned int flags, void** handle) const {
    return reinterpret_cast<float*>(CImage::GetImageAdr(x, y, plane, flags, handle));
  }

  // ---- Single samples (orb_image_pixels.cc). Forms with two doubles interpolate between the four neighbours, hold the
  // last column and row, need coordinates that are not negative (others give no
  // meaningful value, but stay within the image), and return the stored sample at whole coordinates.
  float GetPixelGrayRaw(float* p) const { return *p; }
  float GetPixelGrayRaw(int x, int y, int plane);
  float GetPixelGrayRaw(double x, double y, int plane);
  float GetPixelGray(float* p, int plane);
  float GetPixelGray(int x, int y, int plane);
  float GetPixelGray(double x, double y, int plane);
  unsigned char GetPixelGray256(float* p, int plane) const;
  unsigned char GetPixelGray256(int x, int y, int plane);
  // 0 where *p <= min, otherwise 255 where *p >= max, otherwise (*p - min) * scale truncated.
  unsigned char GetPixelGray256(float* p, float min, float max, float scale) const;
  // Intended: not clamped; values beyond the levels wrap to the low 8 bits.
  unsigned char GetPixelGray256(double x, double y, int plane);
  float GetPixelGray256f(float* p, int plane);
  float GetPixelGray256f(float* p, float min, float scale) const;  // (*p - min) * scale
  float GetPixelGray256f(int x, int y, int plane);
  float GetPixelGray256f(double x, double y, int plane);
  float GetPixelBright256f(int x, int y);
  float GetPixelBright256f(float* r, float* g, float* b);  // g and b are ignored on a mono image
  // Brightness on the 256-scale, mapped back with the levels of plane 0.
  float GetPixelBrightRaw(int x, int y);
  float GetPixelBrightRaw(float* r, float* g, float* b);
  float CalcBright(float r, float g, float b);  // no levels: the caller chooses the scale
  double CalcBright(double r, double g, double b);
  float To256(float raw, int plane) const { return static_cast<float>(To256(static_cast<double>(raw), plane)); }
  double To256(double raw, int plane) const { return (raw - levelMin[plane]) / levelRange[plane] * 255.0; }
  float ToRaw(float v, int plane) const { return static_cast<float>(ToRaw(static_cast<double>(v), plane)); }
  double ToRaw(double v, int plane) const { return levelRange[plane] * v * orb::kInverse255 + levelMin[plane]; }
  // True raw extrema, stale until CalcMinMax has run.
  double GetMinPixel(int plane) { return minPixel[plane]; }
  double GetMaxPixel(int plane) { return maxPixel[plane]; }

  void SetPixelGrayRaw(float* p, float v) { *p = v; }
  void SetPixelGrayRaw(int x, int y, float v, int plane);
  void SetPixelGray(float* p, float v, int plane);
  void SetPixelGray(int x, int y, float v, int plane);
  void SetPixelGray256f(float* p, float v, int plane);
  void SetPixelGray256f(int x, int y, float v, int plane);

  // ---- Progress (orb_image_progress.cc). One Init, any number of steps and texts, one End. With `on` 0 nothing is
  // sent and nothing is polled.
  void ShowProgressInit(int on, char const* text, int total);
  void ShowProgressInit(int on, int id, int total);
  void ShowProgressInit(char const* text);  // direct mode: ShowProgress sends its number as it stands
  void ShowProgressInit(int id);
  int ShowProgress(int n);  // 0 if ESC was pressed, otherwise 1
  void ShowProgressMsg(char const* text);
  void ShowProgressMsg(int id);
  void ShowProgressEnd(char const* text);
  void ShowProgressEnd(int id);  // mind that a literal 0 picks this form and sends an empty text

  // ---- The operator frame: the rectangle limited to the image; null is the whole image.
  void NormalizeRect(CRect* rect, int& left, int& top, int& right, int& bottom);

  // ---- Statistics, levels, calibration (orb_image_statistics.cc, _levels.cc, _calibration.cc, _planes.cc)
  // Counts the samples v with lo <= v <= hi (raw units) into the class trunc((v - lo) / (hi - lo) * bins), held in
  // 0 .. bins - 1; `hist` has room for `bins` counts. `plane` -1 on a colour image counts brightness, lo and hi then
  // being raw values of plane 0; with fewer than three planes it is plane 0. The rectangle is limited on the left and
  // on top from below only, on the right and at the bottom from above only. One unit of progress a row, also for
  // brightness; `msgId` 0 is 6166. Returns width * height / bins * 2 of the whole image, in floating point and
  // truncated; 0 for 0 classes. With `bins` below 1 nothing is counted. Scratch memory: up to four times `hist`, and
  // for brightness a row of doubles.
  int GetHistGram(int* const hist, int bins, double lo, double hi, int plane, CRect* rect, int progress, int msgId);
  // Limits every raw sample to the levels of its plane; those equal to a level, and what is not a number, stay.
  void CutOutOfLevel();
  // Intended: the sum is divided by (width - 1) and by (height - 1), so it runs slightly above the true mean, and is
  // not finite for one column or row. The sum is taken in double, in 16 interleaved partial sums, the same on every
  // machine; for samples of one sign the result differs from that of one running sum by at most one unit in the last
  // place of the float.
  float GetAvrGrayRaw(int plane);
  float GetAvrGray(int plane);      // GetAvrGrayRaw - levelMin
  float GetAvrGray256f(int plane);  // GetAvrGrayRaw on the 256-scale
  // In place, for the shape of this image and a flat of one plane or of as many: raw * a / f where the flat's sample
  // f is above 0, a being the flat's GetAvrGrayRaw(0), for all planes; otherwise the sample stays. The flat may be
  // this image. Levels stay. One unit of progress for each row of each plane, message 6105.
  void FlatClbrtn(COrbImage* flat, int progress);
  // In place, for the same shapes: raw - dark where that is above 0, otherwise 0. Levels stay. One unit of progress
  // for each row of each plane, message 6106.
  void DarkClbrtn(COrbImage* dark, int progress);
  // `plane` -1 on a colour image sets plane 0 and moves the other planes by the same fractions of their own ranges.
  void SetLevel(int plane, double min, double max);
  // To three planes with the levels of plane 0; with a source, filled with its raw samples, a mono plane three times.
  // Nothing is done, and nothing reported, where there is more than one plane already. Messages 6170 and 6130, one
  // unit a row. 0 on failure.
  int ToColor();
  int ToColor(COrbImage* src, int progress);
  // To one plane with the levels of plane 0; with a source, filled with its brightness, from the source's levels to
  // those. Nothing is done on a mono image. `src` has three planes and is not this image. Messages 6170 and 6129, one
  // unit a row. 0 on failure.
  int ToGray();
  int ToGray(COrbImage* src, int progress);
  // Sets GetMinPixel and GetMaxPixel of the first three planes. Samples that are not numbers are passed over, but one
  // at (0, 0) stays; of a 0.0 and a -0.0 the earlier one stays.
  void CalcMinMax();
  // Copies row y of every plane to row y - rows, from the top down. The last rows keep their content.
  void LiftUp(int rows);

  // ---- Selection, standard points, centroid, fit (orb_image_points.cc)
  void InitStdPt();
  void SetStdPt(int n, CfPoint pt);
  void SetInvalidStdPt(int n);
  CfPoint GetStdPt(int n) { return stdPt[n]; }
  int GetStdPtNum();
  int IsValidStdPt(int n);
  void SetStdCtr(CfPoint pt) { stdCtr = pt; }
  void SetStdCtr(int x, int y) { stdCtr.Set(x, y); }
  void SetStdCtr(double x, double y) { stdCtr.Set(x, y); }
  CfPoint GetStdCtr() { return stdCtr; }
  int IsValidStdCtr();
  void SetDefaultCenter();
  void InitSelection() { selection.SetRectEmpty(); }
  void SetSelection(CRect* rect) { selection = *rect; }
  int GetSelection(CRect* rect);  // 0, and rect untouched, if the selection is empty
  // Centroid weighted by the square of the excess over the rectangle's mean, on the 256-scale; the rectangle's centre
  // where that lies outside it or nothing exceeds the mean.
  void GetCenterOfGravity(double& x, double& y, CRect* rect);
  void GetCenterOfGravity(int& x, int& y, CRect* rect);
  // Shift (pixels) and angle (degrees, rounded down to a tenth) that lay `other` over this image, from the standard
  // points of both. Returns the number of points used. Gives `other` a centre if it has none.
  int GetFitPrm(COrbImage* other, double& dx, double& dy, double& angle);
  int GetFitPrm(COrbImage* other, double& dx, double& dy, double& angle, double offsetX, double offsetY,
                double offsetAngle);

  // ---- Transformed sampling (orb_image_sampling.cc): what this image shows at pixel (x, y) of another frame, shifted
  // by dx, dy pixels, rotated about this image's stdCtr, magnified by scale. `plane` -1 is brightness. `outside` is the
  // value off the image. isOutside, srcX, srcY may be null.
  float GetPixelGray256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                         double outside, int nearest, int* isOutside, double* srcX, double* srcY);
  float GetPixelGray256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane,
                         double outside, int nearest, int* isOutside, double* srcX, double* srcY);
  float GetPixelGrayRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                        double outside, int nearest, int* isOutside, double* srcX, double* srcY);
  float GetPixelGrayRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane, double outside,
                        int nearest, int* isOutside, double* srcX, double* srcY);
  void GetPixelRgb256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r, double* g,
                       double* b, double outside, int* isOutside, double* srcX, double* srcY);
  void GetPixelRgb256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r, double* g,
                       double* b, double outside, int* isOutside, double* srcX, double* srcY);
  void GetPixelRgbRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r, double* g,
                      double* b, double outside, int* isOutside, double* srcX, double* srcY);
  void GetPixelRgbRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r, double* g,
                      double* b, double outside, int* isOutside, double* srcX, double* srcY);
  // Copies a rectangle from an image with the same number of planes, clipped to both; `convert` non-zero goes through
  // the 256-scale of both.
  void PixelBlt(int dstX, int dstY, int width, int height, COrbImage* src, int srcX, int srcY, int convert);

  // ---- Lightness and Lab planes (orb_image_lab.cc); color.h has the colour model.
  // Brightness by lightness: the 256-scale value of the gray whose CIE L is that of the colour r, g, b (256-scale, each
  // limited to -5000 .. 5000). Uses nothing of the image.
  double CalcBrightL(double r, double g, double b);
  // New images of L, of a and b, or of all three, in their own units (L: 0 to 100 for white, more above it). Each
  // channel is read on the 256-scale, limited to 0 .. 5000, with `clip` and on a colour image to 0 .. 255; a mono image
  // is its own gray. Samples are CColor's, to one unit in the last place of a float. The new image has the size and the
  // stdCtr of this one and no standard points. Intended: the L plane gets the levels of this image's plane 0; the
  // others keep a new image's 0 to 255. Intended: progress is always on, one unit a row, messages 6101, 6102, 6133. The
  // caller deletes the image. Null if there is no memory for it, and for an image of two planes.
  COrbImage* MakeLPlane();
  COrbImage* MakeAbPlane(int clip);
  COrbImage* MakeLabPlane();
  // Transformed, bilinear raw samples of an L plane (plane 0) and of an ab plane image (planes 0 and 1, not rounded);
  // `outside` off the image. Positions as in the transformed sampling.
  float GetPixelL(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double outside);
  void GetPixelAb(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* a, double* b,
                  double outside);

  // ---- Rendering (display/). A block with a BITMAPINFOHEADER, at 8 bits 256 palette entries, and the rows from the
  // bottom up, each padded with zeros to a multiple of four bytes. Every sample becomes its byte on the 256-scale of
  // its plane.
  //   24 bits: blue, green, red of each pixel; the same byte three times for a mono image.
  //   8 bits, mono: the byte, and a palette of grays.
  //   8 bits, colour: the nearest of 256 colours chosen for this image, without dithering; two pixels whose bytes agree
  //   in the upper five bits of each channel get the same colour. Intended: all three planes by the levels of plane 0,
  //   so the balance differs from 24 bits where levels differ. Takes about 1 MB of scratch memory; lack of it is
  //   std::bad_alloc.
  // Null for other depths, for an image of two planes, and if there is no memory for the block. The caller owns the
  // block. biSizeImage is 0 where the size of the rows does not fit its 32 bits. The image is only read; nothing is
  // reported.
  HDIB GetDib(int bitCount) const;

 protected:
  // Shows a text of the table in a box of the progress window, or of the thread's main window if that is null; nothing
  // where there is neither. Style 0: a plain box with OK; 64: with the information icon.
  void ShowMessageBox(int id, unsigned style);
  // For operators that change the size: new samples, of no defined value. With `progress` the store shows its own work
  // in the progress window under message 6111. 0 for lack of memory and for a size below 0; size and samples then stay.
  int Resize(int newWidth, int newHeight, int progress);

 private:
  friend struct OrbTestAccess;

  int ShowProgressContinue();

  HDIB GetDib8Mono(BITMAPINFOHEADER* header) const;
  HDIB GetDib8Color(BITMAPINFOHEADER* header) const;
  HDIB GetDib24Mono(BITMAPINFOHEADER* header) const;
  HDIB GetDib24Color(BITMAPINFOHEADER* header) const;

  double minPixel[3] = {0.0, 0.0, 0.0};
  double maxPixel[3] = {0.0, 0.0, 0.0};
  CfPoint stdPt[2];
  CfPoint stdCtr;
  HWND progressWnd = nullptr;
  int progressOn = 0;
  int progressPercent = 0;
  int progressTotal = 0;
  int progressStep = 0;
  int progressCount = 0;
  int progressNext = 0;
  CRect selection;
};
