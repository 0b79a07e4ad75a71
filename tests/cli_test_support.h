// Running the oxdae command-line tool as a separate process, for the CLI
// test files: the exit status, standard output and standard error of a run.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "oxTestSupport.h"

namespace clitest {

using nlohmann::json;

struct ToolRun {
  int code = -1;
  std::string out;
  std::string err;
  // The standard output as JSON; discarded (and a failure) when it does not
  // parse.
  json Json() const {
    json value = json::parse(out, nullptr, false);
    EXPECT_FALSE(value.is_discarded()) << out;
    return value;
  }
};

// Runs the shell command `command`: its exit status and standard output
// (standard error as the command line sends it).
inline ToolRun Run(const std::string& command) {
  ToolRun run;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return run;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    run.out.append(buffer, n);
  const int status = pclose(pipe);
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

// Runs oxdae with `arguments` (already quoted for the shell).
inline ToolRun Oxdae(const std::string& arguments) {
  oxtest::TempFile errFile("", ".err");
  ToolRun run = Run(std::string(OX_OXDAE_PATH) + " " + arguments + " 2>" + errFile.Path());
  run.err = oxtest::ReadFile(errFile.Path());
  return run;
}

inline std::string Quote(const std::string& path) {
  return "'" + path + "'";
}

// Runs "oxdae COMMAND FILE OPTIONS" on a document made of `body`.
inline ToolRun OnDocument(const std::string& command, std::string_view body,
                          const std::string& options = "") {
  oxtest::TempFile file(oxtest::Collada(body));
  return Oxdae(command + " " + Quote(file.Path()) + " " + options);
}

// The sample scene of the project.
inline const std::string kSample = std::string(OX_SOURCE_DIR) + "/samples/scene.dae";

}  // namespace clitest
