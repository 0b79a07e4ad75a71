// oxdae info [--json] FILE: the summary of one document (oxdaeReport.h).
#include <oxKernel/oxProfiling.h>

#include "oxdaeReport.h"

namespace oxdae {

namespace {

struct InfoOptions {
  std::string file;
  bool json = false;
};

int RunInfo(const InfoOptions& options) {
  LogCounter log;
  OxDAEReader::oxDAEFile document;
  if (!LoadDocument(document, options.file, log)) return kExitFailure;
  Report report = BuildReport(document, options.file);
  report.loadSeconds = OxKernel::oxProfilingManager::GetElapsedSeconds("DAE Parsing");
  report.warnings = log.warnings;
  report.errors = log.errors;
  Print(
      options.json, [&report] { return FormatJSON(report); },
      [&report] { return FormatText(report); });
  return kExitOK;
}

}  // namespace

Command AddInfo(CLI::App& tool) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = tool.add_subcommand(
      "info",
      "Summarise a document: asset, libraries, scene graph, animation, controllers, materials, "
      "geometry, log.");
  AddFileAndJSON(*command, options->file, options->json, "summary");
  return {command, [options] { return RunInfo(*options); }};
}

}  // namespace oxdae
