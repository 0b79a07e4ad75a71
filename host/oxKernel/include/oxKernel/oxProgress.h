// Progress of a long operation (loading or saving a document), reported to
// the caller through a callback.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace OxKernel {

// What the caller of a long operation passes to hear how far it has come.
// `onProgress` receives the fraction done, from 0 to 1; it is called from
// the thread running the operation, never with a value below the previous
// one, and at most once per `interval` (default 100 ms), except for the
// final 1, which a successful operation always reports. An operation that
// fails does not report 1. An empty `onProgress` reports nothing. The
// callback must not throw.
struct oxProgress {
  std::function<void(double fraction)> onProgress;
  std::chrono::steady_clock::duration interval = std::chrono::milliseconds(100);
};

// The operation's side of an oxProgress: throttles and orders the values
// handed to the caller. Built on a null or empty oxProgress it does nothing.
class oxProgressMeter {
 public:
  using Clock = std::chrono::steady_clock;

  explicit oxProgressMeter(const oxProgress* progress)
      : m_progress(progress && progress->onProgress ? progress : nullptr), m_last(Clock::now()) {}

  bool IsActive() const { return m_progress != nullptr; }

  // `done` out of `total` (bytes read, elements written) as a fraction; 0
  // when the total is 0. Both counts are 64-bit: documents pass 4 GB.
  static constexpr double Fraction(uint64_t done, uint64_t total) {
    return total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
  }

  // Reports `fraction` (clamped to [0, 1)) when the interval has passed
  // since the last report and the value is above the last one reported.
  void Report(double fraction) {
    if (!m_progress) return;
    const double value = fraction < kBelowOne ? fraction : kBelowOne;
    if (!(value > m_reported)) return;  // also drops a NaN
    const Clock::time_point now = Clock::now();
    if (now - m_last < m_progress->interval) return;
    m_last = now;
    m_reported = value;
    m_progress->onProgress(value);
  }

  // Reports 1, once, whatever the time since the last report.
  void Finish() {
    if (!m_progress || m_reported >= 1.0) return;
    m_reported = 1.0;
    m_progress->onProgress(1.0);
  }

 private:
  // Intermediate reports stay below 1, which is kept for the end.
  static constexpr double kBelowOne = 0.999;

  const oxProgress* m_progress;
  Clock::time_point m_last;
  double m_reported = 0.0;
};

}  // namespace OxKernel
