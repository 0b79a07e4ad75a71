// oxdae_scaling_bench: does loading stay linear in the size of the document?
// Generates documents of several sizes, each with the same mix of content,
// and reports, for each, the median
// load time and the peak memory of a load per megabyte; the per-megabyte
// figures of all sizes should lie within 15% of each other.
//
//   oxdae_scaling_bench [--sizes N,N,...] [--runs N] [--seed N]
//
// Sizes are in 10^6 bytes (default 10,50,200,500); each load is timed --runs
// times (default 3), and more often for a small document, until loads of
// 1,000 MB in all have been timed: five loads of 25 ms each give no stable
// median on a machine whose background work comes in bursts of that length,
// and the medians of all sizes then rest on as many bytes. Peak memory is
// the growth of the resident set over one load in a fresh process
// (oxdae_load_bench --peak-child, found beside this program). The documents
// go to the temporary directory, one at a time, and are on the disk before
// they are timed.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
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
    "  --runs N         timed loads of each document, at least (default 3;\n"
    "                   a small one is loaded until 1,000 MB have been)\n"
    "  --seed N         seed of the generated documents (default 1)\n";
constexpr double kSpreadTarget = 1.15;  // largest / smallest per-megabyte figure
constexpr oxdae_bench::TargetColumns kTargetColumns = {72, 20, 18};

struct Options {
  std::vector<double> sizes = {10, 50, 200, 500};
  int runs = 3;
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
  double megabytes = 0.0;  // actual size of the document
  double loadSeconds = 0.0;
  double peakBytes = 0.0;
  double MsPerMB() const { return loadSeconds * 1e3 / megabytes; }
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

// The bytes each size is loaded for at least (see the head of this file).
constexpr double kTimedBytes = 1e9;

bool Measure(double megabytes, const Options& options, Row& row) {
  const oxdae_bench::TempFile file(kProgram, ".dae");
  // The skin grows with the document (1,000,000 influences in 50 MB), so
  // that every size has the same mix of content.
  const auto wanted = static_cast<uint64_t>(megabytes * 1e6);
  const auto influences = static_cast<uint32_t>(wanted / 50);
  const uint64_t bytes =
      oxdae_bench::WriteDocumentFile({wanted, options.seed, influences}, file.Path());
  if (bytes == 0 || !SyncToDisk(file.Path())) return false;
  row.megabytes = static_cast<double>(bytes) / 1e6;
  oxdae_bench::Timing load;
  const int runs = std::max(options.runs, static_cast<int>(std::ceil(kTimedBytes / bytes)));
  for (int i = 0; i < runs; ++i) {
    OxDAEReader::oxDAEFile document;
    const oxdae_bench::Stopwatch watch;
    if (document.Load(OxKernel::oxURI(file.Path())) != 0) return false;
    watch.Stop(load);
  }
  row.loadSeconds = load.Median();
  row.peakBytes = PeakBytes(file.Path());
  return row.peakBytes > 0.0;
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
  std::printf("\n  %10s %12s %10s %12s %10s\n", "size MB", "load ms", "ms / MB", "peak MB",
              "peak / MB");
  std::vector<Row> rows;
  for (double megabytes : options.sizes) {
    Row row;
    if (!Measure(megabytes, options, row)) {
      std::fprintf(stderr, "%s: the %g MB document failed\n", kProgram, megabytes);
      return 1;
    }
    std::printf("  %10.1f %12.1f %10.3f %12.1f %10.3f\n", row.megabytes, row.loadSeconds * 1e3,
                row.MsPerMB(), row.peakBytes / 1e6, row.PeakPerMB());
    std::fflush(stdout);
    rows.push_back(row);
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
