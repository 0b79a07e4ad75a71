#include "oxKernel/oxProfiling.h"

#include <chrono>
#include <mutex>
#include <string>
#include <unordered_map>

namespace OxKernel {

namespace {
using Clock = std::chrono::steady_clock;
struct Entry {
  Clock::time_point started{};
  double lastSeconds = -1.0;
};
struct Table {
  std::mutex mutex;
  std::unordered_map<std::string, Entry> entries;
};
Table& Profiles() {
  static Table table;
  return table;
}
}  // namespace

void oxProfilingManager::StartProfile(std::string_view name) {
  Table& t = Profiles();
  const Clock::time_point now = Clock::now();
  std::lock_guard lock(t.mutex);
  t.entries[std::string(name)].started = now;
}

void oxProfilingManager::StopProfile(std::string_view name) {
  const Clock::time_point now = Clock::now();
  Table& t = Profiles();
  std::lock_guard lock(t.mutex);
  auto it = t.entries.find(std::string(name));
  if (it == t.entries.end()) return;
  it->second.lastSeconds = std::chrono::duration<double>(now - it->second.started).count();
}

double oxProfilingManager::GetElapsedSeconds(std::string_view name) {
  Table& t = Profiles();
  std::lock_guard lock(t.mutex);
  auto it = t.entries.find(std::string(name));
  return it == t.entries.end() ? -1.0 : it->second.lastSeconds;
}

}  // namespace OxKernel
