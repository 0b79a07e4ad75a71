// Work shared among the cores: every index once, and a failure comes back
// to the caller.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

#include <oxKernel/oxParallel.h>

TEST(HostParallel, EveryIndexIsWorkedOnOnce) {
  std::vector<std::atomic<int>> visits(1000);
  OxKernel::oxParallelFor(visits.size(), [&](size_t i) { ++visits[i]; });
  for (size_t i = 0; i < visits.size(); ++i)
    EXPECT_EQ(visits[i].load(), 1) << "index " << i;
}

TEST(HostParallel, NothingToDoCallsNothing) {
  int calls = 0;
  OxKernel::oxParallelFor(0, [&](size_t) { ++calls; });
  EXPECT_EQ(calls, 0);
}

TEST(HostParallel, AFailureIsThrownAgainToTheCaller) {
  std::atomic<int> done{0};
  EXPECT_THROW(OxKernel::oxParallelFor(64,
                                       [&](size_t i) {
                                         if (i == 5) throw std::runtime_error("five");
                                         ++done;
                                       }),
               std::runtime_error);
  EXPECT_LE(done.load(), 63);
}
