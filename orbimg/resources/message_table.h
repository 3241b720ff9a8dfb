// The progress texts and message boxes of the library: 80 texts, in Japanese, UTF-8, numbered from 6100 to 6183.
#pragma once

#include <platform/export.h>

// The text of a message number, valid for the life of the program; an empty text for a number that is not assigned.
// Some texts hold %d for a plane or pass number, to be filled in by the operator that shows them.
ORBIMG_API char const* LoadString(int id);
