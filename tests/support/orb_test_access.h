// The one friend through which tests reach what is private or protected.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <orbcim/sample_block_internal.h>
#include <orbimg/orbimg.h>

struct OrbTestAccess {
  struct Progress {
    int on, percent, total, step, count, next;
  };
  static Progress ProgressOf(COrbImage const& i) {
    return {i.progressOn, i.progressPercent, i.progressTotal, i.progressStep, i.progressCount, i.progressNext};
  }
  static HWND ProgressWindowOf(COrbImage const& image) { return image.progressWnd; }
  static void SetExtrema(COrbImage& image, int plane, double min, double max) {
    image.minPixel[plane] = min;
    image.maxPixel[plane] = max;
  }
  static CRect SelectionOf(COrbImage const& image) { return image.selection; }
  static CVmImage& StoreOf(CImage& image) { return *image.vmImage; }

  static float* MakeGauss(CImgLucy& lucy, double sigma, int width, int height) {
    return lucy.MakeGauss(sigma, width, height);
  }

  static std::size_t RoomForLines(CImgMedianComposit const& median) { return median.lines.size(); }

  static CRect CalcRect(CImgFilter& filter, CRect* rect) {
    CRect bounds;
    filter.CalcRect(bounds.left, bounds.top, bounds.right, bounds.bottom, rect);
    return bounds;
  }
  static void CalcShift(CImgFilter& filter, int& dx, int& dy, COrbImage& image) { filter.CalcShift(dx, dy, 0, &image); }
  static void SetFilterAdr(CImgFilter& filter, int x, int y, int plane, int radius, float** rows, unsigned flags) {
    filter.SetFilterAdr(x, y, plane, radius, rows, flags);
  }

  static int StrideOf(CMemoryDIB const& dib) { return dib.stride; }
  static int ColorUseOf(CMemoryDIB const& dib) { return dib.colorUse; }
  static std::vector<RGBQUAD> ColoursOf(CMemoryDIB const& dib) { return dib.colours; }

  static float* MakeGauss(CImgMem& mem, double sigma, int width, int height) {
    return mem.MakeGauss(sigma, width, height);
  }
  static CPoint ClimbToPeak(PSF& profile, CPoint point) { return profile.ClimbToPeak(point); }
  static int GetBase(PSF& profile, CPoint peak, double* base) { return profile.GetBase(peak, base); }
  static int GetFWHM(PSF& profile, CPoint peak, double base, double* fwhm) { return profile.GetFWHM(peak, base, fwhm); }
  static double GetPixelValue(PSF& profile, CPoint point) { return profile.GetPixelValue(point); }
  static double FwhmToPsf(PSF const& profile, double fwhm) { return profile.FwhmToPsf(fwhm); }
  static double PsfToFwhm(PSF const& profile, double psf) { return profile.PsfToFwhm(psf); }
  static std::vector<double>& WidthsOf(PSF& profile) { return profile.widths; }

  struct Outlines {
    std::vector<int> outerRow, innerRow, outerColumn, innerColumn;
    double outerX, outerY, innerX, innerY;
  };
  static Outlines OutlinesOf(CImgApertureMark const& mark) {
    return {mark.outerRow, mark.innerRow, mark.outerColumn, mark.innerColumn,
            mark.outerX,   mark.outerY,   mark.innerX,      mark.innerY};
  }

  // Puts the samples of an image into another block of the same size.
  static void ReplaceBlock(CImage& image, std::unique_ptr<orb::SampleBlock> block) {
    CVmImage& store = *image.vmImage;
    store.block = std::move(block);
    store.base = store.block->Data();
  }
};
