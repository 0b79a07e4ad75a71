// The module frame of the benchmark programs: the module started for a
// scope, and the module's log records counted instead of printed.
#pragma once

#include <cstdint>
#include <string>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>

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

}  // namespace oxdae_bench
