// A stream that passes everything on and keeps its whole lines for a log, but for progress.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace orb::host {

class LoggedStream : private std::streambuf, public std::ostream {
 public:
  explicit LoggedStream(std::ostream& initTarget) : std::ostream(this), target(initTarget) {}

  std::ostream& Target() const { return target; }
  std::string const& Lines() const { return lines; }

 private:
  int overflow(int c) override;
  int sync() override;
  void Keep(char c);

  std::ostream& target;
  std::string line;
  std::string lines;
};

}  // namespace orb::host
