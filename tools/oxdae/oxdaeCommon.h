// What the oxdae commands share: how a command joins the command line, the
// log counter, loading and saving with one line per failure, report output
// as text or JSON, the visual scene a command looks at and the walk over
// its nodes, and numbers written as text and as JSON.
//
// Standard error carries the log records ("error: TEXT", "warning: TEXT")
// in the order they were logged, and the tool's own lines ("oxdae: TEXT");
// standard output carries the report. A document that cannot be read or
// written is reported in one "oxdae: " line that names the file: the record
// in which the reader or writer said why takes that form instead of being
// printed as well.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace oxdae {

// JSON objects keep their keys in the order they were set.
using Json = nlohmann::ordered_json;

// Exit statuses of every command.
inline constexpr int kExitOK = 0;
inline constexpr int kExitFailure = 1;   // cannot read or write, unknown id
inline constexpr int kExitUsage = 2;     // bad command line
inline constexpr int kExitFindings = 3;  // check: something to fix; textures: a missing file

// A command of the tool: its part of the command line and what it does once
// the command line is parsed (returning the exit status).
struct Command {
  CLI::App* app = nullptr;
  std::function<int()> run;
};

Command AddInfo(CLI::App& tool);
Command AddResave(CLI::App& tool);
Command AddTree(CLI::App& tool);
Command AddSample(CLI::App& tool);
Command AddCheck(CLI::App& tool);
Command AddMaterials(CLI::App& tool);
Command AddTextures(CLI::App& tool);
Command AddConvert(CLI::App& tool);
Command AddRender(CLI::App& tool);

// Counts the log records while the default sink prints them.
class LogCounter {
 public:
  LogCounter();
  ~LogCounter();
  LogCounter(const LogCounter&) = delete;
  LogCounter& operator=(const LogCounter&) = delete;

  // Runs a load or a save. Its last error record is held back until the
  // next record or its end, so that when it fails (non-zero result) that
  // record is not printed but handed back in `failure` (empty when it
  // logged no error). Returns the operation's result.
  int Attempt(const std::function<int()>& operation, std::string& failure);

  uint64_t warnings = 0;
  uint64_t errors = 0;

 private:
  struct HeldRecord {
    OxKernel::oxLogRecord record;
    std::string text;
  };
  void Receive(const OxKernel::oxLogRecord& record);
  void PrintHeld();

  bool m_holding = false;
  std::optional<HeldRecord> m_held;
  OxKernel::oxScopedLogSink m_sink;
};

// Adds the FILE argument, then what `between` adds, then the --json flag
// ("print the WHAT as one JSON object") to `command`.
void AddFileAndJSON(CLI::App& command, std::string& file, bool& json, const std::string& what,
                    const std::function<void()>& between = {});

// Writes "oxdae: TEXT" on standard error.
void PrintToolLine(const std::string& text);
// Writes `text` on standard output.
void PrintText(const std::string& text);
// `value` as one line of JSON text, without line end; text that is not valid
// UTF-8 is written with replacement characters.
std::string JsonLine(const Json& value);
// Writes `value` on standard output as JsonLine(value) and a line end.
void PrintJSON(const Json& value);
// Prints the report of a command: asJSON() with --json (`json`), else
// asText().
void Print(bool json, const std::function<Json()>& asJSON,
           const std::function<std::string()>& asText);

// The file name that stands for standard input (or output).
inline constexpr std::string_view kStandardStream = "-";

// Runs `operation`, a load, save or conversion of `file`; false after one
// line saying why it failed: the reason it logged last as an error, which
// names the file in most cases ("cannot open 'x.dae': ..."), else the file
// and the reason; "cannot be DONE (code N)" when nothing was logged.
bool Attempt(LogCounter& log, const std::string& file, std::string_view done,
             const std::function<int()>& operation);

// Adds the IN argument (a document to read) to `command`.
void AddInput(CLI::App& command, std::string& file);

// Loads `file`; false after one line saying why it could not be read. "-"
// reads the document (or `.zae` archive) from standard input; relative
// references then resolve against the current folder, and messages name
// the document "-".
bool LoadDocument(OxDAEReader::oxDAEFile& document, const std::string& file, LogCounter& log);
// Saves `document` as `file`, or on standard output for "-"; false after
// one line saying why it could not be written.
bool SaveDocument(OxDAEReader::oxDAEFile& document, const std::string& file, LogCounter& log);

// The shortest text that reads back as `value` ("0.1", "-2", "1e+20"), as
// std::to_chars writes it; "inf", "-inf" or "nan" when not finite.
std::string NumberText(float value);
// The JSON number whose text is NumberText(value); null when not finite.
Json JsonNumber(float value);
// The 16 values of `matrix` in their storage order.
Json JsonMatrix(const OxMath::oxMatrix44& matrix);
// `text` as a JSON string; null when empty.
Json JsonText(std::string_view text);

// Adds "--time T" (required or not) to `command`: a finite float.
CLI::Option* AddTimeOption(CLI::App& command, float& time, bool required);

// The visual scene that <scene> instances, else the first visual scene of
// the document; null when there is none.
const OxDAEReader::oxDAEVisualScene* DefaultVisualScene(const OxDAEReader::oxDAEFile& document);
// Calls `visit` for every node of `scene` with its depth (0 for the scene's
// own nodes), depth first in document order. Pending nodes are kept in a
// list, not on the call stack, so the deepest hierarchy the reader keeps
// costs no stack.
void ForEachNode(const OxDAEReader::oxDAEVisualScene& scene,
                 const std::function<void(const OxDAEReader::oxDAENode&, size_t depth)>& visit);

// The element whose id is `id`, when it is a T; null otherwise.
template <class T>
const T* FindByID(const OxDAEReader::oxDAEFile& document, const std::string& id) {
  return T::DynamicCast(document.ResolveURI(OxKernel::oxString("#" + id)));
}

// FindByID for an id given on the command line: null after the line
// "FILE: no WHAT with id 'ID'" when it names no T of the document.
template <class T>
const T* FindRequested(const OxDAEReader::oxDAEFile& document, const std::string& file,
                       const std::string& id, const std::string& what) {
  const T* found = FindByID<T>(document, id);
  if (!found) PrintToolLine(file + ": no " + what + " with id '" + id + "'");
  return found;
}

// Every element of class T, in the order the document read them (nested
// animations follow their parent: depth first, in document order).
template <class T>
std::vector<const T*> AllOf(const OxDAEReader::oxDAEFile& document) {
  std::vector<const T*> found;
  for (const auto& element : document.GetElements()) {
    if (const T* t = T::DynamicCast(element.get())) found.push_back(t);
  }
  return found;
}

}  // namespace oxdae
