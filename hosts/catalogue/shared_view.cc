#include <hosts/catalogue/shared_view_internal.h>

namespace orb::host {

void ShareWhole(COrbImage const& image, COrbImage& view) {
  int const planes = image.GetPlanes();
  WrapSamples(view, image.GetImageAdr(0, 0, 0, 0, nullptr), image.GetWidth(), image.GetHeight(), planes);
  for (int p = 0; p < planes; ++p) view.CImage::SetLevel(p, image.GetLevelMin(p), image.GetLevelMax(p));
  auto& points = const_cast<COrbImage&>(image);  // reading them changes nothing
  for (int n = 0; n < 2; ++n) view.SetStdPt(n, points.GetStdPt(n));
  view.SetStdCtr(points.GetStdCtr());
}

void ShareStrip(COrbImage const& image, int plane, int top, int bottom, COrbImage& view) {
  WrapSamples(view, image.GetImageAdr(0, top, plane, 0, nullptr), image.GetWidth(), bottom - top, 1);
  view.CImage::SetLevel(0, image.GetLevelMin(plane), image.GetLevelMax(plane));
}

}  // namespace orb::host
