// The host log. A caller first describes the record with SetInformation and
// then sends its text with Print; the record goes to the installed sink.
// The default sink writes "error: TEXT" (level 4), "warning: TEXT" (level 8)
// or "info: TEXT" (any other level) as one line on standard error.
#pragma once

#include <functional>
#include <string_view>

namespace OxKernel {

enum oxLogLevel : int { kLogError = 4, kLogWarning = 8, kLogInfo = 16 };

struct oxLogRecord {
  unsigned int context = 0;
  int level = kLogInfo;
  int line = 0;
  const char* file = "";
  std::string_view text;
};

class oxLog {
 public:
  using Sink = std::function<void(const oxLogRecord&)>;

  // Describes the next record printed on this thread.
  static void SetInformation(unsigned int context, int level, int line, const char* file);
  static void Print(std::string_view text);

  // Replaces the sink (an empty function restores the default) and returns
  // the previous one. Not to be called while another thread logs.
  static Sink SetSink(Sink sink);
  static void DefaultSink(const oxLogRecord& record);
  static std::string_view LevelName(int level);
};

// Installs a sink for the lifetime of the object and restores the previous
// one afterwards.
class oxScopedLogSink {
 public:
  explicit oxScopedLogSink(oxLog::Sink sink) : m_previous(oxLog::SetSink(std::move(sink))) {}
  ~oxScopedLogSink() { oxLog::SetSink(std::move(m_previous)); }
  oxScopedLogSink(const oxScopedLogSink&) = delete;
  oxScopedLogSink& operator=(const oxScopedLogSink&) = delete;

 private:
  oxLog::Sink m_previous;
};

}  // namespace OxKernel

// Logs `text` at `level` with the caller's source location.
#define OX_LOG(level, text)                                            \
  do {                                                                 \
    ::OxKernel::oxLog::SetInformation(0, (level), __LINE__, __FILE__); \
    ::OxKernel::oxLog::Print(text);                                    \
  } while (0)
