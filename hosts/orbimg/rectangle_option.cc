#include <hosts/orbimg/rectangle_option.h>

#include <fmt/format.h>
#include <hosts/io/host_error.h>

namespace orb::host {

std::optional<CRect> MakeRect(std::vector<int> const& sides, COrbImage const& image) {
  if (sides.empty()) return std::nullopt;
  CRect const rect(sides[0], sides[1], sides[2], sides[3]);
  if (0 <= rect.left && rect.left < rect.right && rect.right <= image.GetWidth() && 0 <= rect.top &&
      rect.top < rect.bottom && rect.bottom <= image.GetHeight()) {
    return rect;
  }
  throw HostError(
      Exit::kUsage,
      fmt::format("--rect: {} {} {} {} is no part of an image of {} x {}; give left, top, right, bottom, the last "
                  "two one past the end",
                  rect.left, rect.top, rect.right, rect.bottom, image.GetWidth(), image.GetHeight()));
}

}  // namespace orb::host
