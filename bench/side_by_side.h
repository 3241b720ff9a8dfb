// Our operator beside a peer that does the same work, in one program run: median times, their ratio, the limit it must
// keep, and the peak memory that our side adds.
//
// A comparison registers itself:
//
//   ORB_COMPARISONS(invert) {
//     auto src = ...;                                            // both sides' data, made once
//     runner.Compare("invert", 1.4, "OpenCV convertTo", [&] { ours }, [&] { theirs });
//   }
//
// Run: side_by_side [part of a group's name ...]. Both sides are run in turn, ours first, after one warm-up each.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orb::bench {

struct Result {
  std::string work;
  std::string peer;
  double limit;        // of ours / theirs
  double oursSeconds;  // median
  double theirsSeconds;
  double oursPeakMiB;  // memory that one run adds over what the process holds before it

  double Ratio() const { return oursSeconds / theirsSeconds; }
};

class Runner {
 public:
  // `repeats` runs of each side. Use fewer for work of many seconds.
  void Compare(std::string const& work, double limit, std::string const& peer, std::function<void()> const& ours,
               std::function<void()> const& theirs, int repeats = 7);

  // One iteration of iterative work: what a run of 5 takes more than a run of 1, over 4, so that neither side's
  // preparation counts. `ours` and `theirs` are given the number of iterations.
  void CompareIterations(std::string const& work, double limit, std::string const& peer,
                         std::function<void(int)> const& ours, std::function<void(int)> const& theirs, int repeats = 3);

  std::vector<Result> const& Results() const { return results; }

 private:
  void Report(Result const& result);

  std::vector<Result> results;
};

using Group = void (*)(Runner& runner);
bool RegisterGroup(char const* name, Group group);

// Python in this process, for peers that are Python packages. Buffers are shared, not copied.
//
//   Python python("import numpy, bottleneck");
//   python.SetFloats("frames", data, {20, 4096, 4096});        // a numpy float32 array over our memory
//   runner.Compare(..., [&] { python.Run("out = bottleneck.nanmedian(frames, axis=0)"); });
class Python {
 public:
  explicit Python(std::string const& setup);
  void SetFloats(std::string const& name, float* data, std::vector<long> const& shape);
  void SetBytes(std::string const& name, unsigned char* data, std::vector<long> const& shape);
  void Run(std::string const& code);  // a Python error ends the program and is printed

 private:
  void SetArray(std::string const& name, void* data, std::size_t bytes, std::string const& type,
                std::vector<long> const& shape);
};

}  // namespace orb::bench

#define ORB_COMPARISONS(name)                                                                               \
  static void Compare_##name(orb::bench::Runner& runner);                                                   \
  [[maybe_unused]] static bool const registered_##name = orb::bench::RegisterGroup(#name, &Compare_##name); \
  static void Compare_##name(orb::bench::Runner& runner)
