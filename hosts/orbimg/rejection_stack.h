// The rejection composite over whole frames: its window reads neighbours of the first frame and of its own result, so
// it cannot be cut into bands.
#pragma once

#include <functional>

#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/frame_bands.h>
#include <hosts/orbimg/stack_mode.h>

namespace orb::host {

// Frames that are in memory at once: the result so far, the next frame, the new result.
inline constexpr int kRejectionFrames = 3;

// Joins the frames in order, each read whole; the result so far takes part as the first frame. One thread.
void StackByRejection(std::vector<BandSource> const& sources, WindowedFrame& result, StackParameters const& parameters,
                      std::function<void(COrbImage&, std::size_t)> const& setLevels, Environment& environment);

}  // namespace orb::host
