// One line of one frame, as the destination sees it, and the sampler that makes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <orbimg/core/sampled_row_kernels.h>

namespace orb {

// Keeps what depends on the transform and the shapes alone for the lines to come. The frame is read by Sample only, and
// is the caller's to keep: one that fits is the same object, in the same shape and with the same centre.
class FrameLine {
 public:
  FrameLine(COrbImage& frame, double dx, double dy, double angle, int columns, int planes);

  bool Fits(COrbImage& frame, double dx, double dy, double angle, int columns, int planes) const;

  // Line y of all planes.
  void Sample(int y);

  // The samples of a plane, of use in the columns Begin() .. End() - 1 only: outside them the frame has none.
  float const* Samples(int plane) const { return samples.data() + plane * static_cast<std::ptrdiff_t>(origin.columns); }
  // Where the columns from `column` on will find new samples for the next line: an address to ask the memory for ahead
  // of need, not one to read, as the frame may be gone. 0 if not known.
  std::uintptr_t NextAddress(int plane, std::ptrdiff_t column) const;

  std::ptrdiff_t Begin() const { return row.InsideBegin(); }
  std::ptrdiff_t End() const { return row.InsideEnd(); }

 private:
  struct Origin {
    COrbImage* frame;
    int frameWidth;
    int frameHeight;
    double centerX;
    double centerY;
    double dx;
    double dy;
    double angle;
    int columns;
    int planes;

    bool operator==(Origin const&) const = default;
  };
  static Origin OriginOf(COrbImage& frame, double dx, double dy, double angle, int columns, int planes);

  Origin origin;
  SampledRow row;
  std::vector<float> samples;
  std::uintptr_t frameAddress = 0;
};

}  // namespace orb
