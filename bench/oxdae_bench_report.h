// What the benchmark programs share to time their steps and print their
// tables: wall-clock and processor times of repeated runs, flag parsing,
// number formatting, the common lines of the reports and temporary files.
#pragma once

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "oxdae_document_generator.h"

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

// The flags of the programs that time one document: --file PATH, or a
// generated document of --megabytes N (10^6 bytes, default 50) drawn with
// --seed N (default 1); and --runs N (default 5). Every flag takes a value.
struct DocumentArguments {
  std::string file;  // empty: generate the document
  DocumentOptions document;
  int runs = 5;
};

// False on an unknown flag, a missing value or a bad number.
bool ParseDocumentArguments(int argc, char** argv, DocumentArguments& args);

// The main function of a benchmark program: `parse(argc, argv, options)`
// fills default options from the flags; when it fails the usage text goes to
// standard error and the exit code is 2; otherwise it is `run(options)`.
template <class Options, class Parse, class Run>
int Main(int argc, char** argv, const char* usage, Parse&& parse, Run&& run) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::fputs(usage, stderr);
    return 2;
  }
  return run(options);
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

// The size of `input`, after printing it with the runs per step and the
// machine load; 0, after a message naming `program`, when the file cannot be
// read or is empty.
uint64_t OpenInput(const char* program, const std::string& input, int runs);

// The line of a generated input: its size, its seed and the time taken since
// `start`.
void PrintGenerated(uint64_t bytes, uint64_t seed, Clock::time_point start);

// The widths of a targets table: its rule, and its measured and target
// columns.
struct TargetColumns {
  int rule;
  int measured;
  int target;
};

// The heading of the targets table.
void PrintTargetsHeading(const TargetColumns& columns);

// One line of the targets table: what was measured, the target and whether
// it is met.
void PrintTarget(const TargetColumns& columns, const char* name, const std::string& measured,
                 const std::string& target, bool met);

// The line of load time over floor time, met when the median ratio is at
// most `target`.
void PrintLoadTarget(const TargetColumns& columns, const Timing& load, const Timing& floor,
                     double target);

// A file of the temporary directory named "<program>_<process id><suffix>",
// removed with the object.
class TempFile {
 public:
  TempFile(std::string_view program, std::string_view suffix);
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
};

}  // namespace oxdae_bench
