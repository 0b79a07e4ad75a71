// Work shared among the machine's cores, for large, independent pieces: the
// long number lists of a document being written, the pieces of a large file
// being read, and for the host's tools the groups of a mesh being converted
// or the meshes of a scene being drawn.
#pragma once

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace OxKernel {

namespace detail {

template <typename Run>
void* oxRunThread(void* run) {
  (*static_cast<Run*>(run))();
  return nullptr;
}

// Starts `(*run)()` on a new thread with `stackBytes` of stack, the system's
// default when 0; false when no thread can be started.
template <typename Run>
bool oxStartThread(pthread_t& thread, Run* run, size_t stackBytes) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  const bool started =
      (stackBytes == 0 || pthread_attr_setstacksize(&attributes, stackBytes) == 0) &&
      pthread_create(&thread, &attributes, &oxRunThread<Run>, run) == 0;
  pthread_attr_destroy(&attributes);
  return started;
}

}  // namespace detail

// Runs `work(i)` for every i below `count`, on up to as many threads as the
// machine has cores, the calling thread among them, and returns when all are
// done. Which thread takes which i is not fixed, so each `work(i)` must touch
// only what belongs to i. An exception from `work` is thrown again here,
// after every thread has stopped. When no thread can be started, the
// calling thread does all the work. `stackBytes`, when not 0, is the stack
// of each helper thread (the system's default, often 8 MB, otherwise): work
// that needs little asks for little, so that a process that limits its
// address space loses little to the helpers.
template <typename Work>
void oxParallelFor(size_t count, Work&& work, size_t stackBytes = 0) {
  std::atomic<size_t> next{0};
  std::mutex guard;
  std::exception_ptr failure;
  auto run = [&] {
    try {
      for (size_t i = next++; i < count; i = next++)
        work(i);
    } catch (...) {
      const std::lock_guard<std::mutex> lock(guard);
      if (!failure) failure = std::current_exception();
    }
  };
  const size_t helpers =
      std::min<size_t>(count, std::max(1u, std::thread::hardware_concurrency())) - (count > 0);
  // Room for every helper up front: once one runs, nothing here may throw.
  std::vector<pthread_t> started;
  started.reserve(helpers);
  for (size_t h = 0; h < helpers; ++h) {
    pthread_t thread;
    if (!detail::oxStartThread(thread, &run, stackBytes)) break;
    started.push_back(thread);
  }
  run();
  for (pthread_t thread : started)
    pthread_join(thread, nullptr);
  if (failure) std::rethrow_exception(failure);
}

}  // namespace OxKernel
