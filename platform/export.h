// What a shared library shows to those who link it. Everything else has hidden visibility.
#pragma once

#define ORB_PLATFORM_API __attribute__((visibility("default")))
#define ORBCIM_API __attribute__((visibility("default")))
#define ORBIMG_API __attribute__((visibility("default")))
