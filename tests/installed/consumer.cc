// Inverts one sample: 100 within the levels 0 to 255 becomes 155.
#include <orbimg/orbimg.h>

int main() {
  CImgInvert image;
  image.Create(COrbImage(-32, 1, 1, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  image.SetPixelGrayRaw(0, 0, 100.0f, 0);
  image.Do(&image, nullptr, 0);
  return image.GetPixelGrayRaw(0, 0, 0) == 155.0f ? 0 : 1;
}
