// A whole image with its header, from and to files of any kind.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <hosts/io/atomic_file.h>
#include <hosts/io/fits_header.h>
#include <hosts/io/frame_reader.h>
#include <hosts/io/frame_writer.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// The levels come from the cards CBLACK and CWHITE (planes 1 and 2: CBLACK2, CWHITE2, CBLACK3, CWHITE3, or else plane
// 0's), where CBLACK is below CWHITE; else they are the plane's smallest and largest finite sample, one unit apart
// where these are equal, and 0 to 255 where no sample is finite. Readers of formats without cards set these cards to
// the range of 8 and 16 bits.
struct Frame {
  COrbImage image;
  FitsHeader header;
  std::int64_t nonFinite = 0;
  std::int64_t inexact = 0;  // numbers of the file that were rounded to floats
};

// Reads all samples of all planes. Returns how many are not finite.
std::int64_t ReadSamples(FrameReader& reader, COrbImage& image);
void ReadFrameFile(FrameReader& reader, Frame& frame);
void ReadFrameFile(std::string const& path, Frame& frame, ReadOptions const& options = {});

// Writes in the format of the ending. FITS and TIFF carry the header, with CBLACK and CWHITE (levels of plane 0) and
// one pair a plane (CBLACK2 ...) for colour.
WriteReport WriteFrameFile(std::string const& path, Frame const& frame, WriteSettings const& settings,
                           Existing existing);

// Sets the levels of a plane from its own cards. False, and nothing changed, where they are missing or black is not
// below white.
bool SetLevelsFromCards(FitsHeader const& header, int plane, COrbImage& image);
// Sets the level cards of a header to the levels of an image.
void SetLevelCards(FitsHeader& header, COrbImage const& image);
// CBLACK 0 and CWHITE `white`, once for all planes.
void SetLevelCards(FitsHeader& header, double white);

}  // namespace orb::host
