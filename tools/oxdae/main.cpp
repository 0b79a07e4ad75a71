// oxdae: the command-line face of oxDAEReadWrite.
//
//   oxdae info [--json] FILE   summary of a COLLADA document
//   oxdae resave IN OUT        load IN and save it as OUT
//
// Log records go to standard error as "error: TEXT" / "warning: TEXT" in the
// order they were logged. Exit status: 0 success, 1 the document could not be
// read or written (with one line saying why), 2 bad usage.
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include <oxKernel/oxLog.h>
#include <oxKernel/oxProfiling.h>

#include "oxdaeReport.h"

namespace {

using namespace OxDAEReader;

constexpr const char* kUsage =
    "usage: oxdae info [--json] FILE\n"
    "       oxdae resave IN OUT\n"
    "\n"
    "  info     print the document's version, asset, libraries, scene and geometry\n"
    "           (--json: the same report as one JSON object)\n"
    "  resave   load IN and write it back as OUT\n";

int Usage() {
  std::fputs(kUsage, stderr);
  return 2;
}

// Counts the log records while the default sink prints them.
struct LogCounter {
  uint64_t warnings = 0;
  uint64_t errors = 0;
  OxKernel::oxScopedLogSink sink{[this](const OxKernel::oxLogRecord& record) {
    if (record.level == OxKernel::kLogError) ++errors;
    if (record.level == OxKernel::kLogWarning) ++warnings;
    OxKernel::oxLog::DefaultSink(record);
  }};
};

// The one line that says why a document could not be read.
std::string LoadFailure(int rc, const std::string& file) {
  switch (rc) {
    case OxKernel::kXMLCannotOpen:
      return file + ": cannot open the file";
    case OxKernel::kXMLNotWellFormed:
      return file + ": not an XML document";
    case kDAENotCollada:
      return file + ": the root element is not <COLLADA>";
    default:
      return file + ": cannot be read (code " + std::to_string(rc) + ")";
  }
}

// Loads `file` into `document`; prints the failure line and returns false
// when it cannot be read.
bool LoadDocument(oxDAEFile& document, const std::string& file) {
  const int rc = document.Load(OxKernel::oxURI(file));
  if (rc == 0) return true;
  std::fprintf(stderr, "oxdae: %s\n", LoadFailure(rc, file).c_str());
  return false;
}

int Info(const std::vector<std::string_view>& args) {
  bool json = false;
  std::string file;
  for (std::string_view arg : args) {
    if (arg == "--json") {
      json = true;
    } else if (file.empty() && !arg.starts_with("-")) {
      file = std::string(arg);
    } else {
      return Usage();
    }
  }
  if (file.empty()) return Usage();
  LogCounter log;
  oxDAEFile document;
  if (!LoadDocument(document, file)) return 1;
  oxdae::Report report = oxdae::BuildReport(document, file);
  report.loadSeconds = OxKernel::oxProfilingManager::GetElapsedSeconds("DAE Parsing");
  report.warnings = log.warnings;
  report.errors = log.errors;
  const std::string text = json ? oxdae::FormatJSON(report) : oxdae::FormatText(report);
  std::fwrite(text.data(), 1, text.size(), stdout);
  return 0;
}

int Resave(const std::vector<std::string_view>& args) {
  if (args.size() != 2) return Usage();
  const std::string in(args[0]), out(args[1]);
  LogCounter log;
  oxDAEFile document;
  if (!LoadDocument(document, in)) return 1;
  if (document.Save(OxKernel::oxURI(out)) != 0) {
    std::fprintf(stderr, "oxdae: %s: cannot be written\n", out.c_str());
    return 1;
  }
  return 0;
}

int Run(int argc, char** argv) {
  if (argc < 2) return Usage();
  const std::string_view command = argv[1];
  const std::vector<std::string_view> args(argv + 2, argv + argc);
  oxDAEReadWriteModule::Init(0);
  int rc = 2;
  if (command == "info") {
    rc = Info(args);
  } else if (command == "resave") {
    rc = Resave(args);
  } else {
    rc = Usage();
  }
  oxDAEReadWriteModule::Uninit(0);
  return rc;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "oxdae: %s\n", e.what());
    return 1;
  }
}
