// The one friend through which tests reach what is private or protected.
#pragma once

#include <cstddef>
#include <memory>

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

  static std::unique_ptr<float[]> MakeGauss(CImgLucy& lucy, double sigma, int width, int height) {
    return lucy.MakeGauss(sigma, width, height);
  }

  static std::size_t RoomForLines(CImgMedianComposit const& median) { return median.lines.size(); }

  // Puts the samples of an image into another block of the same size.
  static void ReplaceBlock(CImage& image, std::unique_ptr<orb::SampleBlock> block) {
    CVmImage& store = *image.vmImage;
    store.block = std::move(block);
    store.base = store.block->Data();
  }
};
