#include <hosts/orbimg/parallel.h>

#include <atomic>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/interrupt.h>
#include <tests/io/expect_host_error.h>

namespace orb::test {
namespace {

TEST(Parallel, EveryPieceRunsOnce) {
  for (int const threads : {1, 2, 7, 200}) {
    std::vector<std::atomic<int>> runs(101);
    host::RunInParallel(101, threads, [&](std::int64_t i) { ++runs[static_cast<std::size_t>(i)]; });
    for (auto const& count : runs) EXPECT_EQ(count, 1);
  }
}

TEST(Parallel, NothingToDoIsDone) {
  host::RunInParallel(0, 4, [](std::int64_t) { FAIL(); });
}

TEST(Parallel, AFailureIsThrownAndEndsTheWork) {
  std::atomic<int> runs{0};
  EXPECT_THROW(host::RunInParallel(100000, 3,
                                   [&](std::int64_t i) {
                                     ++runs;
                                     if (i == 5) throw std::runtime_error("piece 5");
                                   }),
               std::runtime_error);
  EXPECT_LT(runs, 100000);
}

TEST(Parallel, CtrlCStopsBetweenPieces) {
  int runs = 0;
  EXPECT_TRUE(FailsWith(host::Exit::kInterrupted, "interrupted", [&] {
    host::RunInParallel(10, 1, [&](std::int64_t i) {
      ++runs;
      if (i == 3) host::SetInterrupted(true);
    });
  }));
  host::SetInterrupted(false);
  EXPECT_EQ(runs, 4);
}

}  // namespace
}  // namespace orb::test
