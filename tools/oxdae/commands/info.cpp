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
  if (options.json) {
    PrintJSON(FormatJSON(report));
  } else {
    PrintText(FormatText(report));
  }
  return kExitOK;
}

}  // namespace

Command AddInfo(CLI::App& tool) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = tool.add_subcommand(
      "info", "Summarise a document: asset, libraries, scene graph, animation, geometry, log.");
  command->add_option("FILE", options->file, "the COLLADA document")->required();
  command->add_flag("--json", options->json, "print the summary as one JSON object");
  return {command, [options] { return RunInfo(*options); }};
}

}  // namespace oxdae
