// The progress bar of oxdae: on standard error with --progress, never on
// standard output, not shown for a small file without the flag.
#include <cctype>
#include <sstream>

#include "cli_test_support.h"

namespace {

using namespace clitest;

// True when `text` is digits, a point and one digit ("12.3").
bool IsOneDecimal(const std::string& text) {
  const size_t point = text.find('.');
  if (point == 0 || point == std::string::npos || point + 2 != text.size()) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (i != point && !std::isdigit(static_cast<unsigned char>(text[i]))) return false;
  }
  return true;
}

// True when a line of `err` is the last bar of a load: "oxdae: reading
// FILE: 100% M.M MB R.R MB/s".
bool HasFinalBar(const std::string& err) {
  std::istringstream lines(err);
  for (std::string line; std::getline(lines, line);) {
    const size_t full = line.find(": 100% ");
    if (!line.starts_with("oxdae: reading ") || full == std::string::npos) continue;
    std::istringstream words(line.substr(full + 7));
    std::string size, mb, rate, unit, rest;
    words >> size >> mb >> rate >> unit;
    if (IsOneDecimal(size) && mb == "MB" && IsOneDecimal(rate) && unit == "MB/s" &&
        !(words >> rest))
      return true;
  }
  return false;
}

// Each command that reads a document, with what it needs besides FILE.
struct Invocation {
  std::string command;
  std::string options;
};
const Invocation kReaders[] = {{"info", ""},  {"tree", ""},      {"sample", "--time 0"},
                               {"check", ""}, {"materials", ""}, {"textures", ""}};

}  // namespace

TEST(CliProgress, FlagShowsTheBarOnStandardErrorOnly) {
  const ToolRun plain = Oxdae("info " + Quote(kSample));
  const ToolRun shown = Oxdae("info " + Quote(kSample) + " --progress");
  EXPECT_EQ(shown.code, 0);
  EXPECT_TRUE(HasFinalBar(shown.err)) << shown.err;
  EXPECT_NE(shown.err.find("oxdae: reading " + kSample + ": "), std::string::npos) << shown.err;
  // Not on a terminal, the final update is the last line.
  EXPECT_TRUE(shown.err.ends_with(" MB/s\n")) << shown.err;
  EXPECT_EQ(shown.out.find("oxdae: reading"), std::string::npos);
  EXPECT_EQ(shown.out.find("MB/s"), std::string::npos);
  // The report itself does not change (but for the time the load took).
  EXPECT_FALSE(shown.out.empty());
  EXPECT_EQ(shown.out.substr(0, 40), plain.out.substr(0, 40));
}

TEST(CliProgress, NoBarWithoutTheFlagForASmallFile) {
  const ToolRun run = Oxdae("info " + Quote(kSample));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err.find("oxdae: reading"), std::string::npos) << run.err;
  EXPECT_EQ(run.out.find("oxdae: reading"), std::string::npos);
}

TEST(CliProgress, EveryReadingCommandTakesTheFlag) {
  for (const Invocation& i : kReaders) {
    const std::string arguments = i.command + " " + Quote(kSample) + " " + i.options;
    const ToolRun plain = Oxdae(arguments);
    const ToolRun shown = Oxdae(arguments + " --progress");
    EXPECT_EQ(shown.code, plain.code) << i.command;
    EXPECT_TRUE(HasFinalBar(shown.err)) << i.command << ": " << shown.err;
    EXPECT_FALSE(HasFinalBar(plain.err)) << i.command;
    EXPECT_EQ(shown.out.find("oxdae: reading"), std::string::npos) << i.command;
  }
}

TEST(CliProgress, ResaveShowsTheBarOfTheLoad) {
  const oxtest::TempFile out("");
  const ToolRun run = Oxdae("resave " + Quote(kSample) + " " + Quote(out.Path()) + " --progress");
  EXPECT_EQ(run.code, 0);
  EXPECT_TRUE(HasFinalBar(run.err)) << run.err;
  EXPECT_EQ(run.out, "");
}

TEST(CliProgress, JsonOutputStaysOneCleanLine) {
  for (const Invocation& i : kReaders) {
    const ToolRun run =
        Oxdae(i.command + " " + Quote(kSample) + " " + i.options + " --json --progress");
    EXPECT_TRUE(HasFinalBar(run.err)) << i.command;
    ASSERT_FALSE(run.out.empty()) << i.command;
    EXPECT_EQ(run.out.find('\n'), run.out.size() - 1) << i.command;
    EXPECT_EQ(run.out.find('\r'), std::string::npos) << i.command;
    EXPECT_TRUE(run.Json().is_object()) << i.command;
  }
}

TEST(CliProgress, FailedLoadPrintsOnlyItsReason) {
  const std::string missing = kSample + ".missing";
  const ToolRun plain = Oxdae("info " + Quote(missing));
  const ToolRun shown = Oxdae("info " + Quote(missing) + " --progress");
  EXPECT_EQ(shown.code, 1);
  EXPECT_EQ(shown.err, plain.err);
  EXPECT_FALSE(HasFinalBar(shown.err));
}

TEST(CliProgress, WarningsLogStartOnTheirOwnLine) {
  // An unknown child draws a warning while the document loads.
  const ToolRun run =
      OnDocument("info", "<library_visual_scenes><bogus/></library_visual_scenes>", "--progress");
  EXPECT_EQ(run.code, 0);
  EXPECT_TRUE(HasFinalBar(run.err)) << run.err;
  EXPECT_EQ(run.err.find("warning: "), 0u) << run.err;
}
