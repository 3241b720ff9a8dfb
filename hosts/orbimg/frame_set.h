// Frames that belong together: opened once, of one shape.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <hosts/io/frame_file.h>
#include <hosts/orbimg/environment.h>

namespace orb::host {

using ReaderList = std::vector<std::shared_ptr<FrameReader>>;

// Opens every file, with a warning of what of it is left out. HostError where one cannot be read, or has another shape
// than the first; `kind` says what they are
// ("frames", "darks").
ReaderList OpenFrames(std::vector<std::string> const& files, std::string const& kind, Environment& environment);

// The files that can be opened, in their order. A broken one is left out with a warning that names it and says why, as
// one bad frame should not cost a night; HostError where fewer than `least` would remain, or where it is `needed`.
std::vector<std::string> LeaveOutBroken(std::vector<std::string> const& files, std::size_t least,
                                        std::string const& needed, Environment& environment);

// HostError where calibration frames do not fit lights: another size, or colour for mono.
void CheckFitsLights(FrameReader const& calibration, std::string const& kind, FrameReader const& light);

// What becomes of samples that are not finite, for the warning.
inline constexpr char kGoIntoResult[] = "and go into the result as they stand";
inline constexpr char kAreLeftOut[] = "and are left out";

// A warning of samples that are not finite, if there are any; `consequence` says what becomes of them.
void WarnOfNonFinite(Environment& environment, std::string const& path, std::int64_t count,
                     std::string const& consequence);

std::int64_t BytesOf(Shape const& shape);  // as floats

}  // namespace orb::host
