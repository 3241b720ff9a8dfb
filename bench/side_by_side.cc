#include <bench/side_by_side.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <opencv2/core.hpp>

namespace orb::bench {

namespace {

struct Registered {
  char const* name;
  Group group;
};

std::vector<Registered>& Groups() {
  static std::vector<Registered> groups;
  return groups;
}

double SecondsOf(std::function<void()> const& work) {
  auto const start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
  auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// A figure in KiB out of /proc/self/status, or 0.
double StatusKiB(char const* key) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(key, 0) == 0) return std::atof(line.c_str() + std::strlen(key) + 1);
  }
  return 0.0;
}

// Peak resident memory during `work`, over what was resident before, in MiB.
double PeakMiBOf(std::function<void()> const& work) {
  std::ofstream("/proc/self/clear_refs") << "5";  // resets the high-water mark
  double const before = StatusKiB("VmRSS:");
  work();
  return std::max(0.0, StatusKiB("VmHWM:") - before) / 1024.0;
}

}  // namespace

bool RegisterGroup(char const* name, Group group) {
  Groups().push_back({name, group});
  return true;
}

void Runner::Compare(std::string const& work, double limit, std::string const& peer, std::function<void()> const& ours,
                     std::function<void()> const& theirs, int repeats) {
  double const peak = PeakMiBOf(ours);  // also the warm-up
  theirs();
  std::vector<double> oursTimes;
  std::vector<double> theirsTimes;
  for (int i = 0; i < repeats; ++i) {
    oursTimes.push_back(SecondsOf(ours));
    theirsTimes.push_back(SecondsOf(theirs));
  }
  Report({work, peer, limit, Median(oursTimes), Median(theirsTimes), peak});
}

void Runner::CompareIterations(std::string const& work, double limit, std::string const& peer,
                               std::function<void(int)> const& ours, std::function<void(int)> const& theirs,
                               int repeats) {
  constexpr int kFew = 1;
  constexpr int kMore = 5;
  auto const secondsOfOne = [](std::function<void(int)> const& run) {
    double const few = SecondsOf([&] { run(kFew); });
    return (SecondsOf([&] { run(kMore); }) - few) / (kMore - kFew);
  };
  double const peak = PeakMiBOf([&] { ours(kFew); });
  theirs(kFew);
  std::vector<double> oursTimes;
  std::vector<double> theirsTimes;
  for (int i = 0; i < repeats; ++i) {
    oursTimes.push_back(secondsOfOne(ours));
    theirsTimes.push_back(secondsOfOne(theirs));
  }
  Report({work, peer, limit, Median(oursTimes), Median(theirsTimes), peak});
}

void Runner::Report(Result const& r) {
  results.push_back(r);
  std::printf("| %-52s | %-44s | %9.1f | %9.1f | %6.3f | %5.2f | %-4s | %8.1f |\n", r.work.c_str(), r.peer.c_str(),
              r.oursSeconds * 1e3, r.theirsSeconds * 1e3, r.Ratio(), r.limit, r.Ratio() <= r.limit ? "yes" : "NO",
              r.oursPeakMiB);
  std::fflush(stdout);
}

}  // namespace orb::bench

int main(int argc, char** argv) {
  cv::setNumThreads(1);
  setenv("OMP_NUM_THREADS", "1", 1);
  std::printf(
      "| work | peer | ours ms | theirs ms | ratio | limit | kept | peak MiB |\n|---|---|---|---|---|---|---|---|\n");
  orb::bench::Runner runner;
  for (auto const& registered : orb::bench::Groups()) {
    bool wanted = argc < 2;
    for (int i = 1; i < argc; ++i) wanted = wanted || std::strstr(registered.name, argv[i]) != nullptr;
    if (wanted) registered.group(runner);
  }
  auto const& results = runner.Results();
  bool const allKept = std::all_of(results.begin(), results.end(), [](auto const& r) { return r.Ratio() <= r.limit; });
  return allKept ? 0 : 1;
}
