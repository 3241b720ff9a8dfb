// What the math library shows to those who link it. Everything else has hidden visibility.
#pragma once

#define ORBMATH_API __attribute__((visibility("default")))
