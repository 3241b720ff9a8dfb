#include <hosts/io/dib_view_internal.h>
#include <hosts/io/host_error.h>

namespace orb::host {

DibView::DibView(HDIB initDib, std::string const& path) : dib(initDib), bytes(nullptr), header(nullptr) {
  if (dib == nullptr) throw HostError(Exit::kResources, path + ": not enough memory for the bitmap");
  bytes = static_cast<unsigned char const*>(GlobalLock(dib));
  header = reinterpret_cast<BITMAPINFOHEADER const*>(bytes);
  if (!IsSupported(GlobalSize(dib))) {
    GlobalUnlock(dib);
    throw HostError(Exit::kFailed, path + ": the bitmap is not one of 8 or 24 bits with rows from the bottom up");
  }
}

DibView::~DibView() { GlobalUnlock(dib); }

bool DibView::IsSupported(std::size_t size) const {
  return size >= sizeof(BITMAPINFOHEADER) && header->biSize == sizeof(BITMAPINFOHEADER) && header->biWidth > 0 &&
         header->biHeight > 0 && (header->biBitCount == 8 || header->biBitCount == 24) &&
         header->biCompression == BI_RGB && (header->biClrUsed == 0 || header->biClrUsed == 256) && size >= Size();
}

std::size_t DibView::Stride() const {
  std::size_t const bits = static_cast<std::size_t>(header->biWidth) * header->biBitCount;
  return (bits + 31) / 32 * 4;
}

RGBQUAD const* DibView::Palette() const { return reinterpret_cast<RGBQUAD const*>(bytes + sizeof(BITMAPINFOHEADER)); }

bool DibView::HasGrayRamp() const {
  if (!HasPalette()) return false;
  for (int i = 0; i < 256; ++i) {
    RGBQUAD const& entry = Palette()[i];
    if (entry.rgbBlue != i || entry.rgbGreen != i || entry.rgbRed != i) return false;
  }
  return true;
}

unsigned char const* DibView::Row(int y) const {
  return bytes + RowsOffset() + Stride() * static_cast<std::size_t>(Height() - 1 - y);
}

}  // namespace orb::host
