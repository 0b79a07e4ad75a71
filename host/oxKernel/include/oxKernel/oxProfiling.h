// Named profiling scopes. StartProfile/StopProfile bracket a piece of work;
// the elapsed time of the last completed run of a name can be read back.
// Thread-safe; each call costs one lock and one clock read.
#pragma once

#include <string_view>

namespace OxKernel {

class oxProfilingManager {
 public:
  static void StartProfile(std::string_view name);
  static void StopProfile(std::string_view name);
  // Seconds of the last completed StartProfile/StopProfile pair of `name`,
  // or a negative value when none has completed.
  static double GetElapsedSeconds(std::string_view name);
};

// Starts a scope on construction and stops it on every exit path.
class oxProfileScope {
 public:
  explicit oxProfileScope(std::string_view name) : m_name(name) {
    oxProfilingManager::StartProfile(name);
  }
  ~oxProfileScope() { oxProfilingManager::StopProfile(m_name); }
  oxProfileScope(const oxProfileScope&) = delete;
  oxProfileScope& operator=(const oxProfileScope&) = delete;

 private:
  std::string_view m_name;
};

}  // namespace OxKernel
