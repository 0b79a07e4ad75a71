// oxdae resave IN OUT: loads IN and writes it back as OUT. A document read
// from a .zae archive is written as a plain document; "-" stands for
// standard input or output.
#include "oxdaeCommon.h"

namespace oxdae {

namespace {

struct ResaveOptions {
  std::string in;
  std::string out;
};

int RunResave(const ResaveOptions& options) {
  LogCounter log;
  OxDAEReader::oxDAEFile document;
  if (!LoadDocument(document, options.in, log)) return kExitFailure;
  return SaveDocument(document, options.out, log) ? kExitOK : kExitFailure;
}

}  // namespace

Command AddResave(CLI::App& tool) {
  auto options = std::make_shared<ResaveOptions>();
  CLI::App* command = tool.add_subcommand("resave", "Load a document and save it again.");
  AddInput(*command, options->in);
  command
      ->add_option("OUT", options->out,
                   "the file to write, always a plain .dae (- for standard output)")
      ->required();
  return {command, [options] { return RunResave(*options); }};
}

}  // namespace oxdae
