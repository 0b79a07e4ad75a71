// oxdae_load_bench: load and save throughput and peak memory of oxDAEFile on
// one document, against the floor of any pugixml-based loader.
//
//   oxdae_load_bench [--file PATH | --megabytes N [--seed N]] [--runs N]
//
// Without --file a document of N * 10^6 bytes (default 50) is generated into
// a temporary file. A second generated document, one skin controller of
// 1,000,000 joint influences, times the controller reader on its own
// against the floor of the same document. Each step runs --runs times (default 5); the table gives
// the best and the median run. Peak memory is measured in a fresh process per
// step (this program run again with --peak-child), as the growth of its
// resident set over the step.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>

#include "oxdae_bench_module.h"
#include "oxdae_bench_report.h"
#include "oxdae_document_generator.h"
#include "oxdae_floor.h"

namespace {

using namespace OxDAEReader;
using oxdae_bench::Format;
using oxdae_bench::Grouped;
using oxdae_bench::LogCounter;
using oxdae_bench::ModuleUse;
using oxdae_bench::ParseNumber;
using oxdae_bench::PrintTarget;
using oxdae_bench::Stopwatch;
using oxdae_bench::TempFile;
using oxdae_bench::Timing;
using Clock = oxdae_bench::Clock;

constexpr const char* kProgram = "oxdae_load_bench";

constexpr const char* kUsage =
    "usage: oxdae_load_bench [--file PATH | --megabytes N [--seed N]] [--runs N]\n"
    "  --file PATH     benchmark this document instead of a generated one\n"
    "  --megabytes N   size of the generated document in 10^6 bytes (default 50)\n"
    "  --seed N        seed of the generated document (default 1)\n"
    "  --runs N        runs of each step; best and median are shown (default 5)\n";
constexpr std::string_view kPeakChildFlag = "--peak-child";

constexpr double kLoadTarget = 1.0;      // load time / floor time
constexpr double kMemoryTarget = 1.5;    // load peak memory / floor peak memory
constexpr double kSaveTarget = 500.0;    // MB/s, to a file and to a string
constexpr double kSkinLoadTarget = 1.1;  // skin document: load time / floor time
constexpr uint32_t kSkinInfluences = 1'000'000;
constexpr double kMegabyte = 1e6;
constexpr oxdae_bench::TargetColumns kTargetColumns = {86, 44, 18};

// --- Arguments -------------------------------------------------------------------

using Options = oxdae_bench::DocumentArguments;

// --- Peak memory -------------------------------------------------------------------

// A field of /proc/self/status in kB ("VmRSS", "VmHWM"); 0 when absent.
uint64_t StatusKB(std::string_view field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (!line.starts_with(field) || line.size() <= field.size() || line[field.size()] != ':')
      continue;
    const size_t first = line.find_first_of("0123456789");
    const size_t last = line.find_first_not_of("0123456789", first);
    uint64_t kb = 0;
    if (first != std::string::npos)
      ParseNumber(std::string_view(line).substr(first, last - first), kb);
    return kb;
  }
  return 0;
}

// Sets the resident-set high-water mark to the current resident set.
bool ResetPeak() {
  std::ofstream clear("/proc/self/clear_refs");
  clear << "5";
  clear.flush();
  return clear.good();
}

// Resets the high-water mark, runs `step` and reports the resident set
// before it and the high-water mark after it, in kB.
template <class Step>
bool MeasureStep(Step&& step, uint64_t& before, uint64_t& peak) {
  if (!ResetPeak()) return false;
  before = StatusKB("VmRSS");
  if (!step()) return false;
  peak = StatusKB("VmHWM");
  return true;
}

// Save steps start from a loaded document; its memory is not counted.
bool RunPeakStep(std::string_view step, const std::string& input, const std::string& output,
                 uint64_t& before, uint64_t& peak) {
  if (step == "floor")
    return MeasureStep([&] { return oxdae_bench::LoadFloor(input).ok; }, before, peak);
  oxDAEFile document;
  const OxKernel::oxURI in(input);
  if (step == "load") return MeasureStep([&] { return document.Load(in) == 0; }, before, peak);
  if (document.Load(in) != 0) return false;
  if (step == "save") {
    const OxKernel::oxURI out(output);
    return MeasureStep([&] { return document.Save(out) == 0; }, before, peak);
  }
  oxString xml;
  return step == "save-string" &&
         MeasureStep([&] { return document.SaveToString(xml) == 0; }, before, peak);
}

