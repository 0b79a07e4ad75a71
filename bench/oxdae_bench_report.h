// What the benchmark programs share to time their steps and print their
// tables: wall-clock and processor times of repeated runs, flag parsing and
// number formatting.
#pragma once

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace oxdae_bench {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start);

// Reads the whole of `text` as a number; false when any of it is not.
template <class T>
bool ParseNumber(std::string_view text, T& value) {
  const char* end = text.data() + text.size();
  const auto r = std::from_chars(text.data(), end, value);
  return r.ec == std::errc() && r.ptr == end;
}

// Wall-clock and processor times of the runs of one step. On a busy machine
// the processor time shows the work apart from the waiting.
struct Timing {
  std::vector<double> seconds;
  std::vector<double> cpuSeconds;

  double Best() const { return Lowest(seconds); }
  double BestCpu() const { return Lowest(cpuSeconds); }
  double Median() const;

 private:
  static double Lowest(const std::vector<double>& v);
};

// Measures one run of a step, from its construction to Stop.
class Stopwatch {
 public:
  Stopwatch();
  void Stop(Timing& t) const;

 private:
  Clock::time_point m_wall;
  double m_cpu;
};

// 12345678 as "12,345,678".
std::string Grouped(uint64_t value);

inline const char* Verdict(bool met) {
  return met ? "met" : "NOT MET";
}

template <class... Args>
std::string Format(const char* format, Args... args) {
  char text[128];
  std::snprintf(text, sizeof text, format, args...);
  return text;
}

// Prints the one-minute load average against the processor count: timings
// of a busy machine are slower and noisier.
void PrintMachineLoad();

}  // namespace oxdae_bench
