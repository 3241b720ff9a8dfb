// The palettes of false colours: colours between which one value, 0 to 255, is interpolated.
#pragma once

namespace orb {

inline constexpr int kRampChannels = 3;

// v = 255 is the last colour, behind which each channel has one more entry, of no weight.
struct ColorRamp {
  double scale;                         // colours a unit of v
  double spacing;                       // units of v a colour
  double factor;                        // from the distance to a colour below to the share of the next one
  float const* entries[kRampChannels];  // null: the value itself, a gray

  // One channel, 0 to 255, at v in 0 to 255; not a number where v is none.
  double At(int channel, double v) const { return entries[channel] != nullptr ? Between(entries[channel], v) : v; }

  [[gnu::always_inline]] double Between(float const* colors, double v) const {
    int const i = static_cast<int>(v == v ? v * scale : 0.0);
    double const fraction = (v - i * spacing) * factor;
    return colors[i] * (1 - fraction) + colors[i + 1] * fraction;
  }
};

// Of a palette number; a gray one for a number without a palette.
ColorRamp RampOf(int palette);

}  // namespace orb
