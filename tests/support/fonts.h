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

// Letters of another script than the face's own come from further fonts; a face that has none shows one and the same
// sign for all of them.
inline bool CanDrawJapanese() {
  TextBox one;
  TextBox other;
  return RasterizeText(LOGFONT{}, 1, "\u5929", one) && RasterizeText(LOGFONT{}, 1, "\u5ddd", other) &&
         one.letters != other.letters;
}

}  // namespace orb::test

#define SKIP_WITHOUT_FONTS() \
  if (!CanDrawText()) GTEST_SKIP() << "no font is installed, or this build has no text"