// The child side: runs one step and prints the resident set before it and
// its high-water mark after it, in kB.
int PeakChild(int argc, char** argv) {
  if (argc != 5) return 2;
  const ModuleUse module;
  const LogCounter log;
  uint64_t before = 0;
  uint64_t peak = 0;
  if (!RunPeakStep(argv[2], argv[3], argv[4], before, peak)) return 1;
  std::printf("%llu %llu\n", static_cast<unsigned long long>(before),
              static_cast<unsigned long long>(peak));
  return 0;
}

struct Peak {
  bool ok = false;
  uint64_t bytes = 0;  // growth of the resident set during the step
};

std::string ReadAll(int fd) {
  std::string text;
  char chunk[256];
  ssize_t n = 0;
  while ((n = read(fd, chunk, sizeof chunk)) > 0)
    text.append(chunk, static_cast<size_t>(n));
  return text;
}

Peak ParsePeak(const std::string& text) {
  unsigned long long before = 0;
  unsigned long long after = 0;
  if (std::sscanf(text.c_str(), "%llu %llu", &before, &after) != 2) return {};
  return {true, (after > before ? after - before : 0) * 1024};
}

// Runs `step` in a fresh copy of this program, so that no heap state of this
// process (free lists, raised mmap threshold) hides or adds memory.
Peak MeasurePeak(const char* step, const std::string& input, const std::string& output) {
  std::fflush(nullptr);
  int fds[2];
  if (pipe(fds) != 0) return {};
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(fds[1], STDOUT_FILENO);
    close(fds[0]);
    close(fds[1]);
    execl("/proc/self/exe", kProgram, kPeakChildFlag.data(), step, input.c_str(), output.c_str(),
          static_cast<char*>(nullptr));
    _exit(127);
  }
  close(fds[1]);
  const std::string text = pid > 0 ? ReadAll(fds[0]) : std::string();
  close(fds[0]);
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return {};
  return ParsePeak(text);
}

// --- Timing ------------------------------------------------------------------------

struct FloorTimings {
  Timing total, read, parse, convert, release;
  oxdae_bench::FloorResult last;
};

// --- Document content ------------------------------------------------------------

struct DocumentCounts {
  uint64_t elements = 0;
  uint64_t floats = 0;
  uint64_t ints = 0;
};

DocumentCounts CountValues(const oxDAEFile& document) {
  DocumentCounts counts;
  for (const auto& element : document.GetElements()) {
    ++counts.elements;
    if (const oxDAEArray* a = oxDAEArray::DynamicCast(element.get())) {
      counts.floats += a->floats.size();
      counts.ints += a->ints.size();
    }
    if (const oxDAEMeshPrimitive* p = oxDAEMeshPrimitive::DynamicCast(element.get()))
      counts.ints += p->GetIndexCount() + p->vcount.size();
    if (const oxDAEVertexWeights* w = oxDAEVertexWeights::DynamicCast(element.get()))
      counts.ints += w->vcount.size() + w->v.size();
  }
  return counts;
}

struct Results {
  uint64_t inputBytes = 0;
  uint64_t savedBytes = 0;
  uint64_t stringBytes = 0;
  uint64_t skinBytes = 0;
  FloorTimings floor;
  Timing skinFloor, skinLoad;
  Timing load, save, saveString;
  Peak floorPeak, loadPeak, savePeak, stringPeak;
  DocumentCounts counts;
};

// --- Runs ------------------------------------------------------------------------

// The phases of a floor run; its total is kept by the caller.
void AddFloorPhases(const oxdae_bench::FloorResult& run, FloorTimings& t) {
  t.last = run;
  t.read.seconds.push_back(run.readSeconds);
  t.parse.seconds.push_back(run.parseSeconds);
  t.convert.seconds.push_back(run.convertSeconds);
  t.release.seconds.push_back(run.releaseSeconds);
}

bool TimeLoads(const std::string& input, int runs, Results& r) {
  return oxdae_bench::TimeLoadsAgainstFloor(
      kProgram, input, runs, r.floor.total, r.load,
      [&r](const oxdae_bench::FloorResult& run) { AddFloorPhases(run, r.floor); });
}

bool TimeSave(oxDAEFile& document, const std::string& output, int runs, Timing& t) {
  for (int i = 0; i < runs; ++i) {
    const Stopwatch watch;
    const int rc = document.Save(OxKernel::oxURI(output));
    watch.Stop(t);
    if (rc != 0) return false;
  }
  return true;
}

