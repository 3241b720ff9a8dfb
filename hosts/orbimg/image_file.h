// Images from and to files of every kind, with what cannot be kept said in a warning.
#pragma once

#include <string>

#include <hosts/io/frame_file.h>
#include <hosts/orbimg/environment.h>

namespace orb::host {

// One warning for each thing of the file that is left out, such as an alpha channel.
void WarnOfNotes(Environment& environment, FrameReader const& reader);

std::unique_ptr<FrameReader> OpenImage(std::string const& path, Environment& environment);
void ReadImage(std::string const& path, Frame& frame, Environment& environment);
// The same for an image that an operator works on: a warning tells of samples that are not finite.
void ReadForWork(std::string const& path, Frame& frame, Environment& environment);

// HostError where `path` cannot be written, or its ending names no format.
void CheckImageFile(std::string const& path, Existing existing);
// Writes in the format of the ending. A warning tells what the file cannot hold.
void WriteImage(std::string const& path, Frame const& frame, Environment& environment,
                WriteSettings const& settings = {});
void WarnOfLosses(Environment& environment, std::string const& path, WriteReport const& report);

}  // namespace orb::host
