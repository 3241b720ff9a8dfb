// Finds which star of a frame is which star of the reference, by the triangles that bright stars form.
//
// The frames show the sky at one scale, so a triangle keeps its three sides and its sense of rotation; shift and
// rotation may be any.
//
// 1. Each triangle of the brightest stars of one list that has the sides of one of the other, within the tolerance,
// votes
//    for its three pairs of corners, provided it turns the sky by the angle that most triangles agree on.
// 2. Every two of the pairs with the most votes give a shift and an angle; the one that most pairs obey wins.
// 3. All stars take part: under that transform each star's nearest counterpart counts, a least-squares fit leaves out
// what
//    lies off, twice over.
// 4. A match must not be luck: with n and m bright stars, k that agree and q the chance that a star lies where it is
//    awaited, the number of matches expected by chance, C(n, k) m! / (m - k)! q^(k - 1.5), is below 1/1000.
#pragma once

#include <vector>

#include <hosts/orbimg/frame_transform.h>

namespace orb::host {

struct TriangleMatchSettings {
  int brightest = 50;      // stars of each list that form triangles
  double tolerance = 2.0;  // pixels: between sides, and between a star and its place
};

struct StarPair {
  int reference;  // index in the reference's list
  int frame;      // index in the frame's list
};

// Both lists are sorted by falling brightness. Empty if no match can be trusted.
std::vector<StarPair> MatchStars(std::vector<Position> const& reference, std::vector<Position> const& frame,
                                 TriangleMatchSettings const& settings);

}  // namespace orb::host
