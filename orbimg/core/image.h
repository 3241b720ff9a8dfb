// CImage: shape, sample format, level pair of each plane, the file and camera records, and the store of the samples.
//
// A level pair (levelMin, levelMax) is the window, in raw units, through which a plane is seen: it decides what counts
// as black and as white, and is changed without touching a sample. A new image's planes have the levels 0 to 255.
//
// The setters of width, height, planes and format change only the record, never the store: an image is reshaped by
// ChangeBits, ChangePlanes and ChangeSize.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <orbimg/core/vm_image.h>
#include <platform/export.h>
#include <platform/global_memory.h>
#include <platform/object.h>

using CString = std::string;  // UTF-8

class CImage;

namespace orb {
// Makes `image` a float image over samples of the caller's (planes * height * width floats, plane after plane), with
// the levels 0 to 255. The image never frees or moves them; an operation that reallocates switches it to memory of its
// own.
ORBCIM_API void WrapSamples(CImage& image, float* samples, int width, int height, int planes);
}  // namespace orb

class ORBCIM_API CImage : public CObject {
 public:
  CImage();
  // Sample format codes: -64 and -32 floats, 8 unsigned bytes, 16 and 32 integers, signed if `isSigned`.
  CImage(int bitsPixel, int width, int height, int planes, double bscale, double bzero, int isSigned, HWND,
         char const*);
  CImage(CImage const& src, HWND, char const*);
  CImage(CImage const&) = delete;
  CImage& operator=(CImage const&) = delete;
  ~CImage() override;

  // A complete copy: shape, samples, levels, records.
  CImage& CopyImage(CImage const& src, HWND, char const*);
  // Takes the shape of `src`; samples are 0 and the levels 0 to 255. 0 on failure.
  int Create(CImage const& src, HWND, char const*);
  void Swap(CImage* other);
  // Reads a device-independent bitmap of 1, 4, 8, 16, 24 or 32 bits, bottom-up or top-down, into 8-bit samples. With a
  // palette, a gray ramp gives one plane and any other palette three. The block stays the caller's. 0, and nothing
  // changed, if the block is too short for its header or of another kind.
  int AttachDIB(HDIB dib);
  // Converts every sample to another format; to integers by rounding half up and clamping, not-a-number becoming 0. The
  // levels, bscale and bzero stay. The two unnamed arguments are ignored. 0 on failure.
  int ChangeBits(int bitsPixel, int, int, HWND, char const*);
  // Keeps the planes that stay and fills new ones, samples and levels, from plane 0. 0 on failure.
  int ChangePlanes(int planes, HWND, char const*);
  // Gives the image another size; its samples have no defined value afterwards. Memory of its own that has as many
  // bytes is kept, else it is new. Levels stay. 0 on failure.
  int ChangeSize(int width, int height, HWND, char const*);
  // Smallest and largest stored sample of a plane, of any format, starting from sample (0, 0): other samples that are
  // not numbers are passed over, but one at (0, 0) stays. 0 and 0 if there is no such plane or it has no samples.
  void GetMinMax(int plane, double* min, double* max) const;
  // 1; 0 if there is no such plane.
  int SetLevel(int plane, double min, double max);

