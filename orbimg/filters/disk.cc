#include <orbimg/filters/disk_internal.h>

#include <platform/object.h>

namespace orb {

namespace {

constexpr int kLargestRadius = 23169;  // of a square whose cells an int counts

}  // namespace

Disk::Disk(int radius, double range) {
  if (radius > kLargestRadius) AfxThrowMemoryException();
  int half = radius;
  for (int dy = 0; dy <= radius; ++dy) {
    double const row = static_cast<double>(dy) * dy;
    while (half >= 0 && !(static_cast<double>(half) * half + row <= range * range)) --half;
    if (half < 0) break;
    halfWidths.push_back(half);
  }
  if (halfWidths.empty()) return;
  reach = halfWidths.front();
  above = below = static_cast<int>(halfWidths.size()) - 1;
}

Disk Disk::UpperHalf() const {
  Disk half(*this);
  half.below = 0;
  return half;
}

int Disk::Count() const {
  if (halfWidths.empty()) return 0;
  int count = 0;
  for (int dy = -above; dy <= below; ++dy) count += 2 * HalfWidth(dy) + 1;
  return count;
}

}  // namespace orb
