// oxdae_scaling_bench: does loading stay linear in the size of the document?
// Generates documents of several sizes, each with the same mix of content
// (see ScalingDocument), and reports, for each, the median load time and the
// peak memory of a load per megabyte; the per-megabyte figures of all sizes
// should lie within 15% of each other.
//
//   oxdae_scaling_bench [--sizes N,N,...] [--runs N] [--seed N]
//
// Sizes are in 10^6 bytes (default 10,50,200,500). The documents are timed
// in --runs rounds (default 5), the sizes taking turns within each round and
// their order reversed from one round to the next: this machine's speed
// drifts by a third over seconds, and timed one after the other the sizes
// would each meet a different speed. In a round each document is loaded
// until 500 MB have been (a 500 MB one once, a 10 MB one 50 times: five
// loads of 25 ms each give no stable figure on a machine whose background
// work comes in bursts of that length); its figure for the round is the
// median of those loads, and its load time the median of its rounds. Peak
// memory is the growth of the resident set over one load in a fresh process
// (oxdae_load_bench --peak-child, found beside this program). The documents
// go to the temporary directory, all at once, and are on the disk before
// they are timed.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>

#include "oxdae_bench_module.h"
#include "oxdae_bench_report.h"
#include "oxdae_document_generator.h"

namespace {

using oxdae_bench::Format;
using oxdae_bench::ParseNumber;

constexpr const char* kProgram = "oxdae_scaling_bench";
constexpr const char* kUsage =
    "usage: oxdae_scaling_bench [--sizes N,N,...] [--runs N] [--seed N]\n"
    "  --sizes N,N,...  document sizes in 10^6 bytes (default 10,50,200,500)\n"
    "  --runs N         rounds in which every document is timed (default 5)\n"
    "  --seed N         seed of the generated documents (default 1)\n";
constexpr double kSpreadTarget = 1.15;  // largest / smallest per-megabyte figure
constexpr oxdae_bench::TargetColumns kTargetColumns = {72, 20, 18};

struct Options {
  std::vector<double> sizes = {10, 50, 200, 500};
  int runs = 5;
  uint64_t seed = 1;
};

bool ParseSizes(std::string_view text, std::vector<double>& sizes) {
  sizes.clear();
  while (!text.empty()) {
    const size_t comma = text.find(',');
    double megabytes = 0.0;
    if (!ParseNumber(text.substr(0, comma), megabytes) || megabytes <= 0.0) return false;
    sizes.push_back(megabytes);
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
  }
  return !sizes.empty();
}

bool ParseArguments(int argc, char** argv, Options& options) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string_view arg = argv[i];
    const std::string_view value = argv[i + 1];
    const bool ok = arg == "--sizes"  ? ParseSizes(value, options.sizes)
                    : arg == "--runs" ? ParseNumber(value, options.runs) && options.runs > 0
                    : arg == "--seed" ? ParseNumber(value, options.seed)
                                      : false;
    if (!ok) return false;
  }
  return argc % 2 == 1;
}

struct Row {
  std::unique_ptr<oxdae_bench::TempFile> file;
  double megabytes = 0.0;      // actual size of the document
  oxdae_bench::Timing rounds;  // the median load of each round
  double peakBytes = 0.0;
  double LoadSeconds() const { return rounds.Median(); }
  double MsPerMB() const { return LoadSeconds() * 1e3 / megabytes; }
  double PeakPerMB() const { return peakBytes / 1e6 / megabytes; }
};

// The growth of the resident set over one load of `input` in a fresh
// process; 0 when the child failed.
double PeakBytes(const std::string& input) {
  const std::filesystem::path here = std::filesystem::canonical("/proc/self/exe").parent_path();
  const std::string command =
      (here / "oxdae_load_bench").string() + " --peak-child load '" + input + "' /dev/null";
  std::FILE* child = popen(command.c_str(), "r");
  if (!child) return 0.0;
  unsigned long long before = 0;
  unsigned long long peak = 0;
  const bool read = std::fscanf(child, "%llu %llu", &before, &peak) == 2;
  const bool ok = pclose(child) == 0 && read && peak >= before;
  return ok ? static_cast<double>(peak - before) * 1024.0 : 0.0;
}

// Writes the document's pages to the disk and waits: the kernel writing back
// a file just made would otherwise compete with the timed loads for the
// cores, the more so the more recently the file was written.
bool SyncToDisk(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool synced = fsync(fd) == 0;
  return close(fd) == 0 && synced;
}

