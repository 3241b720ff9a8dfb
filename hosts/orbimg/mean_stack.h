// The stack of means: every line of every frame in memory at once, joined column by column (line_join.h).
#pragma once

#include <cstdint>
#include <vector>

#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/frame_bands.h>
#include <hosts/orbimg/line_join.h>
#include <hosts/orbimg/windowed_frame.h>

namespace orb::host {

// Bytes of scratch that StackByMean takes for lines, on all threads together.
std::int64_t FindMeanScratch(std::size_t frames, Shape const& result, JoinRule const& rule, int threads);

// Joins the rows of a band; `weights` has one number a frame. The bits do not depend on bands or threads. Returns what
// was taken out.
JoinCount StackByMean(FrameBands const& frames, WindowedFrame& result, RowRange const& band, JoinRule const& rule,
                      std::vector<double> const& weights, Environment& environment);

}  // namespace orb::host
