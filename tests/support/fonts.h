// Whether there are letters: tests that draw text skip without them.
#pragma once

#include <string>

#include <gtest/gtest.h>
#include <platform/text_rasterizer.h>

namespace orb::test {

inline bool CanDrawText() {
  TextBox box;
  return RasterizeText(LOGFONT{}, 1, "A", box);
}

inline bool CanDrawJapanese() {
  TextBox box;
  return RasterizeText(LOGFONT{}, 1, "天の川", box) && box.missing == 0;
}

}  // namespace orb::test

#define SKIP_WITHOUT_FONTS() \
  if (!CanDrawText()) GTEST_SKIP() << "no font is installed, or this build has no text"
