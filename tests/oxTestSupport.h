// Shared test helpers: a log capture, temporary files, document texts, and
// TEST_XML, which gives each test its own tiny document loaded before the
// body runs.
//
//   OX_DOCUMENT_SUITE(ArrayReading);
//   TEST_XML(ArrayReading, PadsShortText, R"(<COLLADA version="1.4.1">...)") {
//     EXPECT_EQ(rc, 0);            // Load's result
//     EXPECT_EQ(log.Count(), 0u);   // records logged while loading
//     auto* a = Find<oxDAEFloatArray>("#values");
//   }
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>

namespace oxtest {

struct LogEntry {
  int level;
  std::string text;
  bool operator==(const LogEntry&) const = default;
};

// Collects every log record while alive.
class LogCapture {
 public:
  LogCapture()
      : m_sink([this](const OxKernel::oxLogRecord& r) {
          entries.push_back({r.level, std::string(r.text)});
        }) {}
  size_t Count() const { return entries.size(); }
  size_t Count(int level, std::string_view text) const;
  void Clear() { entries.clear(); }
  std::vector<LogEntry> entries;

 private:
  OxKernel::oxScopedLogSink m_sink;
};

// Prints a record the way the default log sink does, for failure messages.
inline void PrintTo(const LogEntry& e, std::ostream* os) {
  *os << OxKernel::oxLog::LevelName(e.level) << ": " << e.text;
}

inline LogEntry Error(std::string text) {
  return {OxKernel::kLogError, std::move(text)};
}
inline LogEntry Warning(std::string text) {
  return {OxKernel::kLogWarning, std::move(text)};
}

// No record at all: EXPECT_EQ(log.entries, kNoLog).
inline const std::vector<LogEntry> kNoLog;

// A file in the test's temporary folder, removed with the object.
class TempFile {
 public:
  explicit TempFile(std::string_view contents, std::string_view suffix = ".dae");
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const std::string& Path() const { return m_path; }
  OxKernel::oxURI URI() const { return OxKernel::oxURI(m_path); }

 private:
  std::string m_path;
};

std::string ReadFile(const std::string& path);

// Wraps the body of a COLLADA 1.4.1 document around `body`.
std::string Collada(std::string_view body, std::string_view version = "1.4.1");

// `levels` nodes, each inside the previous one.
std::string NestedNodes(int levels);

// The first line of a saved document, and the start tag of its 1.4.1 root.
inline constexpr std::string_view kProlog = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
inline constexpr std::string_view kRootStart =
    "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">\n";

// The text of a saved 1.4.1 document whose root holds `body`.
std::string Saved(std::string_view body);

// The text of the first element named `tag` in `xml`, whole.
std::string ElementText(const std::string& xml, const std::string& tag);

// What loading a document, then saving it to a string, gave: every
// record logged on the way, both results, and the saved text.
struct LoadOutcome {
  int loaded = 0;
  int saved = 0;
  std::vector<LogEntry> log;
  std::string text;
};
// Loads through `load` into a fresh document, then saves it.
LoadOutcome LoadAndSave(const std::function<int(OxDAEReader::oxDAEFile&)>& load);
// Expects loading `bytes` from memory with the base URI `uri` to give what
// loading the file at `uri` (holding the same bytes) gives.
void ExpectMemoryLoadMatchesFile(std::string_view bytes, const OxKernel::oxURI& uri);

// One entry of an archive made by MakeArchive.
struct ArchiveEntry {
  std::string name;
  std::string bytes;
  bool encrypted = false;  // AES-256 with the password "secret"
};
// A zip archive holding `entries` in order (deflated), made with libzip.
std::string MakeArchive(const std::vector<ArchiveEntry>& entries);
// Sets the uncompressed size that `zip`'s local header and central directory
// claim for the entry `name` (the data stays as it is).
void SetClaimedSize(std::string& zip, std::string_view name, uint32_t size);

// Loads `xml` into `document`, capturing the log. Every document loaded
// this way is also checked against loading it from memory.
class DocumentTest : public ::testing::Test {
 protected:
  void SetUp() override;
  int LoadText(std::string_view xml);
  // Saves the document to a string (Save's result must be 0).
  std::string SaveText();
  // Places the document's reader on the root element of `xml`, where a
  // parent's reader stands on a child it hands over. The log is emptied.
  void OpenFragment(std::string_view xml);
  // Reads `xml` (one element) as a T under `parent`, as the parent would.
  template <class T>
  T* ReadFragment(std::string_view xml, OxDAEReader::oxDAEBaseElement* parent = nullptr) {
    OpenFragment(xml);
    return document.ReadChild<T>(parent);
  }
  // What `write` writes inside a <w> element, start and end tags included.
  template <class Write>
  std::string Written(Write write) {
    StartWriter();
    write();
    return FinishWriter();
  }
  template <class T>
  T* Find(const std::string& uri) const {
    return T::DynamicCast(document.ResolveURI(uri));
  }
  // Every element of class T in the document, in the order they were read.
  template <class T>
  std::vector<T*> All() const {
    std::vector<T*> found;
    for (const auto& e : document.GetElements()) {
      if (T* t = T::DynamicCast(e.get())) found.push_back(t);
    }
    return found;
  }

  OxDAEReader::oxDAEFile document;
  LogCapture log;
  int rc = 0;

 private:
  void StartWriter();
  std::string FinishWriter();
};

// Registers how to build the XML of one TEST_XML test under "Suite.Name".
// The XML is built only when its test runs: some are tens of megabytes, and
// every test runs in a process of its own.
struct XmlRegistrar {
  XmlRegistrar(const char* testName, std::function<std::string()> xml);
};

}  // namespace oxtest

#define OX_DOCUMENT_SUITE(Suite) \
  class Suite : public ::oxtest::DocumentTest {}

#define TEST_XML(Suite, Name, Xml)                                    \
  static const ::oxtest::XmlRegistrar Suite##_##Name##_xml_registrar( \
      #Suite "." #Name, [] { return std::string(Xml); });             \
  TEST_F(Suite, Name)
