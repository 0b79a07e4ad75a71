// oxdae: the command-line face of oxDAEReadWrite. Each command lives in its
// own file under commands/; this file builds the command line, starts the
// module and runs the command that was named.
//
// Exit status: 0 success, 1 the document could not be read or written (or
// an id given on the command line names nothing), 2 bad usage (with the
// usage on standard error), 3 the command found a problem ("check":
// something to fix; "textures": a picture file is missing).
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>

#include "oxdaeCommon.h"
#include "oxdaeProgress.h"

namespace {

using namespace oxdae;

constexpr const char* kDescription =
    "Inspect, check and resave COLLADA documents and list their materials and textures.";

// What was wrong with the command line. A first word that names no command
// is reported as such rather than as a missing command.
std::string Problem(const CLI::App& tool, const CLI::ParseError& e, int argc, char** argv) {
  if (tool.get_subcommands().empty() && argc > 1 && argv[1][0] != '-')
    return std::string("unknown command '") + argv[1] + "'";
  return e.what();
}

int Run(int argc, char** argv) {
  CLI::App tool(kDescription, "oxdae");
  tool.set_version_flag("--version", "oxdae " PROJECT_VERSION);
  tool.require_subcommand(1);
  const Command commands[] = {AddInfo(tool),     AddResave(tool),  AddTree(tool),
                              AddSample(tool),   AddCheck(tool),   AddMaterials(tool),
                              AddTextures(tool), AddConvert(tool), AddRender(tool)};
  for (const Command& command : commands)
    AddProgressFlag(*command.app);
  try {
    tool.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    // --help and --version end parsing with success and print on stdout.
    if (e.get_exit_code() == 0) return tool.exit(e);
    // help() describes the command being parsed, or the tool without one.
    std::fprintf(stderr, "oxdae: %s\n%s", Problem(tool, e, argc, argv).c_str(),
                 tool.help().c_str());
    return kExitUsage;
  }
  // The command line names exactly one command.
  const Command& named = *std::find_if(std::begin(commands), std::end(commands),
                                       [](const Command& c) { return c.app->parsed(); });
  OxDAEReader::oxDAEReadWriteModule::Init(0);
  const int rc = named.run();
  OxDAEReader::oxDAEReadWriteModule::Uninit(0);
  return rc;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "oxdae: %s\n", e.what());
    return kExitFailure;
  }
}
