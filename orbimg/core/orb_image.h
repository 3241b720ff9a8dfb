// COrbImage: the image that every operator is, works on and reads from.
//
// Samples are 32-bit floats in planes (1 mono; 3 colour: red, green, blue), row 0 on top. An operator derives from
// COrbImage, and the operator object is the destination. The rules that all operators share stand in operator_run.h.
//
// Scales. Raw is the stored float. Gray is raw - levelMin. The 256-scale is (raw - levelMin) / levelRange * 255.0, not
// clamped; its byte form is 0 where levelMin >= raw, otherwise 255 where levelMax <= raw, otherwise truncated. The way
// back is levelRange * v * 0.00392156862745098 + levelMin. Everything is computed in double and rounded once, on return or
// on store. Brightness of a colour is 0.299 R + 0.587 G + 0.114 B on the 256-scale of each plane.
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

  // ---- Progress (orb_image_progress.cc). One Init, any number of steps and texts, one End. With `on` 0 nothing is sent
  // and nothing is polled.
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
  // Counts the samples v with lo <= v <= hi into the class trunc((v - lo) / (hi - lo) * bins), held in 0 .. bins - 1.
  // `plane` -1 on a colour image counts brightness, the bounds then being raw values of plane 0. `msgId` 0 is 6166.
  // Returns width * height / bins * 2 of the whole image, in floating point and truncated.
  int GetHistGram(int* const hist, int bins, double lo, double hi, int plane, CRect* rect, int progress, int msgId);
  void CutOutOfLevel();
  // Intended: the sum is divided by (width - 1) and by (height - 1), so it runs slightly above the true mean. The sum is
  // taken in 16 interleaved partial sums of a row, so it may differ from a plain sum in the last bits of a double.
  float GetAvrGrayRaw(int plane);
  float GetAvrGray(int plane);
  float GetAvrGray256f(int plane);
  // In place: raw * a / f where the flat's sample f is above 0, a being the flat's GetAvrGrayRaw(0), for all planes.
  void FlatClbrtn(COrbImage* flat, int progress);
  // In place: raw - dark, and 0 where that is not above 0.
  void DarkClbrtn(COrbImage* dark, int progress);
  // `plane` -1 on a colour image sets plane 0 and moves the other planes by the same fractions of their own ranges.
  void SetLevel(int plane, double min, double max);
  int ToColor();
  int ToColor(COrbImage* src, int progress);
  int ToGray();
  int ToGray(COrbImage* src, int progress);  // `src` must not be this image
  void CalcMinMax();
  void LiftUp(int rows);  // moves every plane up; the last rows keep their content

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
  // Shift (pixels) and angle (degrees, rounded down to a tenth) that lay `other` over this image, from the standard points
  // of both. Returns the number of points used. Gives `other` a centre if it has none.
  int GetFitPrm(COrbImage* other, double& dx, double& dy, double& angle);
  int GetFitPrm(COrbImage* other, double& dx, double& dy, double& angle, double offsetX, double offsetY,
                double offsetAngle);

  // ---- Transformed sampling (orb_image_sampling.cc): what this image shows at pixel (x, y) of another frame, shifted by
  // dx, dy pixels, rotated about this image's stdCtr, magnified by scale. `plane` -1 is brightness. `outside` is the value
  // off the image. isOutside, srcX, srcY may be null.
  float GetPixelGray256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                         double outside, int nearest, int* isOutside, double* srcX, double* srcY);
  float GetPixelGray256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane, double outside,
                         int nearest, int* isOutside, double* srcX, double* srcY);
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
  // Copies a rectangle from an image with the same number of planes, clipped to both; `convert` non-zero goes through the
  // 256-scale of both.
  void PixelBlt(int dstX, int dstY, int width, int height, COrbImage* src, int srcX, int srcY, int convert);

  // ---- Rendering (display/): a bitmap of 8 or 24 bits through the levels; null for other depths or lack of memory. The
  // caller owns the block.
  HDIB GetDib(int bitCount) const;

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