// The bytes each document is loaded for in a round (see the head of this
// file).
constexpr double kRoundBytes = 5e8;

// Writes the document of `megabytes` to the disk; false when it cannot.
bool Generate(double megabytes, uint64_t seed, Row& row) {
  row.file = std::make_unique<oxdae_bench::TempFile>(kProgram, Format("_%gMB.dae", megabytes));
  const auto wanted = static_cast<uint64_t>(megabytes * 1e6);
  const uint64_t bytes =
      oxdae_bench::WriteDocumentFile(oxdae_bench::ScalingDocument(wanted, seed), row.file->Path());
  row.megabytes = static_cast<double>(bytes) / 1e6;
  return bytes != 0 && SyncToDisk(row.file->Path());
}

// Loads the document until kRoundBytes have been loaded, and notes the
// median of those loads; false when a load fails.
bool TimeRound(Row& row) {
  oxdae_bench::Timing load;
  const auto loads = static_cast<int>(std::ceil(kRoundBytes / (row.megabytes * 1e6)));
  for (int i = 0; i < loads; ++i) {
    OxDAEReader::oxDAEFile document;
    const oxdae_bench::Stopwatch watch;
    if (document.Load(OxKernel::oxURI(row.file->Path())) != 0) return false;
    watch.Stop(load);
  }
  row.rounds.seconds.push_back(load.Median());
  return true;
}

// Every round times every document, in turns (see the head of this file).
bool TimeRounds(std::vector<Row>& rows, int rounds) {
  for (int round = 0; round < rounds; ++round) {
    for (size_t i = 0; i < rows.size(); ++i) {
      Row& row = rows[round % 2 == 0 ? i : rows.size() - 1 - i];
      if (!TimeRound(row)) {
        std::fprintf(stderr, "%s: the %.1f MB document failed to load\n", kProgram, row.megabytes);
        return false;
      }
    }
  }
  return true;
}

double Spread(const std::vector<Row>& rows, double (Row::*figure)() const) {
  double low = (rows.front().*figure)();
  double high = low;
  for (const Row& r : rows) {
    low = std::min(low, (r.*figure)());
    high = std::max(high, (r.*figure)());
  }
  return high / low;
}

int Run(const Options& options) {
  const oxdae_bench::ModuleUse module;
  const oxdae_bench::LogCounter log;
  std::printf("%s: load time and peak memory per megabyte across sizes\n", kProgram);
  oxdae_bench::PrintMachineLoad();
  std::vector<Row> rows(options.sizes.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    if (!Generate(options.sizes[i], options.seed, rows[i])) {
      std::fprintf(stderr, "%s: cannot write the %g MB document\n", kProgram, options.sizes[i]);
      return 1;
    }
  }
  std::printf("  documents");
  for (const Row& row : rows)
    std::printf(" %.1f", row.megabytes);
  std::printf(" MB written; timing them in %d rounds\n", options.runs);
  std::fflush(stdout);
  if (!TimeRounds(rows, options.runs)) return 1;
  std::printf("\n  %10s %12s %10s %12s %10s\n", "size MB", "load ms", "ms / MB", "peak MB",
              "peak / MB");
  for (Row& row : rows) {
    row.peakBytes = PeakBytes(row.file->Path());
    if (row.peakBytes <= 0.0) {
      std::fprintf(stderr, "%s: the %.1f MB document failed in a fresh process\n", kProgram,
                   row.megabytes);
      return 1;
    }
    std::printf("  %10.1f %12.1f %10.3f %12.1f %10.3f\n", row.megabytes, row.LoadSeconds() * 1e3,
                row.MsPerMB(), row.peakBytes / 1e6, row.PeakPerMB());
  }
  const double time = Spread(rows, &Row::MsPerMB);
  const double memory = Spread(rows, &Row::PeakPerMB);
  oxdae_bench::PrintTargetsHeading(kTargetColumns);
  oxdae_bench::PrintTarget(kTargetColumns, "ms / MB", Format("%.2fx largest/smallest", time),
                           Format("<= %.2fx", kSpreadTarget), time <= kSpreadTarget);
  oxdae_bench::PrintTarget(kTargetColumns, "peak / MB", Format("%.2fx largest/smallest", memory),
                           Format("<= %.2fx", kSpreadTarget), memory <= kSpreadTarget);
  oxdae_bench::PrintLog(log);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return oxdae_bench::Main<Options>(argc, argv, kUsage, ParseArguments, Run);
}