bool TimeSaveToString(oxDAEFile& document, int runs, Timing& t, uint64_t& bytes) {
  for (int i = 0; i < runs; ++i) {
    oxString xml;
    const Stopwatch watch;
    const int rc = document.SaveToString(xml);
    watch.Stop(t);
    bytes = xml.size();
    if (rc != 0) return false;
  }
  return true;
}

// --- Report ------------------------------------------------------------------------

void PrintHeader() {
  std::printf("\n  %-38s %8s %8s %8s %9s %9s\n", "step", "best ms", "med ms", "cpu ms", "best MB/s",
              "med MB/s");
  std::printf("  %s\n", std::string(86, '-').c_str());
}

void PrintRow(const char* name, const Timing& t, uint64_t bytes) {
  const double mb = static_cast<double>(bytes) / kMegabyte;
  std::printf("  %-38s %8.1f %8.1f %8.1f %9.1f %9.1f\n", name, t.Best() * 1e3, t.Median() * 1e3,
              t.BestCpu() * 1e3, mb / t.Best(), mb / t.Median());
}

// A part of a step: its time only.
void PrintPhase(const char* name, const Timing& t) {
  std::printf("  %-38s %8.1f %8.1f\n", name, t.Best() * 1e3, t.Median() * 1e3);
}

void PrintPeak(const char* name, const Peak& peak, uint64_t reference, const char* of) {
  if (!peak.ok) {
    std::printf("  %-40s %12s\n", name, "n/a");
    return;
  }
  std::printf("  %-40s %9.1f MB %7.2fx %s\n", name, static_cast<double>(peak.bytes) / kMegabyte,
              static_cast<double>(peak.bytes) / static_cast<double>(reference), of);
}

void PrintContent(const Results& r, const LogCounter& log) {
  const oxdae_bench::FloorResult& f = r.floor.last;
  std::printf("  numbers   floor: %s floats + %s ints in %s text nodes (%s other tokens)\n",
              Grouped(f.floats).c_str(), Grouped(f.ints).c_str(), Grouped(f.textNodes).c_str(),
              Grouped(f.otherTokens).c_str());
  std::printf("            document: %s floats + %s ints in %s elements\n",
              Grouped(r.counts.floats).c_str(), Grouped(r.counts.ints).c_str(),
              Grouped(r.counts.elements).c_str());
  oxdae_bench::PrintLog(log);
}

void PrintTimings(const Results& r) {
  PrintHeader();
  PrintRow("(a) floor: read + pugixml + from_chars", r.floor.total, r.inputBytes);
  PrintPhase("      read the file", r.floor.read);
  PrintPhase("      pugixml load_buffer_inplace", r.floor.parse);
  PrintPhase("      from_chars of every text node", r.floor.convert);
  PrintPhase("      free the text and the DOM", r.floor.release);
  PrintRow("(b) oxDAEFile::Load", r.load, r.inputBytes);
  PrintRow("(c) oxDAEFile::Save (file)", r.save, r.savedBytes);
  PrintRow("(c) oxDAEFile::SaveToString", r.saveString, r.stringBytes);
  std::printf("  (save rates are of the %s bytes written)\n", Grouped(r.savedBytes).c_str());
  std::printf("  skin document: %s bytes, %s joint influences\n", Grouped(r.skinBytes).c_str(),
              Grouped(kSkinInfluences).c_str());
  PrintRow("(d) skin: floor", r.skinFloor, r.skinBytes);
  PrintRow("(d) skin: oxDAEFile::Load", r.skinLoad, r.skinBytes);
}

void PrintMemory(const Results& r) {
  std::printf("\n  %-40s %12s %8s\n", "peak memory (resident-set growth)", "", "ratio");
  std::printf("  %s\n", std::string(86, '-').c_str());
  PrintPeak("(a) floor", r.floorPeak, r.inputBytes, "file");
  PrintPeak("(b) oxDAEFile::Load", r.loadPeak, r.inputBytes, "file");
  PrintPeak("(c) oxDAEFile::Save (file)", r.savePeak, r.savedBytes, "output");
  PrintPeak("(c) oxDAEFile::SaveToString", r.stringPeak, r.stringBytes, "output");
  std::printf("  (save steps start from a loaded document, which is not counted)\n");
}

