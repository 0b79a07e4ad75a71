#include "oxKernel/oxLog.h"

#include <cstdio>
#include <string>

namespace OxKernel {

namespace {
thread_local oxLogRecord t_pending;
oxLog::Sink& InstalledSink() {
  static oxLog::Sink sink;
  return sink;
}
}  // namespace

void oxLog::SetInformation(unsigned int context, int level, int line, const char* file) {
  t_pending = oxLogRecord{context, level, line, file ? file : "", {}};
}

void oxLog::Print(std::string_view text) {
  oxLogRecord record = t_pending;
  record.text = text;
  t_pending = oxLogRecord{};
  const Sink& sink = InstalledSink();
  if (sink) {
    sink(record);
  } else {
    DefaultSink(record);
  }
}

oxLog::Sink oxLog::SetSink(Sink sink) {
  Sink previous = std::move(InstalledSink());
  InstalledSink() = std::move(sink);
  return previous;
}

std::string_view oxLog::LevelName(int level) {
  if (level == kLogError) return "error";
  if (level == kLogWarning) return "warning";
  return "info";
}

void oxLog::DefaultSink(const oxLogRecord& record) {
  std::string line(LevelName(record.level));
  line += ": ";
  line += record.text;
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace OxKernel