  int GetBitsPixel() const { return bitsPixel; }
  void SetBitsPixel(int value) { bitsPixel = value; }
  int IsSigned() const { return isSigned; }
  void SetSigned(int value) { isSigned = value; }
  int GetDimension() const { return dimension; }
  int GetWidth() const { return width; }
  void SetWidth(int value) { width = value; }
  int GetHeight() const { return height; }
  void SetHeight(int value) { height = value; }
  int GetPlanes() const { return planes; }
  void SetPlanes(int value) {
    planes = value;
    dimension = value < 2 ? 2 : 3;
  }
  double GetBscale() const { return bscale; }
  void SetBscale(double value) { bscale = value; }
  double GetBzero() const { return bzero; }
  void SetBzero(double value) { bzero = value; }
  double GetLevelMin(int plane) const { return levelMin[plane]; }
  double GetLevelMax(int plane) const { return levelMax[plane]; }
  double GetLevelRange(int plane) const { return levelRange[plane]; }
  int HasOwnLevel() const { return ownLevel; }
  void SetOwnLevel(int value) { ownLevel = value; }
  int IsSaveableFormat() const { return saveableFormat; }
  void SetSaveableFormat(int value) { saveableFormat = value; }
  int IsSaveableFile() const { return saveableFile; }
  void SetSaveableFile(int value) { saveableFile = value; }
  char const* GetOrgFileName() const { return orgFileName.c_str(); }
  void SetOrgFileName(char const* text) { orgFileName = text; }
  char const* GetOrgFileFormat() const { return orgFileFormat.c_str(); }
  void SetOrgFileFormat(char const* text) { orgFileFormat = text; }
  int GetOrgBitsPixel() const { return orgBitsPixel; }
  void SetOrgBitsPixel(int value) { orgBitsPixel = value; }
  int GetOrgPlanes() const { return orgPlanes; }
  void SetOrgPlanes(int value) { orgPlanes = value; }
  char const* GetCameraMaker() const { return cameraMaker.c_str(); }
  void SetCameraMaker(char const* text) { cameraMaker = text; }
  char const* GetCameraModel() const { return cameraModel.c_str(); }
  void SetCameraModel(char const* text) { cameraModel = text; }
  char const* GetExposureShutterSpeed() const { return exposureShutterSpeed.c_str(); }
  void SetExposureShutterSpeed(char const* text) { exposureShutterSpeed = text; }
  char const* GetExposureFNumber() const { return exposureFNumber.c_str(); }
  void SetExposureFNumber(char const* text) { exposureFNumber = text; }

  // `flags`: 1 reads only, 2 locks. See vm_image.h for how long an address lives.
  unsigned char* GetImageAdr(int x, int y, int plane, unsigned int flags, void** handle) const {
    return vmImage->GetImageAdr(x, y, plane, static_cast<int>(flags & 1), static_cast<int>(flags & 2), handle);
  }
  int Unlock(void* handle) { return vmImage->Unlock(handle); }
  void UnlockAll() { vmImage->UnlockAll(); }

  int GetBytesPixel() const { return std::abs(bitsPixel) / 8; }
  unsigned char* GetNextAdr(void* p) const { return static_cast<unsigned char*>(p) + GetBytesPixel(); }
  unsigned char* GetPrevAdr(void* p) const { return static_cast<unsigned char*>(p) - GetBytesPixel(); }
  std::size_t GetImageSize() const {
    return static_cast<std::size_t>(GetBytesPixel()) * static_cast<std::size_t>(GetPixelCount());
  }
  std::ptrdiff_t GetPixelCount() const { return static_cast<std::ptrdiff_t>(planes) * height * width; }
  // Intended: an image of two planes (a and b of Lab) counts as colour.
  int IsColor() const { return dimension > 2 ? 1 : 0; }

  // Physical value of a sample: stored value * bscale + bzero; 0.0 for an unknown format.
  double GetPixel(int x, int y, int plane) const { return GetPixel(GetImageAdr(x, y, plane, 1, nullptr)); }
  double GetPixel(unsigned char* p) const;

 protected:
  friend struct OrbTestAccess;
  friend void orb::WrapSamples(CImage& image, float* samples, int width, int height, int planes);

  int bitsPixel = -32;
  int isSigned = 1;
  int dimension = 2;
  int width = 0;
  int height = 0;
  int planes = 0;
  double bscale = 1.0;
  double bzero = 0.0;
  std::unique_ptr<CVmImage> vmImage;
  std::vector<double> levelMin;
  std::vector<double> levelMax;
  std::vector<double> levelRange;
  int ownLevel = 0;
  int saveableFormat = 0;
  int saveableFile = 0;
  CString orgFileName;
  CString orgFileFormat;
  int orgBitsPixel = 0;
  int orgPlanes = 0;
  CString cameraMaker;
  CString cameraModel;
  CString exposureShutterSpeed;
  CString exposureFNumber;

 private:
  void CopyRecords(CImage const& src);
  void ResetLevels();
};
