// oxdae_process_bench: `oxdae info` against the floor program (oxdae_floor),
// and `oxdae convert` to a .glb and `oxdae render` to a .png against
// `oxdae info`, each run as a whole
// process, alternated in one run (A B A B ...) so that
// both see the same machine. Process start, reading, page faults and exit are
// all counted, as a user waiting for the command sees them.
//
//   oxdae_process_bench [--file PATH | --megabytes N [--seed N]] [--runs N]
//
// Without --file a document of N * 10^6 bytes (default 50) is generated into a
// temporary file. Each round runs the floor, then `oxdae info`, then `oxdae
// convert` to a .glb and `oxdae render` to a 512 x 512 .png beside the
// document (both removed afterwards); the table
// gives medians of wall-clock, user and system time, minor page faults and
// peak resident memory (default 7 rounds). The programs are looked up beside
// this one.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "oxdae_bench_report.h"
#include "oxdae_document_generator.h"

extern char** environ;

namespace {

using oxdae_bench::Format;
using oxdae_bench::ParseNumber;
using Clock = oxdae_bench::Clock;

constexpr const char* kProgram = "oxdae_process_bench";
constexpr const char* kUsage =
    "usage: oxdae_process_bench [--file PATH | --megabytes N [--seed N]] [--runs N]\n"
    "  --file PATH     time this document instead of a generated one\n"
    "  --megabytes N   size of the generated document in 10^6 bytes (default 50)\n"
    "  --seed N        seed of the generated document (default 1)\n"
    "  --runs N        rounds of floor then oxdae info; medians are shown (default 7)\n";

constexpr double kTimeTarget = 0.6;     // oxdae info wall time / floor wall time
constexpr double kMemoryTarget = 1.5;   // oxdae info peak memory / floor peak memory
constexpr double kConvertTarget = 2.0;  // oxdae convert (.glb) wall time / oxdae info wall time
constexpr double kRenderTarget = 1.5;   // oxdae render wall time / oxdae info wall time
constexpr oxdae_bench::TargetColumns kTargetColumns = {60, 20, 18};

// What one process cost, from its start to its end.
struct Run {
  double wall = 0.0;
  double user = 0.0;
  double system = 0.0;
  double faults = 0.0;  // minor page faults
  double peakKB = 0.0;  // peak resident set
};

double Seconds(const timeval& t) {
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
}

// Runs `argv` with its output thrown away; false when it could not
// start or did not exit with 0.
bool RunProcess(std::vector<std::string> args, Run& run) {
  std::vector<char*> argv;
  for (std::string& a : args)
    argv.push_back(a.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  const Clock::time_point start = Clock::now();
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) return false;
  int status = 0;
  rusage usage{};
  if (wait4(pid, &status, 0, &usage) != pid) return false;
  run.wall = oxdae_bench::SecondsSince(start);
  run.user = Seconds(usage.ru_utime);
  run.system = Seconds(usage.ru_stime);
  run.faults = static_cast<double>(usage.ru_minflt);
  run.peakKB = static_cast<double>(usage.ru_maxrss);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

double Median(std::vector<Run> runs, double Run::*field) {
  std::vector<double> values;
  for (const Run& r : runs)
    values.push_back(r.*field);
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

void PrintRow(const char* name, const std::vector<Run>& runs) {
  std::printf("  %-12s %9.1f ms %9.1f ms %9.1f ms %11s %9.1f MB\n", name,
              Median(runs, &Run::wall) * 1e3, Median(runs, &Run::user) * 1e3,
              Median(runs, &Run::system) * 1e3,
              oxdae_bench::Grouped(static_cast<uint64_t>(Median(runs, &Run::faults))).c_str(),
              Median(runs, &Run::peakKB) / 1024.0);
}

int Measure(const std::string& input, int rounds) {
  const std::filesystem::path here = std::filesystem::canonical("/proc/self/exe").parent_path();
  const std::string floor = (here / "oxdae_floor").string();
  const std::string oxdae = (here / "oxdae").string();
  const std::string glb = input + ".glb";
  const std::string png = input + ".png";
  std::vector<Run> floorRuns;
  std::vector<Run> infoRuns;
  std::vector<Run> convertRuns;
  std::vector<Run> renderRuns;
  for (int round = 0; round < rounds; ++round) {
    Run a;
    Run b;
    Run c;
    Run d;
    if (!RunProcess({floor, input}, a) || !RunProcess({oxdae, "info", input}, b) ||
        !RunProcess({oxdae, "convert", input, glb}, c) ||
        !RunProcess({oxdae, "render", input, "--out", png}, d)) {
      std::fprintf(stderr, "%s: '%s', or '%s' info, convert or render failed on %s\n", kProgram,
                   floor.c_str(), oxdae.c_str(), input.c_str());
      std::filesystem::remove(glb);
      std::filesystem::remove(png);
      return 1;
    }
    floorRuns.push_back(a);
    infoRuns.push_back(b);
    convertRuns.push_back(c);
    renderRuns.push_back(d);
  }
  std::filesystem::remove(glb);
  std::filesystem::remove(png);
  std::printf("\n  oxdae info / floor, medians of both\n  %-12s %12s %12s %12s %11s %12s\n",
              "median of", "wall", "user", "system", "faults", "peak");
  PrintRow("floor", floorRuns);
  PrintRow("oxdae info", infoRuns);
  PrintRow("convert .glb", convertRuns);
  PrintRow("render .png", renderRuns);
  const double time = Median(infoRuns, &Run::wall) / Median(floorRuns, &Run::wall);
  const double memory = Median(infoRuns, &Run::peakKB) / Median(floorRuns, &Run::peakKB);
  oxdae_bench::PrintTargetsHeading(kTargetColumns);
  oxdae_bench::PrintTarget(kTargetColumns, "wall time", Format("%.2fx", time),
                           Format("<= %.2fx", kTimeTarget), time <= kTimeTarget);
  oxdae_bench::PrintTarget(kTargetColumns, "peak memory", Format("%.2fx", memory),
                           Format("<= %.2fx", kMemoryTarget), memory <= kMemoryTarget);
  const double convert = Median(convertRuns, &Run::wall) / Median(infoRuns, &Run::wall);
  oxdae_bench::PrintTarget(kTargetColumns, "convert / info", Format("%.2fx", convert),
                           Format("<= %.2fx", kConvertTarget), convert <= kConvertTarget);
  const double render = Median(renderRuns, &Run::wall) / Median(infoRuns, &Run::wall);
  oxdae_bench::PrintTarget(kTargetColumns, "render / info", Format("%.2fx", render),
                           Format("<= %.2fx", kRenderTarget), render <= kRenderTarget);
  return 0;
}

// Seven rounds unless asked otherwise: each is two whole processes.
bool ParseArguments(int argc, char** argv, oxdae_bench::DocumentArguments& options) {
  options.runs = 7;
  return oxdae_bench::ParseDocumentArguments(argc, argv, options);
}

int Run(const oxdae_bench::DocumentArguments& options) {
  std::printf(
      "%s: oxdae info against the floor, convert and render against info, whole processes\n",
      kProgram);
  if (!options.file.empty()) {
    if (oxdae_bench::OpenInput(kProgram, options.file, options.runs) == 0) return 1;
    return Measure(options.file, options.runs);
  }
  const oxdae_bench::TempFile input(kProgram, ".dae");
  const Clock::time_point start = Clock::now();
  const uint64_t bytes = oxdae_bench::WriteDocumentFile(options.document, input.Path());
  if (bytes == 0) {
    std::fprintf(stderr, "%s: cannot write %s\n", kProgram, input.Path().c_str());
    return 1;
  }
  oxdae_bench::PrintGenerated(bytes, options.document.seed, start);
  oxdae_bench::PrintMachineLoad();
  return Measure(input.Path(), options.runs);
}

}  // namespace

int main(int argc, char** argv) {
  return oxdae_bench::Main<oxdae_bench::DocumentArguments>(argc, argv, kUsage, ParseArguments, Run);
}
