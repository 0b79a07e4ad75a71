// Work shared among the machine's cores, for large, independent pieces: the
// long number lists of a document being written, and for the host's tools
// the groups of a mesh being converted or the meshes of a scene being drawn.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace OxKernel {

// Runs `work(i)` for every i below `count`, on up to as many threads as the
// machine has cores, the calling thread among them, and returns when all are
// done. Which thread takes which i is not fixed, so each `work(i)` must touch
// only what belongs to i. An exception from `work` is thrown again here,
// after every thread has stopped. When no thread can be started, the
// calling thread does all the work.
template <typename Work>
void oxParallelFor(size_t count, Work&& work) {
  std::atomic<size_t> next{0};
  const auto run = [&] {
    for (size_t i = next++; i < count; i = next++)
      work(i);
  };
  const size_t helpers =
      std::min<size_t>(count, std::max(1u, std::thread::hardware_concurrency())) - (count > 0);
  std::vector<std::future<void>> started;
  try {
    for (size_t h = 0; h < helpers; ++h)
      started.push_back(std::async(std::launch::async, run));
  } catch (const std::system_error&) {
    // No thread to be had: the calling thread does the rest.
  }
  run();
  for (std::future<void>& helper : started)
    helper.get();
}

}  // namespace OxKernel
