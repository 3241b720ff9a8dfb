// Reading, converting and ranging samples of the five formats.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include <orbimg/core/extrema_internal.h>
#include <orbimg/core/image.h>

namespace {

// Calls visit(pointer to a sample of the format's type); false for an unknown format code.
template <typename Visit>
bool WithSampleType(int bitsPixel, int isSigned, Visit visit) {
  switch (bitsPixel) {
    case -64:
      visit(static_cast<double*>(nullptr));
      return true;
    case -32:
      visit(static_cast<float*>(nullptr));
      return true;
    case 8:
      visit(static_cast<std::uint8_t*>(nullptr));
      return true;
    case 16:
      if (isSigned != 0)
        visit(static_cast<std::int16_t*>(nullptr));
      else
        visit(static_cast<std::uint16_t*>(nullptr));
      return true;
    case 32:
      if (isSigned != 0)
        visit(static_cast<std::int32_t*>(nullptr));
      else
        visit(static_cast<std::uint32_t*>(nullptr));
      return true;
    default:
      return false;
  }
}

// Integers: rounded half up and clamped, not-a-number to 0.
template <typename To>
To ConvertSample(double v) {
  if constexpr (std::is_floating_point_v<To>) {
    return static_cast<To>(v);
  } else {
    double const rounded = std::floor(v + 0.5);
    if (!(rounded > static_cast<double>(std::numeric_limits<To>::min()))) {
      return std::isnan(v) ? To{0} : std::numeric_limits<To>::min();
    }
    if (rounded >= static_cast<double>(std::numeric_limits<To>::max())) return std::numeric_limits<To>::max();
    return static_cast<To>(rounded);
  }
}

template <typename T>
void FindMinMax(T const* samples, std::size_t count, double* min, double* max) {
  orb::Extrema<T> found{samples[0], samples[0]};
  if constexpr (std::is_floating_point_v<T>) {
    orb::WidenExtrema(samples, count, found);
  } else {
    auto const [least, greatest] = std::minmax_element(samples, samples + count);
    found = {*least, *greatest};
  }
  *min = static_cast<double>(found.min);
  *max = static_cast<double>(found.max);
}

}  // namespace

double CImage::GetPixel(unsigned char* p) const {
  double stored = 0.0;
  bool const known = WithSampleType(
      bitsPixel, isSigned, [&](auto* type) { stored = static_cast<double>(*reinterpret_cast<decltype(type)>(p)); });
  return known ? stored * bscale + bzero : 0.0;
}

int CImage::ChangeBits(int newBitsPixel, int, int, HWND, char const*) {
  if (newBitsPixel == bitsPixel) return 1;
  if (!vmImage) return 0;
  auto const convert = [&](std::unique_ptr<CVmImage>& store) {
    auto const count = GetPixelCount();
    return WithSampleType(bitsPixel, isSigned, [&](auto* fromType) {
      WithSampleType(newBitsPixel, isSigned, [&](auto* toType) {
        using To = std::remove_pointer_t<decltype(toType)>;
        auto const* from = reinterpret_cast<decltype(fromType)>(vmImage->GetImageAdr(0, 1, 0, nullptr));
        auto* to = reinterpret_cast<To*>(store->GetImageAdr(0, 0, 0, nullptr));
        for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = ConvertSample<To>(static_cast<double>(from[i]));
      });
    });
  };
  try {
    if (!WithSampleType(newBitsPixel, isSigned, [](auto*) {})) return 0;
    auto store = std::make_unique<CVmImage>(std::abs(newBitsPixel) / 8, width, height, planes);
    if (!convert(store)) return 0;
    vmImage = std::move(store);
    bitsPixel = newBitsPixel;
    return 1;
  } catch (std::bad_alloc const&) {
    return 0;
  }
}

void CImage::GetMinMax(int plane, double* min, double* max) const {
  *min = 0.0;
  *max = 0.0;
  if (plane < 0 || plane >= planes || width < 1 || height < 1) return;
  unsigned char* const samples = GetImageAdr(0, 0, plane, 1, nullptr);
  auto const count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  WithSampleType(bitsPixel, isSigned,
                 [&](auto* type) { FindMinMax(reinterpret_cast<decltype(type)>(samples), count, min, max); });
}
