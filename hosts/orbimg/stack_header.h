// The header of a stack: the reference's, with what changes when several exposures become one.
#pragma once

#include <hosts/io/fits_header.h>
#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/stack_mode.h>

namespace orb::host {

// EXPTIME is the sum of the exposures for a sum, their mean where the result is as bright as one frame, and the
// reference's otherwise; EXPTOTAL is always their sum. Where a frame has no EXPTIME neither is written. STACKCNT counts
// frames, those inside stacks among them. Display levels stay only where the frames were joined through them.
FitsHeader MakeStackHeader(ReaderList const& readers, std::vector<AlignedFrame> const& frames,
                           StackParameters const& parameters);

}  // namespace orb::host
