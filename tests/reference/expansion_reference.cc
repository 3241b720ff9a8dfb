#include <tests/reference/expansion_reference.h>

#include <orbmath/direction.h>
#include <tests/reference/resolution_reference.h>

namespace orb::test::reference {

namespace {

struct Frame {
  int left, top, right, bottom;
};

Frame FrameOf(int width, int height) {
  if (width / 2 > height) {
    int const left = (width - 2 * height) / 2;
    return Frame{left, 0, left + 2 * height, height};
  }
  int const top = (height - width / 2) / 2;
  return Frame{0, top, width, top + width / 2};
}

double SampleOf(COrbImage& map, COrbImage& src, ExpansionArguments const& args, double const (&c)[3][3],
                Frame const& frame, int x, int y, int plane) {
  CRect const mapFrame(frame.left, frame.top, frame.right, frame.bottom);
  if (!mapFrame.PtInRect(CPoint(x, y))) return map.GetLevelMin(0);
  double const ad[2] = {(x - map.GetWidth() * 0.5) / (frame.right - frame.left) * 360.0,
                        (y - map.GetHeight() * 0.5) / (frame.bottom - frame.top) * -180.0};
  double dc[3];
  double out[3];
  AdToDc(ad, dc);
  dc[2] *= args.flattening;
  RotateDc(dc, c, out);
  if (out[2] == 1.0 || out[2] == -1.0) out[0] = out[1] = 0.0;
  if (out[0] < 0.0) return 0.0;
  double const px = out[1] * args.radius + args.cx;
  double const py = args.cy - out[2] * args.radius;
  if (px < 0.0 || px > src.GetWidth() - 1 || py < 0.0 || py > src.GetHeight() - 1) return 0.0;
  return ReadAt(src, px, py, plane);
}

void DrawGraticule(COrbImage& map, Frame const& frame, CRect const& rect, int plane) {
  for (int k = 0; k <= 18; k += 3) {
    int const row = static_cast<int>((frame.bottom - frame.top - 1) * k * 0.05555555555555555 + frame.top);
    if (rect.top <= row && row <= rect.bottom) {
      for (int x = rect.left; x < rect.right; ++x) {
        map.SetPixelGrayRaw(x, row, static_cast<float>(map.GetLevelRange(0) + map.GetLevelMin(0)), plane);
      }
    }
  }
  for (int k = 0; k <= 36; k += 3) {
    int const column = static_cast<int>((frame.right - frame.left - 1) * k * 0.027777777777777776 + frame.left);
    if (rect.left <= column && column <= rect.right) {
      for (int y = frame.top; y < frame.bottom; ++y) {
        if (y < rect.top || y > rect.bottom) continue;
        map.SetPixelGrayRaw(column, y, static_cast<float>(map.GetLevelRange(plane) + map.GetLevelMin(plane)), plane);
      }
    }
  }
}

}  // namespace

void Expansion(COrbImage& map, COrbImage& src, ExpansionArguments const& args, CRect* rect) {
  CRect bounds;
  map.NormalizeRect(rect, bounds.left, bounds.top, bounds.right, bounds.bottom);
  for (int p = 0; p < map.GetPlanes(); ++p) map.CImage::SetLevel(p, src.GetLevelMin(p), src.GetLevelMax(p));
  Frame const frame = FrameOf(map.GetWidth(), map.GetHeight());
  double a[3][3];
  double b[3][3];
  double c[3][3];
  RotateY(args.tiltY, a);
  RotateX(args.tiltX, b);
  MulMatrix(b, a, c);
  for (int p = 0; p < map.GetPlanes(); ++p) {
    for (int y = bounds.top; y < bounds.bottom; ++y) {
      for (int x = bounds.left; x < bounds.right; ++x) {
        map.SetPixelGrayRaw(x, y, static_cast<float>(SampleOf(map, src, args, c, frame, x, y, p)), p);
      }
    }
  }
  if (args.grid == 0) return;
  for (int p = 0; p < map.GetPlanes(); ++p) DrawGraticule(map, frame, bounds, p);
}

}  // namespace orb::test::reference
