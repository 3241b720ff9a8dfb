// The root of the image and store classes, and the platform's answer to lack of memory.
#pragma once

#include <platform/export.h>

struct ORB_PLATFORM_API CObject {
  CObject() = default;
  CObject(CObject const&) = default;
  CObject& operator=(CObject const&) = default;
  virtual ~CObject();
};

// Throws std::bad_alloc.
[[noreturn]] ORB_PLATFORM_API void AfxThrowMemoryException();