void PrintTargets(const Results& r) {
  const double memory =
      static_cast<double>(r.loadPeak.bytes) / static_cast<double>(r.floorPeak.bytes);
  const double save = static_cast<double>(r.savedBytes) / kMegabyte / r.save.Best();
  const double saveString = static_cast<double>(r.stringBytes) / kMegabyte / r.saveString.Best();
  oxdae_bench::PrintTargetsHeading(kTargetColumns);
  oxdae_bench::PrintLoadTarget(kTargetColumns, r.load, r.floor.total, kLoadTarget);
  if (r.loadPeak.ok && r.floorPeak.ok && r.floorPeak.bytes > 0) {
    PrintTarget(kTargetColumns, "load peak/floor", Format("%.2fx", memory),
                Format("<= %.2fx", kMemoryTarget), memory <= kMemoryTarget);
  }
  const double skinMedian = r.skinLoad.Median() / r.skinFloor.Median();
  PrintTarget(kTargetColumns, "skin load / floor",
              Format("%.2fx best, %.2fx median, %.2fx cpu", r.skinLoad.Best() / r.skinFloor.Best(),
                     skinMedian, r.skinLoad.BestCpu() / r.skinFloor.BestCpu()),
              Format("<= %.2fx median", kSkinLoadTarget), skinMedian <= kSkinLoadTarget);
  PrintTarget(kTargetColumns, "save speed",
              Format("%.0f MB/s file, %.0f MB/s string (best)", save, saveString),
              Format(">= %.0f MB/s both", kSaveTarget),
              save >= kSaveTarget && saveString >= kSaveTarget);
}

// --- Driver ------------------------------------------------------------------------

// The temporary files of one run, removed at the end.
struct TempFiles {
  TempFile generated{kProgram, ".dae"};
  TempFile saved{kProgram, "_saved.dae"};
  TempFile peakSaved{kProgram, "_peak_saved.dae"};
  TempFile skin{kProgram, "_skin.dae"};
};

bool PrepareInput(const Options& options, const TempFiles& temp, std::string& input) {
  if (!options.file.empty()) {
    input = options.file;
    return true;
  }
  input = temp.generated.Path();
  const Clock::time_point start = Clock::now();
  const uint64_t written = oxdae_bench::WriteDocumentFile(options.document, input);
  if (written == 0) return false;
  oxdae_bench::PrintGenerated(written, options.document.seed, start);
  return true;
}

void MeasurePeaks(const std::string& input, const TempFiles& temp, Results& r) {
  const std::string& output = temp.peakSaved.Path();
  r.floorPeak = MeasurePeak("floor", input, output);
  r.loadPeak = MeasurePeak("load", input, output);
  r.savePeak = MeasurePeak("save", input, output);
  r.stringPeak = MeasurePeak("save-string", input, output);
}

bool MeasureTimes(const std::string& input, const TempFiles& temp, int runs, Results& r) {
  if (!TimeLoads(input, runs, r)) return false;
  oxDAEFile document;
  document.Load(OxKernel::oxURI(input));
  r.counts = CountValues(document);
  if (!TimeSave(document, temp.saved.Path(), runs, r.save) ||
      !TimeSaveToString(document, runs, r.saveString, r.stringBytes)) {
    std::fprintf(stderr, "%s: saving failed\n", kProgram);
    return false;
  }
  r.savedBytes = std::filesystem::file_size(temp.saved.Path());
  return true;
}

// Loads of the skin document against its floor.
bool MeasureSkin(const TempFiles& temp, const Options& options, Results& r) {
  const std::string& path = temp.skin.Path();
  r.skinBytes = oxdae_bench::WriteSkinDocumentFile(kSkinInfluences, options.document.seed, path);
  if (r.skinBytes == 0) {
    std::fprintf(stderr, "%s: cannot write %s\n", kProgram, path.c_str());
    return false;
  }
  return oxdae_bench::TimeLoadsAgainstFloor(kProgram, path, options.runs, r.skinFloor, r.skinLoad);
}

int Run(const Options& options) {
  const ModuleUse module;
  const LogCounter log;
  const TempFiles temp;
  std::string input;
  std::printf("%s\n", kProgram);
  if (!PrepareInput(options, temp, input)) {
    std::fprintf(stderr, "%s: cannot write %s\n", kProgram, input.c_str());
    return 1;
  }
  Results r;
  r.inputBytes = oxdae_bench::OpenInput(kProgram, input, options.runs);
  if (r.inputBytes == 0) return 1;
  MeasurePeaks(input, temp, r);
  if (!MeasureTimes(input, temp, options.runs, r) || !MeasureSkin(temp, options, r)) return 1;
  PrintContent(r, log);
  PrintTimings(r);
  PrintMemory(r);
  PrintTargets(r);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && argv[1] == kPeakChildFlag) return PeakChild(argc, argv);
  return oxdae_bench::Main<Options>(argc, argv, kUsage, oxdae_bench::ParseDocumentArguments, Run);
}
