// CImgSeparation and CImgSepatation: take one channel out of a three-plane image into a mono image.
//
//   channel            sample                     levels of
//   0 red              R                          R
//   1 green            G                          G
//   2 blue             B                          B
//   3 cyan             B and G                    B and G
//   4 magenta          B and R                    B and R
//   5 yellow           G and R                    B and R
//
// In raw units. Intended: yellow takes the levels of magenta. Both classes are in use and neither replaces the other:
//
//                      CImgSeparation             CImgSepatation
//   "p and q"          (p + q) * 0.5              p + q
//   message            6137                       6138 for channels other than 0 to 2, otherwise 6137
//   unfit images       the run starts and does    nothing is reported
//                      not end
//
// "p and q" holds for samples and for both levels. Unfit are images where the destination has not one plane, the source
// not three, or the sizes differ: nothing is changed then. Another channel changes nothing either, but its run goes on
// row by row. One unit of progress for each row of the image. There is no rectangle. Standard points stay.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgSeparation : public COrbImage {
 public:
  CImgSeparation() = default;
  CImgSeparation(CImgSeparation const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgSeparation& operator=(CImgSeparation const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // The mean of two planes for a complement.
  void Do(COrbImage* source, int channel, int progress);
};

// Intended: the name as it is published.
class ORBIMG_API CImgSepatation : public COrbImage {
 public:
  CImgSepatation() = default;
  CImgSepatation(CImgSepatation const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgSepatation& operator=(CImgSepatation const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // The sum of two planes for a complement.
  void Do(COrbImage* source, int channel, int progress);
};
