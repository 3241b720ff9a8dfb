// Reading and writing single samples on every scale.
#include <orbimg/core/bilinear_internal.h>
#include <orbimg/core/brightness_internal.h>
#include <orbimg/core/level.h>
#include <orbimg/core/orb_image.h>
#include <platform/assert.h>

namespace {

// The low 8 bits of a value truncated toward zero, also of a negative one.
unsigned char WrappedByteOf(double v) {
  constexpr double kTooLarge = 9.2e18;
  if (!(v > -kTooLarge && v < kTooLarge)) return 0;
  return static_cast<unsigned char>(static_cast<long long>(v) & 0xff);
}

}  // namespace

float COrbImage::GetPixelGrayRaw(int x, int y, int plane) { return *GetImageAdr(x, y, plane, 1, nullptr); }

float COrbImage::GetPixelGrayRaw(double x, double y, int plane) {
  return static_cast<float>(orb::Bilinear(*this, x, y, plane));
}

float COrbImage::GetPixelGray(float* p, int plane) { return static_cast<float>(*p - levelMin[plane]); }

float COrbImage::GetPixelGray(int x, int y, int plane) {
  return static_cast<float>(GetPixelGrayRaw(x, y, plane) - levelMin[plane]);
}

float COrbImage::GetPixelGray(double x, double y, int plane) {
  return static_cast<float>(orb::Bilinear(*this, x, y, plane) - levelMin[plane]);
}

unsigned char COrbImage::GetPixelGray256(float* p, int plane) const {
  return orb::ByteLevelOf(*this, plane).ToByte(*p);
}

unsigned char COrbImage::GetPixelGray256(int x, int y, int plane) {
  return GetPixelGray256(GetImageAdr(x, y, plane, 1, nullptr), plane);
}

unsigned char COrbImage::GetPixelGray256(float* p, float min, float max, float scale) const {
  if (*p <= min) return 0;
  if (*p >= max) return 255;
  return WrappedByteOf((static_cast<double>(*p) - min) * scale);
}

unsigned char COrbImage::GetPixelGray256(double x, double y, int plane) {
  return WrappedByteOf(To256(orb::Bilinear(*this, x, y, plane), plane));
}

float COrbImage::GetPixelGray256f(float* p, int plane) { return To256(*p, plane); }

float COrbImage::GetPixelGray256f(float* p, float min, float scale) const {
  return static_cast<float>((static_cast<double>(*p) - min) * scale);
}

float COrbImage::GetPixelGray256f(int x, int y, int plane) { return To256(GetPixelGrayRaw(x, y, plane), plane); }

float COrbImage::GetPixelGray256f(double x, double y, int plane) {
  return static_cast<float>(To256(orb::Bilinear(*this, x, y, plane), plane));
}

float COrbImage::GetPixelBright256f(int x, int y) {
  if (!orb::HasBrightness(*this)) return GetPixelGray256f(x, y, 0);
  return GetPixelBright256f(GetImageAdr(x, y, 0, 1, nullptr), GetImageAdr(x, y, 1, 1, nullptr),
                            GetImageAdr(x, y, 2, 1, nullptr));
}

float COrbImage::GetPixelBright256f(float* r, float* g, float* b) {
  if (!orb::HasBrightness(*this)) return GetPixelGray256f(r, 0);
  auto const in256 = [&](float* p, int plane) { return To256(static_cast<double>(*p), plane); };
  return static_cast<float>(orb::Brightness(in256(r, 0), in256(g, 1), in256(b, 2)));
}

float COrbImage::GetPixelBrightRaw(int x, int y) { return ToRaw(GetPixelBright256f(x, y), 0); }

float COrbImage::GetPixelBrightRaw(float* r, float* g, float* b) { return ToRaw(GetPixelBright256f(r, g, b), 0); }

float COrbImage::CalcBright(float r, float g, float b) {
  return static_cast<float>(CalcBright(static_cast<double>(r), static_cast<double>(g), static_cast<double>(b)));
}

double COrbImage::CalcBright(double r, double g, double b) {
  return orb::kGreenWeight * g + orb::kRedWeight * r + orb::kBlueWeight * b;
}

void COrbImage::SetPixelGrayRaw(int x, int y, float v, int plane) { *GetImageAdr(x, y, plane, 0, nullptr) = v; }

void COrbImage::SetPixelGray(float* p, float v, int plane) { *p = static_cast<float>(levelMin[plane] + v); }

void COrbImage::SetPixelGray(int x, int y, float v, int plane) {
  SetPixelGray(GetImageAdr(x, y, plane, 0, nullptr), v, plane);
}

void COrbImage::SetPixelGray256f(float* p, float v, int plane) { *p = ToRaw(v, plane); }

void COrbImage::SetPixelGray256f(int x, int y, float v, int plane) {
  SetPixelGray256f(GetImageAdr(x, y, plane, 0, nullptr), v, plane);
}
