#include "oxdae_bench_report.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "oxdae_floor.h"

namespace oxdae_bench {

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

bool ParseDocumentArguments(int argc, char** argv, DocumentArguments& args) {
  double megabytes = 50.0;
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    if (i + 1 >= argc) return false;
    const std::string_view value = argv[++i];
    if (arg == "--file") {
      args.file = std::string(value);
    } else if (arg == "--megabytes") {
      if (!ParseNumber(value, megabytes) || megabytes <= 0.0) return false;
    } else if (arg == "--seed") {
      if (!ParseNumber(value, args.document.seed)) return false;
    } else if (arg == "--runs") {
      if (!ParseNumber(value, args.runs) || args.runs < 1) return false;
    } else {
      return false;
    }
  }
  args.document.bytes = static_cast<uint64_t>(megabytes * 1e6);
  return true;
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

uint64_t OpenInput(const char* program, const std::string& input, int runs) {
  std::error_code error;
  const uint64_t bytes = std::filesystem::file_size(input, error);
  if (error || bytes == 0) {
    std::fprintf(stderr, "%s: cannot read %s\n", program, input.c_str());
    return 0;
  }
  std::printf("  input     %s (%s bytes), %d runs per step\n", input.c_str(),
              Grouped(bytes).c_str(), runs);
  PrintMachineLoad();
  return bytes;
}

void PrintGenerated(uint64_t bytes, uint64_t seed, Clock::time_point start) {
  std::printf("  generated %s bytes (seed %llu) in %.2f s\n", Grouped(bytes).c_str(),
              static_cast<unsigned long long>(seed), SecondsSince(start));
}

void PrintTargetsHeading(const TargetColumns& columns) {
  std::printf("\n  targets\n  %s\n", std::string(static_cast<size_t>(columns.rule), '-').c_str());
}

void PrintTarget(const TargetColumns& columns, const char* name, const std::string& measured,
                 const std::string& target, bool met) {
  std::printf("  %-17s %-*s %-*s %s\n", name, columns.measured, measured.c_str(), columns.target,
              target.c_str(), Verdict(met));
}

void PrintLoadTarget(const TargetColumns& columns, const Timing& load, const Timing& floor,
                     double target) {
  const double best = load.Best() / floor.Best();
  const double median = load.Median() / floor.Median();
  const double cpu = load.BestCpu() / floor.BestCpu();
  PrintTarget(columns, "load / floor",
              Format("%.2fx best, %.2fx median, %.2fx cpu", best, median, cpu),
              Format("<= %.2fx median", target), median <= target);
}

TempFile::TempFile(std::string_view program, std::string_view suffix)
    : m_path((std::filesystem::temp_directory_path() /
              (std::string(program) + "_" + std::to_string(getpid()) + std::string(suffix)))
                 .string()) {}

TempFile::~TempFile() {
  std::error_code ignored;
  std::filesystem::remove(m_path, ignored);
}

}  // namespace oxdae_bench
