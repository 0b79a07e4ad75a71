#include "oxdaeCommon.h"

#include <oxDAEConvert/oxDAEGltf.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

#include "oxdaeProgress.h"

namespace oxdae {

using namespace OxDAEReader;

LogCounter::LogCounter() : m_sink([this](const OxKernel::oxLogRecord& r) { Receive(r); }) {}

LogCounter::~LogCounter() {
  PrintHeld();
}

int LogCounter::Attempt(const std::function<int()>& operation, std::string& failure) {
  m_holding = true;
  const int rc = operation();
  m_holding = false;
  failure.clear();
  if (rc != 0 && m_held) {
    failure = m_held->text;
    m_held.reset();
  }
  PrintHeld();
  return rc;
}

void LogCounter::Receive(const OxKernel::oxLogRecord& record) {
  if (record.level == OxKernel::kLogError) ++errors;
  if (record.level == OxKernel::kLogWarning) ++warnings;
  PrintHeld();
  if (m_holding && record.level == OxKernel::kLogError) {
    // The record's text only lives during this call.
    m_held = HeldRecord{record, std::string(record.text)};
    return;
  }
  EndProgressLine();
  OxKernel::oxLog::DefaultSink(record);
}

void LogCounter::PrintHeld() {
  if (!m_held) return;
  EndProgressLine();
  OxKernel::oxLogRecord record = m_held->record;
  record.text = m_held->text;
  OxKernel::oxLog::DefaultSink(record);
  m_held.reset();
}

void AddInput(CLI::App& command, std::string& file) {
  command
      .add_option("IN", file, "the COLLADA document to read (.dae or .zae; - for standard input)")
      ->required();
}

void AddFileAndJSON(CLI::App& command, std::string& file, bool& json, const std::string& what,
                    const std::function<void()>& between) {
  command.add_option("FILE", file, "the COLLADA document (.dae or .zae; - reads standard input)")
      ->required();
  if (between) between();
  command.add_flag("--json", json, "print the " + what + " as one JSON object");
}

void PrintToolLine(const std::string& text) {
  EndProgressLine();
  std::fprintf(stderr, "oxdae: %s\n", text.c_str());
}

void PrintText(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

std::string JsonLine(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void PrintJSON(const Json& value) {
  PrintText(JsonLine(value) + "\n");
}

void Print(bool json, const std::function<Json()>& asJSON,
           const std::function<std::string()>& asText) {
  if (json) {
    PrintJSON(asJSON());
  } else {
    PrintText(asText());
  }
}

// Runs `operation`, a load or a save of `file`; false after one line saying
// why it failed: the reason the reader or writer logged, which names the
// file in most cases ("cannot open 'x.dae': ..."), else the file and the
// reason; "cannot be DONE (code N)" when nothing was logged.
bool Attempt(LogCounter& log, const std::string& file, std::string_view done,
             const std::function<int()>& operation) {
  std::string reason;
  const int rc = log.Attempt(operation, reason);
  if (rc == 0) return true;
  if (reason.empty()) reason = OxKernel::oxConcat("cannot be ", done, " (code ", rc, ")");
  PrintToolLine(reason.find(file) != std::string::npos ? reason : file + ": " + reason);
  return false;
}

namespace {

// Everything on standard input, read as bytes; false when reading fails.
bool ReadStandardInput(std::string& bytes) {
  char chunk[1 << 16];
  for (;;) {
    const size_t read = std::fread(chunk, 1, sizeof chunk, stdin);
    bytes.append(chunk, read);
    if (read < sizeof chunk) return !std::ferror(stdin);
  }
}

}  // namespace

bool LoadDocument(oxDAEFile& document, const std::string& file, LogCounter& log) {
  if (file == kStandardStream) {
    std::string bytes;
    if (!ReadStandardInput(bytes)) {
      PrintToolLine("cannot read standard input");
      return false;
    }
    return Attempt(log, file, "read", [&] {
      return document.LoadFromMemory(bytes.data(), bytes.size(), OxKernel::oxURI(file));
    });
  }
  ProgressBar bar(file);
  return Attempt(log, file, "read",
                 [&] { return document.Load(OxKernel::oxURI(file), bar.GetProgress()); });
}

bool SaveDocument(oxDAEFile& document, const std::string& file, LogCounter& log) {
  if (file == kStandardStream) {
    OxKernel::oxString xml;
    if (!Attempt(log, file, "written", [&] { return document.SaveToString(xml); })) return false;
    PrintText(xml);
    return std::fflush(stdout) == 0;
  }
  return Attempt(log, file, "written", [&] { return document.Save(OxKernel::oxURI(file)); });
}

std::string NumberText(float value) {
  // The sign of a NaN means nothing to a reader.
  if (std::isnan(value)) return "nan";
  char text[32];
  const std::to_chars_result written = std::to_chars(text, text + sizeof text, value);
  return std::string(text, written.ptr);
}

Json JsonNumber(float value) {
  if (!std::isfinite(value)) return nullptr;
  // The double nearest to the float's shortest text is written back as that
  // same text, where the float widened to double would show its binary
  // expansion (0.1f as 0.10000000149011612).
  const std::string text = NumberText(value);
  double shortest = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), shortest);
  return shortest;
}

Json JsonMatrix(const OxMath::oxMatrix44& matrix) {
  Json values = Json::array();
  for (const float value : matrix.m)
    values.push_back(JsonNumber(value));
  return values;
}

Json JsonText(std::string_view text) {
  if (text.empty()) return nullptr;
  return text;
}

CLI::Option* AddTimeOption(CLI::App& command, float& time, bool required) {
  const CLI::Validator finite(
      [](std::string& text) -> std::string {
        float value = 0.0f;
        const char* end = text.data() + text.size();
        const std::from_chars_result read = std::from_chars(text.data(), end, value);
        if (read.ec != std::errc() || read.ptr != end || !std::isfinite(value))
          return "not a finite number: " + text;
        return {};
      },
      "SECONDS");
  CLI::Option* option =
      command.add_option("--time", time, "the time to evaluate at, in seconds")->check(finite);
  if (required) option->required();
  return option;
}

const oxDAEVisualScene* DefaultVisualScene(const oxDAEFile& document) {
  return OxDAEConvert::FindVisualScene(document);
}

void ForEachNode(const oxDAEVisualScene& scene,
                 const std::function<void(const oxDAENode&, size_t depth)>& visit) {
  std::vector<std::pair<const oxDAENode*, size_t>> pending;
  // Pushed last to first, so that the first is taken first.
  const auto push = [&pending](const oxArray<oxDAENode*>& nodes, size_t depth) {
    for (auto it = nodes.rbegin(); it != nodes.rend(); ++it)
      pending.emplace_back(*it, depth);
  };
  push(scene.nodes, 0);
  while (!pending.empty()) {
    const auto [node, depth] = pending.back();
    pending.pop_back();
    visit(*node, depth);
    push(node->nodes, depth + 1);
  }
}

}  // namespace oxdae
