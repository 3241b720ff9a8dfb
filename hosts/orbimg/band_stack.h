// The two ways of joining frames that work in bands of rows: the median of all, and frame after frame.
//
// Each computes the rows of one band from frames that are loaded for it, on several threads with rows of their own
// each, into a window of the result that is open for these rows. The bits do not depend on bands or threads.
#pragma once

#include <functional>

#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/frame_bands.h>
#include <hosts/orbimg/stack_mode.h>
#include <hosts/orbimg/windowed_frame.h>

namespace orb::host {

// Calls work(rows) for the rows of a band in pieces of a few rows, on several threads.
void EachPiece(RowRange const& band, int threads, std::function<void(RowRange const&)> const& work);

// Bytes of scratch that StackByMedian takes for lines, on all threads together.
std::int64_t FindMedianScratch(std::size_t frames, Shape const& result, int threads);

void StackByMedian(FrameBands const& frames, WindowedFrame& result, RowRange const& band, Environment& environment);

// Starts from the first frame, which is read without its transform, and joins the others to it in order. The levels of
// frame i are set by `setLevels(image, i)`, the result takes those of the first.
void StackByFolding(FrameBands const& frames, WindowedFrame& result, RowRange const& band,
                    StackParameters const& parameters, std::function<void(COrbImage&, std::size_t)> const& setLevels,
                    Environment& environment);

}  // namespace orb::host
