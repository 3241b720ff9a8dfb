#include <hosts/orbimg/row_dark.h>

namespace orb::host {

void SubtractDarkRows(COrbImage& dark, int plane, int top, int rows, float* samples) {
  int const darkPlane = dark.IsColor() != 0 ? plane : 0;
  COrbImage light;
  COrbImage darkRows;
  WrapSamples(light, samples, dark.GetWidth(), rows, 1);
  WrapSamples(darkRows, dark.GetImageAdr(0, top, darkPlane, 1, nullptr), dark.GetWidth(), rows, 1);
  light.DarkClbrtn(&darkRows, 0);
}

}  // namespace orb::host
