// The kinds of numbers that files store.
#pragma once

#include <string>

namespace orb::host {

enum class SampleType { kUint8, kInt8, kUint16, kInt16, kUint32, kInt32, kUint64, kInt64, kFloat, kDouble };

int BytesOf(SampleType type);
bool IsInteger(SampleType type);
bool IsSigned(SampleType type);  // integers below 0; floats are signed
// The least and the greatest number of an integer type.
double LowestOf(SampleType type);
double HighestOf(SampleType type);
// "unsigned 16-bit integer", "32-bit float" ...
std::string NameOf(SampleType type);
// FITS's code: 8, 16, 32, 64 for integers, -32 and -64 for floats.
int BitpixOf(SampleType type);

}  // namespace orb::host
