// Directions on a sphere and their rotations: the geometry of globes.
//
// The frame is right-handed: z runs along the polar axis towards positive latitudes, x points at the viewer (longitude
// 0, latitude 0), y lies across the view. Angles are in degrees, turned into radians by 0.017453292519943295.
//
// A rotation is a matrix of rows that acts on column vectors: out[i] = m[i][0] v[0] + m[i][1] v[1] + m[i][2] v[2],
// summed from the left. By a positive angle RotateX turns y towards z, RotateY turns z towards x. MulMatrix(a, b) is
// the rotation by b followed by the one by a. All arithmetic is in double and nothing is checked. An output may be the
// same array as an input.
#pragma once

#include <orbmath/export.h>

// ad: longitude and latitude. dc: cos(latitude) cos(longitude), cos(latitude) sin(longitude), sin(latitude).
ORBMATH_API void AdToDc(double const ad[2], double dc[3]);
// 1 0 0 / 0 c -s / 0 s c
ORBMATH_API void RotateX(double angle, double m[3][3]);
// c 0 s / 0 1 0 / -s 0 c
ORBMATH_API void RotateY(double angle, double m[3][3]);
// out = a b
ORBMATH_API void MulMatrix(double const a[3][3], double const b[3][3], double out[3][3]);
// out = m v
ORBMATH_API void RotateDc(double const v[3], double const m[3][3], double out[3]);
