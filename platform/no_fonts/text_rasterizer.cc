// Built where FreeType or Fontconfig is missing: there are no letters.
#include <platform/text_rasterizer.h>

namespace orb {

bool RasterizeText(LOGFONT const&, int, std::string const&, TextBox&) { return false; }

std::string FindFontFamily(std::string const&) { return {}; }

}  // namespace orb
