// The module frame of the benchmark programs: the module started for a
// scope, the module's log records counted instead of printed, and Load timed
// against the floor.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>

#include "oxdae_bench_report.h"
#include "oxdae_floor.h"

namespace oxdae_bench {

// Counts the module's log records and keeps the first one, without printing.
struct LogCounter {
  uint64_t errors = 0;
  uint64_t warnings = 0;
  std::string first;
  OxKernel::oxScopedLogSink sink{[this](const OxKernel::oxLogRecord& record) {
    if (record.level == OxKernel::kLogError) ++errors;
    if (record.level == OxKernel::kLogWarning) ++warnings;
    if (first.empty()) first = std::string(record.text);
  }};
};

// Starts the module for the lifetime of the object.
struct ModuleUse {
  ModuleUse() { OxDAEReader::oxDAEReadWriteModule::Init(0); }
  ~ModuleUse() { OxDAEReader::oxDAEReadWriteModule::Uninit(0); }
  ModuleUse(const ModuleUse&) = delete;
  ModuleUse& operator=(const ModuleUse&) = delete;
};

// The line of the records counted over all loads, with the first of them.
inline void PrintLog(const LogCounter& log) {
  std::printf("  log       %llu errors, %llu warnings over all loads%s%s\n",
              static_cast<unsigned long long>(log.errors),
              static_cast<unsigned long long>(log.warnings),
              log.first.empty() ? "" : "; first: ", log.first.c_str());
}

// Times `runs` loads of `input` by the floor and by oxDAEFile::Load, taking
// turns so that both see the same machine load. Each floor run's total goes
// to `floor` and the run itself to `onFloor`; each Load goes to `load`, its
// document destroyed outside the timed span. False, after a message naming
// `program`, when either fails.
template <class OnFloor>
bool TimeLoadsAgainstFloor(const char* program, const std::string& input, int runs, Timing& floor,
                           Timing& load, OnFloor&& onFloor) {
  for (int i = 0; i < runs; ++i) {
    const FloorResult run = LoadFloor(input);
    if (!run.ok) {
      std::fprintf(stderr, "%s: %s is not readable XML\n", program, input.c_str());
      return false;
    }
    floor.seconds.push_back(run.TotalSeconds());
    floor.cpuSeconds.push_back(run.cpuSeconds);
    onFloor(run);
    OxDAEReader::oxDAEFile document;
    const Stopwatch watch;
    const int rc = document.Load(OxKernel::oxURI(input));
    watch.Stop(load);
    if (rc != 0) {
      std::fprintf(stderr, "%s: oxDAEFile::Load of %s returned %d\n", program, input.c_str(), rc);
      return false;
    }
  }
  return true;
}

inline bool TimeLoadsAgainstFloor(const char* program, const std::string& input, int runs,
                                  Timing& floor, Timing& load) {
  return TimeLoadsAgainstFloor(program, input, runs, floor, load, [](const FloorResult&) {});
}

}  // namespace oxdae_bench
