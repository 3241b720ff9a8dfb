#include <hosts/io/sample_type.h>

#include <cmath>

namespace orb::host {

int BytesOf(SampleType type) {
  switch (type) {
    case SampleType::kUint8:
    case SampleType::kInt8:
      return 1;
    case SampleType::kUint16:
    case SampleType::kInt16:
      return 2;
    case SampleType::kUint32:
    case SampleType::kInt32:
    case SampleType::kFloat:
      return 4;
    default:
      return 8;
  }
}

bool IsInteger(SampleType type) { return type != SampleType::kFloat && type != SampleType::kDouble; }

bool IsSigned(SampleType type) {
  return type != SampleType::kUint8 && type != SampleType::kUint16 && type != SampleType::kUint32 &&
         type != SampleType::kUint64;
}

double LowestOf(SampleType type) { return IsSigned(type) ? -std::ldexp(1.0, 8 * BytesOf(type) - 1) : 0.0; }

double HighestOf(SampleType type) { return std::ldexp(1.0, 8 * BytesOf(type) - (IsSigned(type) ? 1 : 0)) - 1.0; }

std::string NameOf(SampleType type) {
  std::string const bits = std::to_string(8 * BytesOf(type)) + "-bit ";
  if (!IsInteger(type)) return bits + "float";
  return (IsSigned(type) ? "signed " : "unsigned ") + bits + "integer";
}

int BitpixOf(SampleType type) { return (IsInteger(type) ? 8 : -8) * BytesOf(type); }

}  // namespace orb::host
