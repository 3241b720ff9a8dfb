#include <sys/resource.h>

#include <iostream>
#include <string>
#include <vector>

#include <hosts/orbimg/command.h>
#include <hosts/orbimg/interrupt.h>

namespace {

// A stack keeps all its files open, which may be more than a shell allows by default.
void AllowManyOpenFiles() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

int main(int argc, char** argv) {
  AllowManyOpenFiles();
  orb::host::WatchForInterrupt();
  return static_cast<int>(orb::host::RunCommand(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr));
}
