// A bitmap of the library as a .bmp file.
#pragma once

#include <string>

#include <orbimg/orbimg.h>

// False if the file cannot be written.
bool WriteBitmap(std::string const& path, HDIB bitmap);
