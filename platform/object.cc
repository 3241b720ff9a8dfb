#include <platform/object.h>

#include <new>

CObject::~CObject() = default;

void AfxThrowMemoryException() { throw std::bad_alloc(); }
