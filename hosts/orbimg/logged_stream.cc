#include <hosts/orbimg/logged_stream.h>

namespace orb::host {

int LoggedStream::overflow(int c) {
  if (c == std::char_traits<char>::eof()) return 0;
  target.put(std::char_traits<char>::to_char_type(c));
  Keep(std::char_traits<char>::to_char_type(c));
  return c;
}

int LoggedStream::sync() {
  target.flush();
  return 0;
}

// A bar draws itself anew after a carriage return, a line of progress ends with its percentage.
void LoggedStream::Keep(char c) {
  if (c == '\r') {
    line.clear();
  } else if (c != '\n') {
    line += c;
  } else {
    constexpr char kClear[] = "\033[K";
    if (line.starts_with(kClear)) line.erase(0, sizeof kClear - 1);
    if (!line.empty() && !line.ends_with(" %")) lines += line + '\n';
    line.clear();
  }
}

}  // namespace orb::host
