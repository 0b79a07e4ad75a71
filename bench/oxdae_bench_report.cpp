#include "oxdae_bench_report.h"

#include <algorithm>
#include <fstream>
#include <thread>

#include "oxdae_floor.h"

namespace oxdae_bench {

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double Timing::Median() const {
  std::vector<double> sorted = seconds;
  std::sort(sorted.begin(), sorted.end());
  const size_t n = sorted.size();
  return n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2;
}

double Timing::Lowest(const std::vector<double>& v) {
  return *std::min_element(v.begin(), v.end());
}

Stopwatch::Stopwatch() : m_wall(Clock::now()), m_cpu(ProcessCpuSeconds()) {}

void Stopwatch::Stop(Timing& t) const {
  t.seconds.push_back(SecondsSince(m_wall));
  t.cpuSeconds.push_back(ProcessCpuSeconds() - m_cpu);
}

std::string Grouped(uint64_t value) {
  const std::string digits = std::to_string(value);
  std::string grouped;
  for (size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) grouped += ',';
    grouped += digits[i];
  }
  return grouped;
}

void PrintMachineLoad() {
  std::ifstream loadavg("/proc/loadavg");
  double load = 0.0;
  if (loadavg >> load) {
    std::printf("  machine   load average %.2f on %u processors\n", load,
                std::thread::hardware_concurrency());
  }
}

}  // namespace oxdae_bench
