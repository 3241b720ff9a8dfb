// CopyFloats: copies n floats; the two places may overlap.
#pragma once

#include <platform/export.h>

// Nothing is done for n below 1.
ORBIMG_API void CopyFloats(float const* from, float* to, int n);
