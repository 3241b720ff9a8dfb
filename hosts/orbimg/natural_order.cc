#include <hosts/orbimg/natural_order.h>

#include <algorithm>
#include <cstddef>

namespace orb::host {
namespace {

bool IsDigit(char c) { return '0' <= c && c <= '9'; }

// Takes the digits at the front of `text`, without leading zeros.
std::string_view TakeNumber(std::string_view& text) {
  auto const length = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
  std::string_view number = text.substr(0, length);
  text.remove_prefix(length);
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

int CompareNumbers(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

int CompareNaturally(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      if (int const order = CompareNumbers(TakeNumber(a), TakeNumber(b)); order != 0) return order;
      continue;
    }
    if (a.front() != b.front()) {
      return static_cast<unsigned char>(a.front()) < static_cast<unsigned char>(b.front()) ? -1 : 1;
    }
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  return a.empty() ? (b.empty() ? 0 : -1) : 1;
}

}  // namespace

bool ComesNaturallyBefore(std::string_view a, std::string_view b) {
  int const order = CompareNaturally(a, b);
  return order != 0 ? order < 0 : a < b;
}

}  // namespace orb::host
