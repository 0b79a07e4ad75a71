// Work shared among the cores: every index once, and a failure comes back
// to the caller.
#include <gtest/gtest.h>

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include <oxKernel/oxParallel.h>

TEST(HostParallel, EveryIndexIsWorkedOnOnce) {
  std::vector<std::atomic<int>> visits(1000);
  OxKernel::oxParallelFor(visits.size(), [&](size_t i) { ++visits[i]; });
  for (size_t i = 0; i < visits.size(); ++i)
    EXPECT_EQ(visits[i].load(), 1) << "index " << i;
}

// The stack a thread was given, as the threads library reports it.
size_t StackOfThisThread() {
  pthread_attr_t attributes;
  size_t bytes = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  pthread_attr_getstacksize(&attributes, &bytes);
  pthread_attr_destroy(&attributes);
  return bytes;
}

// Each piece of work takes a while, so that the helpers start before the
// calling thread has done it all. A sanitizer adds its own share to every
// stack (ThreadSanitizer some 640 kB), so the stack is checked to be well
// below the system's default of 8 MB rather than exactly what was asked.
TEST(HostParallel, HelpersGetTheStackAskedFor) {
  if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "one core: no helper threads";
  const size_t asked = size_t{256} << 10;
  const std::thread::id caller = std::this_thread::get_id();
  std::vector<std::atomic<int>> visits(200);
  std::atomic<size_t> largestHelperStack{0};
  OxKernel::oxParallelFor(
      visits.size(),
      [&](size_t i) {
        ++visits[i];
        std::this_thread::sleep_for(std::chrono::microseconds(100));
        if (std::this_thread::get_id() == caller) return;
        size_t seen = largestHelperStack;
        const size_t mine = StackOfThisThread();
        while (mine > seen && !largestHelperStack.compare_exchange_weak(seen, mine)) {
        }
      },
      asked);
  for (size_t i = 0; i < visits.size(); ++i)
    EXPECT_EQ(visits[i].load(), 1) << "index " << i;
  EXPECT_GT(largestHelperStack.load(), 0u);
  EXPECT_LT(largestHelperStack.load(), size_t{2} << 20);
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
