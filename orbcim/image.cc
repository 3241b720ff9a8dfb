// Making, copying and reshaping an image.
#include <orbimg/core/image.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr double kNewLevelMin = 0.0;
constexpr double kNewLevelMax = 255.0;

// Runs a step that may lack memory; 0 then, as the storage operations report it.
template <typename Step>
int SucceedsInMemory(Step step) {
  try {
    step();
    return 1;
  } catch (std::bad_alloc const&) {
    return 0;
  }
}

}  // namespace

CImage::CImage() = default;

CImage::CImage(int initBitsPixel, int initWidth, int initHeight, int initPlanes, double initBscale, double initBzero,
               int initSigned, HWND, char const*)
    : bitsPixel(initBitsPixel),
      isSigned(initSigned),
      width(initWidth),
      height(initHeight),
      bscale(initBscale),
      bzero(initBzero) {
  SetPlanes(initPlanes);
  vmImage = std::make_unique<CVmImage>(GetBytesPixel(), width, height, planes);
  ResetLevels();
}

CImage::CImage(CImage const& src, HWND wnd, char const* text) { CImage::CopyImage(src, wnd, text); }

CImage::~CImage() = default;

CImage& CImage::CopyImage(CImage const& src, HWND wnd, char const* text) {
  if (this == &src) return *this;
  // Made aside, so that lack of memory leaves this image as it was.
  CImage copy;
  if (src.vmImage) copy.vmImage = std::make_unique<CVmImage>(*src.vmImage, wnd, text);
  copy.CopyRecords(src);
  CImage::Swap(&copy);
  return *this;
}

// Everything but the store.
void CImage::CopyRecords(CImage const& src) {
  bitsPixel = src.bitsPixel;
  isSigned = src.isSigned;
  dimension = src.dimension;
  width = src.width;
  height = src.height;
  planes = src.planes;
  bscale = src.bscale;
  bzero = src.bzero;
  levelMin = src.levelMin;
  levelMax = src.levelMax;
  levelRange = src.levelRange;
  ownLevel = src.ownLevel;
  saveableFormat = src.saveableFormat;
  saveableFile = src.saveableFile;
  orgFileName = src.orgFileName;
  orgFileFormat = src.orgFileFormat;
  orgBitsPixel = src.orgBitsPixel;
  orgPlanes = src.orgPlanes;
  cameraMaker = src.cameraMaker;
  cameraModel = src.cameraModel;
  exposureShutterSpeed = src.exposureShutterSpeed;
  exposureFNumber = src.exposureFNumber;
}

void CImage::ResetLevels() {
  auto const count = static_cast<std::size_t>(std::max(planes, 0));
  levelMin.assign(count, kNewLevelMin);
  levelMax.assign(count, kNewLevelMax);
  levelRange.assign(count, kNewLevelMax - kNewLevelMin);
}

int CImage::Create(CImage const& src, HWND, char const*) {
  return SucceedsInMemory([&] {
    vmImage = std::make_unique<CVmImage>(src.GetBytesPixel(), src.width, src.height, src.planes);
    bitsPixel = src.bitsPixel;
    isSigned = src.isSigned;
    width = src.width;
    height = src.height;
    bscale = src.bscale;
    bzero = src.bzero;
    SetPlanes(src.planes);
    ResetLevels();
  });
}

void CImage::Swap(CImage* other) {
  std::swap(bitsPixel, other->bitsPixel);
  std::swap(isSigned, other->isSigned);
  std::swap(dimension, other->dimension);
  std::swap(width, other->width);
  std::swap(height, other->height);
  std::swap(planes, other->planes);
  std::swap(bscale, other->bscale);
  std::swap(bzero, other->bzero);
  std::swap(vmImage, other->vmImage);
  std::swap(levelMin, other->levelMin);
  std::swap(levelMax, other->levelMax);
  std::swap(levelRange, other->levelRange);
  std::swap(ownLevel, other->ownLevel);
  std::swap(saveableFormat, other->saveableFormat);
  std::swap(saveableFile, other->saveableFile);
  std::swap(orgFileName, other->orgFileName);
  std::swap(orgFileFormat, other->orgFileFormat);
  std::swap(orgBitsPixel, other->orgBitsPixel);
  std::swap(orgPlanes, other->orgPlanes);
  std::swap(cameraMaker, other->cameraMaker);
  std::swap(cameraModel, other->cameraModel);
  std::swap(exposureShutterSpeed, other->exposureShutterSpeed);
  std::swap(exposureFNumber, other->exposureFNumber);
}

int CImage::ChangePlanes(int newPlanes, HWND, char const*) {
  if (newPlanes < 1 || planes < 1) return 0;
  if (newPlanes == planes) return 1;
  return SucceedsInMemory([&] {
    auto store = std::make_unique<CVmImage>(GetBytesPixel(), width, height, newPlanes);
    std::size_t const planeBytes = GetImageSize() / static_cast<std::size_t>(planes);
    for (int p = 0; p < newPlanes; ++p) {
      int const from = p < planes ? p : 0;
      if (planeBytes == 0) break;
      std::memcpy(store->GetImageAdr(0, 0, p, 0, 0, nullptr), vmImage->GetImageAdr(0, 0, from, 1, 0, nullptr),
                  planeBytes);
    }
    auto const count = static_cast<std::size_t>(newPlanes);
    levelMin.resize(count, levelMin[0]);
    levelMax.resize(count, levelMax[0]);
    levelRange.resize(count, levelRange[0]);
    vmImage = std::move(store);
    SetPlanes(newPlanes);
  });
}

int CImage::ChangeSize(int newWidth, int newHeight, HWND, char const*) {
  return SucceedsInMemory([&] {
    if (!vmImage || !vmImage->Reshape(newWidth, newHeight)) {
      vmImage = std::make_unique<CVmImage>(GetBytesPixel(), newWidth, newHeight, planes);
    }
    width = newWidth;
    height = newHeight;
  });
}

int CImage::SetLevel(int plane, double min, double max) {
  if (plane < 0 || plane >= static_cast<int>(levelMin.size())) return 0;
  auto const p = static_cast<std::size_t>(plane);
  levelMin[p] = min;
  levelMax[p] = max;
  levelRange[p] = max - min;
  return 1;
}

void orb::WrapSamples(CImage& image, float* samples, int width, int height, int planes) {
  image.vmImage =
      std::make_unique<CVmImage>(reinterpret_cast<unsigned char*>(samples), int{sizeof(float)}, width, height, planes);
  image.bitsPixel = -32;
  image.isSigned = 1;
  image.width = width;
  image.height = height;
  image.bscale = 1.0;
  image.bzero = 0.0;
  image.SetPlanes(planes);
  image.ResetLevels();
}
